// The program as a whole: its start, macros and recordings, and input that means harm.

#include "SW_Workspace.h"

#include "SW_Mesh_GdalTools.h"
#include "SW_Workspace_TestSupport.h"

#include <algorithm>

#include <sys/stat.h>

namespace {

class Start : public ProgramTest {};
class Macros : public ProgramTest {};
class Launcher : public ProgramTest {};
class Projects : public ProgramTest {};
class HostileInput : public ProgramTest {};

// '@' stands for a NUL byte.
std::string WithNuls(std::string text)
{
    std::replace(text.begin(), text.end(), '@', '\0');
    return text;
}

// As one text, without the places in the source.
std::string Spoken(const Conversation& conversation)
{
    std::string spoken;
    for (const std::string& line : SpokenLines(conversation.output)) spoken += line + "\n";
    return spoken;
}

}   // namespace

// ----------------------------------------------------------------------------------------------------------------
// Start
// ----------------------------------------------------------------------------------------------------------------

TEST_F(Start, TellsItsStepsInOrderAndShowsTheMenu)
{
    setenv("KORVO_USER_ATTRIBUTES", (directory / "user").c_str(), 1);
    const Conversation conversation = Program({"-files", files, "other"}, "1 q q");
    EXPECT_TRUE(conversation.ended);
    EXPECT_EQ(conversation.status, 0);
    const std::string user = (directory / "user/").c_str();
    std::vector<std::string> lines = SpokenLines(conversation.output);
    ASSERT_GT(lines.size(), 5u);
    EXPECT_EQ(lines[5].rfind("Compiled ", 0), 0u);
    lines[5] = "Compiled";
    ExpectSpoken(lines, {"Setting config files directory: " + files,
                         "set user attributes directory to:" + user,
                         KORVO_PROGRAM " -files " + files + " other",
                         rule,
                         KORVO_PROGRAM,
                         "Compiled",
                         "KORVO: dense-flow snow avalanches over terrain",
                         rule,
                         "",
                         "user-specific " + user,
                         "Viewer:",
                         "1:Project",
                         "q: quit",
                         "e: edit",
                         "?: help",
                         "Project:",
                         "1:DHMs",
                         "2:ReleaseDHMs",
                         "3:Polygons",
                         "4:Polylines",
                         "5:ReleaseAreas",
                         "6:EntrainmentAreas",
                         "7:ResistanceAreas",
                         "8:WallLines",
                         "9:SourceLines",
                         "10:Simulations",
                         "11:Labels",
                         "q: quit",
                         "e: edit",
                         "?: help",
                         "Viewer:",
                         "1:Project",
                         "q: quit",
                         "e: edit",
                         "?: help"});
}

TEST_F(Start, FindsItsFilesBesideTheWorkingDirectoryWhenNothingElseIsSaid)
{
    AK_System::CreateDir(directory / "files");
    ASSERT_EQ(symlink(files.c_str(), (directory / "files/AK_Attributes").c_str()), 0);
    const Conversation conversation = Program({}, "q");
    EXPECT_EQ(conversation.status, 0);
    ExpectSpoken(SpokenLines(conversation.output), {"Setting config files directory: ../files/AK_Attributes",
                                                    KORVO_PROGRAM, rule, "...", "Viewer:", "1:Project", "..."});
    EXPECT_TRUE(AK_System::FileExists(directory / "home/.korvo"));
}

