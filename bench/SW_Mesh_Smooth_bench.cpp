// Terrain: what it costs to smooth a large mesh, to turn its edges, and to lay a grid over it.

#include "SW_Mesh.h"

#include <benchmark/benchmark.h>

static void Silent(const char*, const char*) {}

static constexpr int cellsPerSide = 1000;

// Two million triangles over a million vertices of rough heights.
static std::unique_ptr<SW_Mesh> RoughTriangles()
{
    ak_msg_func = Silent;
    AK_Object::SetAttributesDirectory(KORVO_SOURCE_DIR "/files/AK_Attributes");
    auto mesh = std::make_unique<SW_Mesh>("m", nullptr);
    for (int i = 0; i <= cellsPerSide; ++i)
        for (int j = 0; j <= cellsPerSide; ++j) mesh->AddVertex({5.0 * i, 5.0 * j, AK_System::rand() % 1000 * 0.01});
    for (int i = 0; i < cellsPerSide; ++i)
        for (int j = 0; j < cellsPerSide; ++j) {
            const int a = i * (cellsPerSide + 1) + j;
            const int b = a + cellsPerSide + 1;
            mesh->_lcv.Append({{a, b, b + 1, -1}});
            mesh->_lcv.Append({{a, b + 1, a + 1, -1}});
        }
    mesh->ComputeConnectivity();
    return mesh;
}

// Ten rounds of two passes each, over the cells and over the vertices.
static void SmoothingOfAMillionVertices(benchmark::State& state)
{
    const auto mesh = RoughTriangles();
    AK_List<AK_Vec> x = mesh->_x;
    for (auto _ : state) mesh->SmoothVectorsAtVertices(x, 10);
}
BENCHMARK(SmoothingOfAMillionVertices)->Unit(benchmark::kMillisecond);

// One pass over all edges, most of which are looked at and left as they are.
static void MinimizingTheCurvatureOfTwoMillionTriangles(benchmark::State& state)
{
    const auto mesh = RoughTriangles();
    for (auto _ : state) benchmark::DoNotOptimize(mesh->MinimizeCurvature());
}
BENCHMARK(MinimizingTheCurvatureOfTwoMillionTriangles)->Unit(benchmark::kMillisecond);

// A million points of a grid take their heights from two million triangles.
static void ProjectingAMillionPoints(benchmark::State& state)
{
    const auto mesh = RoughTriangles();
    SW_Mesh grid("grid", nullptr);
    grid.Set("Dx", "4.9");
    grid.Set("Xor", "4904 4904");
    grid.SetToCartesianGrid();
    for (auto _ : state) grid.ProjectOnto(mesh.get());
}
BENCHMARK(ProjectingAMillionPoints)->Unit(benchmark::kMillisecond);
