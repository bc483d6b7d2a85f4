// Commands: the grammar, escaping, what is reported when one fails, and a front end that refuses one.

#include "AK_Object_TestSupport.h"

class AK_CommandsTest : public ObjectTest {
protected:
    AK_CommandsTest() : root("Viewer", nullptr)
    {
        a = root.Add("a");
        b = root.Add("b, c");   // becomes b__c
    }

    // "result|cmd|object|attribute|value"; of a line that does not parse the result alone.
    std::string Parsed(const std::string& line)
    {
        AK_String cmd, object, attr, value;
        const int result = root.ParseCommandString(line.c_str(), cmd, object, attr, value);
        if (result != 0) return std::to_string(result);
        return "0|" + Text(cmd) + "|" + Text(object) + "|" + Text(attr) + "|" + Text(value);
    }

    TestThing root;
    TestThing* a;
    TestThing* b;
};

// ------------------------------------------------------------------------------------------------------------ grammar

TEST_F(AK_CommandsTest, LinesAreParsed)
{
    root.SetVariableValue("$p", "a/b");
    root.SetVariableValue("$v", "%%q-value");
    // clang-format off
    const struct {
        const char* line;
        const char* parsed;
    } cases[] = {
        // what a line is, by its first characters alone
        {R"(set("p", "A", "v"))",              "0|set|p|A|v"             },
        {R"(get("p", "A", $x))",               "0|get|p|A|$x"            },
        {R"(# set("p", "A", "v"))",            "0||||"                   },
        {"#",                                  "0||||"                   },
        {R"( set("p", "A", "v"))",             "1"                       },
        {R"(set ("p", "A", "v"))",             "1"                       },
        {"",                                   "1"                       },
        // the first argument
        {"set(",                               "1"                       },
        {R"(set("p"))",                        "1"                       },
        {R"(set(p, A, v))",                    "1"                       },
        {R"(set("p, "A)",                      "1"                       },
        {R"(set("a, b/c", "A", "v"))",         "0|set|a, b/c|A|v"        },
        {R"(set($p, "A", "v"))",               "0|set|a/b|A|v"           },
        {R"(set($unknown, "A", "v"))",         "0|set||A|v"              },
        {R"(set("$p", "A", "v"))",             "0|set|$p|A|v"            },
        {R"(set(free text "p" too, "A", "v"))", "0|set|p|A|v"            },
        // the second
        {R"(set("p", "A"))",                   "2"                       },
        {R"(set("p", A, v))",                  "2"                       },
        {R"(set("p", $p, "v"))",               "0|set|p|a/b|v"           },
        {R"(set("p", "x:A, B", "v"))",         "0|set|p|x:A, B|v"        },
        // the third
        {R"(set("p", "A", "v")",               "3"                       },
        {R"(set("p", "A", ))",                 "3"                       },
        {R"(set("p", "A", "))",                "3"                       },
        {R"(set("p", "A", ""))",               "0|set|p|A|"              },
        {R"(set("p", "A", "v"); // more)",     "0|set|p|A|v"             },
        {R"(set("p", "A", "a "quoted" v"))",   R"(0|set|p|A|a "quoted" v)"},
        {R"(set("p", "A", "f(x), g"))",        "0|set|p|A|f(x), g"       },
        {R"-(set("(p)", "A", "v")-",           "0|set|(p)|A|v"           },   // the last bracket of the line
        {R"(set("p", "A", $v))",               "0|set|p|A|\"-value"      },
        {R"(set("p", "A", "$v"))",             "0|set|p|A|\"-value"      },
        {R"(set("p", "A", "$v and more"))",    "0|set|p|A|$v and more"   },
        {R"(set("p", "A", "more and $v"))",    "0|set|p|A|\"-value"      },   // from the "$" on it is a name
        {R"(set("p", "A", "5 $"))",            "0|set|p|A|5 $"           },
        {R"(set("p", "A", $v $v))",            "3"                       },
        {R"(set("p", "A", $v "x"))",           "0|set|p|A|x"             },
        {R"(set("p", "A", $unknown))",         "0|set|p|A|"              },
        {R"(get("p", "A", "$x"))",             "0|get|p|A|$x"            },
        {R"(get("p", "A", "x"))",              "4"                       },
    };
    // clang-format on
    for (const auto& c : cases) EXPECT_EQ(Parsed(c.line), c.parsed) << c.line;
    EXPECT_EQ(Messages(), Lines{"third argument of get() must be variable name!"});
    EXPECT_EQ(root.Get("$v"), "%%q-value");
}

