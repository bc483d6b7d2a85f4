// Speed of the rasteriser through the table of drawing calls, as objects use it.

#include "AK_sogl.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

namespace
{

constexpr int size = 2000;   // pixels, both ways
constexpr int triangles = 1'000'000;

float At(double pixel)
{
    return float(2 * pixel / size - 1);
}

/// Two opposite corners of a cell of 5 x 4 pixels: half of it is a triangle, with ten pixels on average.
struct Cell {
    float x0, y0, x1, y1;
};

/// Halves of cells, as they lie side by side in a mesh; they cover the buffer two and a half times.
std::vector<Cell> Cells(bool shuffled)
{
    std::vector<Cell> cells;
    for (int layer = 0; int(cells.size()) < triangles; ++layer) {
        for (int y = 0; y + 4 <= size && int(cells.size()) < triangles; y += 4) {
            for (int x = 0; x + 5 <= size && int(cells.size()) < triangles; x += 5) {
                cells.push_back({At(x), At(y), At(x + 5), At(y + 4)});
                cells.push_back({At(x + 5), At(y + 4), At(x), At(y)});
            }
        }
    }
    if (shuffled) std::shuffle(cells.begin(), cells.end(), std::mt19937(1));
    return cells;
}

}   // namespace

/// One million lit triangles of ten pixels, a colour and a normal at each vertex, depth tested, into 2000 x 2000
/// pixels. Argument 1: in random order, so that hardly a triangle finds its pixels in the cache.
static void ShadedTriangles(benchmark::State& state)
{
    const std::vector<Cell> cells = Cells(state.range(0) != 0);
    AK_SetSoglContext();
    if (soglAllocBuffers(size, size)) state.SkipWithError("no buffers");
    aglEnable(GL_LIGHTING);
    for (auto _ : state) {
        aglClear(0);
        aglBegin(GL_TRIANGLES);
        for (const Cell& cell : cells) {
            aglNormal3f(0.1f, 0.2f, 0.9f);
            aglColor3f(0.9f, 0.5f, 0.1f);
            aglVertex3f(cell.x0, cell.y0, 0.1f);
            aglNormal3f(-0.1f, 0.1f, 0.9f);
            aglColor3f(0.1f, 0.5f, 0.9f);
            aglVertex3f(cell.x1, cell.y0, 0.2f);
            aglNormal3f(0.3f, -0.2f, 0.7f);
            aglColor3f(0.5f, 0.9f, 0.5f);
            aglVertex3f(cell.x1, cell.y1, 0.3f);
        }
        aglEnd();
    }
    state.counters["triangles/s"] =
        benchmark::Counter(double(cells.size()), benchmark::Counter::kIsIterationInvariantRate);
    soglFreeBuffers();
}
BENCHMARK(ShadedTriangles)->ArgName("shuffled")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
