// Macros: which lines are commands, what a block's comment becomes, where and how a macro stops.

#include "AK_Object_TestSupport.h"

class AK_MacrosTest : public ObjectTest {
protected:
    AK_MacrosTest() : root("Viewer", nullptr) { a = root.Add("a"); }

    AK_String File(const char* name, const std::string& text)
    {
        WriteFile(directory / name, text);
        return directory / name;
    }

    // Runs a text as a macro on the root and returns its messages; the file's directory stands as "DIR" in both.
    Lines Play(std::string text, int noExplain = 0)
    {
        root._count = 0;
        AK_Object::_execStatus = "";
        const std::string dir = Text(directory.Path());
        for (size_t at; (at = text.find("DIR")) != std::string::npos;) text.replace(at, 3, dir);
        const AK_String file = File("test.macro", text);
        Messages();
        root.ExecMacro(file, noExplain);
        EXPECT_EQ(AK_Object::_macroFileNameStack.Size(), 0);
        return WithoutDirectory(Messages());
    }

    Lines WithoutDirectory(Lines lines) const
    {
        const std::string dir = Text(directory.Path());
        for (std::string& line : lines)
            for (size_t at; (at = line.find(dir)) != std::string::npos;) line.replace(at, dir.size(), "DIR");
        return lines;
    }

    std::string Status() const { return WithoutDirectory({Text(AK_Object::_execStatus)}).at(0); }

    TestThing root;
    TestThing* a;
};

// -------------------------------------------------------------------------------------------------- lines of the file

TEST_F(AK_MacrosTest, LinesThatBeginAsCommandsAreCommands)
{
    // clang-format off
    const struct {
        const char* why;
        std::string text;
        int commands;   // how many of the lines were executed
        int open = 0;   // the line of a comment that does not end
    } cases[] = {
        {"an empty file", "", 0},
        {"one line", "set(\"\", \"Count\", \"\")", 1},
        {"lines of another system", "set(\"\", \"Count\", \"\")\r\nset(\"\", \"Count\", \"\")\r\n", 2},
        {"free text", "This macro does\n# nothing\n set(\"\", \"Count\", \"\")\n\tset(\"\", \"Count\", \"\")\n", 0},
        {"free text that looks alike",
         "sets\nset (\"\", \"Count\", \"\")\n//set(\"\", \"Count\", \"\")\n*/\n%lang x\n", 0},
        {"within a block", "/*\nset(\"\", \"Count\", \"\")\n*/\nset(\"\", \"Count\", \"\")\n", 1},
        {"behind a block that opens and ends in a line", "/* note */\nset(\"\", \"Count\", \"\")\n", 0, 1},
        {"a block that does not end", "/*\n*/\n/*\n/*\nset(\"\", \"Count\", \"\")\n", 0, 3},
        {"behind another language",
         "/*\n%lang klingon\nset(\"\", \"Count\", \"\")\n*/\nset(\"\", \"Count\", \"\")\n", 2},
        {"behind this language", "/*\n%lang default\nset(\"\", \"Count\", \"\")\n*/\n", 0},
        {"a NUL ends a line", std::string("set(\"\", \"Count\", \"\")\0rest\nset(\"\", \"Count\", \"\")\n", 47), 2},
    };
    // clang-format on
    for (const auto& c : cases) {
        const Lines told = c.open
                               ? Lines{"WARNING:DIR/test.macro, line " + std::to_string(c.open) +
                                       ": the comment that begins here does not end: no command behind it is executed"}
                               : Lines{};
        EXPECT_EQ(Play(c.text), told) << c.why;
        EXPECT_EQ(root._count, c.commands) << c.why;
        EXPECT_EQ(Status(), "") << c.why;
    }
}

// ------------------------------------------------------------------------------------------------------------ stopping

