// The execution engine as a host meets it: natives, limits, runs left by a jump, switches read when code is compiled,
// trees of any depth. What programs print is in tests/data/qvt_sci/execute_*.qvt.

#include "qvt_sci_Fixture.h"
#include "qvt_sci_Program.h"

#include <csignal>
#include <utility>

namespace {
// What a program prints; its messages must be the given ones.
std::string OutputOf(const std::string& program, const std::string& messages = "")
{
    ProgramRecord record;
    RunProgram(program, "", record);
    EXPECT_EQ(record.messages, messages) << program.substr(0, 200);
    return record.output;
}

class qvt_sci_execute : public qvt_sci_Fixture {
protected:
    void TearDown() override
    {
        qvt_sci_raise = raise;
        qvt_sci_Fixture::TearDown();
    }
    Symbol* Function(const std::string& text, const char* name = "f")
    {
        EXPECT_EQ(Parse(text), 0) << Messages();
        return qvt_sci_FuncPtr(name);
    }
};
}   // namespace

TEST_F(qvt_sci_execute, AFunctionWithoutBodyIsReportedToItsHost)
{
    static int raised;
    qvt_sci_raise = [](int signal) { return raised = signal; };
    qvt_sci_Execute(Function("double f();"));
    EXPECT_EQ(raised, 4);
    EXPECT_EQ(Messages(), "\nqvt_sci_execute:ERROR: calling unbound extern function 'f'!\n");
}

// ---------------------------------------------------------------------------------------------------------------------
// Natives

namespace {
template <size_t>
using IntPointer = int*;

// Takes N pointers to int; the result depends on the place of each.
template <size_t... I>
double Weighted(IntPointer<I>... values)
{
    const int all[] = {*values..., 0};
    double sum = 0;
    for (size_t i = 0; i < sizeof...(I); ++i) sum += double(i + 1) * all[i];
    return sum;
}

template <size_t... I>
void BindWeighted(const char* name, std::index_sequence<I...>)
{
    qvt_sci_Bind(name, Weighted<I...>);
}

template <size_t N>
void ExpectArgumentsArrive()
{
    std::string formals, actuals;
    double expected = 0;
    for (size_t i = 0; i < N; ++i) {
        formals += (i ? ", int a" : "int a") + std::to_string(i);
        actuals += (i ? ", " : "") + std::to_string(3 * i + 1);
        expected += double(i + 1) * double(3 * i + 1);
    }
    qvt_sci_NamespaceOpen();
    const std::string text = "double w(" + formals + "); double f() { return w(" + actuals + "); }";
    ASSERT_EQ(qvt_sci_ParseString(text.c_str()), 0);
    BindWeighted("w", std::make_index_sequence<N>());
    EXPECT_EQ(qvt_sci_AsDouble(qvt_sci_Call(qvt_sci_FuncPtr("f"))), expected) << N << " arguments";
    qvt_sci_NamespaceClose();
}

template <size_t... N>
void ExpectArgumentsArriveFor(std::index_sequence<N...>)
{
    (ExpectArgumentsArrive<N>(), ...);
}
}   // namespace

TEST_F(qvt_sci_execute, NativesTakeAnyNumberOfArgumentsUpToTheirLimit)
{
    ExpectArgumentsArriveFor(std::make_index_sequence<MAX_NATIVE_ARGUMENTS + 1>());
    EXPECT_EQ(Messages(), "");

    std::string formals = "int a0", actuals = "0";
    for (int i = 1; i < 51; ++i) {
        formals += ", int a" + std::to_string(i);
        actuals += ", 1";
    }
    Symbol* f = Function("void w(" + formals + "); void f() { w(" + actuals + "); }");
    static bool called;
    qvt_sci_Bind(
        "w", +[]() { called = true; });
    qvt_sci_Execute(f);
    EXPECT_FALSE(called);
    EXPECT_EQ(Messages(), "external function calls with > 50 args not supported\n");
}

TEST_F(qvt_sci_execute, NativesReturnEveryType)
{
    Symbol* f = Function("char c(); int i(); float f4(); double d(); FILE* p(); void v(); "
                         "double f() { v(); return 100 * c() + 10 * i() + f4() + d() + (p() == NULL); }");
    qvt_sci_Bind(
        "c", +[]() -> signed char { return -3; });
    qvt_sci_Bind(
        "i", +[]() { return 5; });
    qvt_sci_Bind(
        "f4", +[]() { return 0.5f; });
    qvt_sci_Bind(
        "d", +[]() { return 0.25; });
    qvt_sci_Bind(
        "p", +[]() -> void* { return nullptr; });
    qvt_sci_Bind(
        "v", +[]() {});
    EXPECT_EQ(qvt_sci_AsDouble(qvt_sci_Call(f)), -300 + 50 + 0.5 + 0.25 + 1);
}

