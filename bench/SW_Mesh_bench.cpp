// Terrain: import of a large raster (with the memory it takes), point location, neighbours of a large irregular mesh.

#include "SW_Mesh.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
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

// A raster of four million values and what GDAL makes of it, in a directory that lasts as long as the program.
class RasterFile {
public:
    RasterFile()
    {
        std::FILE* file = mkdtemp(_directory) ? std::fopen(Path().c_str(), "w") : nullptr;
        if (!file) std::abort();
        std::fprintf(file, "ncols %d\nnrows %d\nxllcenter 0\nyllcenter 0\ncellsize 5\nNODATA_value -9999\n", rasterSize,
                     rasterSize);
        for (int j = 0; j < rasterSize; ++j) {
            for (int i = 0; i < rasterSize; ++i)
                std::fprintf(file, "%.2f ", 1500 + 0.37 * i + 0.11 * (j * 7919 % 1000));
            std::fputc('\n', file);
        }
        std::fclose(file);
    }
    ~RasterFile()
    {
        std::remove(Path().c_str());
        std::remove(TiffPath().c_str());
        std::remove(_directory);
    }
    std::string Path() const { return std::string(_directory) + "/raster.asc"; }
    std::string TiffPath() const { return std::string(_directory) + "/raster.tif"; }

private:
    char _directory[32] = "/tmp/korvo_bench_XXXXXX";
};

static const RasterFile& Raster()
{
    static const RasterFile raster;
    return raster;
}

static void ImportOfFourMillionValues(benchmark::State& state)
{
    const std::string path = Raster().Path();
    for (auto _ : state) {
        auto mesh = NewMesh();
        mesh->Import(path.c_str(), 0);
        benchmark::DoNotOptimize(mesh->NumCells());
    }
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    state.counters["peak bytes per vertex"] = usage.ru_maxrss * 1024.0 / (double(rasterSize) * rasterSize);
}
BENCHMARK(ImportOfFourMillionValues)->Unit(benchmark::kMillisecond)->UseRealTime();

// The partner of the import: the same file into a GeoTIFF.
static void GdalTranslateOfFourMillionValues(benchmark::State& state)
{
    const std::string command = "gdal_translate -q " + Raster().Path() + " " + Raster().TiffPath();
    for (auto _ : state)
        if (std::system(command.c_str()) != 0) state.SkipWithError("gdal_translate failed");
}
BENCHMARK(GdalTranslateOfFourMillionValues)->Unit(benchmark::kMillisecond)->UseRealTime();

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
                total += w[0] + w[1] + w[2] + w[3];
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
    const bool shuffled = state.range(0) != 0;   // cells in no order, as they come from other programs
    const auto grid = Grid(1000);
    auto mesh = NewMesh();
    mesh->_x = grid->_x;
    for (const IA4& c : grid->_lcv) {
        mesh->_lcv.Append({{c[0], c[1], c[2], -1}});
        mesh->_lcv.Append({{c[0], c[2], c[3], -1}});
    }
    if (shuffled) std::shuffle(mesh->_lcv.begin(), mesh->_lcv.end(), std::mt19937(1));
    for (auto _ : state) mesh->ComputeConnectivity();
}
BENCHMARK(ConnectivityOfTwoMillionTriangles)->ArgName("shuffled")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
