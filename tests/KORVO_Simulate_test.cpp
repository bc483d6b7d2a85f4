// korvo simulate from outside, on a chute of 40 x 21 points: a slope of 1:2 that becomes level, with sides that rise.

#include "KORVO_Sha256.h"
#include "KORVO_TestSupport.h"

#include <cmath>
#include <map>

#include <sys/resource.h>

namespace {

class Simulate : public Prompt {
protected:
    Simulate()
    {
        std::string raster = "ncols 40\nnrows 21\nxllcorner -5\nyllcorner -105\ncellsize 10\nNODATA_value -9999\n";
        for (int row = 20; row >= 0; --row)
            for (int column = 0; column < 40; ++column)
                raster += std::to_string(std::max(0.0, (250 - 10.0 * column) / 2) + 0.1 * std::abs(10 * row - 100)) +
                          (column == 39 ? "\n" : " ");
        WriteFile(Work("chute.asc"), raster);
        WriteFile(Work("chute.prj"), "PROJCS[\"somewhere\"]\n");
        WriteFile(Work("release.nxyz"), Polygon(30, 80, ""));
        AK_System::CreateDir(Work("folder"));
        WriteFile(Work("folder/of somebody"), "");
    }

    // A square of 50 m beside the middle line, with annotations in front.
    static std::string Polygon(int x0, int x1, const std::string& annotations)
    {
        std::string text = annotations + "4\n";
        for (const auto& [x, y] : {std::pair(x0, -25), {x1, -25}, {x1, 25}, {x0, 25}})
            text += std::to_string(x) + " " + std::to_string(y) + " 0\n";
        return text;
    }

