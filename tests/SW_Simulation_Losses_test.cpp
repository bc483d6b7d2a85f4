// What a user could lose to a file that is cut, gone or of something else: projects with states of runs, friction laws
// that are files. Each is tried in a loop over many such files.

#include "SW_Simulation_Fixture.h"

class SW_Simulation_Losses : public SimulationTest {
protected:
    SW_Simulation_Losses()
    {
        OnMesh(30, 10, 10, Incline(30));
        Release({30, 30}, {60, 60}, 1);
        Set({{"EndTime", "1"}, {"DeltaOut", "1"}, {"NumParticlesPerCell", "4"}, {"Remark", "the first"}});
        simulations->Set("CreateSimulation", "behind");
        simulations->Component("behind")->Set("Remark", "loads last");
    }

    void Load()
    {
        sim->Set("Remark", "");
        simulations->Component("behind")->Set("Remark", "");
        Messages();
        root.Set("LoadProject", directory / "p");
    }

    AK_String SimulationFile(const char* name) const { return directory / "p/Project/Simulations/avalanche/" + name; }

    std::string law = "double mu = 0.2;\n"
                      "double tau(double p, double v, double h, double rho, double t, double x[], double n[], double e)"
                      " { return mu * p; }\n"
                      "void set_par(char text[]) { sscanf(text, \"mu=%lf\", mu); }\n"
                      "void get_par(char text[]) { sprintf(text, \"mu=%g\", mu); }\n";
};

TEST_F(SW_Simulation_Losses, AProjectLoadsWithoutAStateThatIsNone)
{
    root.Set("SaveProjectAs", directory / "p");
    sim->Set("Run", "");
    root.Set("SaveProject", "");
    ASSERT_EQ(Text("CurrentTimeStep"), "at_0000001.0000");
    const AK_String state = SimulationFile("at_0000001.0000.TimeStep");
    const std::string whole = FileBytes(state);
    const std::string mass = Text("CurrentMass");
    const auto broken = [&](const std::string& why) {
        Load();
        EXPECT_EQ(AK_Object::_execStatus, "") << why;
        EXPECT_TRUE(Said("WARNING: simulation avalanche is loaded without its state: time step at_0000001.0000"))
            << why;
        EXPECT_EQ(Text("Remark"), "the first") << why;
        EXPECT_STREQ(simulations->Component("behind")->Get("Remark").c_str(), "loads last") << why;
        EXPECT_EQ(sim->ReleaseAreas().NumComponents(), 1) << why;
    };
    for (std::size_t n = 0; n < whole.size(); n += 97) {
        WriteFile(state, whole.substr(0, n));
        broken("cut to " + std::to_string(n));
    }
    AK_System::RemoveFile(state);
    broken("no file");
    AK_System::CreateDir(state);
    broken("a directory");
    AK_System::RemoveFile(state);
    WriteFile(state, whole);
    Load();
    EXPECT_FALSE(Said("WARNING: "));
    EXPECT_EQ(Text("CurrentMass"), mass);

    // The mesh has other cells than when the state was saved.
    meshes->Component("terrain")->Set("Id", "former");
    OnMesh(40, 12, 8, Incline(25));
    meshes->Set("DeleteComponent", "former");
    mesh->Set("SaveAs", directory / "p/Project/DHMs/terrain");
    broken("of another mesh");
    // What was loaded is saved whole elsewhere.
    root.Set("SaveProjectAs", directory / "q");
    EXPECT_EQ(AK_Object::_execStatus, "");
    for (const char* id : {"avalanche", "behind"})
        EXPECT_TRUE(AK_System::FileExists(directory / "q/Project/Simulations/" + id + "/ShallowWaterSimulation.atr"));
}

TEST_F(SW_Simulation_Losses, ALawOfAFileStaysOrARunIsRefused)
{
    AK_System::CreateDir(directory / "laws");
    const AK_String file = directory / "laws/own.cint";
    WriteFile(file, law);
    Set({{"FrictionType", ""}, {"BottomShearStressFormulaFile", file.c_str()}, {"FormulaParameters", "mu=0.35"}});
    root.Set("SaveProjectAs", directory / "p");
    simulations->Set("CloneSimulation", "avalanche");
    const AK_Object* clone = simulations->Component("avalanche_cloned");
    EXPECT_STREQ(clone->Get("FormulaParameters").c_str(), "mu=0.35");
    EXPECT_STREQ(clone->Get("BottomShearStressFormulaFile").c_str(), "own");
    simulations->Set("DeleteComponent", "avalanche_cloned");

    const auto refused = [&](const std::string& why) {
        Load();
        EXPECT_EQ(AK_Object::_execStatus, "") << why;
        EXPECT_TRUE(Said("WARNING: simulation avalanche: the friction law cannot be loaded from ")) << why;
        for (const char* command : {"Run", "RunInBackground"}) {
            sim->Set(command, "");
            EXPECT_EQ(AK_Object::_execStatus,
                      AK_String("simulation avalanche is not started: the friction law cannot be loaded from ") + file)
                << why;
        }
        EXPECT_EQ(Number("CurrentMass"), 0) << why;
        root.Set("SaveProject", "");   // opened and saved where the file is not: nothing of it is lost
        sim->Set("Remark", "changed");
        root.Set("SaveProject", "");
        sim->Set("Remark", "the first");
    };
    for (std::size_t n = 0; n + 160 < law.size(); n += 7) {
        WriteFile(file, law.substr(0, n));
        refused("cut to " + std::to_string(n));
    }
    WriteFile(file, "void set_par(char text[]) { } void get_par(char text[]) { }\n");
    refused("no law in it");
    AK_System::RemoveFile(file);
    refused("no file");
    WriteFile(file, law);
    Load();
    EXPECT_FALSE(Said("WARNING: "));
    EXPECT_EQ(Text("FormulaParameters"), "mu=0.35");
    sim->Set("Run", "");
    EXPECT_EQ(AK_Object::_execStatus, "");
    EXPECT_GT(Number("CurrentMass"), 0);
}
