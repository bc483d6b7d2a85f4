#include "qvt_sci_Fixture.h"

#include <map>

namespace {
std::map<std::string, std::string> files;   // what #include finds, by path

FILE* OpenFromMap(const char* path, const char*)
{
    const auto found = files.find(path);
    if (found == files.end()) return nullptr;
    FILE* file = std::tmpfile();
    std::fwrite(found->second.data(), 1, found->second.size(), file);
    std::rewind(file);
    return file;
}

class qvt_sci_Preprocess_ : public qvt_sci_Fixture {
protected:
    void SetUp() override
    {
        qvt_sci_Fixture::SetUp();
        qvt_sci_fopen = OpenFromMap;
        files.clear();
    }

    void TearDown() override
    {
        qvt_sci_fopen = fopen;
        qvt_sci_ClearIncludePathes();
        qvt_sci_Fixture::TearDown();
    }

    /// The expanded text, or the messages if it failed.
    std::string Expand(const std::string& text)
    {
        char* code = strdup(text.c_str());
        const int failed = qvt_sci_Preprocess(&code);
        const std::string result = failed ? Messages() : code;
        std::free(code);
        return result;
    }
};
}   // namespace

TEST_F(qvt_sci_Preprocess_, DefineReplacesWholeWordsDownToTheNextDefinition)
{
    const struct {
        const char *why, *text, *expanded;
    } cases[] = {
        // clang-format off
        {"whole words alone",                      "#define A 12\nx = A1 + A_ + A;\n",     "//_DEF_ A 12\nx = A1 + A_ + 12;\n"  },
        {"a short value is filled up with blanks", "#define LENGTH 3\nLENGTH;\n",          "//_DEF_ LENGTH 3\n3     ;\n"        },
        {"redefined below",                        "#define X 5\nX\n#define X 6\nX\n",     "//_DEF_ X 5\n5\n//_DEF_ X 6\n6\n"   },
        {"as the value of a later one",            "#define X 5\n#define Y X\nY\n",        "//_DEF_ X 5\n//_DEF_ Y 5\n5\n"      },
        {"comments are part of the value",         "#define N 3 // three\nN;\n",           "//_DEF_ N 3 // three\n3 // three;\n"},
        {"trailing blanks too",                    "#define N 3 \nN;\n",                   "//_DEF_ N 3 \n3 ;\n"                },
        {"strings and comments are not spared",    "#define F \"a\"\nprint \"F\"; // F\n",
         "//_DEF_ F \"a\"\nprint \"\"a\"\"; // \"a\"\n"                                                                         },
        {"not above the definition",               "N\n#define N 3\nN\n",                  "N\n//_DEF_ N 3\n3\n"                },
        {"an empty value",                         "#define EMPTY\nEMPTY;\n",              "//_DEF_ EMPTY\n     ;\n"            },
        {"no blank behind the keyword",            "#defineX 1\nX\n",                      "//_DEF_X 1\n1\n"                    },
        {"a value that holds its key",             "#define a a+a\na a\n",                 "//_DEF_ a a+a\na+a a+a\n"           },
        {"not at the line's begin: no directive",  " #define X 1\nX\n",                    " #define X 1\nX\n"                  },
        {"at the very end of the text",            "#define X 1\nX",                       "//_DEF_ X 1\n1"                     },
        // clang-format on
    };
    for (const auto& c : cases) EXPECT_EQ(Expand(c.text), c.expanded) << c.why;
}

TEST_F(qvt_sci_Preprocess_, IncludePutsAFileInPlaceOfItsName)
{
    files["a"] = "int a;\n";
    files["b"] = "int b;\n#include \"a\"\nint b2;";
    files["lib/c"] = "int c;\n";
    files["self"] = "int s;\n#include \"self\"\n";
    qvt_sci_AddIncludePath(nullptr);
    qvt_sci_AddIncludePath("");
    qvt_sci_AddIncludePath("none");
    qvt_sci_AddIncludePath("lib");
    const struct {
        const char *why, *text, *expanded;
    } cases[] = {
        // clang-format off
        {"the rest of the line stays behind the file", "x\n#include \"a\" y\nz\n",         "x\nint a;\n y\nz\n"           },
        {"at the very start",                          "#include \"a\"\n",                 "int a;\n\n"                   },
        {"from within a file",                         "#include \"b\"\n",                 "int b;\nint a;\n\nint b2;\n"  },
        {"once",                                       "#include \"a\"\n#include \"a\"\n", "int a;\n\n//_ignr_ \"a\"\n"   },
        {"not even from itself",                       "#include \"self\"\n",              "int s;\n//_ignr_ \"self\"\n\n"},
        {"through the include paths",                  "#include \"c\"\n",                 "int c;\n\n"                   },
        {"defined text is included as well",           "#define a 1\n#include \"a\"\n",    "//_DEF_ a 1\nint 1;\n\n"      },
        // clang-format on
    };
    for (const auto& c : cases) EXPECT_EQ(Expand(c.text), c.expanded) << c.why;
}

