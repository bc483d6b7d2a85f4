// The predefined names as a whole: the text that declares them, the hooks that they go through, the constants.

#include "qvt_sci_Fixture.h"

#include <cmath>
#include <sstream>

using qvt_sci_Intrinsics = qvt_sci_Fixture;
using qvt_sci_Hooks = qvt_sci_Fixture;

TEST_F(qvt_sci_Intrinsics, AreListedBySection)
{
    const char* const inOrder[] = {
        "// PREDEFINED CONSTANTS\n",
        "extern double sqrt2;",
        "// SYSTEM FUNCTIONS\n",
        "int strftime(char s[], int slen, char format[]);",
        "// MATH FUNCTIONS (behave like C functions of math.h)\n",
        "int abs(int j);",
        "// MATH EXTENSIONS\n",
        "double drand();",
        "// STRING FUNCTIONS (strings are char-array ending with a NULL character (null byte))\n",
        "void strncat(char dest[], char src[]);",
        "// FILE IO\n",
        "int fgets(char s[], int size, FILE *stream);",
        "// PRINT AND SCAN FUNCTIONS\n",
        "// EXEC FUNCTION\n",
        "// FUNCTION POINTERS\n",
        "// SORTING FUNCTIONS\n",
        "void oqsort(int n, int order[], FUNC *compare);",
        "// SOLVING LINEAR EQUATION SYSTEMS\n",
        "double solve_pcg(int nc, int ne, int le[][2], double tol,",
    };
    const std::string text = qvt_sci_intrinsics();
    size_t from = 0;
    for (const char* part : inOrder) {
        const size_t found = text.find(part, from);
        ASSERT_NE(found, std::string::npos) << part;
        from = found;
    }
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const bool isDeclaration = line.rfind("//", 0) != 0 && line.find(';') != std::string::npos;
        EXPECT_TRUE(!isDeclaration || line.find("; ") < line.find(" // ")) << line;
    }
    EXPECT_EQ(qvt_sci_intrinsics(), qvt_sci_intrinsics()) << "built once";
}

TEST_F(qvt_sci_Intrinsics, AreAllBound)
{
    qvt_sci_NamespaceSwitchTo(root);
    EXPECT_EQ(qvt_sci_NumUnboundExternSymbols(), 0) << Messages();
    int names = 0;
    while (qvt_sci_NextSymbol()) ++names;
    EXPECT_GT(names, 60) << "the root's table is a list that can be walked";
    qvt_sci_NamespaceSwitchTo(own);
    EXPECT_EQ(qvt_sci_FuncPtr("sin"), nullptr) << "they live in the root";
}

TEST_F(qvt_sci_Intrinsics, ManualHasItsSections)
{
    const std::string manual = qvt_sci_explanations();
    for (const char* part :
         {"QVT_SCI RUN TIME COMPILER (FORMULAS) INTRODUCTION", "SOME FUNDAMENTALS/PECULIARITIES OF C SYNTAX",
          "SUPPORTED DATA TYPES", "GENERAL", "MACROS", "EXTENSIONS TO C SYNTAX", "LIMITATIONS", "HINTS AND TRICKS",
          "KNOWN ISSUES", "Max 7 array dimensions allowed.", "Loop overhead: avoid short loops",
          "Parsing already stops at the first syntax error and only this first error is reported."}) {
        EXPECT_NE(manual.find(part), std::string::npos) << part;
    }
    EXPECT_EQ(manual.rfind("QVT_SCI", 0), 0u);
}

TEST_F(qvt_sci_Intrinsics, SleepUsesNoProcessorTime)
{
    ASSERT_EQ(Parse("double used() { double before = sclock(); sleep(0.2); return sclock() - before; }"
                    "double passed() { double before = time(); sleep(1.1); return time() - before; }"),
              0);
    EXPECT_LT(Value("used"), 0.1);
    EXPECT_GE(Value("passed"), 1);
}