    static std::vector<std::string> Arguments(const std::vector<std::string>& more)
    {
        std::vector<std::string> arguments = {"simulate",
                                              "--terrain",
                                              "chute.asc",
                                              "--release",
                                              "release.nxyz",
                                              "--depth",
                                              "1",
                                              "--density",
                                              "200",
                                              "--friction",
                                              "classic:angle=22,c=0.01",
                                              "--end-time",
                                              "40",
                                              "--particles-per-cell",
                                              "5"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    // All files that must be the same whenever the case is: rasters, lines, states.
    std::map<std::string, std::string> Bytes(const std::string& directory) const
    {
        std::map<std::string, std::string> files;
        for (const char* name : {"peak_depth.asc", "peak_depth.prj", "peak_pressure.asc", "peak_speed.asc",
                                 "arrival_time.asc", "outline.dxf"})
            files[name] = FileBytes(Work((directory + "/" + name).c_str()));
        const std::string states = directory + "/project/Project/Simulations/out/";
        for (const AK_String& name : AK_System::FilesList(Work(states.c_str()), "TimeStep"))
            files[name.c_str()] = FileBytes(Work((states + name.c_str()).c_str()));
        for (const auto& [name, bytes] : files) EXPECT_FALSE(bytes.empty()) << name;
        return files;
    }

    bool IsThere(const char* name) const { return AK_System::FileExists(Work(name)); }
};

// The value behind "name": {"value": in table.json.
double Figure(const std::string& json, const std::string& name)
{
    const std::string before = "\"" + name + "\": {\"value\": ";
    const size_t at = json.find(before);
    EXPECT_NE(at, std::string::npos) << name;
    return at == std::string::npos ? 0 : std::strtod(json.c_str() + at + before.size(), nullptr);
}

}   // namespace

TEST_F(Simulate, RefusesWithOneSentenceAndLeavesNothingButTheLog)
{
    WriteFile(Work("degrees.asc"),
              "ncols 2\nnrows 2\nxllcorner 11\nyllcorner 47\ncellsize 0.001\nNODATA_value -9\n1 2 3 4\n");
    WriteFile(Work("text.asc"), "no raster\n");
    WriteFile(Work("half.asc"), FileBytes(Work("chute.asc")).substr(0, 1000));
    WriteFile(Work("far.nxyz"), "3\n500000 500000 0\n500010 500000 0\n500000 500010 0\n");
    WriteFile(Work("thin.nxyz"), "3\n30 0 0\n60 0 0\n80 0 0\n");
    WriteFile(Work("none.nxyz"), "no lines\n");
    WriteFile(Work("a.gpkg"), "");
    WriteFile(Work("a.xls"), "");
    const std::string with = "needs the module 'gis' of the package korvo-gis";
    const struct {
        std::vector<std::string> more;
        int status;
        std::string sentence;
    } cases[] = {{{"--depth", "deep"}, 2, "--depth' is given twice"},
                 {{"--time-step", "0"}, 2, "--time-step: '0' is not above 0"},
                 {{"--time-step", "-1"}, 2, "--time-step: '-1' is not above 0"},
                 {{"--cell-size", "5m"}, 2, "--cell-size: '5m' is no number"},
                 {{"--output-step", "inf"}, 2, "--output-step: 'inf' is no number"},
                 {{"--output-step", "nan"}, 2, "--output-step: 'nan' is no number"},
                 {{"--threads", "1.5"}, 2, "--threads: '1.5' is no whole number"},
                 {{"--threads", "1000"}, 2, "--threads: '1000' is too large"},
                 {{"--output-step", "0.04"}, 2, "--output-step: is less than half of --time-step"},
                 {{"--time-step", "1e-9"}, 2, "--time-step: makes too many steps"},
                 {{"--set", "EndTime"}, 2, "--set: PATH:ATTRIBUTE=VALUE is needed, not 'EndTime'"},
                 {{"--formats", "acs"}, 2, "no format 'acs'; the nearest is 'asc'"},
                 {{"--formats", "asc,tif"}, 1, with},
                 {{"--set", "EndTimes=3"}, 1, "--set EndTimes: could not execute command"},
                 {{"--set", "nowhere:EndTime=3"}, 1, "object 'Project/Simulations/out/nowhere' not found"},
                 {{"--set", "Density=-1"}, 1, "Density must be above 0"},
                 {{"--forest", "nowhere.dxf"}, 1, "--forest: there is no file 'nowhere.dxf'"},
                 {{"--walls", "folder"}, 1, "--walls: this is a directory: 'folder'"},
                 {{"--entrainment", "a.gpkg"}, 1, "'a.gpkg' " + with},
                 {{"--entrainment", "a.xls"}, 1, "the format of 'a.xls' is not known"},
                 {{"--release", "none.nxyz"}, 1, "--release none.nxyz: no line found"},
                 {{"--release", "thin.nxyz"}, 1, "the release polygon 'thin_0001' has no area"},
                 {{"--release", "far.nxyz"}, 1, "the release polygon 'far_0001' lies off the terrain"},
                 {{"--macro", "/no/such/macro"}, 1, "cannot write '/no/such/macro'"}};
    const std::vector<std::string> before = [&] {
        std::vector<std::string> names;
        for (const AK_String& name : AK_System::FilesList(Work(""), "")) names.push_back(name.c_str());
        return names;
    }();
    const auto expect = [&](const std::vector<std::string>& arguments, int status, const std::string& sentence) {
        const Call call = Korvo(arguments);
        EXPECT_EQ(call.status, status) << sentence << call.errors;
        EXPECT_TRUE(Contains(call.errors, sentence)) << sentence << "\n" << call.errors;
        EXPECT_EQ(NumLines(call.errors), status == 2 ? 2 : 1) << call.errors;
        EXPECT_EQ(call.said, "") << sentence;
        if (status == 1) AK_System::RemoveFile(Work("out.log"));
        std::vector<std::string> names;
        for (const AK_String& name : AK_System::FilesList(Work(""), "")) names.push_back(name.c_str());
        EXPECT_EQ(names, before) << sentence;
    };
    for (const auto& c : cases) {
        std::vector<std::string> more = {"--out", "out"};
        more.insert(more.end(), c.more.begin(), c.more.end());
        expect(Arguments(more), c.status, c.sentence);
    }
    const std::vector<std::string> release = {"--release", "release.nxyz", "--out", "out"};
    const auto on = [&](const char* terrain) {
        std::vector<std::string> arguments = {"simulate", "--terrain", terrain};
        arguments.insert(arguments.end(), release.begin(), release.end());
        return arguments;
    };
    expect(on("degrees.asc"), 1, "'degrees.asc' is in degrees");
    expect(on("text.asc"), 1, "'no' stands where a keyword with its value is expected");
    expect(on("half.asc"), 1, "--terrain half.asc: wrong number of z-values");
    expect(on("nowhere.asc"), 1, "there is no file 'nowhere.asc'");
    expect({"simulate", "--terrain", "chute.asc", "--release", "release.nxyz"}, 2, "there is no --out");
    expect({"simulate", "--terrain", "chute.asc", "--out", "out"}, 2, "there is no --release");
    expect(Arguments({"--out", "folder"}), 1, "'folder' is there already; --force replaces it");
    expect(Arguments({"--out", "folder", "--force"}), 1, "'folder' was not made by korvo simulate");
    expect(Arguments({"--out", ".."}), 2, "'..' is no name for a new directory");
    expect({"simulate", "--continue", "out", "--threads=2"}, 2, "the options are those of then, without '--threads'");
    expect({"simulate", "--continue", "nowhere"}, 1, "no interrupted run in 'nowhere.partial'");
}

TEST_F(Simulate, LeavesAWholeDirectoryThatTellsWhatItIsMadeOf)
{
    WriteFile(Work("own.nxyz"), Polygon(30, 80, "name=crown;d0=2;rho=300;\n") + Polygon(90, 120, "name=plain;\n"));
    const Call call =
        Korvo({"simulate", "--terrain=chute.asc", "--release=own.nxyz", "--out=runs/a b", "--depth=1", "--density=200",
               "--friction=voellmy:mu=0.25", "--end-time=40", "--particles-per-cell=5",
               "--set=:RestitutionCoefficient=0.1", "--formats=asc,dxf", "--set", "ReleaseAreas/plain:Density=150"});
    ASSERT_EQ(call.status, 0) << call.errors;
    EXPECT_TRUE(Contains(call.said, "Simulation a_b\n  released mass ")) << call.said;
    EXPECT_FALSE(IsThere("runs/a b.partial"));
    for (const char* name :
         {"peak_depth.prj", "project/TerminalController.atr", "log.txt", "outline.dxf", "peak_speed.dxf"})
        EXPECT_TRUE(IsThere((std::string("runs/a b/") + name).c_str())) << name;
    const std::string table = FileBytes(Work("runs/a b/table.txt"));
    EXPECT_EQ(call.said.substr(0, table.size()), table);
    const std::string json = FileBytes(Work("runs/a b/table.json"));
    const double slope = std::sqrt(1.25 + 0.01);   // of the area, on a plane of gradients 0.5 and 0.1
    EXPECT_NEAR(Figure(json, "released_mass"), (2500 * 2 * 300 + 1500 * 1 * 150) * slope, 30000);
    EXPECT_EQ(Figure(json, "mass_off_terrain"), 0);
    EXPECT_GT(Figure(json, "run_out"), 100);
    EXPECT_NEAR(std::tan(Figure(json, "run_out_angle") * 3.14159265 / 180),
                Figure(json, "drop") / Figure(json, "run_out"), 1e-6);
    EXPECT_NEAR(Figure(json, "max_pressure"), 0.2 * std::pow(Figure(json, "max_speed"), 2), 0.01) << "200 kg/m3";
    for (const std::string part :
         {"\"version\": \"1.0.0\"", "\"status\": 0",
          "\"attribute\": \"FormulaParameters\", \"value\": \"mu=0.25;xi=2000\"",
          "{\"path\": \"Project/Simulations/a_b/ReleaseAreas/crown\", \"attribute\": \"Depth\", \"value\": \"2\", "
          "\"unit\": \"m\"}",
          "/ReleaseAreas/plain\", \"attribute\": \"Density\", \"value\": \"150\", \"unit\": \"kg/m3\"}",
          "\"attribute\": \"RestitutionCoefficient\", \"value\": \"0.1\""})
        EXPECT_TRUE(Contains(json, part)) << part << json;
    unsigned long long numBytes = 0;
    EXPECT_TRUE(Contains(json, KORVO_Sha256OfFile(Work("chute.asc").c_str(), numBytes))) << json;
    EXPECT_TRUE(Contains(json, "\"bytes\": " + std::to_string(numBytes))) << json;
    EXPECT_EQ(
        std::system(
            ("python3 -m json.tool '" + std::string(Work("runs/a b/table.json").c_str()) + "' >/dev/null").c_str()),
        0);
}

TEST_F(Simulate, GivesTheSameBytesByItsMacroAndByAnyThreads)
{
    ASSERT_EQ(Korvo(Arguments({"--out", "out", "--macro", "made.macro", "--threads", "1", "--quiet"})).said, "");
    const auto expected = Bytes("out");
    ASSERT_GT(expected.size(), 8u);
    EXPECT_EQ(FileBytes(Work("out/case.macro")), FileBytes(Work("made.macro")));
    AK_System::RenameFile(Work("out"), Work("first"));
    const Call played = Korvo({"play", "made.macro"});
    EXPECT_EQ(played.status, 0) << played.errors;
    EXPECT_TRUE(Bytes("out") == expected) << "by its macro";
    AK_System::RemoveFileRecursively(Work("out"));
    EXPECT_EQ(Korvo(Arguments({"--out", "out", "--threads=3", "--lang=de"})).status, 0);
    EXPECT_TRUE(Bytes("out") == expected) << "by three threads, in German";
    EXPECT_TRUE(Contains(FileBytes(Work("out/table.txt")), "Anbruchmasse"));
    EXPECT_EQ(Korvo(Arguments({"--out", "out"})).status, 1);
    EXPECT_EQ(Korvo(Arguments({"--out", "out/", "--force"})).status, 0);
    EXPECT_TRUE(Bytes("out") == expected) << "once more in place of the first";
}

TEST_F(Simulate, GivesTheSameBytesByTheMenus)
{
    ASSERT_EQ(Korvo(Arguments({"--out", "out", "--threads", "1"})).status, 0);
    const auto expected = Bytes("out");
    const std::string macro = FileBytes(Work("out/case.macro"));
    WriteFile(Work("results.macro"), macro.substr(macro.find("set(\"Project/Simulations/out/PeakFlowDepth\"")));
    AK_System::RemoveFileRecursively(Work("out"));
    AK_System::CreateDir(Work("out"));
    Session session([&] { BecomeProgram({"-files", files}); });
    session.Do("Project DHMs e opr.Create double.SimulationDefaultCellSize 0");
    session.Do("filename.Import chute.asc q q q Simulations e opr.Create text.CreateSimulation out q q out");
    session.Do("e opr.Terrain text.Mesh /../DHMs/chute q opr.Friction double.BedFrictionAngle 22");
    session.Do("double.DynamicFrictionCoefficient 0.01 q opr.Model int.n_threads 1 q");
    session.Do("opr.Particles text.MassPerParticleDeterminationMethod particles double.NumParticlesPerCell 5 q");
    session.Do("opr.Run double.EndTime 40 double.DeltaT 0.1 double.DeltaOut 5 text.stop_crit stop_at_low_energy q q");
    session.Do(
        "ReleaseAreas e opr.Create text.NewDepth 1 text.NewDensity 200 filename.Import release.nxyz q q q q q q");
    session.Do("e obj.Controller obj.Object opr.Project directory.SaveProjectAs out/project q q q q");
    session.Do("Project Simulations out e opr.Run apply.Run q q q q q");
    session.Do("e obj.Controller obj.Object opr.Macros filename.ExecMacro results.macro q q q q q");
    EXPECT_TRUE(Bytes("out") == expected) << session.Screen();
}

TEST_F(Simulate, ThatIsInterruptedGoesOnToTheSameBytes)
{
    ASSERT_EQ(Korvo(Arguments({"--out", "out", "--output-step=1"})).status, 0);
    const auto expected = Bytes("out");
    AK_System::RemoveFileRecursively(Work("out"));
    int numContinued = 0;
    for (const int how : {SIGINT, SIGTERM, SIGKILL})
        for (int milliseconds = 5; milliseconds < 300; milliseconds = milliseconds * 2 + 1) {
            const pid_t process = fork();
            if (process == 0) {
                for (int channel : {1, 2}) dup2(open("/dev/null", O_WRONLY), channel);
                BecomeProgram(Arguments({"--out", "out", "--output-step=1"}));
            }
            AK_System::MilliSleep(milliseconds);
            kill(process, how);
            int state = 0;
            waitpid(process, &state, 0);
            EXPECT_TRUE(WIFSIGNALED(state) || WEXITSTATUS(state) == 130 || WEXITSTATUS(state) == 0) << state;
            EXPECT_TRUE(!IsThere("out") || !IsThere("out.partial"));
            if (IsThere("out.partial")) {
                const Call refused = Korvo(Arguments({"--out", "out"}));
                EXPECT_TRUE(Contains(refused.errors, "holds an interrupted run")) << refused.errors;
                const Call call = Korvo({"simulate", "--continue", "out"});
                if (call.status != 0 && Contains(call.errors, "no interrupted run")) {   // killed as it began
                    AK_System::RemoveFileRecursively(Work("out.partial"));
                    continue;
                }
                EXPECT_EQ(call.status, 0) << call.errors << milliseconds;
                ++numContinued;
            }
            const bool isSame = !IsThere("out") || Bytes("out") == expected;
            EXPECT_TRUE(isSame) << "after " << milliseconds << " ms, signal " << how;
            AK_System::RemoveFileRecursively(Work("out"));
        }
    EXPECT_GT(numContinued, 3);
}

TEST_F(Simulate, DoesNotTouchWhatAnotherProcessComputesOrWhatItCannotGoOnWith)
{
    const pid_t process = fork();
    if (process == 0) {
        for (int channel : {1, 2}) dup2(open("/dev/null", O_WRONLY), channel);
        BecomeProgram(Arguments({"--out", "out", "--set", "$stop_crit=none", "--time-step=0.001"}));
    }
    for (int i = 0; i < 1000 && !IsThere("out.partial/project/Project/Simulations/out/at_0000000.0000.TimeStep"); ++i)
        AK_System::MilliSleep(5);
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"simulate", "--continue", "out"}, Arguments({"--out", "out"}),
          Arguments({"--out", "out", "--force"})}) {
        const Call call = Korvo(arguments);
        EXPECT_EQ(call.status, 1);
        EXPECT_TRUE(Contains(call.errors, "'out.partial' is being computed by another process")) << call.errors;
    }
    kill(process, SIGINT);
    int state = 0;
    waitpid(process, &state, 0);
    EXPECT_TRUE(WIFEXITED(state) && WEXITSTATUS(state) == 130) << state;
    AK_System::RenameFile(Work("out.partial/project/Project/DHMs"), Work("away"));
    EXPECT_EQ(Korvo({"simulate", "--continue", "out"}).status, 1);
    EXPECT_TRUE(IsThere("out.partial/project/Project/Simulations/out/at_0000000.0000.TimeStep")) << "all there is";
}