TEST_F(qvt_sci_Preprocess_, SaysWhatIsWrongWithADirective)
{
    qvt_sci_AddIncludePath("lib");
    files["secret.enc"] = "x";
    const std::string name(512, 'n');
    const struct {
        const char* text;
        std::string messages;
    } cases[] = {
        // clang-format off
        {"#include \"a\"",            "#include: no end of line found\nline: #include \"a\"\ninvalid #include!\n"              },
        {"x\n#include <a>\n",         "no quoted filename after #include\nline: #include <a>\ninvalid #include!\n"             },
        {"#include \"a\n",            "ending quote missing in #include statement\nline: #include \"a\ninvalid #include!\n"    },
        {"#include \"a\"\n",          "cannot open include file 'a' in any of the following include directories:\nlib/\n\n"
                             "line: #include \"a\"\ninvalid #include!\n"                           },
        {"#include \"secret.enc\"\n", "Sorry, no matching key to decrypt 'secret.enc'\n"
                                      "line: #include \"secret.enc\"\ninvalid #include!\n"},
        {"x\n#define\ny\n",           "line: #define\nincomplete define!\n"                                                    },
        {"#define A 1",               "line: #define A 1\nincomplete define!\n"                                                },
        {"#define A A\nx\n",          "line: #define A A\ninvalid define: value must not be identical to key!\n"               },
        // clang-format on
    };
    for (const auto& c : cases) EXPECT_EQ(Expand(c.text), c.messages) << c.text;
    const std::string longLine = "#include \"" + name + "\"";
    EXPECT_EQ(Expand(longLine + "\n"),
              "include file name '" + name + "' too long!\nline: " + longLine + "\ninvalid #include!\n");
}

TEST_F(qvt_sci_Preprocess_, FailsTheParseAsOneError)
{
    EXPECT_EQ(Parse("int a;\n#define \n"), 1);
    EXPECT_EQ(Messages(), "line: #define \nincomplete define!\npreprocessing failed\n1 errors\n");
    EXPECT_EQ(qvt_sci_Symbol("a"), nullptr);
}

// Thirty definitions of which each doubles the next would make a gigabyte of one letter.
TEST_F(qvt_sci_Preprocess_, RefusesTextsThatGrowBeyondAllBounds)
{
    std::string text;
    for (int i = 0; i < 30; ++i) {
        const std::string next = "k" + std::to_string(i + 1);
        text += "#define k" + std::to_string(i) + " " + next + " " + next + "\n";
    }
    EXPECT_NE(Expand(text + "k0\n").find("source is too long"), std::string::npos);
}

// Half a megabyte that nearly matches everywhere: comparing anew at each place would take minutes.
TEST_F(qvt_sci_Preprocess_, FindsLongKeysInOneWalk)
{
    const std::string key = Repeated("a+", 100000) + "b", text = Repeated("a+", 300000);
    EXPECT_EQ(Expand("#define " + key + " 1\n" + text + "\n" + text + key + ";\n"),
              "//_DEF_ " + key + " 1\n" + text + "\n" + text + "1" + Repeated(" ", int(key.size()) - 1) + ";\n");
    EXPECT_EQ(Expand("#define aab 1\naaab aab aaaab+aab aabaab\n"), "//_DEF_ aab 1\naaab 1   aaaab+1   aabaab\n");
    EXPECT_EQ(Expand("#define + -\n" + Repeated("+", 300000) + "\n"), "//_DEF_ + -\n" + Repeated("-", 300000) + "\n");
}

TEST_F(qvt_sci_Preprocess_, MasksSourceInOneLineAndBack)
{
    char* masked = qvt_sci_MaskedCode("print \"a\\n\";\n");
    EXPECT_STREQ(masked, "print %%qa%%bn%%q;%%n");
    char* back = qvt_sci_UnmaskedCode(masked);
    EXPECT_STREQ(back, "print \"a\\n\";\n");
    std::free(masked);
    std::free(back);
}

TEST_F(qvt_sci_Preprocess_, ReplacementFindsWhatItHasItselfCompleted)
{
    const struct {
        const char *text, *from, *to, *result;
        int count;
    } cases[] = {
        // clang-format off
        {"a.b.c", ".",   "--",  "a--b--c", 2},
        {"aabb",  "ab",  "",    "",        2},
        {"xyxyz", "xyz", "z",   "z",       2},
        {"abc",   "b",   "abc", "abc",     0}, // would never end
        {"abc",   "",    "x",   "abc",     0},
        {"aaa",   "aa",  "b",   "ba",      1},
        // clang-format on
    };
    for (const auto& c : cases) {
        char* text = strdup(c.text);
        EXPECT_EQ(qvt_sci_Replace(&text, c.from, c.to), c.count) << c.text;
        EXPECT_STREQ(text, c.result);
        std::free(text);
    }
}

TEST_F(qvt_sci_Preprocess_, IsNotDoneForOpenFiles)
{
    FILE* file = std::tmpfile();
    std::fputs("#define A 1\nint a;\nint b[A];", file);
    std::rewind(file);
    testing::internal::CaptureStdout();
    EXPECT_EQ(qvt_sci_Parse(file), 1);   // nobody has declared A
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ignoring preprocessor directive #define A 1\n");
    EXPECT_EQ(Messages(), "line 3: in 'int b[A]'\nline 3, before ']': symbol 'A' not declared\n1 errors\n");
    std::fclose(file);
}

TEST_F(qvt_sci_Preprocess_, ReportsListTheLinesAroundTheErrorButNoProtectedSource)
{
    EXPECT_EQ(Parse(Repeated("//\n", 40) + "$\n" + Repeated("//\n", 40)), 1);
    const std::string report = Messages();
    EXPECT_EQ(report.find("     12:  //\n     13:  //\n"), 0u) << "from 29 lines before";
    EXPECT_NE(report.find("X    41:  $\n"), std::string::npos);
    EXPECT_NE(report.find("     46:  //\n\nline 41, after '': invalid character\n"), std::string::npos) << "5 behind";

    EXPECT_EQ(Parse("int a;\n//ENC-START\nint secret;\n//ENC-END\nint b = c;\n"), 1);
    EXPECT_EQ(Messages(), "      1:  int a;\n      2...hiding encrypted code...\nX     5:  int b = c;\n\n"
                          "line 5: in 'int b = c;'\nline 5, before ';': symbol 'c' not declared\n1 errors\n");
}
