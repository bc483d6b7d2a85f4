// Run control: what starts and what is refused, the loop and its ends, status files, runs that go on, any number of
// threads, the macro of a background run.

#include "SW_Simulation_Fixture.h"

#include <filesystem>
#include <functional>
#include <map>

class SW_Simulation_Run : public SimulationTest {
protected:
    /// A release of about 500 particles on a chute, runs of a few seconds.
    SW_Simulation_Run() { MakeScenario(); }

    void MakeScenario()
    {
        OnMesh(60, 20, 10, Chute);
        Release({30, 60}, {90, 140}, 1);
        Set({{"EndTime", "2"}, {"DeltaOut", "0.5"}, {"DeltaT", "0.1"}});
        Set({{"MassPerParticleDeterminationMethod", "particles per cell"}, {"NumParticlesPerCell", "10"}});
        for (const char* name : {"$n_threads", "$stop_crit", "$source_strength"}) sim->Set(name, "");
    }

    /// Saves into a directory of that name and runs there.
    void RunIn(const char* name)
    {
        simulations->ProjectDir(directory / name);
        AK_System::CreateDirRecursively(sim->ProjectDir());
        sim->Set("Run", "");
    }

    using Files = std::map<std::string, std::string>;

    /// The time steps of a run by their names.
    Files StepsIn(const char* name) const
    {
        Files files;
        const AK_String run = directory / name + "/avalanche";
        for (const AK_String& file : AK_System::FilesList(run, "TimeStep"))
            files[file.c_str()] = FileBytes(run + "/" + file);
        return files;
    }

    static std::string Names(const Files& files)
    {
        std::string names;
        for (const auto& [name, bytes] : files) names += name.substr(8, 7) + " ";
        return names;
    }

    AK_String RunFile(const char* run, const char* file) const { return directory / run + "/avalanche/" + file; }

    /// Calls `act` before the n-th step from now.
    void BeforeStep(int n, std::function<int()> act)
    {
        Step() = 0;
        Act() = [n, act] { return ++Step() == n ? act() : 0; };
        AK_Object::_signalFunction = [] { return Act()(); };
    }

    ~SW_Simulation_Run() override { AK_Object::_signalFunction = nullptr; }

private:
    static int& Step()
    {
        static int step;
        return step;
    }
    static std::function<int()>& Act()
    {
        static std::function<int()> act;
        return act;
    }
};

// ----------------------------------------------------------------------------------------------------------------
// Starting
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_Simulation_Run, WhatCannotRunIsRefusedInWords)
{
    RunIn("run");
    const Files before = StepsIn("run");
    const struct {
        const char* attribute;
        const char* value;
        const char* message;
    } cases[] = {
        {"Mesh", "", "INFO: simulation avalanche has no valid mesh assigned!"},
        {"DeltaT", "0", "WARNING: simulation avalanche is not started: DeltaT"},
        {"DeltaT", "nan", "WARNING: simulation avalanche is not started: DeltaT"},
        {"DeltaT", "1e-20", "WARNING: simulation avalanche is not started: DeltaT"},
        {"DeltaT", "1e-10", "WARNING: simulation avalanche is not started: DeltaT"},
        {"DeltaOut", "0.04", "WARNING: simulation avalanche is not started: DeltaOut"},
        {"DeltaOut", "nan", "WARNING: simulation avalanche is not started: DeltaOut"},
        {"EndTime", "inf", "WARNING: simulation avalanche is not started: EndTime"},
        {"$n_threads", "-1", "WARNING: simulation avalanche is not started: $n_threads"},
        {"$n_threads", "257", "WARNING: simulation avalanche is not started: $n_threads"},
        {"$n_threads", "4294967296", "WARNING: simulation avalanche is not started: $n_threads"},
        {"FrictionType", "no such law", "WARNING: "},
        {"NumParticlesPerCell", "1e12", "WARNING: simulation avalanche is not started: MassPerParticle"},
    };
    for (const auto& c : cases) {
        const AK_String former = sim->Get(c.attribute);
        sim->Set(c.attribute, c.value);
        Messages();
        for (const char* command : {"Run", "Continue"}) {
            sim->Set(command, "");
            EXPECT_TRUE(Said(c.message)) << command << " with " << c.attribute << " = " << c.value;
        }
        sim->Set(c.attribute, former);
    }
    EXPECT_EQ(StepsIn("run"), before);

    sim->ReleaseAreas().DeleteAll();
    sim->Set("Run", "");
    EXPECT_TRUE(Said("INFO: No release areas defined! Simulation will not be started!"));
    sim->Set("RunInBackground", "");
    EXPECT_TRUE(Said("INFO: no release areas defined! Simulation will not be started!"));
    AK_Object::_lang = 1;
    sim->Set("Run", "");
    EXPECT_TRUE(Said("INFO: Keine Anbruchgebiete definiert! Simulation wird nicht gestartet!"));
    AK_Object::_lang = 0;
    Set({{"$source_strength", "100"}, {"MassPerParticleDeterminationMethod", "direct"}, {"MassPerParticle", "0"}});
    sim->Set("Run", "");
    EXPECT_TRUE(Said("WARNING: simulation avalanche is not started: MassPerParticle"));
}