TEST_F(AK_CommandsTest, WhatIsWrittenIsReadBack)
{
    EXPECT_EQ(Text(AK_Object::CommandString("a/b", "Text", "x\ny\tz\"")), R"(set("a/b", "Text", "x%%ny%%tz%%q"))");
    std::string bytes;
    for (int c = 1; c < 256; ++c) bytes += char(c);
    std::vector<std::string> values = {"",
                                       " ",
                                       ",",
                                       ")",
                                       "(",
                                       "\")",
                                       "\", \"",
                                       "%",
                                       "%%",
                                       "%n",
                                       "set(\"\", \"A\", \"v\")",
                                       "a \"b\", \"c\")",
                                       "\n\n\t\t\"\"",
                                       bytes,
                                       std::string(1 << 20, '"'),
                                       std::string(1 << 20, 'x')};
    for (int first = 1; first < 256; ++first) values.push_back(std::string(1, char(first)) + "x" + char(256 - first));
    for (const std::string& value : values) {
        const AK_String line = AK_Object::CommandString("a", "Text", value.c_str());
        root.ExecCommand(line, 0);
        ASSERT_EQ(Text(a->Get("Text")), value);
        EXPECT_EQ(a->CommandString(&root, "Text", a->Get("Text")), line);
    }
    EXPECT_EQ(Messages(), Lines{});
}

// ---------------------------------------------------------------------------------------------------------- execution

TEST_F(AK_CommandsTest, CommandsActOnTheObjectTheyName)
{
    const struct {
        AK_Object* on;
        const char* command;
        const char* from;
        const char* value;
    } cases[] = {
        {a,     R"(set("", "Number", "1"))",             "a:Number",      "1"        },
        {a,     R"(set("root", "Number", "2"))",         "Number",        "2"        },
        {a,     R"(set("../b__c", "Number", "3"))",      "b__c:Number",   "3"        },
        {&root, R"(set("", "a:Number", "4"))",           "a:Number",      "4"        },
        {&root, R"(get("a", "Number", $n))",             "$n",            "4"        }, // on the object that runs it
        {&root, R"(set("b__c", "Number", $n))",          "b__c:Number",   "4"        },
        {&root, R"(get("", "NoSuch", $n))",              "$n",            "%AK_NULL%"},
        {&root, R"(set("", "Text", "a%%nb"))",           "Text",          "a\nb"     },
        {&root, R"(set("", "$n", "direct"))",            "$n",            "direct"   },
        {&root, R"(get("", "$n", $m))",                  "$m",            "direct"   },
        {&root, R"(# set("", "Text", "comment"))",       "Text",          "a\nb"     },
        {&root, R"(set("", "Text", "%ak_ptr%0x1234"))",  "Text",          "a\nb"     }, // an address is never replayed
        {&root, R"(set("nosuch", "Text", "%ak_ptr%x"))", "Text",          "a\nb"     },
        {&root, R"(get("a", "Address", $address))",      "b__c:$address", ""         },
        {&root, R"(set("", "Text", $address))",          "Text",          "a\nb"     },
        {&root, R"(set($address, "Text", "there"))",     "a:Text",        "there"    },
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Run(*c.on, c.command), Lines{}) << c.command;
        EXPECT_EQ(Text(root.Get(c.from)), c.value) << c.command;
    }
}

