// One time step of an avalanche of 200,000 particles: what a particle costs, what an SPH neighbour costs, what workers
// bring.

#include "SW_Mesh_Container.h"
#include "SW_Simulation.h"
#include "SW_Simulation_Container.h"
#include "SW_WallLine.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int numParticles = 200000;
constexpr int size = 400;     // cells in each direction
constexpr double dx = 5;      // m
constexpr double dt = 1e-3;   // s: the flow hardly changes while it is measured
constexpr double massPerParticle = 2000;

void Silent(const char*, const char*) {}

double Now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

/// A flow on a rough slope with 5 particles in each of its cells, moving.
class Scene {
public:
    explicit Scene(const char* sphMode, int count = numParticles)
    {
        ak_msg_func = Silent;
        AK_Object::SetAttributesDirectory(KORVO_SOURCE_DIR "/files/AK_Attributes");
        _root = std::make_unique<AK_Object>("Viewer", nullptr);
        auto* project = new AK_Object("Project", nullptr);
        _root->AddComponent(project);
        auto* meshes = new SW_Meshes("DHMs", nullptr);
        project->AddComponent(meshes);
        auto* simulations = new SW_Simulations("Simulations", nullptr);
        project->AddComponent(simulations);
        SW_Mesh* mesh = meshes->CreateMesh("terrain");
        for (int i = 0; i <= size; ++i)
            for (int j = 0; j <= size; ++j)
                mesh->AddVertex({dx * i, dx * j, 3000 - 0.5 * dx * i + std::sin(0.3 * i) + std::cos(0.2 * j)});
        mesh->SetCartesianCells({size, size, dx, 0, {0, 0}, {dx * size, dx * size}});
        mesh->ComputeConnectivity();
        mesh->ComputeVertexNormals();
        simulations->Set("CreateSimulation", "avalanche");
        sim = static_cast<SW_Simulation*>(simulations->Component("avalanche"));
        sim->Set("Mesh", "terrain");
        sim->Set("MassPerParticle", AK_String(massPerParticle, "%g"));
        sim->Set("SphMode", sphMode);
        sim->Set("GlobalEntrainmentAreaWeight", "1");
        sim->InitializeCellEntrainmentMass();
        wallCells.Fill(mesh->NumCells(), 0);
        AK_System::srand(1);
        const auto draw = [] { return AK_System::rand() / 2147483647.0; };
        for (int i = 0; i < count; ++i)   // 200 x 200 of the cells, in the order in which a release makes them
            sim->Particles().AddParticle({500 + dx * (i / 1000 + draw()), 500 + dx * (i % 1000 / 5 + draw()), 0},
                                         float(massPerParticle), {20 + draw(), draw(), -10}, 20000, 0, -1);
        sim->UpdateFields(0);
        Step();
    }

    void Step() { sim->ComputeTimeStep(1, dt, wallCells); }

    SW_Simulation* sim;
    AK_List<unsigned char> wallCells{1};

private:
    std::unique_ptr<AK_Object> _root;
};

constexpr double cos2Phi = 0.671, tan2Phi = 0.490, tanDelta = 0.287;

/// Runs the loop of a benchmark; the counter gets the ns that one of `items` takes.
template <class Work>
void Measure(benchmark::State& state, const char* counter, double items, const Work& work)
{
    const double start = Now();
    for (auto _ : state) work();
    state.counters[counter] = (Now() - start) * 1e9 / double(state.iterations()) / items;
}

}   // namespace

// ---- column sampling, one thread

static void WholeStep(benchmark::State& state)
{
    Scene scene("0");
    Measure(state, "ns per particle", numParticles, [&] { scene.Step(); });
    const SW_Particles& p = scene.sim->Particles();
    const auto bytes = [](const auto& list) { return double(list.Capacity()) * sizeof(list[0]); };
    const double floats = bytes(p.depth) + bytes(p.dragCoefficient) + bytes(p.shearRatio) + bytes(p.entrainedMass) +
                          bytes(p.enthalpySource) + bytes(p.enthalpyDiffusion) + bytes(p.bottomForce);
    const double all = floats + bytes(p.force) + bytes(p.cell) + bytes(p.tag) + bytes(p.Position()._x) +
                       bytes(p.Mass()._values) + bytes(p.Velocity()._values) + bytes(p.TotalEnthalpy()._values);
    state.counters["bytes per particle"] = all / numParticles;
}
BENCHMARK(WholeStep)->Unit(benchmark::kMillisecond);

