// The program at the prompt, from outside: subcommands, what they refuse, the status they end with.

#include "KORVO_TestSupport.h"

TEST_F(Prompt, RefusesWhatCannotBeMeantAndNamesTheNearest)
{
    WriteFile(Work("a.macro"), "");
    const struct {
        const char* why;
        std::vector<std::string> arguments;
        const char* sentence;
    } cases[] = {
        {"an unknown subcommand", {"paly"}, "no 'paly'; the nearest is 'play'"},
        {"letters swapped", {"help", "wacth"}, "no 'wacth'; the nearest is 'watch'"},
        {"an option that is no subcommand", {"--versoin"}, "the nearest is '--version'"},
        {"an unknown option", {"play", "a.macro", "--ste", "x=1"}, "unknown option '--ste'; the nearest is '--set'"},
        {"of one dash", {"watch", "-once"}, "unknown option '-once'; the nearest is '--once'"},
        {"with a value", {"play", "a.macro", "--sett=x"}, "unknown option '--sett'"},
        {"a missing value at the end", {"play", "a.macro", "--set"}, "option '--set' needs a value: NAME=VALUE"},
        {"a missing value before another option", {"play", "a.macro", "--macro", "--set"}, "'--macro' needs a value"},
        {"an empty value", {"play", "a.macro", "--macro="}, "'--macro' needs a value"},
        {"a value that is none", {"watch", "--once=1"}, "option '--once' takes no value"},
        {"twice", {"watch", "--once", "--once"}, "option '--once' is given twice"},
        {"a missing word", {"play"}, "there is no FILE"},
        {"a word too many", {"play", "a.macro", "b.macro"}, "too much: 'b.macro'"},
        {"behind -- all are words", {"play", "--", "a.macro", "--set"}, "too much: '--set'"},
        {"no language", {"watch", "--lang", "fr"}, "option '--lang' is 'en' or 'de', not 'fr'"},
        {"in German", {"watch", "--lang=de", "--onec"}, "unbekannte Option '--onec'; am naechsten ist '--once'"},
        {"no assignment", {"play", "a.macro", "--set", "=1"}, "'--set' needs NAME=VALUE, not '=1'"},
        {"no variable's name", {"play", "a.macro", "--set", "a b=1"}, "'--set' needs NAME=VALUE, not 'a b=1'"}};
    for (const auto& c : cases) {
        const Call call = Korvo(c.arguments);
        EXPECT_EQ(call.status, 2) << c.why;
        EXPECT_TRUE(Contains(call.errors, c.sentence)) << c.why << ": " << call.errors;
        EXPECT_EQ(NumLines(call.errors), 2) << c.why << ": a sentence, and where the help is";
        EXPECT_EQ(call.said, "") << c.why;
    }
}

TEST_F(Prompt, TellsWhatThereIs)
{
    const struct {
        std::vector<std::string> arguments;
        const char* parts[3];
    } cases[] = {{{"--help"}, {"korvo play FILE", "korvo watch [DIR]", "-offscreen FILE"}},
                 {{"help", "--lang", "de"}, {"korvo play FILE", "spielt ein Makro", "-files"}},
                 {{"help", "play"}, {"korvo play FILE [option...]", "--set NAME=VALUE", "--lang en|de"}},
                 {{"play", "--help"}, {"korvo play FILE [option...]", "--set NAME=VALUE", "--lang en|de"}},
                 {{"--version"}, {"korvo 1.0.0\n", "\nbuild: ", "\nmodules: none\n"}}};
    for (const auto& c : cases) {
        const Call call = Korvo(c.arguments);
        EXPECT_EQ(call.status, 0);
        for (const char* part : c.parts) EXPECT_TRUE(Contains(call.said, part)) << part << call.said;
    }
    const int full = open("/dev/full", O_WRONLY);
    EXPECT_EQ(Converse("",
                       [&]() -> int {
                           dup2(full, 1);
                           BecomeProgram({"--help"});
                       })
                  .status,
              1);
    close(full);
}

