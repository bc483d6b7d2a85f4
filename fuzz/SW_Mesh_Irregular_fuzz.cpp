// Points, drawings, triangle lists and break lines: any bytes give a mesh that answers queries, or none. The first byte
// says how they are read.

#include "SW_Mesh.h"
#include "SW_Polyline_Container.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

struct RefusedTriangleList {};

}   // namespace

// A triangle list that is damaged ends the program, which here must not end with it. Every other fatal check is a
// fault.
static void Hear(const char* message, const char*)
{
    if (std::strcmp(message, "ERROR:FATAL:stream.good() failed!") == 0) throw RefusedTriangleList();
}

static SW_Mesh& Mesh()
{
    static SW_Mesh* mesh = [] {
        ak_msg_func = Hear;
        AK_Object::SetAttributesDirectory(KORVO_SOURCE_DIR "/files/AK_Attributes");
        return new SW_Mesh("m", nullptr);
    }();
    return *mesh;
}

static void CheckMesh(const SW_Mesh& mesh)
{
    for (int cell = 0; cell < mesh.NumCells(); ++cell) {
        const IA4& c = mesh._lcv[cell];
        for (int k = 0; k < 3; ++k)
            if (c[k] < 0 || c[k] >= mesh.NumVertices() || mesh._lcc[cell][k] >= mesh.NumCells()) std::abort();
        if (c[3] != -1) std::abort();
        double weights[4];
        mesh.GetWeights(cell, AK_Vec2(mesh.CellCenter(cell)), weights);   // a cell without area ends the program
    }
    for (int vertex : mesh._segments)
        if (vertex < 0 || vertex >= mesh.NumVertices()) std::abort();
    if (mesh.NumCells() > 0 && mesh.CellContainingPoint(AK_Vec2(mesh.CellCenter(0)), 0) >= mesh.NumCells())
        std::abort();
}

static void InsertIntoRaster(SW_Mesh& mesh, const AK_String& name)
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) mesh.AddVertex({10.0 * i, 10.0 * j, 5});
    mesh.SetCartesianCells({3, 3, 10, 0, {0, 0}, {30, 30}});
    mesh.ComputeConnectivity();
    AK_List<AK_Polyline> lines(1);
    SW_Polylines::LoadNxyzFile(name, lines);
    mesh.LoadPolylines(lines, 1);
}

static void Read(SW_Mesh& mesh, int way, const AK_String& name)
{
    switch (way) {
    case 0: return mesh.LoadXyz(name);
    case 1: return mesh.LoadTbp(name);
    case 2: return mesh.LoadNxyz(name);
    case 3: return mesh.LoadDxf(name);
    default: return InsertIntoRaster(mesh, name);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    if (size == 0) return 0;
    SW_Mesh& mesh = Mesh();
    mesh.Clear();
    const int file = memfd_create("points", 0);
    if (file < 0 || write(file, bytes + 1, size - 1) != ssize_t(size - 1)) std::abort();
    try {
        Read(mesh, bytes[0] % 5, ("/proc/self/fd/" + std::to_string(file)).c_str());
        CheckMesh(mesh);
    } catch (const RefusedTriangleList&) {
    }
    close(file);
    return 0;
}