TEST_F(Start, ReadsItsArgumentsFromLeftToRight)
{
    for (const char* name : {"a", "b"}) {
        const std::string text = std::string("set(\"Project\", \"$latest_comp\", \"") + name + "\")\n";
        WriteFile(Work(name), "set(\"\", \"ReportCommands\", \"1\")\n" + text);
    }
    const struct {
        const char* why;
        std::vector<std::string> arguments;
        const char* played;
        bool ends;
    } cases[] = {
        {"a macro, then the menus", {"-macro", "a"}, "\"a\"", false},
        {"a macro and no menus", {"-offscreen", "a"}, "\"a\"", true},
        {"the last name wins, the end stays", {"-offscreen", "a", "-macro", "b"}, "\"b\"", true},
        {"in the other order too", {"-macro", "a", "-offscreen", "b"}, "\"b\"", true},
        {"an option without its value is no option", {"-macro"}, "", false},
        {"nor does it undo another", {"-offscreen", "a", "-macro"}, "\"a\"", true},
        {"a value is no option", {"-macro", "-offscreen", "a"}, "", false},
        {"what is no option is passed over", {"x", "-", "-offscreen", "b", "-unknown"}, "\"b\"", true},
    };
    for (const auto& c : cases) {
        std::vector<std::string> arguments = {"-files", "/nowhere", "-files", files};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        const Conversation conversation = Program(arguments, "q");
        EXPECT_EQ(conversation.status, 0) << c.why;
        EXPECT_EQ(conversation.output.find("\nViewer:\n") == std::string::npos, c.ends) << c.why;
        for (const char* name : {"\"a\"", "\"b\""})
            EXPECT_EQ(conversation.output.find(name) != std::string::npos, c.played == std::string(name)) << c.why;
    }
}

TEST_F(Start, TakesTheUsersOwnFilesBeforeItsOwn)
{
    WriteFile(directory / "user/SW_Workspace.def", "first\nset(\"\", \"Active\", \"0\")\n");
    const std::string ask = "get(\"Project\", \"Active\", $a)\nset(\"Project\", \"SetVariableValue\", $a)\n";
    setenv("KORVO_USER_ATTRIBUTES", (directory / "user").c_str(), 1);
    EXPECT_NE(Play(ask).output.find("missing '=' in variable assignment '0'"), std::string::npos);
    setenv("KORVO_USER_ATTRIBUTES", "", 1);   // as if it were not set
    const Conversation without = Play(ask);
    EXPECT_NE(without.output.find("missing '=' in variable assignment '1'"), std::string::npos);
    EXPECT_EQ(without.output.find("set user attributes directory"), std::string::npos);
}

TEST_F(Start, EndsWithTheNameOfADescriptionThatIsNotThere)
{
    const Conversation conversation = Program({"-files", "nowhere"}, "q");
    EXPECT_EQ(conversation.signal, SIGABRT);
    ExpectSpoken(SpokenLines(conversation.output),
                 {"Setting config files directory: nowhere", "cannot open attribute file nowhere/AK_Object.atr!",
                  "cannot open attribute file nowhere/AK_Controller.atr!", "ERROR:FATAL:_attributes failed!"});
}

TEST_F(Start, HoldsTheContainersUnderTheIdsThatMacrosRelyOn)
{
    std::string macro;
    const char* ids[] = {"DHMs",         "ReleaseDHMs",      "Polygons",        "Polylines",
                         "ReleaseAreas", "EntrainmentAreas", "ResistanceAreas", "WallLines",
                         "SourceLines",  "Simulations",      "Labels"};
    for (const char* id : ids) macro += std::string("set(\"Project/") + id + "\", \"DeleteAll\", \"\")\n";
    EXPECT_EQ(Play(macro).output, "");
}

// ----------------------------------------------------------------------------------------------------------------
// Macros
// ----------------------------------------------------------------------------------------------------------------

