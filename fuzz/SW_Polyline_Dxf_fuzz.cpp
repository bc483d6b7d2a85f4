// DXF files: any bytes give polylines whose points are coordinates and not more than the file has room for, and what is
// written of them reads back.

#include "SW_Polyline_Points.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

static std::string FileInMemory(int& file, const void* bytes, size_t size)
{
    file = memfd_create("dxf", 0);   // a fuzzer writes many
    if (file < 0 || write(file, bytes, size) != ssize_t(size)) std::abort();
    return "/proc/self/fd/" + std::to_string(file);
}

static void CheckCoordinates(const AK_Polyline& line)
{
    for (const AK_Vec& p : line._x)
        if (!std::isfinite(float(p.x)) || !std::isfinite(float(p.y)) || !std::isfinite(float(p.z))) std::abort();
}

static void CheckReadsBack(const AK_Polyline& line)
{
    std::ostringstream out;
    line.WriteToDxf("layer", out, AK_Polyline::writtenDigits);
    int file = 0;
    AK_TextReader reader(FileInMemory(file, out.str().data(), out.str().size()).c_str());
    AK_Polyline again;
    AK_String label;
    if (!again.ReadFromDxf(reader, label) || again._x.Size() != line._x.Size() || !(label == "layer")) std::abort();
    close(file);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    ak_msg_func = [](const char*, const char*) {};
    int file = 0;
    const AK_String name = FileInMemory(file, bytes, size).c_str();
    for (const int dictionaries : {0, 1}) {
        AK_Polyline::_importXDICT = dictionaries;
        AK_TextReader reader(name);
        AK_Polyline line;
        AK_String label;
        size_t points = 0;
        while (line.ReadFromDxf(reader, label)) {
            points += size_t(line._x.Size());
            CheckCoordinates(line);
            CheckReadsBack(line);
            double depth = 1;
            AK_Polyline::LabelFromDxfDict(name, "file_" + label + "_XDICT_3A_a", depth);
            if (!std::isfinite(depth)) std::abort();
        }
        if (points > size / 3) std::abort();   // each takes a line of its own
    }
    double depth = 1;
    AK_Polyline::LabelFromDxfDict(name, "file_XDICT_3A_a", depth);
    AK_Polyline::EntitiesOfDxf(name);
    close(file);
    return 0;
}