TEST_F(SW_Simulation_Run, RunVisFollowsMeshAndStatus)
{
    sim->ProjectDir(directory.Path());
    const struct {
        const char* status;
        const char* vis;
    } cases[] = {{"started", "r"}, {"running", "r"}, {"finished", "w"}, {"interrupted", "w"}, {"unknown", "w"}};
    for (const auto& c : cases) {
        sim->SetStatus(c.status);
        EXPECT_EQ(Text("RunVis"), c.vis) << c.status;
        EXPECT_EQ(Text("ContinueVis"), c.vis) << c.status;
    }
    sim->Set("InteractionTypeWithFluidAbove", "particles suspension");
    EXPECT_EQ(Text("RunVis"), "r");
    sim->Set("PsaMesh", "../../DHMs/terrain");
    EXPECT_EQ(Text("RunVis"), "w");
    EXPECT_EQ(Text("ContinueVis"), "r");
    WriteFile(directory / "restart", "");
    sim->Set("$psaRestartFile", "restart");
    EXPECT_EQ(Text("ContinueVis"), "w");
    sim->Set("Mesh", "");
    EXPECT_EQ(Text("RunVis"), "r");
}

TEST_F(SW_Simulation_Run, StatusFilesHoldAnything)
{
    sim->ProjectDir(directory.Path());
    EXPECT_EQ(Text("Status"), "unknown");
    EXPECT_EQ(Text("StatusInfo"), "");
    const struct {
        std::string bytes, word;
    } cases[] = {{"running\n", "running"},
                 {"", "unknown"},
                 {"\n", "unknown"},
                 {"  finished x", "finished"},
                 {std::string(5000, 'x'), std::string(63, 'x')},
                 {std::string(3, '\0'), "unknown"}};
    for (const auto& c : cases) {
        WriteFile(directory / ".simulation_status", c.bytes);
        EXPECT_EQ(Text("Status"), c.word);
    }
    sim->Set("Interrupt", "");
    EXPECT_EQ(FileBytes(directory / ".simulation_status"), "interrupted\n");
}

TEST_F(SW_Simulation_Run, WithoutADirectoryItRunsAndSavesNothing)
{
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(directory.Path().c_str());
    sim->Set("Run", "");
    std::filesystem::current_path(before);
    const auto messages = Messages();
    EXPECT_EQ(std::count(messages.begin(), messages.end(), "WARNING: Save project first!"), 1);
    EXPECT_EQ(std::count(messages.begin(), messages.end(),
                         "WARNING: Save project first, otherwise output data cannot be saved!"),
              1);
    EXPECT_NEAR(Number("CurrentTime"), 2, 1e-9);
    EXPECT_EQ(FileBytes(directory / ".simulation_status"), "finished\n");
    EXPECT_EQ(Joined(AK_System::FilesList(directory.Path(), "TimeStep")), "");
}

// ----------------------------------------------------------------------------------------------------------------
// The loop and its ends
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_Simulation_Run, EndsAtTheStepNextToTheEndTime)
{
    const struct {
        const char *end, *deltaOut;
        double last;
        const char* steps;
    } cases[] = {{"2", "0.5", 2, "00.0000 00.5000 01.0000 01.5000 02.0000 "},
                 {"1.04", "0.5", 1.0, "00.0000 00.5000 01.0000 "},
                 {"1.06", "0.5", 1.1, "00.0000 00.5000 01.0000 01.1000 "},
                 {"0.3", "0.05", 0.3, "00.0000 00.1000 00.2000 00.3000 "},
                 {"0.3", "1e300", 0.3, "00.0000 00.3000 "},
                 {"0", "0.5", 0, "00.0000 "}};
    for (const auto& c : cases) {
        Set({{"EndTime", c.end}, {"DeltaOut", c.deltaOut}});
        RunIn("run");
        EXPECT_NEAR(Number("CurrentTime"), c.last, 1e-9) << c.end;
        EXPECT_EQ(Names(StepsIn("run")), c.steps) << c.end << " by " << c.deltaOut;
        EXPECT_EQ(Text("Status"), "finished");
    }
}