TEST_F(Simulate, TellsThatSnowLeftTheTerrain)
{
    const Call call =
        Korvo(Arguments({"--out", "out", "--set", "BedFrictionAngle=0", "--set", "DynamicFrictionCoefficient=0"}));
    EXPECT_EQ(call.status, 3) << call.errors;
    const std::string json = FileBytes(Work("out/table.json"));
    EXPECT_GT(Figure(json, "mass_off_terrain"), 1000);
    EXPECT_NEAR(Figure(json, "mass_off_terrain"), Figure(json, "released_mass") - Figure(json, "final_mass"), 200);
    EXPECT_TRUE(Contains(json, "\"status\": 3")) << json;
    EXPECT_TRUE(Contains(json, "kg have left the mesh")) << json;
}

TEST_F(Simulate, OutlivesWhoListensAndTellsOfAFullDisc)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    EXPECT_EQ(Korvo(Arguments({"--out", "out"}), [&] { dup2(ends[1], 1); }).status, 0);
    close(ends[1]);
    EXPECT_FALSE(Bytes("out").empty());
    AK_System::RemoveFileRecursively(Work("out"));
    const Call full = Korvo(Arguments({"--out", "out"}), [] {
        const rlimit small = {20000, 20000};   // bytes a file
        setrlimit(RLIMIT_FSIZE, &small);
    });
    EXPECT_EQ(full.status, 1) << full.errors;
    EXPECT_EQ(NumLines(full.errors), 1) << full.errors;
    EXPECT_FALSE(IsThere("out") || IsThere("out.partial"));
}

