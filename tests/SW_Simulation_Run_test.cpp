// Run control: what starts and what is refused, the loop and its ends, status files, runs that go on, any number of
// threads, the macro of a background run.

#include "SW_Simulation_Fixture.h"

#include <csignal>
#include <filesystem>
#include <functional>
#include <map>
#include <sys/wait.h>
#include <unistd.h>

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

TEST_F(SW_Simulation_Run, WhatCannotRunIsRefusedInWordsAndChangesNothing)
{
    RunIn("run");
    sim->Set("Time", "1");
    const Files before = StepsIn("run");
    const std::string time = Text("CurrentTime"), mass = Text("CurrentMass"), perParticle = Text("MassPerParticle");
    const std::string status = FileBytes(RunFile("run", ".simulation_status"));
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
        {"FrictionType", "no such law", "WARNING: simulation avalanche is not started: FrictionType"},
        {"Density", "0", "WARNING: simulation avalanche is not started: Density"},
    };
    for (const auto& c : cases) {
        const AK_String former = sim->Get(c.attribute);
        sim->Set(c.attribute, c.value);
        Messages();
        for (const char* command : {"Run", "Continue"}) {
            sim->Set(command, "");
            const std::string why = std::string(command) + " with " + c.attribute + " = " + c.value;
            const std::string reason = AK_Object::_execStatus.c_str();
            EXPECT_FALSE(reason.empty()) << why << ": a macro would go on";
            EXPECT_TRUE(Said(c.message)) << why;
            EXPECT_NE(std::string(c.message).find(reason.substr(0, 20)), std::string::npos) << why << reason;
            if (std::string(c.attribute) == "Mesh") continue;   // to change it has lost the state
            EXPECT_EQ(Text("CurrentTime"), time) << why;
            EXPECT_EQ(Text("CurrentMass"), mass) << why;
            EXPECT_EQ(Text("MassPerParticle"), perParticle) << why;
        }
        sim->Set(c.attribute, former);
        if (std::string(c.attribute) == "Mesh") sim->Set("Time", "1");
    }
    EXPECT_EQ(StepsIn("run"), before);
    EXPECT_EQ(FileBytes(RunFile("run", ".simulation_status")), status);

    sim->Set("NumParticlesPerCell", "1e12");
    sim->Set("Run", "");
    EXPECT_TRUE(Said("WARNING: simulation avalanche is not started: MassPerParticle"));
    EXPECT_EQ(Text("CurrentMass"), mass);
    sim->ReleaseAreas().DeleteAll();
    Release({-500, -500}, {-400, -400}, 1);
    sim->Set("Run", "");
    EXPECT_EQ(AK_Object::_execStatus, "simulation avalanche is not started: the release lies off the terrain or in no "
                                      "cell of it: there is nothing that could flow");
    EXPECT_EQ(Text("CurrentMass"), mass);
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