TEST_F(Macros, FailWithTheStatedWordsAndEndTheProgramInPeace)
{
    WriteFile(Work("inner.macro"), "set(\"Project\", \"NoSuch\", \"\")\n"
                                   "set(\"Project/nosuch\", \"Active\", \"1\")\n"
                                   "set(\"Project\", \"Active\", \"5\")\n");
    const struct {
        const char* why;
        std::string macro;
        std::string spoken;
    } cases[] = {
        {"a line that is no command is passed over", "set(\"Project\", Active)\n",
         "invalid command string:set(\"Project\", Active) ignored!\n"},
        {"an unknown name does not stop a macro, an unknown object does, at each level",
         "set(\"\", \"ExecMacro\", \"inner.macro\")\nset(\"\", \"Active\", \"5\")\n",
         "could not execute command set(\"Project\", \"NoSuch\", \"\"), ignored!\n"
         "could not execute command set(\"Project/nosuch\", \"Active\", \"1\"), ignored!\n"
         "error when executing 'set(\"Project/nosuch\", \"Active\", \"1\")':object 'Project/nosuch' not found\n"
         "error 'object 'Project/nosuch' not found' when executing macro command "
         "'set(\"Project/nosuch\", \"Active\", \"1\")'!\n"
         "error when executing 'set(\"\", \"ExecMacro\", \"inner.macro\")':object 'Project/nosuch' not found\n"
         "error 'object 'Project/nosuch' not found' when executing macro command "
         "'set(\"\", \"ExecMacro\", \"inner.macro\")'!\n"},
        {"a component type that does not exist", "set(\"Project\", \"CreateSoftSphereSim2D\", \"s\")\n",
         "error when executing 'set(\"Project\", \"CreateSoftSphereSim2D\", \"s\")':unknown component type "
         "'SoftSphereSim2D'\n"
         "error 'unknown component type 'SoftSphereSim2D'' when executing macro command "
         "'set(\"Project\", \"CreateSoftSphereSim2D\", \"s\")'!\n"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Spoken(Play(c.macro)), c.spoken) << c.why;
    }
    const Conversation missing = Program({"-files", files, "-offscreen", "nosuch.macro"}, "");
    EXPECT_EQ(missing.status, 0) << "silent, as far as the program itself goes";
}

TEST_F(Macros, ExplainThemselvesInTheLanguageOfTheUser)
{
    const std::string macro = FileBytes(KORVO_SOURCE_DIR "/tests/data/SW_Workspace_explained.macro");
    for (const char* language : {"default", "german"}) {
        SCOPED_TRACE(language);
        const std::string expected =
            FileBytes(std::string(KORVO_SOURCE_DIR "/tests/data/SW_Workspace_explained.").append(language).c_str());
        const std::string choice = std::string("set(\"\", \"SetLanguage\", \"") + language + "\")\n";
        EXPECT_EQ(Spoken(Play(choice + macro)), expected);
    }
}

TEST_F(Macros, OfTheManualSayWhatItShows)
{
    const std::string manual = FileBytes(KORVO_SOURCE_DIR "/docs/macros.md");
    const auto block = [&](const char* kind, size_t& at) -> std::string {
        const std::string opening = std::string("```") + kind + "\n";
        at = manual.find(opening, at);
        if (at == std::string::npos) return "";
        const size_t begin = at + opening.size();
        at = manual.find("```\n", begin);
        return manual.substr(begin, at - begin);
    };
    int examples = 0;
    for (size_t at = 0;; ++examples) {
        const std::string macro = block("macro", at);
        if (macro.empty()) break;
        EXPECT_EQ(Spoken(Play(macro)), block("output", at)) << macro;
    }
    EXPECT_GE(examples, 5);
}

TEST_F(Macros, RecordedAtTheMenusBringTheSameStateBack)
{
    const std::string saved =
        std::string("e obj.Controller obj.Object opr.Settings filename.SaveAttributesRecursively ");
    const std::string home = " q q q q ";
    {
        Session session([&] { BecomeProgram({"-files", files}); });
        session.Do(
            "e obj.Controller obj.Object opr.Macros filename.MacroFileName session.macro q q q bool.Recording q");
        session.Do("Project e opr.Create text.CreateGroup two text.CreateUserObject Mine q");
        session.Do(
            "obj.Object bool.Active q q ReleaseAreas e obj.Container obj.Object opr.Macros int.MacroRepetitions 3");
        session.Do("filename.MacroFileName 50%\"quoted\"$x|y q opr.Project bool.SuppressCreatingComponents q q q q q");
        session.Do("two e bool.SingleType q q Mine e obj.Object opr.Macros int.MacroRepetitions many q q q q q");
        session.Do("e bool.Recording q " + saved + "first.macro" + home);
        EXPECT_NE(session.Screen().find("\n1:Project\n"), std::string::npos) << session.Screen();
    }
    {
        Session session([&] { BecomeProgram({"-files", files, "-macro", "session.macro"}); });
        session.Do(saved + "second.macro" + home);
    }
    const std::string first = FileBytes(Work("first.macro"));
    EXPECT_NE(first.find("50%%%q"), std::string::npos) << first;
    EXPECT_EQ(first, FileBytes(Work("second.macro"))) << FileBytes(Work("session.macro"));
}