TEST_F(Simulate, TakesFrictionLawsByShortNames)
{
    const Call list = Korvo({"simulate", "--friction", "list"});
    EXPECT_EQ(list.status, 0);
    for (const char* part :
         {"coulomb-chezy\n", "angle    degrees ", "voellmy\n", "Schweizerische Bauzeitung 73", "xi   m/s2"})
        EXPECT_TRUE(Contains(list.said, part)) << part << list.said;
    const struct {
        const char* typed;
        const char* sentence;
    } cases[] = {{"voelmy", "there is no law 'voelmy'; the nearest is 'voellmy'"},
                 {"chezy:d=1", "'chezy' has no parameter 'd'; the nearest is 'c'"},
                 {"korvoat:c=1", "'korvoat' has no parameter 'c'"},
                 {"classic:angle", "parameter=value is needed, not 'angle'"},
                 {"classic:angle=16,", "parameter=value is needed, not ''"},
                 {"classic:angle=16,5", "parameter=value is needed, not '5'"},
                 {"classic:angle=steep", "'angle=steep' is no number"},
                 {"voellmy:nu=1", "'voellmy' has no parameter 'nu'; its parameters are mu=0.2;xi=2000"},
                 {"voellmy:xi=-1", "'voellmy' does not take 'xi=-1'"}};
    for (const auto& c : cases) {
        const Call call = Korvo(
            {"simulate", "--terrain", "chute.asc", "--release", "release.nxyz", "--out", "out", "--friction", c.typed});
        EXPECT_EQ(call.status, 2) << c.typed;
        EXPECT_TRUE(Contains(call.errors, c.sentence)) << call.errors;
        EXPECT_FALSE(IsThere("out") || IsThere("out.partial") || IsThere("out.log")) << c.typed;
    }
}

