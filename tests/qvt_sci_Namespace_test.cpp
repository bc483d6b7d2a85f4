#include "qvt_sci_Fixture.h"

using qvt_sci_Namespace_ = qvt_sci_Fixture;
using qvt_sci_ParseAny_ = qvt_sci_Fixture;

TEST_F(qvt_sci_Namespace_, OpensBelowTheActiveOneAndClosesToItsParent)
{
    Namespace* created = qvt_sci_NamespaceCreate();
    EXPECT_EQ(qvt_sci_NamespaceGetCurrent(), own) << "creating does not switch";
    EXPECT_EQ(qvt_sci_NamespaceParent(created), own);
    qvt_sci_NamespaceDestroy(created);

    Namespace* opened = qvt_sci_NamespaceOpen();
    EXPECT_EQ(qvt_sci_NamespaceGetCurrent(), opened);
    EXPECT_EQ(qvt_sci_NamespaceClose(), 0);
    EXPECT_EQ(qvt_sci_NamespaceGetCurrent(), own);

    qvt_sci_NamespaceSwitchTo(root);
    EXPECT_EQ(qvt_sci_NamespaceClose(), 1) << "the root has no parent";
    EXPECT_EQ(qvt_sci_NamespaceGetCurrent(), root);
}

TEST_F(qvt_sci_Namespace_, IsNotDestroyedWhileActive)
{
    ASSERT_EQ(Parse("int a;"), 0);
    qvt_sci_NamespaceDestroy(nullptr);
    qvt_sci_NamespaceDestroy(root);
    qvt_sci_NamespaceDestroy(own);
    EXPECT_NE(qvt_sci_Symbol("a"), nullptr);
}

TEST_F(qvt_sci_Namespace_, RunsItsExitCodeAndIsEmptyWhenCleared)
{
    ASSERT_EQ(Parse("int n = 3; double a[n]; double f() { return a[2]; }"), 0);
    qvt_sci_InitAll();
    EXPECT_EQ(qvt_sci_Symbol("a")->arr.size, 3);
    qvt_sci_DeleteAll();
    EXPECT_EQ(qvt_sci_Symbol("a"), nullptr);
    EXPECT_EQ(own->initCode, nullptr);
    EXPECT_EQ(own->exitCode, nullptr);
    EXPECT_EQ(Parse("int n; int a;"), 0) << "the names are free again";
}

TEST_F(qvt_sci_Namespace_, TellsSoundSymbolsFromOthers)
{
    ASSERT_EQ(Parse("int a; extern double b[3]; void f(int a) { }"), 0);
    EXPECT_EQ(qvt_sci_IsInvalidNamespace(), 0);
    ASSERT_EQ(Parse("static int s;"), 0);
    EXPECT_EQ(qvt_sci_IsInvalidNamespace(), 1) << "the check does not know the storage class static";
    qvt_sci_SymbolRemove("s");
    Symbol* a = qvt_sci_Symbol("a");
    a->dataType = 7;
    EXPECT_EQ(qvt_sci_IsInvalidNamespace(), 3);
    a->dataType = INT_TYPE;
    a->referenced = 2;
    EXPECT_EQ(qvt_sci_IsInvalidNamespace(), 4);
    a->referenced = 0;
}

TEST(qvt_sci_NamespaceDeathTest, EndsTheProcessWithoutANamespace)
{
    EXPECT_EXIT(qvt_sci_NamespaceSwitchTo(nullptr), testing::ExitedWithCode(1), "");
    EXPECT_EXIT(qvt_sci_NamespaceParent(nullptr), testing::ExitedWithCode(1), "");
}

// ---------------------------------------------------------------------------------------------------------------------
// What a failed parse leaves

TEST_F(qvt_sci_ParseAny_, TakesAllBackAfterAnErrorAtTopLevel)
{
    ASSERT_EQ(Parse("int a = 1; double f(double x);"), 0);
    Node* init = own->initCode;
    EXPECT_EQ(Parse("int b = 2; int d[a]; double g() { return 1; } double f(double y) { return y + b; } int ;"), 1);
    EXPECT_EQ(qvt_sci_NamespaceGetCurrent(), own);
    for (const char* name : {"b", "d", "g"}) EXPECT_EQ(qvt_sci_Symbol(name), nullptr) << name;
    EXPECT_NE(qvt_sci_Symbol("a"), nullptr);
    EXPECT_EQ(own->initCode, init);
    EXPECT_EQ(own->exitCode, nullptr);
    EXPECT_EQ(qvt_sci_Symbol("f")->func.body, nullptr) << "what a function of before was given refers to what is gone";
    Messages();
    EXPECT_EQ(qvt_sci_NumUnboundExternSymbols(), 1);
}