TEST_F(AK_MacrosTest, AMacroStopsAtAnErrorAndGoesOnBehindANote)
{
    // clang-format off
    const struct {
        const char* why;
        std::string text;
        Lines messages;
        std::string status;
        int commands;
    } cases[] = {
        {"an unparsable command is passed over",
         "set(\"\"\nset(\"\", \"Count\", \"\")\n",
         {"invalid command string:set(\"\" ignored!"}, "", 1},
        {"so is an unknown attribute",
         "set(\"\", \"NoSuch\", \"1\")\nset(\"\", \"Count\", \"\")\n",
         {"could not execute command set(\"\", \"NoSuch\", \"1\"), ignored!"}, "", 1},
        {"a failed operation ends it",
         "set(\"\", \"Count\", \"\")\r\nset(\"\", \"Fail\", \"x\")\r\nset(\"\", \"Count\", \"\")\r\n",
         {"error when executing 'set(\"\", \"Fail\", \"x\")':failed: x",
          "error 'failed: x' when executing macro command 'set(\"\", \"Fail\", \"x\")'!"}, "failed: x", 1},
        {"a missing object too",
         "get(\"no/such\", \"Id\", $i)\nset(\"\", \"Count\", \"\")\n",
         {"could not execute command get(\"no/such\", \"Id\", $i), ignored!",
          "error when executing 'get(\"no/such\", \"Id\", $i)':object 'no/such' not found",
          "error 'object 'no/such' not found' when executing macro command 'get(\"no/such\", \"Id\", $i)'!"},
         "object 'no/such' not found", 0},
        {"a macro in a macro that fails ends both",
         "set(\"a\", \"ExecMacro\", \"DIR/inner\")\nset(\"\", \"Count\", \"\")\n",
         {"error when executing 'set(\"\", \"Fail\", \"in\")':failed: in",
          "error 'failed: in' when executing macro command 'set(\"\", \"Fail\", \"in\")'!",
          "error when executing 'set(\"a\", \"ExecMacro\", \"DIR/inner\")':failed: in",
          "error 'failed: in' when executing macro command 'set(\"a\", \"ExecMacro\", \"DIR/inner\")'!"},
         "failed: in", 0},
        {"a macro that runs itself",
         "set(\"\", \"Count\", \"\")\nset(\"\", \"ExecMacro\", \"DIR/test.macro\")\nset(\"\", \"Count\", \"\")\n",
         {"error when executing 'set(\"\", \"ExecMacro\", \"DIR/test.macro\")':recursive macro call ignored",
          "error 'recursive macro call ignored' when executing macro command "
          "'set(\"\", \"ExecMacro\", \"DIR/test.macro\")'!"},
         "recursive macro call ignored", 1},
        {"or on another object, by its name",
         "set(\"a\", \"DIR/test.macro\", \"\")\n",
         {"error when executing 'set(\"a\", \"DIR/test.macro\", \"\")':recursive macro call ignored",
          "error 'recursive macro call ignored' when executing macro command 'set(\"a\", \"DIR/test.macro\", \"\")'!"},
         "recursive macro call ignored", 0},
    };
    // clang-format on
    File("inner", "set(\"\", \"Fail\", \"in\")\n");
    for (const auto& c : cases) {
        EXPECT_EQ(Play(c.text), c.messages) << c.why;
        EXPECT_EQ(Status(), c.status) << c.why;
        EXPECT_EQ(root._count, c.commands) << c.why;
    }
}

TEST_F(AK_MacrosTest, TheFrontEndInterruptsBetweenCommands)
{
    static int polls = 0;
    AK_Object::_signalFunction = [] { return ++polls == 3 ? 1 : 0; };
    EXPECT_EQ(Play("set(\"\", \"Count\", \"\")\nfree text\nset(\"\", \"Count\", \"\")\nset(\"\", \"Count\", \"\")\n"),
              Lines{});
    EXPECT_EQ(root._count, 2);
    EXPECT_EQ(polls, 3) << "free text is no occasion";
    EXPECT_EQ(Status(), "interrupted");
    AK_Object::_signalFunction = nullptr;
    EXPECT_EQ(AK_Object::Signal(), 0);
}