TEST_F(Simulate, FailsInWordsWhenAFormulaOfTheUserCannotGoOn)
{
    AK_System::CreateDir(directory / "user/rheology");
    WriteFile(directory / "user/rheology/faulty.cint",
              "double tau(double p, double v, double h, double rho, double t, double x[], double n[], double e)\n"
              "{\n  double a[2];\n  int i;\n  i = 5;\n  return a[i];\n}\n");
    setenv("KORVO_USER_ATTRIBUTES", (directory / "user").c_str(), 1);
    const Call call = Korvo(
        {"simulate", "--terrain", "chute.asc", "--release", "release.nxyz", "--out", "out", "--friction", "faulty"});
    EXPECT_EQ(call.status, 1);
    EXPECT_TRUE(Contains(call.errors, "index out of bounds")) << call.errors;
    EXPECT_EQ(NumLines(call.errors), 1) << call.errors;
    EXPECT_FALSE(IsThere("out") || IsThere("out.partial"));
    EXPECT_TRUE(IsThere("out.log"));
}

// FIPS 180-4, examples of NIST.
TEST(KORVO_Sha256, GivesThePublishedSums)
{
    const TemporaryDirectory directory;
    const struct {
        std::string bytes;
        const char* sum;
    } cases[] = {{"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
                 {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
                 {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
                  "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
                 {std::string(1000000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}};
    for (const auto& c : cases) {
        const AK_String file = directory / "file";
        WriteFile(file, c.bytes);
        unsigned long long numBytes = 0;
        EXPECT_EQ(KORVO_Sha256OfFile(file.c_str(), numBytes), c.sum);
        EXPECT_EQ(numBytes, c.bytes.size());
    }
}
