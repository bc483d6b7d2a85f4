// Release and resistance files: any bytes give areas whose numbers are finite and whose points are not more than the
// file has room for. The first byte chooses the format.

#include "SW_InitialCondition.h"
#include "SW_ResistanceArea.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

static void CheckFinite(const AK_Object& area, std::initializer_list<const char*> attributes)
{
    for (const char* attribute : attributes)
        if (!std::isfinite(std::atof(area.Get(attribute).c_str()))) std::abort();
}

static size_t CheckedPoints(const SW_Polyline& area)
{
    for (const AK_Vec& p : area.Points())
        if (!std::isfinite(float(p.x)) || !std::isfinite(float(p.y)) || p.z != 0) std::abort();
    return size_t(area.NumVertices());
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    if (size == 0) return 0;
    ak_msg_func = [](const char*, const char*) {};
    AK_Object::SetAttributesDirectory(KORVO_SOURCE_DIR "/files/AK_Attributes");
    const int file = memfd_create("areas", 0);   // a fuzzer writes many
    if (file < 0 || write(file, bytes + 1, size - 1) != ssize_t(size - 1)) std::abort();
    const AK_String path = ("/proc/self/fd/" + std::to_string(file)).c_str();

    size_t points = 0;
    SW_InitialConditions releases("ReleaseAreas", nullptr);
    SW_ResistanceAreas obstacles("ResistanceAreas", nullptr);
    if (bytes[0] % 2 == 0)
        releases.LoadRelFile(path);
    else
        obstacles.LoadResFile(path);
    for (int i = 0; i < releases.NumComponents(); ++i) {
        points += CheckedPoints(*releases.Area(i));
        CheckFinite(*releases.Area(i), {"Depth", "Density"});
        if (releases.Area(i)->Depth({}, {}) < 0) std::abort();
    }
    for (int i = 0; i < obstacles.NumComponents(); ++i) {
        points += CheckedPoints(*obstacles.Area(i));
        CheckFinite(*obstacles.Area(i), {"Height", "Width", "Spacing", "ResistanceCoefficient", "PsaSpacing"});
    }
    if (points > size / 3) std::abort();   // "0 0" and a line end, the last one without
    close(file);
    return 0;
}