TEST_F(qvt_sci_ParseAny_, LeavesTheItemsBeforeAFunctionWithAnError)
{
    ASSERT_EQ(Parse("int a = 1;"), 0);
    EXPECT_EQ(qvt_sci_ParseString("int b = 2; double g() { return 4; } double h(double x) { int y; y = ; }"), 1);
    Namespace* inside = qvt_sci_NamespaceGetCurrent();
    EXPECT_NE(inside, own);
    EXPECT_NE(qvt_sci_Symbol("x"), nullptr);
    EXPECT_NE(qvt_sci_Symbol("y"), nullptr);
    *static_cast<int*>(qvt_sci_Address("a")) = 5;
    qvt_sci_InitAll();
    EXPECT_EQ(*static_cast<int*>(qvt_sci_Address("a")), 1) << "the init code from before lands in it";
    qvt_sci_NamespaceSwitchTo(own);
    EXPECT_NE(qvt_sci_Symbol("b"), nullptr);
    EXPECT_EQ(Value("g"), 4);
    EXPECT_EQ(qvt_sci_FuncPtr("h")->func.body, nullptr);
}

TEST_F(qvt_sci_ParseAny_, DeletesTheLocalsIfTheNamespaceWasEmpty)
{
    EXPECT_EQ(qvt_sci_ParseString("double h(double x) { int y; y = ; }"), 1);
    EXPECT_EQ(qvt_sci_Symbol("y"), nullptr);
    qvt_sci_NamespaceSwitchTo(own);
    EXPECT_STREQ(qvt_sci_SymbolName(qvt_sci_FuncPtr("h")->func.args[0]), "x") << "a function keeps its formals";
    EXPECT_EQ(Parse("double use(double x) { return h(x); }"), 0);
}

TEST_F(qvt_sci_ParseAny_, LeavesANamespaceThatCanBeClosedClearedOrDestroyed)
{
    const char* wrong = "double h(double x) { int y; y = ; }";
    EXPECT_EQ(qvt_sci_ParseString(wrong), 1);
    EXPECT_EQ(qvt_sci_NamespaceClose(), 0) << "leaves the function's namespace";
    EXPECT_EQ(qvt_sci_NamespaceGetCurrent(), own);

    EXPECT_EQ(qvt_sci_ParseString(wrong), 1);
    qvt_sci_Clear();
    qvt_sci_NamespaceSwitchTo(own);
    EXPECT_EQ(qvt_sci_FuncPtr("h")->func.nArgs, 0);

    qvt_sci_DeleteAll();
    EXPECT_EQ(qvt_sci_ParseString("double h(double x, y"), 1);
    Namespace* inside = qvt_sci_NamespaceGetCurrent();
    EXPECT_EQ(qvt_sci_NamespaceParent(inside), own);
    qvt_sci_NamespaceDestroy(own);   // with the active one inside it
    EXPECT_EQ(qvt_sci_NamespaceGetCurrent(), root);
    own = qvt_sci_NamespaceOpen();
}

TEST_F(qvt_sci_ParseAny_, AddsToWhatTheNamespaceHas)
{
    ASSERT_EQ(Parse("double a = 1;"), 0);
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(Parse("double a" + std::to_string(i) + " = a + 1;"), 0);
    qvt_sci_InitAll();
    EXPECT_EQ(*static_cast<double*>(qvt_sci_Address("a999")), 2);
}

TEST_F(qvt_sci_ParseAny_, ReadsNothingWithoutASource)
{
    EXPECT_EQ(qvt_sci_ParseAny(nullptr, nullptr), 0);
    EXPECT_EQ(qvt_sci_ParseString(""), 0);
    EXPECT_EQ(qvt_sci_ParseString("int a; //"), 1) << "a comment needs its line end";
    EXPECT_EQ(qvt_sci_ParseString("int a; /*"), 0) << "and the end of the text ends this one";
    EXPECT_EQ(Messages(), "X     1:  int a; //\n\nline 1: in 'int a; /'\nline 1, before '/': syntax error\n1 errors\n");
}

TEST_F(qvt_sci_ParseAny_, DoesNotReadADeviceWithoutEnd)
{
    FILE* endless = std::fopen("/dev/zero", "r");
    ASSERT_NE(endless, nullptr);
    EXPECT_EQ(qvt_sci_Parse(endless), 1);
    EXPECT_EQ(Messages(), "source is longer than 8388608 bytes\n1 errors\n");
    std::fclose(endless);
}

// ---------------------------------------------------------------------------------------------------------------------
// Growth

TEST_F(qvt_sci_Namespace_, OpensIsFilledAndGoesWithoutGrowth)
{
    const char* program =
        "#define N 3\n"
        "double x = 1, v[N] = {1, 2}, d[N+1]; extern double outer; static int once = 3;\n"
        "double f(double a, double b[]) { double t[2]; static int k = 1; int i; for(i = 0; i < N; i++) t = {a, b[0]};"
        " if(a > 1) return t[0] + t[1]; print \"never\"; }\n"
        "double g() { return f(2, v); }\n";
    ExpectNoGrowth(100000, [&] {
        qvt_sci_NamespaceOpen();
        ASSERT_EQ(qvt_sci_ParseString(program), 0);
        qvt_sci_InitAll();
        ASSERT_EQ(Value("g"), 3);
        ASSERT_EQ(qvt_sci_NamespaceClose(), 0);
    });
}
