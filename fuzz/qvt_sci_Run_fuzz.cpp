// Running a user's program, whatever it is: the engine neither crashes nor hangs nor leaks.
//
// An input is the text of a program, or, if its first byte is below 9, a list of choices from which a program is put
// together by a small grammar: most of those parse.
//
// A program may do what its user may do: system, remove, exit, sleep, files and the solvers, whose index lists nobody
// checks, are harmless stand-ins here; the constants are writable; raise, exit and abort end the input. Steps are
// counted (src/qvt_sci_execute_Switches.h).

#ifndef _GNU_SOURCE
#define _GNU_SOURCE
#endif

#include "qvt_sci_execute_Switches.h"

#include <csetjmp>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <dlfcn.h>

// ---------------------------------------------------------------------------------------------------------------------
// Leaving a run

static jmp_buf inputIsDone;
static bool running = false;

[[noreturn]] static void LeaveRun()
{
    std::longjmp(inputIsDone, 1);
}

static int Raise(int)
{
    LeaveRun();
}

// exit and abort of the C library in this program: they end the input while one runs.
extern "C" void exit(int status) __THROW
{
    if (running) LeaveRun();
    reinterpret_cast<void (*)(int)>(dlsym(RTLD_NEXT, "exit"))(status);
    __builtin_unreachable();
}

extern "C" void abort() __THROW
{
    if (running) LeaveRun();
    reinterpret_cast<void (*)()>(dlsym(RTLD_NEXT, "abort"))();
    __builtin_unreachable();
}

// ---------------------------------------------------------------------------------------------------------------------
// Stand-ins

// Counts only: a stand-in returns to its caller, and the engine leaves at its next step.
static int Step()
{
#ifdef KORVO_FUZZ
    --qvt_sci_fuzz.stepsLeft;
#endif
    return 0;
}

static int Silent(const char*, ...)
{
    return Step();
}

static void NoFlush() {}

// Formats into nowhere, so that every argument is read as its conversion wants it.
static int Print(const char* format, ...)
{
    char text[256];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    Step();
    return length;
}

static int Scan(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int count = std::vsscanf("12 text 0.5 more", format, arguments);
    va_end(arguments);
    Step();
    return count;
}

static FILE* NoFile(const char*, const char*)
{
    return nullptr;
}

static FILE* NoTemporaryFile()
{
    return nullptr;
}

static int Nothing()
{
    return Step();
}

static double Zero()
{
    return Step();
}

static void Replace()
{
    static double constants[] = {3.14, 2.71, 1.41};
    const char* const constantNames[] = {"pi", "e", "sqrt2"};
    for (int i = 0; i < 3; ++i) qvt_sci_Bind(constantNames[i], &constants[i]);
    for (const char* name : {"getpid", "exit", "system", "sleep", "remove", "fclose", "ferror", "feof", "fgetc",
                             "fgets", "fputc", "fputs", "solveLES"}) {
        qvt_sci_Bind(name, Nothing);
    }
    for (const char* name : {"solve_pcg", "time", "sclock"}) qvt_sci_Bind(name, Zero);
    qvt_sci_raise = Raise;
    qvt_sci_printf = Print;
    qvt_sci_scanf = Scan;
    qvt_sci_fopen = NoFile;
    qvt_sci_tmpfile = NoTemporaryFile;
    qvt_sci_ResetPrintf(Silent, NoFlush);
}

// ---------------------------------------------------------------------------------------------------------------------
// Programs from choices. In a production "@X" stands for any production of X; the first is taken when the choices have
// run out, and contains no other.

static const char prelude[] =
    "int i, j = 3, n = 4, k[3]; double d = 1.5, x, a[4], b[2], l[n], m[2][3]; float g = 2; char c, s[8], t[9], u[3][5];"
    "extern double q, r[3]; FILE* o;"
    "char nameOfF[2] = {'f', 0}, nameOfLess[5] = {'l', 'e', 's', 's', 0}; FUNC* p;"
    "double f(double u); double h(int u, double v[]);"
    "double calls() { static int count; count++; return count; } int less(int u, int w) { return a[u] < a[w]; }";
static const char functions[] = "double f(double u) { @S @S u += 1; return @E; }"
                                "double h(int u, double v[]) { double y[u]; y = v[u]; @S @S return v[0] + @E; }"
                                "void main() { @S @S @S @S @S @S @S @S }";

static const char* const statements[] = {";",
                                         "@E;",
                                         "@V = @W;",
                                         "@V += @W;",
                                         "@V = {@E, @E};",
                                         "if (@E) @S else @S",
                                         "if (@E) { @S @S }",
                                         "while (@E) { @S @S }",
                                         "for (i = 0; i < @E; i++) { @S @S }",
                                         "for (@L = 0; @E; @L += 1) @S",
                                         "{ @S @S @S }",
                                         "print @E, @W, @T;",
                                         "return;",
                                         "break;",
                                         "continue;",
                                         "resize(@D, @E);",
                                         "p = @F;",
                                         "exec(\"@S @S\");",
                                         "exec(\"double y[3]; FUNC* r; @S r = p; r(@E);\");",
                                         "strcpy(@T, @T);",
                                         "sprintf(@T, \"%d %s\", @E, @T);",
                                         "sscanf(@T, \"%lf %d\", d, i);",
                                         "printf(\"%g %5s|%d\", @E, @T, @E);",
                                         "dqsort(@E, @D, k);",
                                         "int_sort(@E, k);",
                                         "oqsort(@E, k, @F);",
                                         "o = @F; fprintf(o, \"%d\", @E);"};