// ----------------------------------------------------------------------------------------------------------------
// Launcher
// ----------------------------------------------------------------------------------------------------------------

TEST_F(Launcher, FindsTheInstalledProgramAndItsFilesAlsoForTheBackground)
{
    for (const char* name : {"bin", "libexec", "share", "share/korvo"}) AK_System::CreateDir(directory / name);
    ASSERT_EQ(symlink(KORVO_SOURCE_DIR "/files", (directory / "share/korvo/files").c_str()), 0);
    ASSERT_EQ(symlink(KORVO_PROGRAM, (directory / "libexec/korvo").c_str()), 0);
    const AK_String launcher = directory / "bin/korvo";
    ASSERT_EQ(AK_System::CpyFile(KORVO_SOURCE_DIR "/scripts/korvo", launcher), 0);
    ASSERT_EQ(chmod(launcher.c_str(), 0755), 0);
    ASSERT_EQ(symlink(launcher.c_str(), (directory / "work/k").c_str()), 0);
    WriteFile(Work("one.macro"), "set(\"\", \"StartInBackground\", \"-offscreen two.macro\")\n");
    WriteFile(Work("two.macro"), "set(\"Project\", \"SaveAttributes\", \"written\")\n");

    const Conversation conversation = Converse("", [&] {
        if (chdir(Work("").c_str()) != 0) return 1;
        execl("./k", "k", "-offscreen", "one.macro", nullptr);
        return 1;
    });   // which listens until the program in the background has ended too
    EXPECT_EQ(conversation.status, 0) << conversation.output;
    EXPECT_NE(
        conversation.output.find("starting " + std::string(launcher.c_str()) + " -offscreen two.macro in background"),
        std::string::npos)
        << conversation.output;
    EXPECT_NE(FileBytes(Work("written")).find("\"Active\""), std::string::npos) << conversation.output;

    AK_System::RemoveFile(Work("written"));
    const Conversation subcommand = Converse("", [&] {
        if (chdir(Work("").c_str()) != 0) return 1;
        execl("./k", "k", "play", "two.macro", nullptr);
        return 1;
    });
    EXPECT_EQ(subcommand.status, 0) << subcommand.output;
    EXPECT_TRUE(AK_System::FileExists(Work("written"))) << subcommand.output;
}

// ----------------------------------------------------------------------------------------------------------------
// Projects
// ----------------------------------------------------------------------------------------------------------------

