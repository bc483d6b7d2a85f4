// Time steps on disc: what writing them costs a run, and how fast a large one is saved and loaded beside dd, which
// copies the same file through the page cache.

#include "SW_Simulation.h"
#include "SW_Simulation_Container.h"

#include "SW_InitialCondition.h"
#include "SW_Mesh_Container.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <unistd.h>

namespace {

/// A tree with a simulation on a slope of square cells, in a directory of its own.
struct Scene {
    Scene(int cells, double size, int particlesPerCell)
    {
        ak_msg_func = [](const char*, const char*) {};
        AK_Object::SetAttributesDirectory(KORVO_SOURCE_DIR "/files/AK_Attributes");
        auto* project = Added(root, new AK_Object("Project", nullptr));
        auto* meshes = Added(*project, new SW_Meshes("DHMs", nullptr));
        auto* mesh = Added(*meshes, new SW_Mesh("terrain", nullptr));
        const int n = 340;   // cells along a side
        for (int i = 0; i <= n; ++i)
            for (int j = 0; j <= n; ++j) mesh->AddVertex({i * 10.0, j * 10.0, 1000 * std::exp(-i * 0.01)});
        mesh->SetCartesianCells({n, n, 10, 0, {0, 0}, {n * 10.0, n * 10.0}});
        mesh->ComputeConnectivity();
        mesh->ComputeVertexNormals();
        auto* simulations = Added(*project, new SW_Simulations("Simulations", nullptr));
        simulations->Set("CreateSimulation", "s");
        sim = static_cast<SW_Simulation*>(simulations->ComponentAt(0));
        sim->Set("Mesh", "terrain");
        sim->ReleaseAreas().Create("release");
        AK_Polyline ring;
        const double to = 100 + cells * size;
        for (const AK_Vec& p : {AK_Vec{100, 100, 0}, {100, to, 0}, {to, to, 0}, {to, 100, 0}}) ring._x.Append(p);
        sim->ReleaseAreas().Area(0)->SetLine(ring);
        sim->ReleaseAreas().Area(0)->ProjectOnto(*mesh);
        sim->Set("MassPerParticleDeterminationMethod", "particles per cell");
        sim->Set("NumParticlesPerCell", AK_String(particlesPerCell, "%d"));
        if (!mkdtemp(directory.data())) std::abort();
        sim->ProjectDir(directory.c_str());
        sim->Initialize();
    }
    ~Scene() { AK_System::RemoveFileRecursively(directory.c_str()); }

    template <class Object>
    static Object* Added(AK_Object& parent, Object* object)
    {
        parent.AddComponent(object);
        return object;
    }

    std::string File() const { return directory + "/at_0000000.0000.TimeStep"; }

    std::string directory = "/tmp/korvo_bench_XXXXXX";
    AK_Object root{"Viewer", nullptr};
    SW_Simulation* sim = nullptr;
};

Scene& Large()
{
    static Scene scene(100, 10, 20);   // 200,000 particles
    return scene;
}

}   // namespace

static double SecondsOf(const std::function<void()>& action)
{
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// As the example on the Serles is set up: 7000 particles on 116,000 cells, a saved state every 50 steps. What a run
// with and one without them take differs by less than the runs do, so the share is that of five single ones.
static void RunWithTimeSteps(benchmark::State& state)
{
    Scene scene(12, 10, 50);
    scene.sim->Set("EndTime", "20");
    double run = 0, writing = 0;   // s
    for (auto _ : state) {
        run += SecondsOf([&] { scene.sim->Set("Run", ""); });
        for (int i = 0; i < 5; ++i) writing += SecondsOf([&] { scene.sim->SaveTimeStep(""); });
    }
    state.counters["share of writing, %"] = 100 * writing / run;
}
BENCHMARK(RunWithTimeSteps)->Unit(benchmark::kMillisecond)->Iterations(3);

static void SaveTimeStep(benchmark::State& state)
{
    for (auto _ : state) Large().sim->SaveTimeStep("");
    state.counters["particles"] = Large().sim->Particles().NumParticles();
    state.SetBytesProcessed(state.iterations() * int64_t(std::filesystem::file_size(Large().File())));
}
BENCHMARK(SaveTimeStep)->Unit(benchmark::kMillisecond);

static void LoadTimeStep(benchmark::State& state)
{
    Large().sim->SaveTimeStep("");
    for (auto _ : state) Large().sim->LoadTimeStep("at_0000000.0000");
}
BENCHMARK(LoadTimeStep)->Unit(benchmark::kMillisecond);

// What of loading is not reading: the particles' cells, fields made anew.
static void FinalizeTimeStep(benchmark::State& state)
{
    for (auto _ : state) Large().sim->LoadFinalizePriv();
}
BENCHMARK(FinalizeTimeStep)->Unit(benchmark::kMillisecond);

static void CopyTimeStepByDd(benchmark::State& state)
{
    Large().sim->SaveTimeStep("");
    const std::string command = "dd if=" + Large().File() + " of=" + Large().directory + "/copy bs=1M status=none";
    for (auto _ : state)
        if (std::system(command.c_str()) != 0) state.SkipWithError("dd failed");
}
BENCHMARK(CopyTimeStepByDd)->Unit(benchmark::kMillisecond);

static void UpdateFields(benchmark::State& state)
{
    for (auto _ : state) Large().sim->UpdateFields(0);
}
BENCHMARK(UpdateFields)->Unit(benchmark::kMillisecond);
