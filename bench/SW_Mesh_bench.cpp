// Terrain: import of a large raster (with the memory it takes), point location, neighbours of a large irregular mesh.

#include "SW_Mesh.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/resource.h>

static void Silent(const char*, const char*) {}

static std::unique_ptr<SW_Mesh> NewMesh()
{
    ak_msg_func = Silent;
    AK_Object::SetAttributesDirectory(KORVO_SOURCE_DIR "/files/AK_Attributes");
    return std::make_unique<SW_Mesh>("m", nullptr);
}

static constexpr int rasterSize = 2000;
static const std::string rasterFile = "/tmp/korvo_bench.asc";

static void WriteRaster()
{
    std::FILE* file = std::fopen(rasterFile.c_str(), "w");
    std::fprintf(file, "ncols %d\nnrows %d\nxllcenter 0\nyllcenter 0\ncellsize 5\nNODATA_value -9999\n", rasterSize,
                 rasterSize);
    for (int j = 0; j < rasterSize; ++j) {
        for (int i = 0; i < rasterSize; ++i) std::fprintf(file, "%.2f ", 1500 + 0.37 * i + 0.11 * (j * 7919 % 1000));
        std::fputc('\n', file);
    }
    std::fclose(file);
}

static void ImportOfFourMillionValues(benchmark::State& state)
{
    WriteRaster();
    for (auto _ : state) {
        auto mesh = NewMesh();
        mesh->Import(rasterFile.c_str(), 0);
        benchmark::DoNotOptimize(mesh->NumCells());
    }
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    state.counters["peak bytes per vertex"] = usage.ru_maxrss * 1024.0 / (double(rasterSize) * rasterSize);
}
BENCHMARK(ImportOfFourMillionValues)->Unit(benchmark::kMillisecond);

// The partner of the import: the same file into a GeoTIFF.
static void GdalTranslateOfFourMillionValues(benchmark::State& state)
{
    const std::string command = "gdal_translate -q " + rasterFile + " /tmp/korvo_bench.tif";
    for (auto _ : state)
        if (std::system(command.c_str()) != 0) state.SkipWithError("gdal_translate failed");
    std::remove("/tmp/korvo_bench.tif");
    std::remove(rasterFile.c_str());
}
BENCHMARK(GdalTranslateOfFourMillionValues)->Unit(benchmark::kMillisecond);

static std::unique_ptr<SW_Mesh> Grid(int n)
{
    auto mesh = NewMesh();
    for (int i = 0; i <= n; ++i)
        for (int j = 0; j <= n; ++j) mesh->AddVertex({5.0 * i, 5.0 * j, 0.1 * i});
    mesh->SetCartesianCells({n, n, 5, 0, {0, 0}, {5.0 * n, 5.0 * n}});
    return mesh;
}

static void PointLocationWithWeightsOnAGrid(benchmark::State& state)
{
    const auto mesh = Grid(500);
    AK_List<AK_Vec2> points(1);
    for (int i = 0; i < 4096; ++i) points.Append({AK_System::rand() % 2500 + 0.3, AK_System::rand() % 2500 + 0.7});
    for (auto _ : state) {
        const double sum = mesh->WithView([&](const auto& view) {
            double total = 0;
            for (const AK_Vec2& p : points) {
                double w[4];
                view.GetWeights(view.CellContainingPoint(p, 0), p, w);
                total += w[0] + w[3];
            }
            return total;
        });
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * points.Size());
}
BENCHMARK(PointLocationWithWeightsOnAGrid);

static void ConnectivityOfTwoMillionTriangles(benchmark::State& state)
{
    const auto grid = Grid(1000);
    auto mesh = NewMesh();
    mesh->_x = grid->_x;
    for (const IA4& c : grid->_lcv) {
        mesh->_lcv.Append({{c[0], c[1], c[2], -1}});
        mesh->_lcv.Append({{c[0], c[2], c[3], -1}});
    }
    for (auto _ : state) mesh->ComputeConnectivity();
}
BENCHMARK(ConnectivityOfTwoMillionTriangles)->Unit(benchmark::kMillisecond);