TEST_F(Projects, ComeBackInANewProcessByteForByte)
{
    const char* build = "set(\"Project\", \"CreateUserObject\", \"calculator\")\n"
                        "set(\"Project/calculator\", \"AttributesName\", "
                        "\"obj.Calculator%%n%%ttext.$note:$note%%n%%t%%tset:$note%%n\")\n"
                        "set(\"Project/calculator\", \"$note\", \"a %%qnote%%q%%nin two lines\")\n"
                        "set(\"Project\", \"CreateGroup\", \"selection\")\n"
                        "set(\"Project/selection\", \"AppendObject\", \"Project/calculator\")\n"
                        "set(\"Project/selection\", \"AppendObject\", \"Project/DHMs\")\n"
                        "set(\"Project/ReleaseAreas\", \"Create\", \"release\")\n"
                        "set(\"Project/ReleaseAreas/release\", \"AppendPoint\", \"30.1 -20.3 0\")\n"
                        "set(\"Project/ReleaseAreas/release\", \"AppendPoint\", \"90.7 -20.9 0\")\n"
                        "set(\"Project/ReleaseAreas/release\", \"AppendPoint\", \"91 22 0\")\n"
                        "set(\"Project/ReleaseAreas/release\", \"Depth\", \"1.23456789\")\n"
                        "set(\"Project/Labels\", \"Active\", \"0\")\n"
                        "set(\"Project\", \"$unsaved\", \"x\")\n";
    const std::string saved = Play(std::string(build) + "set(\"Project\", \"SaveProjectAs\", \"first\")\n").output;
    EXPECT_EQ(saved.find("error"), std::string::npos) << saved;
    const std::string loaded = Play("set(\"Project\", \"LoadProject\", \"first\")\n"
                                    "get(\"Project/selection\", \"ContainedObjectsList\", $members)\n"
                                    "set(\"\", \"SetVariableValue\", $members)\n")
                                   .output;
    EXPECT_NE(loaded.find("'../calculator%AK_SEP%../DHMs%AK_SEP%'"), std::string::npos) << loaded;
    Play("set(\"Project\", \"LoadProject\", \"first\")\nset(\"Project\", \"SaveProjectAs\", \"second\")\n");
    const std::string compare = std::string("diff -r ") + Work("first").c_str() + " " + Work("second").c_str();
    EXPECT_EQ(std::system(compare.c_str()), 0);
    EXPECT_NE(FileBytes(Work("second/calculator/Calculator.atr")).find("a %%qnote%%q%%nin two lines"),
              std::string::npos);
}

// The values of an ESRI grid, from the top row down.
static std::vector<double> HeightsIn(const AK_String& path)
{
    std::istringstream in(FileBytes(path));
    std::string keyword;
    double value = 0;
    for (int i = 0; i < 6; ++i) in >> keyword >> value;
    std::vector<double> heights;
    while (in >> value) heights.push_back(value);
    return heights;
}

TEST_F(Projects, KeepRealTerrainToTheLastPrintedDigit)
{
    const int columns = 324, rows = 360;
    Play("set(\"Project/DHMs\", \"Import\", \"" KORVO_SOURCE_DIR "/examples/serles/serles_10m.asc\")\n"
         "set(\"Project\", \"SaveProjectAs\", \"saved\")\n");
    Play("set(\"Project\", \"LoadProject\", \"saved\")\n"
         "set(\"Project/DHMs/serles_10m\", \"Export\", \"out.asc\")\n"
         "set(\"Project/DHMs\", \"Import\", \"out.asc\")\n"
         "set(\"Project/DHMs/out\", \"Export\", \"again.asc\")\n");
    const std::vector<double> given = HeightsIn(KORVO_SOURCE_DIR "/examples/serles/serles_10m.asc");
    const std::vector<double> out = HeightsIn(Work("out.asc"));
    const std::vector<double> again = HeightsIn(Work("again.asc"));
    ASSERT_EQ(given.size(), size_t(columns * rows));
    ASSERT_EQ(out.size(), given.size());
    ASSERT_EQ(again.size(), given.size());
    int wrong = 0;
    for (size_t i = 0; i < given.size(); ++i) {
        const bool onFarEdge = i < size_t(columns) || i % columns == size_t(columns - 1);   // belongs to no cell
        wrong += out[i] != (onFarEdge ? -9999 : given[i]);
        wrong += !onFarEdge && again[i] != given[i];
    }
    EXPECT_EQ(wrong, 0);
    if (!HaveGdal()) return;
    const std::vector<AK_Vec> cells = RasterByGdal(Work("out.asc"));
    ASSERT_EQ(cells.size(), given.size());
    EXPECT_EQ(cells[0].x, 77670);
    EXPECT_EQ(cells[0].y, 222230);
    for (size_t i = columns; i < cells.size(); i += 997) EXPECT_NEAR(cells[i].z, out[i], 1e-3);
}

// ----------------------------------------------------------------------------------------------------------------
// Hostile input
// ----------------------------------------------------------------------------------------------------------------