TEST_F(qvt_sci_execute, NativesAreToldHowFarTheirArraysReach)
{
    static std::string lengths;
    Symbol* f =
        Function("void tell(double a[], char s[], double x); double g[3][4]; extern double field[]; int n = 6;"
                 "void inner(double v[], char s[]) { tell(v, s, v[0]); }"
                 "void f() { double local[n]; char s[5]; tell(g, \"text\", 1.0); tell(g[1], s, g[0][0]);"
                 " inner(g[2], s); inner(local, \"a\"); resize(local, 2); tell(local, s, n); tell(field, s, n); }"
                 "void host(double v[]) { tell(v, \"\", 0); }");
    qvt_sci_InitAll();
    static double values[9];
    qvt_sci_Bind("field", values);
    qvt_sci_Bind(
        "tell", +[](double*, char*, double*) {
            for (int i = 0; i < 4; ++i) lengths += std::to_string(qvt_sci_ArgLength(i)) + (i < 3 ? "," : " ");
        });
    qvt_sci_Execute(f);
    EXPECT_EQ(lengths, "12,5,1,-1 8,5,12,-1 4,5,4,-1 6,2,6,-1 2,5,1,-1 -1,5,1,-1 ");

    lengths = "";
    Symbol* host = qvt_sci_FuncPtr("host");
    qvt_sci_Call(host, values);
    qvt_sci_BindArgLength(host, 0, 9);
    qvt_sci_Call(host, values);
    EXPECT_EQ(lengths, "-1,1,1,-1 9,1,1,-1 ");
    EXPECT_EQ(qvt_sci_ArgLength(0), -1) << "no native is running";
}

TEST_F(qvt_sci_execute, NativesSeeWhereTheRunIs)
{
    static std::string where;
    Symbol* f = Function("void tell(int i); void inner(int i) { if (i > 1) tell(i + 1); } void f() { inner(2); }");
    qvt_sci_Bind(
        "tell", +[](int*) {
            char code[100];
            qvt_sci_GetCurrentCode(code, sizeof code);
            for (int i = 0; i < qvt_sci_StackDepth(); ++i) where += std::string(qvt_sci_StackFuncName(i)) + " ";
            where += code;
        });
    qvt_sci_Execute(f);
    EXPECT_EQ(where, "f inner tell((i + 1))");
    EXPECT_EQ(qvt_sci_StackDepth(), 0);
    EXPECT_EQ(qvt_sci_StackFuncName(0), nullptr);
}

// ---------------------------------------------------------------------------------------------------------------------
// Limits

TEST(qvt_sci_execute_Limits, AHundredLoopsAndCallsMayBeActiveAtOnce)
{
    const auto loops = [](int n) { return Repeated("while (1) { ", n) + "print 1; return; " + Repeated("}", n); };
    EXPECT_EQ(OutputOf("void main() {" + loops(99) + "}"), " 1\n");
    EXPECT_EQ(OutputOf("void g() {" + loops(98) + "} void main() { g(); }"), " 1\n");
    const std::string message = "ERROR: MAX_JUMP_DEP exceeded\nin function 'main', line 1\n";
    EXPECT_EQ(OutputOf("void main() {" + loops(100) + "}", message), "");
    EXPECT_EQ(OutputOf("void g() { } void main() { for (;;) { " + Repeated("while (1) { ", 98) + "g(); return; " +
                           Repeated("}", 99) + "}",
                       message),
              "");
}

