// Running a user's program, whatever it is: the engine neither crashes nor hangs nor leaks.
//
// A program may do what its user may do: system, remove, exit, sleep, files and the solvers, whose index lists nobody
// checks, are harmless stand-ins here; the constants are writable; raise, exit and abort end the input. Steps are
// counted, and memory that only the program itself lets dangle is kept (src/qvt_sci_execute_Switches.h).

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

static int Step()
{
#ifdef KORVO_FUZZ
    CountSteps(1);
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

static void ReleaseKept()
{
#ifdef KORVO_FUZZ
    Pile<Namespace*>& namespaces = qvt_sci_fuzz.namespaces;
    for (size_t i = 0; i < namespaces.count; ++i) qvt_sci_NamespaceDestroy(namespaces.items[i]);
    namespaces.Free();
    while (qvt_sci_fuzz.memory.count > 0) std::free(qvt_sci_fuzz.memory.Pop());
    qvt_sci_fuzz.memory.Free();
#endif
}

extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=1";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Namespace* const root = qvt_sci_NamespaceGetCurrent();
    static const bool replaced = (Replace(), true);
    if (!replaced) return 0;
    std::string text(reinterpret_cast<const char*>(data), size);
    if (text.find("void main()") == std::string::npos) text = "void main(){" + text + "}";

    Namespace* const own = qvt_sci_NamespaceOpen();
    const bool parses = qvt_sci_ParseString(text.c_str()) == 0;
    qvt_sci_NamespaceSwitchTo(own);
    if (parses && qvt_sci_NumUnboundExternSymbols() == 0) {
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
    ReleaseKept();
    qvt_sci_NamespaceDestroy(own);
    return 0;
}