TEST(qvt_sci_IntrinsicsDeathTest, ConstantsAreInReadOnlyMemory)
{
    qvt_sci_NamespaceGetCurrent();
    for (const char* name : {"pi", "e", "sqrt2"}) {
        EXPECT_DEATH(*static_cast<double*>(qvt_sci_Address(name)) = 3, "") << name;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Hooks

static std::string calls;

static int Record(const char* name, int result)
{
    calls += std::string(name) + " ";
    return result;
}

static FILE* const fakeFile = reinterpret_cast<FILE*>(&calls);

static FILE* RecordFile(const char* name, FILE* stream)
{
    EXPECT_EQ(stream, fakeFile) << name;
    Record(name, 0);
    return stream;
}

// g++ makes no function pointer of a lambda with "...".
static int RecordScanf(const char*, ...) { return Record("scanf", 0); }

static int RecordPrintf(const char* format, ...) { return Record(format, 0); }

static int RecordFprintf(FILE* stream, const char*, ...) { return RecordFile("fprintf", stream) ? 0 : -1; }

static int RecordFscanf(FILE* stream, const char*, ...) { return RecordFile("fscanf", stream) ? 1 : -1; }

namespace {
// The hooks that answer by themselves, as long as this lives.
struct RecordingHooks {
    RecordingHooks()
    {
        calls.clear();
        qvt_sci_raise = [](int signal) { return Record(("raise" + std::to_string(signal)).c_str(), 0); };
        qvt_sci_remove = [](const char* path) { return Record(path, 0); };
        qvt_sci_tmpfile = []() -> FILE* { return Record("tmpfile", 0) ? fakeFile : nullptr; };
        qvt_sci_scanf = RecordScanf;
        qvt_sci_printf = RecordPrintf;
        qvt_sci_fprintf = RecordFprintf;
        qvt_sci_fscanf = RecordFscanf;
        qvt_sci_fputs = [](const char*, FILE* f) { return RecordFile("fputs", f) ? 0 : -1; };
        qvt_sci_fgets = [](char* s, int, FILE* f) { return RecordFile("fgets", f) ? s : nullptr; };
        qvt_sci_fputc = [](int c, FILE* f) { return RecordFile("fputc", f) ? c : -1; };
        qvt_sci_fgetc = [](FILE* f) { return RecordFile("fgetc", f) ? 'a' : -1; };
        qvt_sci_ferror = [](FILE* f) { return RecordFile("ferror", f) ? 0 : -1; };
        qvt_sci_feof = [](FILE* f) { return RecordFile("feof", f) ? 0 : -1; };
        qvt_sci_fclose = [](FILE* f) { return RecordFile("fclose", f) ? 0 : -1; };
        qvt_sci_fopen = [](const char* path, const char* mode) {
            return Record((std::string(path) + mode).c_str(), 0) ? nullptr : fakeFile;
        };
        qvt_sci_flush_stdout = [] { Record("flush", 0); };
    }

    ~RecordingHooks()
    {
#define RESTORE(name, Result, Parameters) qvt_sci_##name = name##_;
        QVT_SCI_HOOKS(RESTORE)
        qvt_sci_flush_stdout = nullptr;
    }

#define KEEP(name, Result, Parameters) Result(*name##_) Parameters = qvt_sci_##name;
    QVT_SCI_HOOKS(KEEP)
};
}   // namespace

TEST_F(qvt_sci_Hooks, CarryAllTrafficOfTheLanguage)
{
    ASSERT_EQ(Parse("int i; char s[9]; int a[9];"
                    "void main() { FILE *f = fopen(\"p\", \"r\"); fgetc(f); fgets(s, 9, f); fputc(1, f); fputs(s, f);"
                    "ferror(f); feof(f); fprintf(f, \"%d\", i); fscanf(f, \"%d\", i); scanf(\"%d\", i); fclose(f);"
                    "print i; printf(\"%d\", i); sprintf(s, \"%d\", i); remove(\"q\");"
                    "i = sscanf(s, \"%d%d%d%d%d%d%d%d%d\", a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8]);"
                    "i = 1/(i - i); }"),
              0);
    {
        const RecordingHooks hooks;
        qvt_sci_Execute(qvt_sci_FuncPtr("main"));
    }
    EXPECT_EQ(calls,
              "pr fgetc fgets fputc fputs ferror feof fprintf fscanf scanf fclose  %d \n flush %d flush q tmpfile "
              "raise8 ");
    EXPECT_EQ(*static_cast<int*>(qvt_sci_Address("i")), 0) << "without a temporary file nothing is read";
}