TEST_F(AK_CommandsTest, FailuresAreToldInFixedWords)
{
    // clang-format off
    const struct {
        const char* why;
        const char* command;
        Lines messages;
        const char* status;   // behind a status "old"
    } cases[] = {
        {"unparsable", "nonsense", {"invalid command string:nonsense ignored!"}, "old"},
        {"get without a variable", R"(get("", "Id", "x"))",
         {"third argument of get() must be variable name!",
          R"(invalid command string:get("", "Id", "x") ignored!)"}, "old"},
        {"no such object", R"(set("x/y", "Id", ""))",
         {R"(could not execute command set("x/y", "Id", ""), ignored!)",
          R"(error when executing 'set("x/y", "Id", "")':object 'x/y' not found)"}, "object 'x/y' not found"},
        {"no such object to get from", R"(get("x", "Id", $i))",
         {R"(could not execute command get("x", "Id", $i), ignored!)",
          R"(error when executing 'get("x", "Id", $i)':object 'x' not found)"}, "object 'x' not found"},
        {"unknown attribute: the old error stands", R"(set("a", "NoSuch", "1"))",
         {R"(could not execute command set("a", "NoSuch", "1"), ignored!)",
          R"(error when executing 'set("a", "NoSuch", "1")':old)"}, "old"},
        {"unknown attribute to get", R"(get("a", "NoSuch", $i))",
         {R"(error when executing 'get("a", "NoSuch", $i)':old)"}, "old"},
        {"failed operation", R"(set("a", "Fail", "so"))",
         {R"(error when executing 'set("a", "Fail", "so")':failed: so)"}, "failed: so"},
        {"a success empties the status", R"(set("a", "Number", "1"))", {}, ""},
        {"reading does too", R"(get("a", "Number", $n))", {}, ""},
        {"nothing is done for an address", R"(set("a", "Number", "%ak_ptr%"))", {}, "old"},
        {"nor for a comment", "# comment", {}, "old"},
    };
    // clang-format on
    for (const auto& c : cases) {
        AK_Object::_execStatus = "old";
        EXPECT_EQ(Run(root, c.command), c.messages) << c.why;
        EXPECT_EQ(Text(AK_Object::_execStatus), c.status) << c.why;
    }
    AK_Object::_execStatus = "";
    EXPECT_EQ(Run(root, R"(set("a", "NoSuch", "1"))"),
              Lines{R"(could not execute command set("a", "NoSuch", "1"), ignored!)"});
}

// -------------------------------------------------------------------------------------------------------- explanation

TEST_F(AK_CommandsTest, AFrontEndCanRefuseAnExplainedCommand)
{
    AK_Object::_explainCommands = 1;
    ak_msg_func = [](const char* message, const char*) {
        CaughtMessages::Texts().push_back(message);
        if (std::string(message).rfind("CMD-INFO:", 0) == 0) AK_Object::_execStatus = "refused";
    };
    const Lines told = Run(root, R"(set("a", "Number", "5"))");
    EXPECT_EQ(told.size(), 2u);
    EXPECT_EQ(told.back(), R"(error when executing 'set("a", "Number", "5")':refused)");
    EXPECT_EQ(a->Get("Number"), "0");
    ak_msg_func = [](const char*, const char*) {};
    AK_Object::_execStatus = "an old error";
    Run(root, R"(set("a", "Number", "5"))");
    EXPECT_EQ(a->Get("Number"), "5") << "an old error refuses nothing";
}

// ------------------------------------------------------------------------------------------------------ hostile input

TEST_F(AK_CommandsTest, HostileLinesAreParsedInLinearTime)
{
    const std::string megabyte(1 << 20, 'x'), commas(1 << 20, ','), quotes(1 << 20, '"'), dollars(1 << 20, '$');
    std::vector<std::string> lines;
    for (const std::string& part : {megabyte, commas, quotes, dollars, std::string(1 << 20, '%'),
                                    std::string(1 << 20, '\\'), std::string(1 << 20, ')')}) {
        lines.push_back(part);
        lines.push_back("set(" + part);
        lines.push_back("get(\"" + part + "\", \"" + part + "\", \"" + part + "\")");
        lines.push_back("set(\"\", \"Text\", \"" + part + "\\\n\")");
        lines.push_back("set(\"" + part + "\", \"Text\", $" + part + ")");
        lines.push_back("set($" + part + ", $" + part + ", $" + part + ")");
        lines.push_back("set(\"\", \"" + part + "\", \"1\")");
    }
    for (const std::string& line : lines) root.ExecCommand(line.c_str(), 0);
    ExpectConsistent(root);
}

TEST_F(AK_CommandsTest, ALineCutOrBentAnywhereDoesNoHarm)
{
    const std::string whole = "set(\"a\", \"Text\", \"va%%nl\\\nue $x\")";
    for (size_t n = 0; n <= whole.size(); ++n) {
        root.ExecCommand(whole.substr(0, n).c_str(), 0);
        for (const char byte : {'\n', '"', '$', ',', ')', '(', '%', '\\', '\xff'}) {
            std::string bent = whole;
            bent.insert(n, 1, byte);
            root.ExecCommand(bent.c_str(), 0);
            if (n < whole.size()) bent[n] = byte;
            root.ExecCommand(bent.c_str(), 0);
        }
    }
    ExpectConsistent(root);
}