TEST(qvt_sci_execute_Limits, LongChainsOfOperatorsNeedNoDeepStack)
{
    constexpr int N = 200000;   // more than the C stack has room for
    EXPECT_EQ(OutputOf("print 1" + Repeated("+1", N) + ";"), " 200001\n");
    EXPECT_EQ(OutputOf("double d = 0; print 0" + Repeated("+1-d", N) + ";"), " 200000\n");
    EXPECT_EQ(OutputOf("int i = 0; print 1" + Repeated("/1%2*1", N) + ";"), " 1\n");
    EXPECT_EQ(OutputOf("int i = 0; i = 1000000" + Repeated("-i++/100000", N) + "; print i;"), " 900000\n");
    EXPECT_EQ(OutputOf("int a[2] = {1, 2}; int b[2]; b = a" + Repeated("+a", 20000) + "; print b;"), " 20001 40002\n");
    EXPECT_EQ(OutputOf("print 1" + Repeated("&&1", N) + ", 0" + Repeated("||0", N) + ", 1" + Repeated("==1", N) + ";"),
              " 1 0 1\n");
    EXPECT_EQ(OutputOf("print 1" + Repeated(" ? 1 : 0", N) + ";"), " 1\n");
    EXPECT_EQ(OutputOf("double x; x = 2" + Repeated(" ** 1", N) + "; print x;"), " 2\n");
    EXPECT_EQ(OutputOf("int i; " + Repeated("i++;", N) + " print i;"), " 200000\n");
    EXPECT_EQ(OutputOf("int n = 1; FUNC* p; p = func_addr(\"f\"); print p == NULL" + Repeated("==0", N) + ";"), " 1\n");
}

// ---------------------------------------------------------------------------------------------------------------------
// Runs left by a jump

TEST(qvt_sci_execute_Abandoned, AfterAJumpEverythingCanBeCalledAgain)
{
    const std::string program =
        "int depth = 0;"
        "int fail(double x) { int a[1]; return a[1] + x; }"
        "int compare(int i, int j) { while (1) return fail(i); }"
        "void inner(double x) { FUNC* p = fail; char code[60]; int order[3];"
        "  if (x > 2) exec(\"double local[3]; while (1) exec(\\\"FUNC* q; q = fail; q(1);\\\");\");"
        "  if (x > 1) iqsort(3, order, \"compare\"); p(7); }"
        "void main() { FUNC* p = inner; while (1) for (;;) p(3); }";
    for (int round = 0; round < 50; ++round) {
        ProgramRecord record;
        RunProgram(program, "", record);
        EXPECT_EQ(record.signals, std::vector<int>{11}) << record.messages;
        EXPECT_EQ(qvt_sci_StackDepth(), 0);
        EXPECT_EQ(jumpDep, -1);
    }
    EXPECT_EQ(OutputOf("int f() { return 1; } void main() { FUNC* p = f; print p(), exec(\"print f();\"); }"),
              " 1 1\n 0\n");
}

// ---------------------------------------------------------------------------------------------------------------------
// Switches that are read when code is compiled

TEST_F(qvt_sci_execute, ChecksAreCompiledInOrLeftOut)
{
    static int raised;
    raised = 0;
    qvt_sci_raise = [](int signal) { return raised = signal; };
    const std::string body = "(int n) { int a[4]; int i = 0; double x = 1; a = 5; n = 7 / n; i = 7 % i; a /= i; x /= i;"
                             " return a[n] + (x > 1e300); }";
    Symbol* checked = Function("int checked" + body, "checked");
    qvt_sci_on_div_by_zero = 0;
    Symbol* unchecked = Function("int unchecked" + body, "unchecked");
    qvt_sci_on_div_by_zero = 1;
    int n = 0;
    EXPECT_EQ(int(qvt_sci_Call(unchecked, &n)), 1);
    EXPECT_EQ(raised, 0);
    n = 0;
    EXPECT_EQ(int(qvt_sci_Call(checked, &n)), 1);
    EXPECT_EQ(raised, 8);

    qvt_sci_on_out_of_bounds = 0;
    Symbol* outside = Function("double outside(double v[1]) { return v[2]; }", "outside");
    qvt_sci_on_out_of_bounds = 1;
    double values[3] = {1, 2, 3};
    raised = 0;
    EXPECT_EQ(qvt_sci_AsDouble(qvt_sci_Call(outside, values)), 3);
    EXPECT_EQ(raised, 0);
}

TEST_F(qvt_sci_execute, AnErrorShowsTheCodeThatFailed)
{
    static std::string code;
    qvt_sci_raise = [](int) {
        char text[100];
        qvt_sci_GetCurrentCode(text, sizeof text);
        code += std::string(text) + "\n";
        return 0;
    };
    Symbol* f = Function("void f(double a[2]) { int i = 3; double x = 0; a[1] = a[1] / x; a /= x; x = a[i] + 1; }");
    double values[4] = {1, 2, 3, 4};
    qvt_sci_Call(f, values);
    EXPECT_EQ(code, "a[1] / x\na /= x\na /= x\na[i]\n");
}