static const char* const numbers[] = {"1",
                                      "0",
                                      "2",
                                      "-1",
                                      "2.5",
                                      "'a'",
                                      "1e10",
                                      "@L",
                                      "@L",
                                      "@L",
                                      "@L++",
                                      "(--@L)",
                                      "(@E + @E)",
                                      "(@E - @E)",
                                      "(@E * @E)",
                                      "(@E / @E)",
                                      "(@E % @E)",
                                      "(@E < @E)",
                                      "(@E == @E)",
                                      "(@E && @E)",
                                      "(@E || @E)",
                                      "!(@E)",
                                      "(-(@E))",
                                      "(@E ** @E)",
                                      "(@E ? @E : @E)",
                                      "(int) (@E)",
                                      "(float) (@E)",
                                      "(@L = @E)",
                                      "(@L *= @E)",
                                      "(@L /= @E)",
                                      "f(@E)",
                                      "h(@E, @W)",
                                      "calls()",
                                      "p(@E)",
                                      "func_call(@F, @E)",
                                      "|@W|",
                                      "(@W . @W)",
                                      "sin(@E)",
                                      "max(@E, @E)",
                                      "strlen(@T)",
                                      "(@F == @F)",
                                      "iqsort((int) (@E), k, nameOfLess)",
                                      "atan2(@E, @E)",
                                      "resize(@D, @E)"};
static const char* const places[] = {"i",     "d",     "j",         "x",     "g",        "c", "k[@E]",
                                     "a[@E]", "b[@E]", "m[@E][@E]", "s[@E]", "u[@E][@E]", "q", "r[@E]"};
static const char* const arrays[] = {"a", "b", "m", "m[@E]", "l", "d", "r"};
static const char* const vectors[] = {"a", "@V", "(@W + @W)", "(@W * @E)", "(@W - @W)", "(@W / @W)", "(@W ^ @W)", "@E"};
static const char* const resizable[] = {"a", "b", "m", "l", "u"};
static const char* const texts[] = {"s", "t", "nameOfF", "u[@E]"};
static const char* const pointers[] = {"f",   "p", "h", "calls", "NULL", "func_addr(nameOfF)", "func_addr(@T)",
                                       "sin", "o"};

struct Choices {
    const uint8_t* data;
    size_t size;
    int depth;
    bool quoted;   // within the text of exec, where no other text can stand

    template <size_t N>
    void Choose(std::string& text, const char* const (&productions)[N])
    {
        size_t choice = 0;
        if (size > 0 && depth < 12 && text.size() < 4000) {
            choice = *data++ % N;
            --size;
        }
        if (quoted && std::strchr(productions[choice], '"')) choice = 0;
        ++depth;
        Expand(text, productions[choice]);
        --depth;
    }

    void Expand(std::string& text, const char* production)
    {
        for (const char* at = production; *at; ++at) {
            if (*at != '@') {
                text += *at;
                if (*at == '"') quoted = !quoted;
                continue;
            }
            switch (*++at) {
            case 'S': Choose(text, statements); break;
            case 'E': Choose(text, numbers); break;
            case 'L': Choose(text, places); break;
            case 'V': Choose(text, arrays); break;
            case 'W': Choose(text, vectors); break;
            case 'D': Choose(text, resizable); break;
            case 'T': Choose(text, texts); break;
            default: Choose(text, pointers);
            }
        }
    }
};

static std::string ProgramOf(const uint8_t* data, size_t size)
{
    std::string text;
    if (size > 0 && data[0] < 9) {
        Choices choices = {data + 1, size - 1, 0, false};
        text = prelude;
        choices.Expand(text, functions);
        return text;
    }
    text.assign(reinterpret_cast<const char*>(data), size);
    return text.find("void main()") == std::string::npos ? "void main(){" + text + "}" : text;
}

// ---------------------------------------------------------------------------------------------------------------------

static void RunMain()
{
    if (setjmp(inputIsDone) == 0) {
        running = true;
        qvt_sci_InitAll();
        Symbol* main = qvt_sci_FuncPtr("main");
        if (main && main->func.nArgs == 0) qvt_sci_Execute(main);
    }
    running = false;
    qvt_sci_AbandonRun();
}

extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=24";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Namespace* const root = qvt_sci_NamespaceGetCurrent();
    static const bool replaced = (Replace(), true);
    if (!replaced) return 0;
    const std::string text = ProgramOf(data, size);
    if (text.find('#') != std::string::npos) return 0;   // the preprocessor has a target of its own

    Namespace* const own = qvt_sci_NamespaceOpen();
    const bool parses = qvt_sci_ParseString(text.c_str()) == 0;
    qvt_sci_NamespaceSwitchTo(own);
    if (parses) {
#ifdef KORVO_FUZZ
        qvt_sci_fuzz.stepsLeft = 20000;
        qvt_sci_fuzz.leaveRun = LeaveRun;
#endif
        RunMain();
#ifdef KORVO_FUZZ
        qvt_sci_fuzz.leaveRun = nullptr;
#endif
    }
    qvt_sci_NamespaceSwitchTo(root);
    qvt_sci_NamespaceDestroy(own);
    return 0;
}