TEST_F(AK_MacrosTest, RepetitionsRunTheFileAnew)
{
    const struct {
        const char* repetitions;
        int count;
    } cases[] = {
        {"3",    3},
        {"1",    1},
        {"0",    0},
        {"-1",   0},
        {"many", 0}
    };
    for (const auto& c : cases) {
        root.Set("MacroRepetitions", c.repetitions);
        EXPECT_EQ(Play("set(\"\", \"Count\", \"\")\n"), Lines{});
        EXPECT_EQ(root._count, c.count) << c.repetitions;
    }
    root.Set("MacroRepetitions", "3");
    root.SetVariableValue("$target", "a");
    EXPECT_EQ(
        Play("set(\"\", \"Count\", \"\")\nset($target, \"Number\", \"1\")\nset(\"\", \"$target\", \"gone\")\n").size(),
        3u);
    EXPECT_EQ(root._count, 2) << "an error in the second pass ends the run";
    EXPECT_EQ(Status(), "object 'gone' not found");
}

// ------------------------------------------------------------------------------------------------------ comment blocks

TEST_F(AK_MacrosTest, BlocksBecomeTheCommentOfTheNextCommand)
{
    // clang-format off
    const struct {
        const char* why;
        const char* language;
        std::string text;
        std::string comment;
    } cases[] = {
        {"none", "default", "text\n", ""},
        {"a block", "default", "/*\none\n two\n*/\n", "/*\none\n two\n\n*/"},
        {"the later of two", "default", "/*\none\n*/\n/*\ntwo\n*/\n", "/*\ntwo\n\n*/"},
        {"one within another starts over", "default", "/*\none\n/*\ntwo\n*/\nrest\n*/\n", "/*\ntwo\n\n*/"},
        {"an open one", "default", "/*\none\n", "/*\none\n"},
        {"text and this language", "default", "/*\none\n%lang default\ntwo\n*/\n", "/*\ntwo\n\n*/"},
        {"text and another language", "default", "/*\none\n%lang german\nzwei\n*/\n", "/*\none\n"},
        {"both, this one first", "default", "/*\n%lang default\none\n%lang german\nzwei\n*/\n", "/*\none\n"},
        {"both, this one last", "german", "/*\n%lang default\none\n%lang german\nzwei\n*/\n", "/*\n"},
        {"a figure", "default", "/*\none\n//fig 3\ntwo\n*/\n", "/*\none\ntwo\n\n*/"},
    };
    // clang-format on
    for (const auto& c : cases) {
        AK_Object::_language = c.language;
        const bool open = std::string(c.why) == "an open one";
        EXPECT_EQ(Play(c.text).size(), open ? 1u : 0u) << c.why;
        EXPECT_EQ(Text(AK_Object::_macroComment), c.comment) << c.why;
    }
    EXPECT_EQ(AK_Object::_macroFigure, 1);
    Play("text\n");
    EXPECT_EQ(AK_Object::_macroFigure, 0) << "each start clears both";
    EXPECT_EQ(Text(AK_Object::_macroComment), "");
    Play("  //fig\n");
    EXPECT_EQ(AK_Object::_macroFigure, 0);
    Play("//finally\n");
    EXPECT_EQ(AK_Object::_macroFigure, 1) << "four characters tell";
}

TEST_F(AK_MacrosTest, ATutorialTellsItsCommentsWithTheCommands)
{
    const std::string tutorial = "/*\nWe count.\n%lang german\nWir zaehlen.\n*/\n"
                                 "set(\"\", \"Count\", \"\")\n"
                                 "set(\"\", \"Count\", \"\")\n";
    AK_Object::_explainCommands = 1;
    const Lines english = {
        "CMD-INFO:/*\nWe count.\n\n\n\nSelect the object 'Viewer' (->Thing.)\nand apply ->Thing.Count. \n"
        "(The corresponding macro command is 'set(\"\", \"Count\", \"\")'.)",
        "CMD-INFO:\nSelect the object 'Viewer' (->Thing.)\nand apply ->Thing.Count. \n"
        "(The corresponding macro command is 'set(\"\", \"Count\", \"\")'.)"};
    EXPECT_EQ(Play(tutorial), english);
    EXPECT_EQ(root._count, 2);
    EXPECT_EQ(Play(tutorial, 1), Lines{});
    EXPECT_EQ(root._count, 2);

    root.Set("SetLanguage", "german");
    EXPECT_EQ(Play(tutorial).at(0),
              "CMD-INFO:/*\nWir zaehlen.\n\n*/\n\n\nWaehlen Sie das Objekt 'Viewer' (->Thing.)\nund wenden Sie "
              "->Thing.Count an. \n(Der entsprechende Makrobefehl ist 'set(\"\", \"Count\", \"\")'.)");
}

