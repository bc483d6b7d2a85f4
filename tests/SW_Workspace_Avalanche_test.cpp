// Whole avalanches by the program: the chute of the examples with its recorded figures, its results in a GIS, the same
// run in the background and in a batch, and runs that are killed.

#include "SW_Workspace_TestSupport.h"

#include <map>
#include <thread>

class Avalanche : public ProgramTest {
protected:
    /// The example as a newcomer has it: a copy of its directory to work in. The program is started by a script, by
    /// which it also starts itself.
    Avalanche()
    {
        for (const char* file : {"chute.macro", "chute_terrain.cint"})
            AK_System::CpyFile(AK_String(KORVO_SOURCE_DIR "/examples/chute/") + file, Work(file));
        WriteFile(Work("korvo"), "#!/bin/bash\nexec -a \"$PWD/korvo\" " KORVO_PROGRAM " -files " + files + " \"$@\"\n");
        chmod(Work("korvo").c_str(), 0755);
    }

    /// Starts the program in the background of the test.
    pid_t Start(const std::string& macro) const
    {
        WriteFile(Work("now.macro"), macro);
        const pid_t process = fork();
        if (process != 0) return process;
        if (chdir(Work("").c_str()) != 0 || !std::freopen("/dev/null", "w", stdout)) _exit(99);
        execl("./korvo", "korvo", "-offscreen", "now.macro", nullptr);
        _exit(99);
    }

    /// Plays a macro to its end by the script; what was said.
    std::string Say(const std::string& macro) const
    {
        WriteFile(Work("now.macro"), macro);
        return Converse("",
                        [&]() -> int {
                            if (chdir(Work("").c_str()) != 0) return 1;
                            execl("./korvo", "korvo", "-offscreen", "now.macro", nullptr);
                            return 1;
                        })
            .output;
    }

    /// Makes and runs the example.
    std::string RunExample() const { return Say(FileBytes(Work("chute.macro"))); }

    AK_String SimulationFile(const char* file) const { return Work("chute_project/Project/Simulations/chute/") + file; }

    using Files = std::map<std::string, std::string>;

    Files Steps() const
    {
        Files files;
        for (const AK_String& name : AK_System::FilesList(SimulationFile(""), "TimeStep"))
            files[name.c_str()] = FileBytes(SimulationFile(name.c_str()));
        return files;
    }

    bool ComesTo(const std::string& status, double seconds) const
    {
        for (int i = 0; i < seconds * 50; ++i, AK_System::MilliSleep(20))
            if (FileBytes(SimulationFile(".simulation_status")) == status + "\n") return true;
        return false;
    }

    /// The number behind a label in the table of a run.
    static double Figure(const std::string& said, const std::string& label)
    {
        const std::size_t at = said.find("  " + label + " ");
        return at == std::string::npos ? -1 : std::atof(said.c_str() + at + 2 + label.size());
    }

    static constexpr const char* load = "set(\"\", \"ProjectDir\", \"chute_project\")\n"
                                        "set(\"Project\", \"LoadProject\", \"\")\n";
    static constexpr const char* chute = "Project/Simulations/chute";
    static std::string Command(const std::string& attribute, const std::string& value = "")
    {
        return std::string("set(\"") + chute + "\", \"" + attribute + "\", \"" + value + "\")\n";
    }
};

// Recorded from the first whole run. Other compilers and libraries may differ in the last bits of a sine, which the
// flow enlarges: hence the tolerances.
TEST_F(Avalanche, OfTheChuteComesToTheRecordedFigures)
{
    const std::string said = RunExample();
    const struct {
        const char* label;
        double value, tolerance;
    } figures[] = {{"released mass", 589, 0.5},     // t
                   {"mass at the end", 589, 0.5},   // nothing is lost, nothing entrained
                   {"particles", 1150, 0.5},
                   {"simulated time", 27.6, 1},   // s
                   {"run-out", 573, 10},          // m: two cells
                   {"drop", 181, 2},
                   {"largest flow depth", 1.88, 0.1},
                   {"largest speed", 30.5, 0.5},      // m/s
                   {"largest pressure", 185.7, 6}};   // kPa
    for (const auto& f : figures) EXPECT_NEAR(Figure(said, f.label), f.value, f.tolerance) << f.label << "\n" << said;
}

