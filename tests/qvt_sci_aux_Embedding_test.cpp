// The language as a host sees it: formulas, calls, messages, and that none of it grows.

#include "qvt_sci_Fixture.h"

#include <csetjmp>
#include <cstdarg>

using qvt_sci_Formula = qvt_sci_Fixture;
using qvt_sci_Call_ = qvt_sci_Fixture;
using qvt_sci_Messages_ = qvt_sci_Fixture;
using qvt_sci_Leaks = qvt_sci_Fixture;

// ---------------------------------------------------------------------------------------------------------------------
// Formulas

TEST_F(qvt_sci_Formula, BecomesTwoFunctionsOverCommonNames)
{
    ASSERT_EQ(qvt_sci_ParseFormulaString("void init(double m)", "double shear(double p)",
                                         "double mu = 1; $$init mu = m; $$formula return mu*p; // Coulomb"),
              0)
        << Messages();
    double mu = 0.25;
    double p = 2000;
    qvt_sci_Call(qvt_sci_FuncPtr("init"), &mu);
    EXPECT_EQ(qvt_sci_AsDouble(qvt_sci_Call(qvt_sci_FuncPtr("shear"), &p)), 500);
}

TEST_F(qvt_sci_Formula, WithoutItsTagsIsRefused)
{
    const std::string declarations = "init   -decl: void init()\nformula-decl: double f()\n";
    const struct {
        const char* text;
        std::string message;
    } cases[] = {
        // clang-format off
        {nullptr,            "empty formula string!\n"                                                              },
        {"",                 "empty formula string!\n"                                                              },
        {"return 1;",        "formula string does not contain init tag '$$init':\n'return 1;'\n" + declarations     },
        {"$$formula x",      "formula string does not contain init tag '$$init':\n'$$formula x'\n" + declarations   },
        {"$$init x",         "formula string does not contain formula tag '$$formula':\n'$$init x'\n" + declarations},
        {"$$formula $$init",
         "formula string does not contain formula tag '$$formula':\n'$$formula $$init'\n" + declarations            },
        // clang-format on
    };
    for (const auto& c : cases) {
        EXPECT_EQ(qvt_sci_ParseFormulaString("void init()", "double f()", c.text), 1);
        EXPECT_EQ(Messages(), c.message);
    }
}

TEST_F(qvt_sci_Formula, CountsTheLinesOfTheTextThatIsParsed)
{
    EXPECT_EQ(qvt_sci_ParseFormulaString("void init()", "double f()", "double a;\n$$init\n$$formula\n return b;\n"), 1);
    EXPECT_NE(Messages().find("X    12:   return b;"), std::string::npos);
}

TEST_F(qvt_sci_Formula, TakesAPrefixForItsNames)
{
    const struct {
        const char *prefix, *name;
    } cases[] = {
        // clang-format off
        {"my rule", "my_ruleinit"},
        {"a/b-c.d", "a_b_c_dinit"},
        {"1st",     "_stinit"    },
        {"_x",      "_xinit"     },
        {"",        "init"       },
        // clang-format on
    };
    for (const auto& c : cases) {
        Symbol* init = nullptr;
        Symbol* formula = nullptr;
        ASSERT_EQ(qvt_sci_ParseFormulaStringWithPrefixAndGetPtrs("void init()", "double\tdepth(double x)", c.prefix,
                                                                 "$$init $$formula return x + 1;", &init, &formula),
                  0)
            << Messages();
        EXPECT_STREQ(qvt_sci_SymbolName(init), c.name);
        double x = 2;
        EXPECT_EQ(qvt_sci_AsDouble(qvt_sci_Call(formula, &x)), 3);
    }
}

TEST_F(qvt_sci_Formula, WithAnErrorHandsOutNothing)
{
    Symbol* init = reinterpret_cast<Symbol*>(this);
    Symbol* formula = init;
    EXPECT_EQ(qvt_sci_ParseFormulaStringWithPrefixAndGetPtrs("void init()", "FILE *open (char s[])", "p",
                                                             "$$init $$formula return", &init, &formula),
              1);
    EXPECT_EQ(init, nullptr);
    EXPECT_EQ(formula, nullptr);
    EXPECT_NE(Messages().find("FILE *popen (char s[])"), std::string::npos) << "the prefix goes before the name";
}

static int PrintToStandardError(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    return length;
}

