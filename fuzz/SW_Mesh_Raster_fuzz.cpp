// Rasters and records of meshes: any bytes give a mesh that answers queries, or none. The first byte says how they are
// read: a single file, halved, with gaps cut out, a tile, or a record.

#include "SW_Mesh.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

static SW_Mesh& Mesh()
{
    static SW_Mesh* mesh = [] {
        ak_msg_func = [](const char*, const char*) {};
        AK_Object::SetAttributesDirectory(KORVO_SOURCE_DIR "/files/AK_Attributes");
        return new SW_Mesh("m", nullptr);
    }();
    return *mesh;
}

static void CheckMesh(const SW_Mesh& mesh)
{
    for (const IA4& cell : mesh._lcv)
        for (int k = 0; k < 4; ++k)
            if (cell[k] >= mesh.NumVertices() || cell[k] < (k == 3 ? -1 : 0)) std::abort();
    if (mesh.NumCells() == 0) return;
    const AK_Vec center = mesh.CellCenter(0);
    const int cell = mesh.CellContainingPoint(AK_Vec2(center), 0);
    if (cell >= mesh.NumCells()) std::abort();
}

static void Read(SW_Mesh& mesh, int way, const AK_String& name)
{
    mesh.Set("NumNoDataValueInterpolationIterations", way == 2 ? "0" : "1");
    if (way == 3)
        mesh.LoadTiles(name + ak_sep + name);
    else if (way == 4) {
        AK_Stream stream(name, "rb");
        mesh.LoadData(stream);
    } else
        mesh.LoadE00(name, way == 1 ? 2 : 0);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    if (size == 0) return 0;
    SW_Mesh& mesh = Mesh();
    mesh.Clear();
    const int file = memfd_create("raster", 0);
    if (file < 0 || write(file, bytes + 1, size - 1) != ssize_t(size - 1)) std::abort();
    Read(mesh, bytes[0] % 5, ("/proc/self/fd/" + std::to_string(file)).c_str());
    close(file);
    CheckMesh(mesh);
    return 0;
}