TEST_F(Avalanche, LeavesResultsThatAGisReads)
{
    RunExample();
    for (const char* file : {"outline.dxf", "peak_depth.dxf", "peak_pressure.dxf"})
        EXPECT_NE(FileBytes(Work(file)).find("POLYLINE"), std::string::npos) << file;
    if (std::system("gdalinfo --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "gdalinfo is not installed";
    for (const char* raster : {"peak_depth.asc", "peak_pressure.asc", "arrival_time.asc"}) {
        const std::string command = std::string("cd ") + Work("").c_str() + " && gdalinfo " + raster + " > info.txt";
        ASSERT_EQ(std::system(command.c_str()), 0) << raster;
        const std::string info = FileBytes(Work("info.txt"));
        // The raster's points are the mesh's vertices, and a GIS shows a point as the middle of a cell.
        EXPECT_NE(info.find("Size is 140, 24"), std::string::npos) << info;
        EXPECT_NE(info.find("Origin = (-2.5"), std::string::npos) << info;
        EXPECT_NE(info.find("Pixel Size = (5.0"), std::string::npos) << info;
    }
}

TEST_F(Avalanche, IsTheSameInTheBackgroundAndInABatch)
{
    RunExample();
    const Files steps = Steps();
    ASSERT_GT(steps.size(), 3u);
    const struct {
        const char* why;
        std::string start;
    } ways[] = {{"in the background", Command("RunInBackground")},
                {"in a batch", "set(\"Project/Simulations\", \"StartActive\", \"0=1\")\n"}};
    for (const auto& way : ways) {
        AK_System::RemoveFile(SimulationFile(".simulation_status"));
        Say(load + Command("DeleteTimesteps", "all") + way.start);
        ASSERT_TRUE(ComesTo("finished", 60)) << way.why << FileBytes(SimulationFile("start.log"));
        EXPECT_TRUE(Steps() == steps) << way.why << FileBytes(SimulationFile("start.log"));
    }
    // A second terminal sees the run.
    const std::string command = std::string(KORVO_PROGRAM " watch --once ") + Work("chute_project").c_str() + " > " + Work("watched").c_str();
    const std::string mark = AK_System::ProcessMark().c_str();
    const std::pair<std::string, const char*> states[] = {
        {FileBytes(SimulationFile(".simulation_status")), "finished "},
        {"running " + mark + "\n", "running "},
        {"running 1" + mark + "\n", "interrupted "}};
    for (const auto& [line, shown] : states) {
        WriteFile(SimulationFile(".simulation_status"), line);
        EXPECT_EQ(std::system(command.c_str()), 0);
        EXPECT_EQ(FileBytes(Work("watched")).rfind(std::string("chute                ") + shown, 0), 0u)
            << line << FileBytes(Work("watched"));
    }
}

TEST_F(Avalanche, RunsInTheBackgroundOfADirectoryOfAnyName)
{
    RunExample();
    for (const std::string name : {"a `touch executed`", "$(touch executed)", "it's; touch executed #"}) {
        const AK_String project = Work(name.c_str());
        Say(load + ("set(\"\", \"SaveProjectAs\", \"" + name + "\")\n") + Command("DeleteTimesteps", "all") +
            Command("EndTime", "1") + Command("RunInBackground"));
        const AK_String status = project + "/Project/Simulations/chute/.simulation_status";
        for (int i = 0; i < 3000 && FileBytes(status) != "finished\n"; ++i) AK_System::MilliSleep(10);
        EXPECT_EQ(FileBytes(status), "finished\n") << name;
        EXPECT_FALSE(AK_System::FileExists(Work("executed"))) << name;
    }
}

TEST_F(Avalanche, ThatIsKilledGoesOnToTheSameEnd)
{
    RunExample();
    const std::string shorter = Command("$stop_crit") + Command("EndTime", "15") + Command("DeltaOut", "1");
    Say(load + shorter + Command("DeleteTimesteps", "all") + Command("Run"));
    const Files steps = Steps();
    ASSERT_EQ(steps.size(), 16u);
    for (int milliseconds = 30; milliseconds < 300; milliseconds += 30) {
        Say(load + Command("DeleteTimesteps", "all"));
        const pid_t process = Start(load + Command("Run"));
        AK_System::MilliSleep(milliseconds);
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
        for (const auto& [name, bytes] : Steps()) EXPECT_TRUE(steps.at(name) == bytes) << name << " is not whole";
        const std::string said = Say(load + Command("LoadLastTimeStep") + Command("Continue"));
        EXPECT_TRUE(Steps() == steps) << "killed after " << milliseconds << " ms:\n" << said;
    }
}