static void LoopsOverVertices(benchmark::State& state)   // the same without a particle
{
    Scene scene("0", 0);
    Measure(state, "ns per particle", numParticles, [&] { scene.Step(); });
}
BENCHMARK(LoopsOverVertices)->Unit(benchmark::kMillisecond);

static void BodyForces(benchmark::State& state)
{
    Scene scene("0");
    Measure(state, "ns per particle", numParticles,
            [&] { ComputeBodyForces(scene.sim, 0, numParticles, 0, dt, tanDelta, frictionClassic); });
}
BENCHMARK(BodyForces)->Unit(benchmark::kMillisecond);

static void LateralForces(benchmark::State& state)
{
    Scene scene("0");
    const AK_List<int> none(1);
    Measure(state, "ns per particle", numParticles, [&] {
        ComputeLateralForces(scene.sim, 0, numParticles, dt, cos2Phi, tan2Phi, 0, 0, 0, 0, 1, {}, 1, &none, &none, 0);
    });
}
BENCHMARK(LateralForces)->Unit(benchmark::kMillisecond);

static void Positions(benchmark::State& state)
{
    Scene scene("0");
    Measure(state, "ns per particle", numParticles,
            [&] { UpdatePositions(scene.sim, 0, numParticles, 1e-6, -1, &scene.wallCells); });
}
BENCHMARK(Positions)->Unit(benchmark::kMillisecond);

// ---- SPH: the neighbours that the three ranges hold, within the radius or not

static void SphPairs(benchmark::State& state)
{
    Scene scene("2");
    SW_Particles& p = scene.sim->Particles();
    const double r = 2 * dx;
    const int n = int(size * dx / r + 1);
    const auto cellOf = [&](const AK_Vec& x) { return int(x.y / r) * n + int(x.x / r); };
    AK_List<int> counts(1), sorted(1);
    counts.Fill(n * n + 1, 0);
    sorted.Fill(numParticles, 0);
    for (const AK_Vec& x : p.Position()._x) ++counts[cellOf(x)];
    for (int c = 1; c <= n * n; ++c) counts[c] += counts[c - 1];
    for (int i = 0; i < numParticles; ++i) sorted[--counts[cellOf(p.Position()._x[i])]] = i;
    double pairs = 0;
    for (const AK_Vec& x : p.Position()._x)
        for (int row = -1; row <= 1; ++row) {
            const int first = cellOf(x) + row * n - 1;
            pairs += counts[first + 3] - counts[first];
        }
    const double grad = -30 / (M_PI * std::pow(r, 5));
    Measure(state, "ns per pair", pairs, [&] {
        ComputeLateralForces(scene.sim, 0, numParticles, dt, cos2Phi, tan2Phi, 2, r, grad, -2 * grad, n, {}, r, &counts,
                             &sorted, 0);
    });
    state.counters["neighbours"] = pairs / numParticles;
}
BENCHMARK(SphPairs)->Unit(benchmark::kMillisecond);

// ---- two workers against two runs of one thread each, at the same time

static double SecondsPerStep(Scene& scene)
{
    static constexpr int steps = 12;
    const double start = Now();
    for (int k = 0; k < steps; ++k) scene.Step();
    return (Now() - start) / steps;
}

static void TwoWorkersAgainstTwoRuns(benchmark::State& state)
{
    Scene scene(state.range(0) ? "1" : "0");
    for (auto _ : state) {
        scene.sim->Set("$n_threads", "");
        const pid_t other = fork();
        if (other == 0)
            for (;;) scene.Step();
        const double ofTwo = SecondsPerStep(scene);   // both cores are busy with a run of their own
        kill(other, SIGKILL);
        waitpid(other, nullptr, 0);
        const double alone = SecondsPerStep(scene);
        scene.sim->Set("$n_threads", "2");
        const double together = SecondsPerStep(scene);
        state.counters["share of two runs"] = ofTwo / (2 * together);
        state.counters["ms alone"] = alone * 1e3;
        state.counters["ms two workers"] = together * 1e3;
    }
}
BENCHMARK(TwoWorkersAgainstTwoRuns)->Arg(0)->Arg(1)->ArgName("sph")->Iterations(1)->Unit(benchmark::kMillisecond);
