// Time-step files of any content: what was loaded, or nothing, is a valid state that is saved and loaded again.

#include "SW_Simulation.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>

static SW_Simulation* MakeSimulation()
{
    ak_msg_func = [](const char*, const char*) {};
    AK_Object::SetAttributesDirectory(KORVO_SOURCE_DIR "/files/AK_Attributes");
    auto* root = new AK_Object("Viewer", nullptr);
    auto* mesh = new SW_Mesh("terrain", nullptr);
    for (int i = 0; i <= 2; ++i)
        for (int j = 0; j <= 1; ++j) mesh->AddVertex({i * 10.0, j * 10.0, i * -5.0});
    mesh->SetCartesianCells({2, 1, 10, 0, {0, 0}, {20, 10}});
    mesh->ComputeConnectivity();
    mesh->ComputeVertexNormals();
    root->AddComponent(mesh);
    auto* sim = new SW_Simulation("avalanche", root);
    root->AddComponent(sim);
    sim->Set("Mesh", "../terrain");
    static std::string directory = "/tmp/korvo_fuzz_XXXXXX";
    if (!mkdtemp(directory.data())) std::abort();
    sim->ProjectDir(directory.c_str());
    std::atexit([] { AK_System::RemoveFileRecursively(directory.c_str()); });
    return sim;
}

static void CheckState(SW_Simulation& sim)
{
    const SW_Particles& particles = sim.Particles();
    const int n = particles.NumParticles();
    if (particles.Position().NumVertices() != n || particles.Mass()._values.Size() != n ||
        particles.Velocity()._values.Size() != n || particles.TotalEnthalpy()._values.Size() != n)
        std::abort();
    for (int cell : particles.cell)
        if (cell < 0 || cell >= sim.Mesh()->NumCells()) std::abort();
    if (static_cast<SW_ScalarField*>(sim.Component("FlowDepth"))->_values.Size() != sim.Mesh()->NumVertices())
        std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    static SW_Simulation* const sim = MakeSimulation();
    const AK_String directory = sim->ProjectDir();
    std::ofstream((directory + "/input.TimeStep").c_str(), std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes), std::streamsize(size));
    AK_Object::_execStatus = "";
    sim->LoadTimeStep("input");
    CheckState(*sim);
    if (!AK_Object::_execStatus.IsEmpty()) return 0;

    const int n = sim->Particles().NumParticles();
    sim->SaveTimeStep("");
    if (!AK_Object::_execStatus.IsEmpty()) return 0;   // a time that makes no name of a file
    const AK_String saved = sim->Get("CurrentTimeStep");
    sim->LoadTimeStep(saved);
    if (!AK_Object::_execStatus.IsEmpty() || sim->Particles().NumParticles() != n) std::abort();
    CheckState(*sim);
    AK_System::RemoveFile(directory + "/" + saved + ".TimeStep");
    return 0;
}