TEST_F(Prompt, PlayTellsByItsStatusWhetherEveryCommandWentWell)
{
    AK_System::CreateDir(Work("folder"));
    WriteFile(Work("broken.asc"), "nothing\n");
    WriteFile(Work("fault.cint"), "void main()\n{\n  double a[3];\n  int i;\n  i = 5;\n  a[i] = 1;\n}\n");
    WriteFile(Work("broken.cint"), "void main()\n{\n  double a[3;\n}\n");
    WriteFile(Work("inner.macro"), "set(\"Project\", \"NoSuch\", \"\")\n");
    const std::string simulation = "set(\"Project/Simulations\", \"CreateSimulation\", \"s\")\n";
    const std::string terrain = "set(\"Project/DHMs\", \"Import\", \"flat.asc\")\n";
    WriteFile(Work("flat.asc"),
              "ncols 3\nnrows 3\nxllcorner 0\nyllcorner 0\ncellsize 5\nNODATA_value -9\n1 2 3 4 5 6 7 8 9\n");
    const struct {
        const char* why;
        std::string macro;
        const char* reason;   // "" for success
    } cases[] = {
        {"nothing to do", "free text\n", ""},
        {"all is well", "set(\"Project\", \"Active\", \"0\")\nget(\"Project\", \"Active\", $a)\n", ""},
        {"an unknown attribute is passed over",
         "set(\"Project\", \"NoSuch\", \"\")\nset(\"Project\", \"Active\", \"1\")\n",
         "could not execute command set(\"Project\", \"NoSuch\", \"\"), ignored!"},
        {"in a macro within it", "set(\"\", \"ExecMacro\", \"inner.macro\")\n", "could not execute command"},
        {"a line that is no command", "set(\"Project\", Active)\n", "invalid command string"},
        {"an object that is not there", "set(\"Project/nosuch\", \"Active\", \"1\")\n", "could not execute"},
        {"an operation that fails", "set(\"Project\", \"CreateSoftSphereSim2D\", \"s\")\n", "unknown component type"},
        {"a raster that is not there", "set(\"Project/DHMs\", \"Import\", \"none.asc\")\n", "cannot open"},
        {"a raster that is none", "set(\"Project/DHMs\", \"Import\", \"broken.asc\")\n", "unkown input syntax"},
        {"lines that are not there", "set(\"Project/Polylines\", \"Import\", \"none.nxyz\")\n", "cannot open"},
        {"lines of no format", "set(\"Project/Polylines\", \"Import\", \"none.xxx\")\n", "no lines are read"},
        {"a mesh that is not there", simulation + "set(\"Project/Simulations/s\", \"Mesh\", \"none\")\n",
         "finds no mesh"},
        {"a formula that cannot go on", "set(\"\", \"ExecMacro\", \"fault.cint\")\n", "index out of bounds"},
        {"a formula of no grammar", "set(\"\", \"ExecMacro\", \"broken.cint\")\n", "syntax error"},
        {"a run without terrain", simulation + "set(\"Project/Simulations/s\", \"Run\", \"\")\n", "release areas"},
        {"a file that cannot be written",
         terrain + "set(\"Project/DHMs/flat_simulation\", \"Export\", \"/no/such/a.asc\")\n", "cannot "}};
    for (const auto& c : cases) {
        WriteFile(Work("a.macro"), c.macro);
        const Call call = Korvo({"play", "a.macro"});
        EXPECT_EQ(call.status, *c.reason ? 1 : 0) << c.why << call.said << call.errors;
        EXPECT_TRUE(Contains(call.errors, c.reason)) << c.why << ": " << call.errors;
        EXPECT_EQ(NumLines(call.errors), *c.reason ? 1 : 0) << c.why << ": " << call.errors;
    }
    EXPECT_TRUE(Contains(Korvo({"play", "none.macro"}).errors, "there is no file 'none.macro'"));
    EXPECT_TRUE(Contains(Korvo({"play", "folder"}).errors, "this is a directory: 'folder'"));
}

TEST_F(Prompt, PlayGivesVariablesToTheMacroAndWritesWhatItDid)
{
    WriteFile(Work("a.macro"),
              "set(\"Project/DHMs\", \"CreateMesh\", $name)\nset(\"\", \"SaveAttributesRecursively\", $to)\n");
    EXPECT_EQ(Korvo({"play", "--set", "name=alp", "--set=$to=first", "--macro", "b.macro", "a.macro"}).status, 0);
    EXPECT_TRUE(Contains(FileBytes(Work("first")), "alp"));
    const std::string first = FileBytes(Work("first"));
    EXPECT_EQ(Korvo({"play", "b.macro"}).status, 0);
    EXPECT_EQ(FileBytes(Work("first")), first);
    EXPECT_EQ(Korvo({"play", "a.macro", "--set", "to=x", "--macro", "/no/such/b"}).status, 1);
}

TEST_F(Prompt, WatchTellsHowFarEachRunIs)
{
    for (const char* run : {"runs", "runs/s", "runs/t"}) AK_System::CreateDir(Work(run));
    const struct {
        const char* status;
        const char* info;
        const char* line;
    } cases[] = {
        {"running", "at time 12.5 s, run time 0:0:10, estimated remaining run time 0:0:30, CPU time 0:0:12",
         "s                    running         12.5 s [#######                       ]  25 % 0:0:30 left"},
        {"running 1 1", "at time 2 s, run time 0:0:1, estimated remaining run time 0:0:0, CPU time 0:0:1",
         "s                    interrupted        2 s [##############################] 100 % its process is gone"},
        {"finished", "stopped at 32.5s due to stop-criterion:low energy",
         "s                    finished        32.5 s [##############################] 100 % stop-criterion:low "
         "energy"},
        {"running", "at time 1 s, run time 9:99, estimated remaining run time -5:x, CPU time",
         "s                    running            1 s [##############################] 100 % -5:x left"}};
    WriteFile(Work("runs/t/.simulation_status"), "finished\n");
    for (const auto& c : cases) {
        WriteFile(Work("runs/s/.simulation_status"), c.status + std::string("\n"));
        WriteFile(Work("runs/s/.simulation_info"), c.info + std::string("\n"));
        const Call call = Korvo({"watch", "--once", "runs"});
        EXPECT_EQ(call.status, 0);
        EXPECT_EQ(call.said.substr(0, call.said.find('\n')), c.line);
        EXPECT_TRUE(Contains(call.said, "\nt                    finished ")) << call.said;
    }
    EXPECT_EQ(Korvo({"watch", "nowhere"}).status, 1);
}

TEST_F(Prompt, ManualWritesBothLanguages)
{
    const Call call = Korvo({"manual", "--out", "a/b"});
    EXPECT_EQ(call.status, 0) << call.errors;
    EXPECT_TRUE(Contains(FileBytes(Work("a/b/reference.html")), "Depth"));
    EXPECT_TRUE(Contains(FileBytes(Work("a/b/handbuch.html")), "Anbruchhoehe"));
    WriteFile(Work("file"), "");
    EXPECT_EQ(Korvo({"manual", "--out", "file"}).status, 1);
}
