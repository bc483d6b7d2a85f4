// xy, xyz, nxyz, ano and the vertices of release files: the first byte chooses the format; any others give lines whose
// points are coordinates, in a number that the file has room for.

#include "SW_Polyline_Points.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

static std::string FileInMemory(int& file, const void* bytes, size_t size)
{
    file = memfd_create("points", 0);   // a fuzzer writes many
    if (file < 0 || write(file, bytes, size) != ssize_t(size)) std::abort();
    return "/proc/self/fd/" + std::to_string(file);
}

static bool warned = false;

// What is written as nxyz reads back with the same number of points, unless an annotation is told to read as numbers.
static void CheckReadsBack(const AK_Polyline& line)
{
    std::ostringstream out;
    warned = false;
    line.WriteToNxyz(out, AK_Polyline::writtenDigits);
    if (warned) return;
    int file = 0;
    AK_TextReader reader(FileInMemory(file, out.str().data(), out.str().size()).c_str());
    AK_Polyline again;
    if (!again.ReadFromNxyz(reader) || again._x.Size() != line._x.Size()) std::abort();
    close(file);
}

// Reads the next line in the format; false at the end.
static bool Read(int format, AK_TextReader& reader, const AK_String& path, AK_Polyline& line)
{
    AK_String name, colour;
    const bool first = reader.Remaining() == reader.Size();
    switch (format) {
    case 0: return first && line.ReadXy(path) == 0 && reader.ReadByte() >= 0;
    case 1: return first && line.ReadXyz(path) == 0 && reader.ReadByte() >= 0;
    case 2: return line.ReadFromNxyz(reader);
    case 3: return line.ReadFromAno(reader, name, colour) == 0;
    default: return line.ReadFromKORVO99Ascii(reader) == 0;
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    if (size == 0) return 0;
    ak_msg_func = [](const char*, const char*) { warned = true; };
    int file = 0;
    const AK_String path = FileInMemory(file, bytes + 1, size - 1).c_str();
    AK_TextReader reader(path);
    size_t points = 0;
    for (AK_Polyline line; Read(bytes[0] % 5, reader, path, line); line = AK_Polyline()) {
        points += size_t(line._x.Size());
        for (const AK_Vec& p : line._x)
            if (!std::isfinite(float(p.x)) || !std::isfinite(float(p.y)) || !std::isfinite(float(p.z))) std::abort();
        CheckReadsBack(line);
    }
    if (points > size / 3) std::abort();   // "0 0" and a line end, the last one without
    close(file);
    return 0;
}