TEST_F(SW_Simulation_Run, IsKnownToBeOverWhenItsProcessIsGone)
{
    sim->ProjectDir(directory.Path());
    const pid_t other = fork();
    if (other == 0) {
        sim->SetStatus("running");
        pause();
        _exit(0);
    }
    while (Text("Status") == "unknown") AK_System::MilliSleep(1);
    const std::string bytes = FileBytes(directory / ".simulation_status");
    EXPECT_EQ(bytes.rfind("running " + std::to_string(other) + " ", 0), 0u) << bytes;
    EXPECT_EQ(Text("RunVis"), "r");
    for (const char* command : {"Run", "Continue"}) {
        sim->Set(command, "");
        EXPECT_EQ(AK_Object::_execStatus, "simulation avalanche is not started: another process runs it");
        EXPECT_EQ(FileBytes(directory / ".simulation_status"), bytes);
    }
    sim->Set("Interrupt", "");
    EXPECT_EQ(FileBytes(directory / ".simulation_status"), "interrupted" + bytes.substr(7));
    sim->Set("Run", "");
    EXPECT_EQ(AK_Object::_execStatus, "simulation avalanche is not started: another process runs it")
        << "it still does";
    WriteFile(directory / ".simulation_status", bytes);
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
    EXPECT_EQ(Text("Status"), "interrupted");
    EXPECT_EQ(Text("RunVis"), "w");
    // The number of a process that is gone is given to another one.
    AK_String reused = AK_System::ProcessMark();
    reused.ReplaceAll(" ", " 1");
    WriteFile(directory / ".simulation_status", std::string("running ") + reused.c_str() + "\n");
    EXPECT_EQ(Text("Status"), "interrupted");
    sim->Set("Run", "");
    EXPECT_EQ(AK_Object::_execStatus, "");
    EXPECT_EQ(FileBytes(directory / ".simulation_status"), "finished\n");
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

TEST_F(SW_Simulation_Run, CountsApartWhatLeavesTheTerrainAndWhatIsNoNumber)
{
    const auto hole = [](double x, double y) { return std::hypot(x - 130, y - 100) < 20 ? std::nan("") : Chute(x, y); };
    OnMesh(60, 20, 10, hole, "withHole");
    sim->Set("EndTime", "8");
    RunIn("lost");
    std::string told;
    for (const std::string& message : Messages())
        if (message.rfind("WARNING: ", 0) == 0) told += message + "\n";
    EXPECT_NE(told.find(" particles had a place or speed that is no number"), std::string::npos) << told;
    EXPECT_EQ(told.find("have left the mesh"), std::string::npos) << told;
    Set({{"Mesh", "terrain"}, {"BedFrictionAngle", "1"}, {"DeltaT", "2"}, {"DeltaOut", "2"}, {"EndTime", "40"}});
    RunIn("long");
    const auto messages = Messages();
    const auto starts = [&](const char* text) {
        return std::count_if(messages.begin(), messages.end(),
                             [&](const std::string& message) { return message.find(text) != std::string::npos; });
    };
    EXPECT_EQ(starts("more than two cells"), 1) << "once a run";
    EXPECT_EQ(starts(" kg have left the mesh"), 1);
    EXPECT_EQ(starts(" that is no number"), 0);
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

// With entrainment, and with the mass per particle of another run in the attributes, as a process has it that did not
// make the run itself.
TEST_F(SW_Simulation_Run, GoesOnFromAnyStepToTheSameBytes)
{
    Set({{"GlobalEntrainmentAreaWeight", "40"}, {"EntrainmentErosionEnergy", "500"}});
    RunIn("whole");
    const Files whole = StepsIn("whole");
    const std::string mass = Text("MassPerParticle");
    for (const char* from : {"0", "0.5", "1.5"})
        for (const char* stale : {"1e9", "1e-3", mass.c_str()}) {
            AK_System::RemoveFileRecursively(directory / "halves");
            AK_System::CreateDirRecursively(directory / "halves/avalanche");
            for (const auto& [name, bytes] : whole) WriteFile(RunFile("halves", name.c_str()), bytes);
            sim->ProjectDir(directory / "halves/avalanche");
            sim->Set("MassPerParticle", stale);
            sim->Set("Time", from);
            // What is later is removed first and made again.
            BeforeStep(1, [&] {
                EXPECT_EQ(int(StepsIn("halves").size()), 1 + int(std::atof(from) / 0.5)) << from;
                return 0;
            });
            sim->Set("Continue", "");
            EXPECT_TRUE(StepsIn("halves") == whole) << from << " with " << stale;
            EXPECT_EQ(Text("MassPerParticle"), mass);
        }
}

TEST_F(SW_Simulation_Run, OlderStatesHaveTheMassPerParticleOfTheirParticles)
{
    RunIn("run");
    const int numParticles = sim->Particles().NumParticles();
    const std::string tag = "SW_Simulation:MassPerParticle";
    std::string bytes = FileBytes(RunFile("run", "at_0000001.5000.TimeStep"));
    bytes.resize(bytes.find(tag) - 4);
    WriteFile(RunFile("run", "at_0000001.5000.TimeStep"), bytes);
    const double mean = sim->Particles().TotalMass() / numParticles;
    sim->Set("MassPerParticle", "1e9");
    sim->Set("Time", "1.5");
    sim->Set("Continue", "");
    EXPECT_NEAR(sim->Particles().NumParticles(), numParticles, 0.05 * numParticles);
    EXPECT_NEAR(Number("MassPerParticle"), mean, 0.05 * mean);

    // A user who wants it so is told what becomes of the avalanche.
    Set({{"MassPerParticleDeterminationMethod", "direct"}, {"MassPerParticle", "1e9"}, {"Time", "1.5"}});
    Messages();
    sim->Set("Continue", "");
    EXPECT_EQ(sim->Particles().NumParticles(), 0);
    EXPECT_TRUE(Said("WARNING: "));
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

    // A program that cannot be started leaves no run that seems to be under way.
    sim->Set("RunInBackground", "");
    for (int i = 0; i < 500 && Text("Status") == "started"; ++i) AK_System::MilliSleep(10);
    EXPECT_EQ(Text("Status"), "interrupted");
    EXPECT_EQ(Text("RunVis"), "w");

    sim->Set("$autosave", "0");
    AK_System::RemoveFileRecursively(directory / "p");
    sim->Set("RunInBackground", "");
    EXPECT_EQ(AK_Object::_execStatus, AK_String("cannot create start macro file ") + (run + "start.macro").c_str());
}
