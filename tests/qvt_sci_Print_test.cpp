#include "qvt_sci_Fixture.h"

using qvt_sci_Print_ = qvt_sci_Fixture;

namespace {
// Names that the bodies below may use.
const char* const names =
    "int i, j, n; char c; double x, y, a[3], b[3], m[2][3]; FILE* f; double g(double p, double q) { return p; }"
    "void none() {} ";
}   // namespace

TEST_F(qvt_sci_Print_, CodeReadsLikeTheSource)
{
    const struct {
        const char *source, *code;
    } cases[] = {
        // clang-format off
        {"x = 1 + 2 * x - y / 3;",        "x = ((1 + 2 * x) - y / 3)"         },
        {"x = -x ** 2 ** 3;",             "x = ((-x ** 2) ** 3)"              },
        {"i = !i || i % 2 && i >= 1;",    "i = !i || i % 2 && i >= 1"         },
        {"i = x > y; i = x == y;",        "i = x > y;\ni = x == y;\n"         },
        {"a = a ^ b; x = a . b;",         "a = (a ^ b);\nx = (a . b);\n"      },
        {"x = |a|;",                      "x = |a|"                           },
        {"x += 1; x -= 1;",               "x += 1;\nx -= 1;\n"                },
        {"x *= 2; x /= 2;",               "x *= 2;\nx /= 2;\n"                },
        {"i++; ++i; i--; --i;",           "i++;\n++i;\ni--;\n--i;\n"          },
        {"m[i][j+1] = m[0][2];",          "m[i][(j + 1)] = m[0][2]"           },
        {"a = {1, x};",                   "a = {1, x}"                        },
        {"x = g(1, g(x, y)); none();",    "x = g(1, g(x, y));\nnone();\n"     },
        {"print \"a\\tb\\n\", x, 'c';",   "print \"a\\tb\\n\", x, c"          },
        {"printf(\"%d\\n\", i);",         "printf(\"%d\\n\", i)"              },
        {"fprintf(f, \"x\");",            "fprintf(f, \"x\")"                 },
        {"resize(a, n);",                 "resize(a, n)"                      },
        {"exec(\"x\");",                  "exec(\"x\")"                       }, // without the namespace it keeps
        {"f = func_addr(\"g\");",         "f = func_addr(\"g\")"              },
        {"func_call(f, x);",              "func_call(f, x)"                   },
        {"if(x) i = 1;",                  "if(x != 0) i = 1"                  },
        {"if(i) { i++; } else i = 2;",    "if(i){\ni++}else{\ni = 2}"         },
        {"while(i) { i--; j++; } j = 0;", "while(i){\ni--;\nj++;\n}\nj = 0;\n"},
        {"for(i = 0; i < n; i++) break;", "for(i = 0; i < n; i++){\nbreak}"   },
        {"for(;;) ;",                     "while(1){\n}"                      },
        {"if(i) return; else continue;",  "if(i){\nreturn}else{\ncontinue}"   },
        {"f = NULL; i = EOF;",            "f = (nil);\ni = -1;\n"             },
        {"i ? x : y;",                    "?(i, x, y)"                        }, // conditional expressions have no template,
        {"static int k = 3; ;",           "?(k = 3);\n;\n"                    }, // nor have initialisers that run once
        {"double t[n]; t[0] = 1;",        "t[0] = 1;\n"                       }, // allocation has no source
        // clang-format on
    };
    for (const auto& c : cases) {
        ASSERT_EQ(Parse(names + std::string("void main() {") + c.source + "}"), 0) << Messages();
        qvt_sci_PrintFunctionCode(qvt_sci_FuncPtr("main"));
        EXPECT_EQ(Messages(), c.code) << c.source;
        qvt_sci_DeleteAll();
    }
}

TEST_F(qvt_sci_Print_, TreesHaveALineForEachNode)
{
    ASSERT_EQ(Parse(names + std::string("void main() { double t[n]; x = 1 + g(a[i], 2.5); i++; print \"s\", f; ; }")),
              0);
    qvt_sci_PrintFunctionTree(qvt_sci_FuncPtr("main"));
    EXPECT_EQ(Messages(), ";\n"
                          "  ;\n"
                          "    OPR UNKNOWN, type 7, data type 0\n"
                          "    ;\n"
                          "      ;\n"
                          "        ;\n"
                          "          =\n"
                          "            VAR 'x'\n"
                          "            +\n"
                          "              CAST\n"
                          "                CONST INT 1\n"
                          "              CALL FUNCTION 'g'\n"
                          "                ARRAY ELEMENT []\n"
                          "                  ARRAY 'a'\n"
                          "                  VAR 'i'\n"
                          "                CONST DOUBLE 2.5\n"
                          "          INC\n"
                          "            VAR 'i'\n"
                          "        PRINT\n"
                          "          CONST STRING 's'\n"
                          "          VAR 'f'\n"
                          "      OPR dummy, type 0, data type 0\n"
                          "  OPR UNKNOWN, type 8, data type 0\n");
}