static std::string WithoutNumbers(const std::string& text)
{
    std::string result;
    for (char c : text) {
        if (!AK_String::IsDigit(c))
            result += c;
        else if (result.empty() || result.back() != '#')
            result += '#';
    }
    return result;
}

TEST_F(SW_Simulation_Run, TellsHowFarItIs)
{
    std::string running, info;
    BeforeStep(11, [&] {
        running = Text("Status");
        info = Text("StatusInfo");
        return 0;
    });
    RunIn("run");
    EXPECT_EQ(running, "running");
    EXPECT_EQ(WithoutNumbers(info), "at time # s, run time #:#:#, estimated remaining run time #:#:#, CPU time #:#:#");
    EXPECT_EQ(info.rfind("at time 1 s", 0), 0u) << info;
    EXPECT_EQ(Text("$endITC"), "2");
    EXPECT_TRUE(Said("simulation avalanche terminated; CPU time "));
    EXPECT_GT(Number("PeakKineticEnergy"), 0);
}

TEST_F(SW_Simulation_Run, IsInterruptedByTheStatusFileOrTheFrontEnd)
{
    BeforeStep(8, [&] {
        sim->Interrupt();
        return 0;
    });
    RunIn("byFile");
    EXPECT_EQ(AK_Object::_execStatus, "");
    EXPECT_NEAR(Number("CurrentTime"), 0.8, 1e-9) << "the step that was begun is the last";
    EXPECT_EQ(Text("Status"), "finished");

    BeforeStep(8, [] { return 1; });
    RunIn("bySignal");
    EXPECT_EQ(AK_Object::_execStatus, "interrupted") << "so that the macro ends too";
    EXPECT_NEAR(Number("CurrentTime"), 0.7, 1e-9);
    EXPECT_EQ(Names(StepsIn("bySignal")), "00.0000 00.5000 ");
}

TEST_F(SW_Simulation_Run, StopsByACriterionOneStepLater)
{
    Set({{"$stop_crit", "Remark"}, {"Remark", "enough"}});
    RunIn("stopped");
    EXPECT_NEAR(Number("CurrentTime"), 0.2, 1e-9);
    EXPECT_EQ(Names(StepsIn("stopped")), "00.0000 00.2000 ");
    EXPECT_TRUE(Said("simulation avalanche STOPPED:\nenough"));
    EXPECT_EQ(Text("StatusInfo"), "stopped at 0.1s due to stop-criterion:enough");
    EXPECT_EQ(Number("$endITC"), 0.2);

    for (const char* never : {"", "none", "%AK_NULL%", "$empty", "NoSuchAttribute"}) {
        Set({{"$stop_crit", never}, {"EndTime", "0.3"}});
        RunIn("stopped");
        EXPECT_NEAR(Number("CurrentTime"), 0.3, 1e-9) << never;
    }
}

TEST_F(SW_Simulation_Run, TheShippedCriterionWaitsUntilTheEnergyIsLow)
{
    Set({{"$stop_crit", "stop_at_low_energy"}, {"EndTime", "200"}, {"DeltaOut", "1000"}, {"BedFrictionAngle", "25"}});
    RunIn("stopped");
    EXPECT_LT(Number("CurrentTime"), 150);
    EXPECT_TRUE(Text("StatusInfo").find("stop-criterion") != std::string::npos) << Text("StatusInfo");
    EXPECT_LT(std::atof(sim->Particles().Get("TotalParticlesKineticEnergy").c_str()),
              0.05 * Number("PeakKineticEnergy"));
    EXPECT_GT(Number("PeakKineticEnergy"), 0);
}

TEST_F(SW_Simulation_Run, ARemovedDirectoryIsToldAndTheRunGoesOn)
{
    BeforeStep(8, [&] {
        AK_System::RemoveFileRecursively(directory / "run");
        return 0;
    });
    RunIn("run");
    EXPECT_EQ(AK_Object::_execStatus, AK_String("Viewer/Project/Simulations/avalanche cannot open ") +
                                          RunFile("run", "at_0000001.0000.TimeStep"));
    EXPECT_FALSE(AK_System::FileExists(directory / "run"));
    EXPECT_NEAR(Number("CurrentTime"), 2, 1e-9);
}

