// Delaunay triangulation of a million points, beside Qhull on the same ones, and the memory of a point.

#include "AK_Triangulation2.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

#ifdef KORVO_HAVE_QHULL_R
extern "C" {
#include <libqhull_r/qhull_ra.h>
}
#endif

static constexpr int numPoints = 1000000;

// Random points within a square of ten kilometres, in random order.
static const AK_List<AK_Vec2>& RandomPoints()
{
    static const AK_List<AK_Vec2> points = [] {
        ak_msg_func = [](const char*, const char*) {};
        AK_List<AK_Vec2> all(numPoints);
        AK_System::srand(1);
        const auto coordinate = [] { return 1e4 * AK_System::rand() / AK_System::rand_max; };
        for (int i = 0; i < numPoints; ++i) {
            const double x = coordinate();
            all.Append({x, coordinate()});
        }
        return all;
    }();
    return points;
}

static void TriangulationOfAMillionRandomPoints(benchmark::State& state)
{
    const AK_List<AK_Vec2>& points = RandomPoints();
    const auto bytesInUse = [] {
        const struct mallinfo2 info = mallinfo2();
        return double(info.uordblks) + double(info.hblkhd);
    };
    const double before = bytesInUse();
    for (auto _ : state) {
        AK_Triangulation2 net({0, 0}, {1e4, 1e4});
        for (const AK_Vec2& p : points) net.Insert(&p);
        benchmark::DoNotOptimize(net.NumTris());
        state.PauseTiming();
        state.counters["bytes per point"] = (bytesInUse() - before) / numPoints;
        state.ResumeTiming();
    }
}
BENCHMARK(TriangulationOfAMillionRandomPoints)->Unit(benchmark::kMillisecond);

// A raster's points in shuffled order: every square is a circle through four points, so that all is decided exactly.
static void TriangulationOfAMillionPointsOfAGrid(benchmark::State& state)
{
    RandomPoints();
    AK_List<AK_Vec2> points(numPoints);
    for (int i = 0; i < 1000; ++i)
        for (int j = 0; j < 1000; ++j) points.Append({4600000.1 + 0.1 * i, 5300000.3 + 0.1 * j});
    for (int i = 0; i < numPoints; ++i) std::swap(points[i], points[AK_System::rand() % numPoints]);
    for (auto _ : state) {
        AK_Triangulation2 net({4600000, 5300000}, {4600101, 5300101});
        for (const AK_Vec2& p : points) net.Insert(&p);
        benchmark::DoNotOptimize(net.NumTris());
    }
}
BENCHMARK(TriangulationOfAMillionPointsOfAGrid)->Unit(benchmark::kMillisecond);

#ifdef KORVO_HAVE_QHULL_R
// The partner, with the options that scipy.spatial.Delaunay gives it. Facets are all that is asked for.
static void QhullOfAMillionRandomPoints(benchmark::State& state)
{
    const AK_List<AK_Vec2>& points = RandomPoints();
    for (auto _ : state) {
        qhT qhull;
        qh_zero(&qhull, stderr);
        char options[] = "qhull d Qbb Qc Qz Q12";
        double* coordinates = const_cast<double*>(&points[0].x);
        if (qh_new_qhull(&qhull, 2, numPoints, coordinates, False, options, nullptr, stderr) != 0)
            state.SkipWithError("qhull failed");
        qh_freeqhull(&qhull, !qh_ALL);
        int blocks = 0, bytes = 0;
        qh_memfreeshort(&qhull, &blocks, &bytes);
    }
}
BENCHMARK(QhullOfAMillionRandomPoints)->Unit(benchmark::kMillisecond);
#endif