// Types and shapes of expressions, read off the nodes that the parser makes of them.
TEST_F(qvt_sci_Print_, ExpressionsHaveTheTypeAndShapeOfTheirOperands)
{
    const struct {
        const char* expression;
        int dataType, isVector, size;
    } cases[] = {
        // clang-format off
        {"'a' + 'b'",                CHAR_TYPE,   0, 1},
        {"'a' + 1",                  INT_TYPE,    0, 1},
        {"1 + 2.0",                  DOUBLE_TYPE, 0, 1},
        {"7 % 4.0",                  INT_TYPE,    0, 1},
        {"2 ** 3",                   DOUBLE_TYPE, 0, 1},
        {"0.5 < 1",                  INT_TYPE,    0, 1},
        {"0.5 && 1",                 INT_TYPE,    0, 1},
        {"!0.5",                     INT_TYPE,    0, 1},
        {"i ? 'a' : 1",              INT_TYPE,    0, 1},
        {"(char) x",                 CHAR_TYPE,   0, 1},
        {"a + 1",                    DOUBLE_TYPE, 1, 3},
        {"m[1]",                     DOUBLE_TYPE, 1, 3},
        {"m[1][2]",                  DOUBLE_TYPE, 0, 1},
        {"m",                        DOUBLE_TYPE, 1, 6},
        {"a . b",                    DOUBLE_TYPE, 0, 1},
        {"|a|",                      DOUBLE_TYPE, 0, 1},
        {"a ^ b",                    DOUBLE_TYPE, 1, 3},
        {"printf(\"%s\", \"text\")", INT_TYPE,    0, 1},
        {"x = 1",                    DOUBLE_TYPE, 0, 1},
        {"g",                        PTR_TYPE,    0, 1},
        {"g(1, 2)",                  DOUBLE_TYPE, 0, 1},
        {"func_addr(\"g\")",         PTR_TYPE,    0, 1},
        {"(int) f",                  PTR_TYPE,    0, 1},
        // clang-format on
    };
    for (const auto& c : cases) {
        ASSERT_EQ(Parse(names + std::string("void main() {") + c.expression + ";}"), 0) << c.expression << Messages();
        const Node* node = qvt_sci_FuncPtr("main")->func.body;
        EXPECT_EQ(node->dataType, c.dataType) << c.expression;
        EXPECT_EQ(NodeIsVector(node), c.isVector) << c.expression;
        EXPECT_EQ(NodeVecSize(node), c.size) << c.expression;
        qvt_sci_DeleteAll();
    }
}

TEST_F(qvt_sci_Print_, TheCodeOfTheRunIsCutToTheBuffer)
{
    ASSERT_EQ(Parse(names + std::string("double h() { return 100.0 / (1 + 1); }")), 0);
    EXPECT_EQ(Value("h"), 50);
    char buffer[64] = "before";
    qvt_sci_GetCurrentCode(buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "100 / (1 + 1)");
    qvt_sci_GetCurrentCode(buffer, 5);
    EXPECT_STREQ(buffer, "100 ");
    qvt_sci_DeleteAll();
    qvt_sci_GetCurrentCode(buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "") << "code that is gone";
}

TEST_F(qvt_sci_Print_, TextsEndWithTheirArrays)
{
    ASSERT_EQ(Parse("void f() { char my0const_char_[0] = \"a\"; resize(\"abc\", 2); resize(\"abc\", 0); }"), 0);
    Symbol* f = qvt_sci_FuncPtr("f");
    qvt_sci_Execute(f);
    qvt_sci_PrintFunctionCode(f);
    EXPECT_EQ(Messages(), "my0const_char_ = \"a\";\nresize(\"ab\", 2);\nresize(\"\", 0);\n");
    qvt_sci_PrintFunctionTree(f);
    EXPECT_NE(Messages().find("CONST STRING 'ab'"), std::string::npos);
}

TEST_F(qvt_sci_Print_, LongChainsNeedNoDeepStack)
{
    constexpr int MANY = 300000;   // one frame of 32 bytes for each would be more than the stack holds
    ASSERT_EQ(Parse("double f() { return 0.0" + Repeated("+1", MANY) + ";" + Repeated("1;", MANY) + " }"), 0);
    qvt_sci_PrintFunctionCode(qvt_sci_FuncPtr("f"));
    EXPECT_EQ(Messages().find("return((((("), 0u);
}