// ----------------------------------------------------------------------------------------------------------------
// The same results
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_Simulation_Run, IsTheSameForAnyNumberOfThreads)
{
    RunIn("t0");
    const Files one = StepsIn("t0");
    ASSERT_EQ(one.size(), 5u);
    for (const char* n : {"1", "2", "3", "8"}) {
        sim->Set("$n_threads", n);
        RunIn("tn");
        EXPECT_EQ(StepsIn("tn"), one) << n;
    }
}

// The peak of the kinetic energy, the 8 bytes behind the time: a file lags one step, so what was loaded misses one.
static std::string WithoutPeakEnergy(std::string bytes)
{
    const std::size_t at = bytes.find("SW_Simulation:v1") + 16 + 8;
    return bytes.replace(at, 8, 8, '\0');
}

TEST_F(SW_Simulation_Run, GoesOnFromAnyStepToTheSameEnd)
{
    RunIn("whole");
    const Files whole = StepsIn("whole");
    const std::string mass = Text("MassPerParticle");
    for (const char* from : {"0", "0.5", "1.5"}) {
        AK_System::RemoveFileRecursively(directory / "halves");
        AK_System::CreateDirRecursively(directory / "halves/avalanche");
        for (const auto& [name, bytes] : whole) WriteFile(RunFile("halves", name.c_str()), bytes);
        sim->ProjectDir(directory / "halves/avalanche");
        sim->Set("Time", from);
        // What is later is removed first and made again.
        BeforeStep(1, [&] {
            EXPECT_EQ(int(StepsIn("halves").size()), 1 + int(std::atof(from) / 0.5)) << from;
            return 0;
        });
        sim->Set("Continue", "");
        const Files halves = StepsIn("halves");
        ASSERT_EQ(Names(halves), Names(whole)) << from;
        for (const auto& [name, bytes] : whole)
            EXPECT_EQ(WithoutPeakEnergy(halves.at(name)) == WithoutPeakEnergy(bytes), true) << from << ": " << name;
        EXPECT_EQ(Text("MassPerParticle"), mass);
    }
}

TEST_F(SW_Simulation_Run, WarnsBeforeItStartsAfreshOverStepsThatAreNotLoaded)
{
    RunIn("run");
    EXPECT_FALSE(Said("WARNING: "));
    sim->Particles().Clear();
    sim->Set("Continue", "");
    EXPECT_TRUE(Said("WARNING: simulation avalanche has time steps, but none is loaded: it starts afresh!"));
    EXPECT_EQ(StepsIn("run").size(), 5u);
}

// ----------------------------------------------------------------------------------------------------------------
// In the background
// ----------------------------------------------------------------------------------------------------------------

TEST_F(SW_Simulation_Run, ABackgroundRunIsAMacroAndACommandLine)
{
    static char program[] = "/opt/korvo";
    static char* arguments[] = {program};
    AK_Object::_argv = arguments;
    root.Set("SaveProjectAs", directory / "p");
    const std::string p = (directory / "p").c_str();
    const std::string run = p + "/Project/Simulations/avalanche/";
    for (int cont : {0, 1}) {
        std::ofstream batch((directory / "batch").c_str());
        sim->RunInBackground(cont, &batch);
        batch.close();
        EXPECT_EQ(FileBytes((run + "start.macro").c_str()),
                  "set(\"\", \"ProjectDir\", \"" + p +
                      "\")\n"
                      "set(\"Project/Simulations\", \"CreateSimulation\", \"avalanche\")\n"
                      "set(\"Project/Simulations/avalanche\", \"DeactivateLoadingPsaResults\", \"\")\n"
                      "set(\"Project/Simulations/avalanche\", \"LoadProject\", \"\")\n"
                      "set(\"Project/Simulations/avalanche\", \"" +
                      (cont ? "Continue" : "Run") + "\", \"\")\n");
        EXPECT_EQ(FileBytes(directory / "batch"), "\"/opt/korvo\" -offscreen \"" + run + "start.macro\" " +
                                                      (cont ? ">>" : ">") + " \"" + run + "start.log\"\n");
    }
    sim->SetStatus("running");
    EXPECT_DEATH(sim->RunInBackground(0, nullptr), "");
    sim->SetStatus("finished");
    sim->Set("ShowShallowWaterLogFile", "");
    EXPECT_TRUE(Said("SHOW_FILE:" + run + "start.log"));

    sim->Set("$autosave", "0");
    AK_System::RemoveFileRecursively(directory / "p");
    sim->Set("RunInBackground", "");
    EXPECT_EQ(AK_Object::_execStatus, AK_String("cannot create start macro file ") + (run + "start.macro").c_str());
}