TEST_F(HostileInput, MacrosOfAnyBytesEndInPeace)
{
    const std::string megabyte(1 << 20, 'x');
    const struct {
        const char* why;
        std::string macro;
    } cases[] = {
        {"the program itself", FileBytes(KORVO_PROGRAM)},
        {"a line of a megabyte", "set(\"Project\", \"" + megabyte + "\", \"1\")\n"},
        {"a value of a megabyte", "set(\"Project\", \"CreateGroup\", \"" + megabyte + "\")\n"},
        {"NUL bytes", WithNuls("set(\"Project@\", \"Active\", \"1\")\n@@\nget(\"@")},
        {"ids of any bytes", "set(\"Project\", \"CreateGroup\", \"\xff/..\x01%%n../\")\n"
                             "set(\"Project\", \"CreateGroup\", \"\")\nset(\"Project\", \"CreateGroup\", \"a\")\n"
                             "set(\"Project\", \"CreateGroup\", \"a\")\n"},
        {"names that pass on for ever", "set(\"Project\", \"" +
                                            [] {
                                                std::string name;
                                                for (int i = 0; i < 3000; ++i) name += "root:";
                                                return name;
                                            }() +
                                            "Active\", \"1\")\n"},
        {"the root under the feet of its macro", "set(\"\", \"DeleteComponent\", \"Project\")\n"
                                                 "set(\"Project\", \"Active\", \"1\")\n"},
        {"a macro on what it deletes", "set(\"Project\", \"ExecMacro\", \"suicide.macro\")\n"},
    };
    WriteFile(Work("suicide.macro"), "set(\"..\", \"DeleteComponent\", \"Project\")\nset(\"\", \"Active\", \"0\")\n");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Play(c.macro);
    }
}

TEST_F(HostileInput, DescriptionsOfAnyShapeAreReadOrRefused)
{
    const std::string whole = FileBytes((files + "/SW_Workspace.atr").c_str());
    std::string nested = "obj.Workspace\n";
    for (int level = 1; nested.size() < 2000000; level += level < 2000 ? 1 : 300)
        nested += std::string(size_t(level), '\t') + "opr.Deeper\n";
    const struct {
        const char* why;
        std::string text;
        bool starts;
    } cases[] = {
        {"empty", "", false},
        {"no line end", "obj.Workspace", false},
        {"cut in a text", whole.substr(0, whole.size() / 2), true},
        {"nested beyond measure", nested, true},
        {"any bytes", WithNuls("\t\xff@:\n\t\t\\\n") + FileBytes(KORVO_PROGRAM), true},
    };
    setenv("KORVO_USER_ATTRIBUTES", (directory / "user").c_str(), 1);
    for (const auto& c : cases) {
        WriteFile(directory / "user/SW_Workspace.atr", c.text);
        const Conversation conversation = Program({"-files", files}, "1 e q ? q q");
        if (conversation.signal == SIGABRT)
            EXPECT_NE(conversation.output.find("ERROR:FATAL:"), std::string::npos) << c.why;
        else
            EXPECT_EQ(conversation.status, 0) << c.why;
        EXPECT_EQ(conversation.status == 0, c.starts) << c.why << conversation.output.substr(0, 3000);
    }
}

TEST_F(HostileInput, ParameterSetsThatNameEachOtherCountAsNone)
{
    WriteFile(directory / "user/SW_Workspace.parsets", "=a\nParameterSet=b\n=b\nParameterSet=a\nActive=0\n");
    setenv("KORVO_USER_ATTRIBUTES", (directory / "user").c_str(), 1);
    const Conversation conversation = Play("set(\"Project\", \"ParameterSet\", \"a\")\n"
                                           "get(\"Project\", \"ParameterSet\", $set)\n"
                                           "set(\"\", \"SetVariableValue\", $set)\n");
    EXPECT_NE(conversation.output.find("missing '=' in variable assignment 'none'"), std::string::npos);
}