TEST(qvt_sci_FormulaDeathTest, NeedsDeclarationsWithANameToPutThePrefixBefore)
{
    qvt_sci_NamespaceGetCurrent();
    const auto parse = [](const char* declaration) {
        qvt_sci_printf = PrintToStandardError;
        Symbol* functions[2];
        qvt_sci_ParseFormulaStringWithPrefixAndGetPtrs(declaration, "double f()", "p", "$$init $$formula",
                                                       &functions[0], &functions[1]);
    };
    for (const char* declaration : {"void init", "init()", "()", " (", ""}) {
        EXPECT_EXIT(parse(declaration), testing::ExitedWithCode(1), "at [0-9]+ in .*\n.* failed!") << declaration;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Calls

TEST_F(qvt_sci_Call_, GivesTheResultInTheBytesOfItsType)
{
    ASSERT_EQ(Parse("char c() { return -3; } int i() { return -70000; } float f() { return 0.1; }"
                    "double d() { return 0.1; } FILE* p() { return NULL; } void v() { ; }"),
              0);
    const auto call = [](const char* name, auto value) {
        const uint64_t result = qvt_sci_Call(qvt_sci_FuncPtr(name));
        std::memcpy(&value, &result, sizeof value);
        return value;
    };
    EXPECT_EQ(call("c", char()), -3);
    EXPECT_EQ(call("i", int()), -70000);
    EXPECT_EQ(call("f", float()), 0.1f);
    EXPECT_EQ(call("d", double()), 0.1);
    EXPECT_EQ(call("v", double()), 0.1) << "what the last function left";
    EXPECT_EQ(call("p", static_cast<void*>(this)), nullptr);
}

TEST_F(qvt_sci_Call_, PassesTheHostsVariablesByReference)
{
    ASSERT_EQ(Parse("void f(char c, int i, float x, double y, double a[], char s[])"
                    "{ c += 1; i += 1; x += 1; y += 1; a[1] = y; strcpy(s, \"text\"); }"),
              0);
    signed char c = 1;
    int i = 2;
    float x = 3;
    double y = 4;
    double a[2] = {};
    char s[10] = "";
    qvt_sci_Call(qvt_sci_FuncPtr("f"), &c, &i, &x, &y, a, s);
    EXPECT_EQ(c, 2);
    EXPECT_EQ(i, 3);
    EXPECT_EQ(x, 4);
    EXPECT_EQ(y, 5);
    EXPECT_EQ(a[1], 5);
    EXPECT_STREQ(s, "text");
}

TEST_F(qvt_sci_Call_, KeepsTextWithinTheLengthThatTheHostTells)
{
    ASSERT_EQ(Parse("void put(char s[]) { strcpy(s, \"avalanche\"); }"
                    "void f(char s[]) { char own[5]; put(own); put(s); }"),
              0);
    Symbol* const f = qvt_sci_FuncPtr("f");
    char s[20];
    const auto textOf = [&] {
        std::memset(s, '#', sizeof s);
        qvt_sci_Call(f, s);
        return std::string(s);
    };
    EXPECT_EQ(textOf(), "avalanche") << "nobody told a length";
    qvt_sci_BindArgLength(f, 0, 4);
    EXPECT_EQ(textOf(), "ava");
    EXPECT_EQ(s[4], '#');
    EXPECT_EQ(textOf(), "ava") << "the length holds for all calls that follow";
    qvt_sci_BindArgLength(f, 0, -1);
    EXPECT_EQ(textOf(), "avalanche");
}

TEST_F(qvt_sci_Call_, RunsWithBoundArgumentsAndKeepsTheResult)
{
    ASSERT_EQ(Parse("char c(int i) { return i; } int n(int i) { return -i; } float f(int i) { return i/2.0; }"
                    "double d(int i) { return i/4.0; } void v(int i) { ; }"),
              0);
    int i = 65;
    const auto run = [&](const char* name, void* out) {
        Symbol* const function = qvt_sci_FuncPtr(name);
        qvt_sci_BindArg(function, 0, &i);
        qvt_sci_Execute(function);
        return qvt_sci_GetReturnValue(function, out);
    };
    signed char c = 0;
    int n = 0;
    float f = 0;
    double d = 0;
    EXPECT_EQ(run("c", &c), 65);
    EXPECT_EQ(run("n", &n), -65);
    EXPECT_EQ(run("f", &f), FLOAT_TYPE);
    EXPECT_EQ(run("d", &d), DOUBLE_TYPE);
    EXPECT_EQ(run("v", nullptr), VOID_TYPE);
    EXPECT_EQ(c, 65);
    EXPECT_EQ(n, -65);
    EXPECT_EQ(f, 32.5f);
    EXPECT_EQ(d, 16.25);
}

TEST_F(qvt_sci_Call_, RunsInitAndExitCodeOfTheActiveNamespaceOnly)
{
    ASSERT_EQ(Parse("int n = 2; double a[n] = 3; double first() { return a[0]; }"), 0);
    Namespace* const inner = qvt_sci_NamespaceOpen();
    qvt_sci_InitAll();
    EXPECT_EQ(*static_cast<int*>(qvt_sci_Address("n")), 0);
    qvt_sci_NamespaceSwitchTo(own);
    qvt_sci_NamespaceDestroy(inner);
    qvt_sci_InitAll();
    EXPECT_EQ(Value("first"), 3);
    qvt_sci_ExitAll();
    EXPECT_EQ(qvt_sci_Address("a"), nullptr);
}

TEST_F(qvt_sci_Call_, RunsAFrictionFormulaFromTextToValue)
{
    const std::string text = "return 0.155*p + 0.005*d*v**2;";
    ASSERT_EQ(Parse("double shear( // return shear stress [N/m2]\ndouble p,     // bottom pressure [N/m2]\n"
                    "double v,     // velocity [m/s]\ndouble h,     // flow depth [m]\n"
                    "double d)     // density [kg/m3]\n{\n" +
                    text + "\n}"),
              0);
    Symbol* const shear = qvt_sci_FuncPtr("shear");
    qvt_sci_NamespaceSwitchTo(root);   // a call needs no namespace
    double p = 4000;
    double v = 20;
    double h = 1.5;
    double d = 300;
    EXPECT_EQ(qvt_sci_AsDouble(qvt_sci_Call(shear, &p, &v, &h, &d)), 0.155 * 4000 + 0.005 * 300 * 400);
}

static int StackCount(const int* a, const double* b, const char* text) { return *a + int(*b) + int(std::strlen(text)); }

TEST_F(qvt_sci_Call_, ReachesNativesFromTheNamespacesBelow)
{
    ASSERT_EQ(Parse("extern double level; int count(int a, double b, char text[]);"), 0);
    double level = 7;
    EXPECT_EQ(qvt_sci_NumUnboundExternSymbols(), 2);
    ASSERT_NE(qvt_sci_Bind("level", &level), nullptr);
    ASSERT_NE(qvt_sci_Bind("count", StackCount), nullptr);
    EXPECT_EQ(qvt_sci_NumUnboundExternSymbols(), 0);
    Namespace* const inner = qvt_sci_NamespaceOpen();
    ASSERT_EQ(qvt_sci_ParseString("double f() { level += 1; return count(1, 2, \"abc\") + level; }"), 0);
    EXPECT_EQ(Value("f"), 14);
    EXPECT_EQ(level, 8);
    qvt_sci_NamespaceSwitchTo(own);
    qvt_sci_NamespaceDestroy(inner);
}

TEST_F(qvt_sci_Call_, IsForwardedForHostsThatLoadTheLanguage)
{
    ex_qvt_sci_NamespaceOpen();
    EXPECT_EQ(qvt_sci_NamespaceParent(qvt_sci_NamespaceGetCurrent()), own);
    EXPECT_EQ(ex_qvt_sci_ParseString("double f() { return 2; }"), 0);
    EXPECT_EQ(Value("f"), 2);
    EXPECT_EQ(ex_qvt_sci_ParseFormulaString("void init()", "int formula()", "$$init $$formula"), 0);
    EXPECT_NE(qvt_sci_FuncPtr("formula"), nullptr);
    ex_qvt_sci_AddIncludePath("no/such/directory");
    EXPECT_EQ(ex_qvt_sci_ParseString("#include \"no_such_file\"\n"), 1);
    EXPECT_NE(Messages().find("no/such/directory/"), std::string::npos);
    qvt_sci_ClearIncludePathes();
    EXPECT_EQ(ex_qvt_sci_NamespaceClose(), 0);
    EXPECT_EQ(qvt_sci_NamespaceGetCurrent(), own);
    char buffer[10];
    ex_qvt_sci_SetMessageBuffer(buffer, sizeof buffer);
    qvt_sci_msg("%d", 5);
    EXPECT_STREQ(buffer, "5");
}

// ---------------------------------------------------------------------------------------------------------------------
// Messages

TEST_F(qvt_sci_Messages_, GoOneBehindTheOtherIntoTheBufferAsFarAsTheyFit)
{
    char buffer[11];
    std::memset(buffer, '#', sizeof buffer);
    qvt_sci_SetMessageBuffer(buffer, 10);
    EXPECT_EQ(qvt_sci_msg("%s", "abcd"), 4);
    EXPECT_EQ(qvt_sci_msg("%d", 12), 2);
    EXPECT_STREQ(buffer, "abcd12");
    EXPECT_EQ(qvt_sci_msg("%s", "long text"), 9) << "the length is that of the whole message";
    EXPECT_STREQ(buffer, "abcd12lon");
    EXPECT_EQ(qvt_sci_msg("more"), 4);
    EXPECT_STREQ(buffer, "abcd12lon");
    EXPECT_EQ(buffer[10], '#');
}

TEST_F(qvt_sci_Messages_, AreSilentInTheBufferAfterAnEmptyOne)
{
    char buffer[20];
    qvt_sci_SetMessageBuffer(buffer, sizeof buffer);
    qvt_sci_msg("a");
    EXPECT_EQ(qvt_sci_msg("%s", ""), 0);
    EXPECT_EQ(qvt_sci_msg("b"), -1);
    EXPECT_STREQ(buffer, "a");
}

static std::string toldWhole;

static int Tell(const char* format, ...)
{
    toldWhole += format;
    return 0;
}

static void EndTelling() { toldWhole += "<flush>"; }

TEST_F(qvt_sci_Messages_, GoToTheHostsFunctionsOrToAStream)
{
    toldWhole.clear();
    qvt_sci_ResetPrintf(Tell, nullptr);
    qvt_sci_ResetPrintf(nullptr, EndTelling);
    qvt_sci_ParseFormulaString("", "", "");
    EXPECT_EQ(toldWhole, "empty formula string!\n<flush>");

    FILE* const file = std::tmpfile();
    qvt_sci_SetMessageBuffer(nullptr, 0);
    qvt_sci_ResetOutputStream(file);
    qvt_sci_ParseFormulaString("", "", "");
    qvt_sci_ResetOutputStream(nullptr);
    std::rewind(file);
    char line[40] = "";
    EXPECT_NE(std::fgets(line, sizeof line, file), nullptr);
    EXPECT_STREQ(line, "empty formula string!\n");
    std::fclose(file);
}

// ---------------------------------------------------------------------------------------------------------------------
// Runs that the host leaves, and growth

static jmp_buf left;

static int Leave(int) { std::longjmp(left, 1); }

// Whether the function ran to its end. A frame of its own for the jump.
static bool RunsThrough(Symbol* function)
{
    const auto raise = qvt_sci_raise;
    qvt_sci_raise = Leave;
    bool isThrough = false;
    if (setjmp(left) == 0) {
        qvt_sci_Execute(function);
        isThrough = true;
    } else {
        qvt_sci_AbandonRun();
    }
    qvt_sci_raise = raise;
    return isThrough;
}

static const char* const failing =
    "int zero; int order[2]; char s[40];"
    "int inner() { sprintf(s, \"%d %d\", 1, 1/zero); return 1; }"
    "int byNothing(int i, int j) { return inner(); }"
    "void outer() { int n; n = inner(); }"
    "void formatted() { sprintf(s, \"%d%d\", 1, inner()); }"
    "void sorted() { oqsort(2, order, byNothing); }"
    "void spooled() { int a[9]; sscanf(\"1 2\", \"%d%d%d%d%d%d%d%d%d\", a[0], a[1], a[2],"
    " a[3], a[4], a[5], a[6], a[7], a[inner()]); }";

// One turn of a host's life with a formula: a good one bound, called and read, a bad one, a run that it leaves.
TEST_F(qvt_sci_Leaks, NamespacesThatAreBoundCalledAndLeftDoNotGrow)
{
    ExpectNoGrowth(5000, [&] {
        char buffer[2000] = "";
        char text[10] = "";
        double level = 2;
        Symbol* init = nullptr;
        Symbol* formula = nullptr;
        Namespace* const ns = qvt_sci_NamespaceOpen();
        qvt_sci_SetMessageBuffer(buffer, sizeof buffer);
        ASSERT_EQ(qvt_sci_ParseFormulaStringWithPrefixAndGetPtrs(
                      "void init()", "double f(char s[])", "a",
                      "extern double level; int count(int a, double b, char text[]); double v[2];"
                      "$$init v = {3, 4}; $$formula sprintf(s, \"%g%s\", level, \"x\"); return |v+v| + count(1, 2, s);",
                      &init, &formula),
                  0);
        qvt_sci_Bind("level", &level);
        qvt_sci_Bind("count", StackCount);
        qvt_sci_BindArgLength(formula, 0, sizeof text);
        qvt_sci_Call(init);
        ASSERT_EQ(qvt_sci_AsDouble(qvt_sci_Call(formula, text)), 15);
        ASSERT_NE(qvt_sci_ParseFormulaString("void init()", "double g()", "$$init $$formula return {"), 0);
        qvt_sci_NamespaceSwitchTo(ns);
        ASSERT_EQ(qvt_sci_ParseString(failing), 0);
        for (const char* name : {"outer", "formatted", "sorted", "spooled"}) {
            ASSERT_FALSE(RunsThrough(qvt_sci_FuncPtr(name)));
        }
        ASSERT_EQ(qvt_sci_NamespaceClose(), 0);
    });
}