TEST_F(AK_MacrosTest, NoMacroRunsWithinItselfWhateverItCallsItself)
{
    const std::string dir = Text(directory.Path());
    symlink((directory / "a.macro").c_str(), (directory / "link.macro").c_str());
    ClassFile("again", "");
    const struct {
        const char* why;
        std::string file;
        std::string ownName;
    } cases[] = {
        {"by its name", dir + "/a.macro", dir + "/a.macro"},
        {"by another spelling", dir + "/a.macro", dir + "/./attributes/../a.macro"},
        {"by a link", dir + "/a.macro", dir + "/link.macro"},
        {"by the short name of the attribute directories", dir + "/attributes/again", "again"},
        {"as formula code", dir + "/a.cint", dir + "//a.cint"},
    };
    for (const auto& c : cases) {
        const bool isCode = c.file.ends_with(".cint");
        const std::string call = "set(\"\", \"ExecMacro\", \"" + c.ownName + "\")";
        const std::string count = "set(\"\", \"Count\", \"\")";
        WriteFile(c.file.c_str(),
                  isCode ? "void main() { " + count + "; " + call + "; }\n" : count + "\n" + call + "\n");
        root._count = 0;
        root.ExecMacro(c.ownName.c_str(), 0);
        EXPECT_EQ(Status(), "recursive macro call ignored") << c.why;
        EXPECT_EQ(root._count, 1) << c.why;
        EXPECT_EQ(AK_Object::_macroFileNameStack.Size(), 0) << c.why;
    }
}

TEST_F(AK_MacrosTest, ChainsOfFiveHundredMacrosRun)
{
    const auto name = [&](int i) { return directory / AK_String(i, "m%d.macro").c_str(); };
    for (int i = 1; i <= 500; ++i)
        WriteFile(name(i), "set(\"\", \"Count\", \"\")\nset(\"\", \"ExecMacro\", \"" + Text(name(i + 1)) + "\")\n");
    WriteFile(name(501), "set(\"\", \"Count\", \"\")\n");
    root.ExecMacro(name(2), 0);
    EXPECT_EQ(Status(), "");
    EXPECT_EQ(root._count, 500);
    root.ExecMacro(name(1), 0);
    EXPECT_EQ(Status(), "more than 500 macros within each other") << "no file may choose how deep calls go";
    EXPECT_EQ(root._count, 1000);
}

// ------------------------------------------------------------------------------------------------------ hostile input

TEST_F(AK_MacrosTest, LongLinesAreReadInPieces)
{
    // What exceeds the limit counts as the next line, so the second piece can be a command.
    const std::string longest(40959 - 17 - 2, 'x');
    EXPECT_EQ(Play("set(\"\", \"Count\", \"\")\n" + std::string(40959, '#') + "set(\"\", \"Count\", \"\")\n"), Lines{});
    EXPECT_EQ(root._count, 2);
    EXPECT_EQ(Play("set(\"\", \"Text\", \"" + longest + "\")\n"), Lines{});
    EXPECT_EQ(Text(root.Get("Text")), longest);
    const Lines cut = Play("set(\"\", \"Text\", \"" + std::string(1 << 20, 'y') + "\")\nset(\"\", \"Count\", \"\")\n");
    ASSERT_EQ(cut.size(), 1u);
    EXPECT_EQ(cut[0].substr(0, 44), "invalid command string:set(\"\", \"Text\", \"yyyy");
    EXPECT_EQ(root._count, 1);
}

TEST_F(AK_MacrosTest, ABinaryFileIsFreeText)
{
    std::string bytes;
    unsigned state = 1;
    for (int i = 0; i < 1 << 20; ++i) bytes += char((state = state * 1664525 + 1013904223) >> 24);
    EXPECT_EQ(Play(bytes), Lines{});
    EXPECT_EQ(Play(std::string(1 << 20, '\0')), Lines{});
    std::ifstream program("/proc/self/exe", std::ios::binary);
    std::string head(4 << 20, '\0');
    program.read(head.data(), std::streamsize(head.size()));
    Play(head);
    ExpectConsistent(root);
}
