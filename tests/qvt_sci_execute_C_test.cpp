// Programs in what the language has in common with C print what the same text prints when g++ compiles it.
//
// The text is generated, from a fixed seed. It keeps clear of where the two differ: char with char is char here, the
// right side of a compound assignment is cast first, comparisons share one level, arguments are references; and of what
// C leaves open: overflowing conversions, the order of effects within an expression. Signed overflow wraps (-fwrapv).

#include "qvt_sci_Program.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

namespace {
class Generator {
public:
    explicit Generator(unsigned seed) : _random(seed) {}

    // Functions f0, f1, ... and run, which calls them; about `lines` statements.
    std::string Program(int lines)
    {
        std::string text;
        for (; _functions < 4; ++_functions) {
            const std::string n = std::to_string(_functions);
            text +=
                "double f" + n + "(int p, double q)\n{\n" + Body(lines / 8) + "return d0 + i1 % 100 + p % 10 + q;\n}\n";
        }
        return text + "void run()\n{\nint p = 3; double q = 0.25;\n" + Body(lines / 2) + "}\n";
    }

private:
    int Pick(int n) { return int(_random() % unsigned(n)); }
    std::string Number(int below) { return std::to_string(Pick(below)); }
    std::string OneOf(std::initializer_list<const char*> texts) { return texts.begin()[Pick(int(texts.size()))]; }

    std::string Int(int depth)
    {
        if (depth <= 0) {
            switch (Pick(6)) {
            case 0: return Number(1000);
            case 1: return Number(2000000000);
            case 2: return "(c0 + 0)";
            case 3: return "k[" + Index() + "]";
            default: return OneOf({"i0", "i1", "p", "n0", "('x' + 0)"});
            }
        }
        switch (Pick(11)) {
        case 0: return "(" + Int(depth - 1) + OneOf({" / ", " % "}) + std::to_string(1 + Pick(50)) + ")";
        case 1: return "(-(" + Int(depth - 1) + "))";
        case 2: return "(" + Test(depth - 1) + " ? " + Int(depth - 1) + " : " + Int(depth - 1) + ")";
        case 3: return "(" + Test(depth - 1) + ")";
        case 4: return "(!" + Int(0) + ")";
        case 5: return "(int) fmod(" + Double(depth - 1) + ", 1000.0)";
        case 6: return "abs(" + Int(depth - 1) + " % 1000)";
        default: return "(" + Int(depth - 1) + Sign() + Int(depth - 1) + Sign() + Int(0) + ")";
        }
    }

    std::string Double(int depth)
    {
        if (depth <= 0) return Pick(2) ? OneOf({"d0", "d1", "q", "0.5", "2e-3", "17.0"}) : "a[" + Index() + "]";
        switch (Pick(9)) {
        case 0: return OneOf({"sin(", "cos(", "fabs(", "floor("}) + Double(depth - 1) + ")";
        case 1: return "(" + Double(depth - 1) + " / (1.5 + fabs(" + Double(depth - 1) + ")))";
        case 2: return "(" + Double(depth - 1) + Sign() + "(" + Int(0) + " % 100))";
        case 3: return "(double) (" + Int(depth - 1) + ")";
        case 4: return "(" + Float(depth - 1) + Sign() + Double(0) + ")";
        case 5: return Call();
        default: return "(" + Double(depth - 1) + Sign() + Double(depth - 1) + Sign() + Double(0) + ")";
        }
    }

    // Functions print: one call in a statement, since C leaves the order of two open.
    std::string Call()
    {
        if (_functions == 0 || _called) return Double(0);
        _called = true;
        return "f" + Number(_functions) + "(" + Int(0) + ", " + Double(0) + ")";
    }

    std::string Float(int depth)
    {
        if (depth <= 0) return OneOf({"g0", "g1", "(float) 0.1"});
        if (Pick(3) == 0) return "(float) fmod(" + Double(depth - 1) + ", 10.0)";
        return "(" + Float(depth - 1) + Sign() + (Pick(3) ? Float(0) : "(" + Int(0) + " % 100)") + ")";
    }

    std::string Test(int depth)
    {
        if (depth > 0 && Pick(3) == 0) return Test(depth - 1) + OneOf({" && ", " || "}) + Test(0);
        const std::string compare = OneOf({" < ", " > ", " <= ", " >= ", " == ", " != "});
        return Pick(2) ? Int(0) + Sign() + Int(0) + compare + Int(depth - 1) : Double(0) + compare + Double(depth - 1);
    }

    std::string Sign() { return OneOf({" + ", " - ", " * "}); }
    std::string Index() { return Pick(2) ? Number(8) : OneOf({"(n0 + 8) % 8", "j"}); }

    std::string Assignment()
    {
        _called = false;
        switch (Pick(10)) {
        case 0: return OneOf({"i0", "i1"}) + OneOf({" += ", " -= ", " *= "}) + Int(2) + ";";
        case 1: return "k[" + Index() + "]" + OneOf({" = ", " += ", " -= "}) + Int(2) + ";";
        case 2: return "a[" + Index() + "] = fmod(" + Double(2) + ", 1000.0);";
        case 3: return OneOf({"g0", "g1"}) + " = (float) fmod(" + Float(3) + ", 100.0);";
        case 4: return OneOf({"g0", "g1"}) + OneOf({" += ", " -= "}) + "(float) (" + Float(1) + " / 7.0);";
        case 5: return "c0 = (char) (" + Int(2) + "); " + OneOf({"c0++;", "c0--;", "--c0;"});
        case 6: return OneOf({"i0++;", "--i1;", "s += 3;", "k[3]++;", "d0++;"});
        case 7: return OneOf({"i0", "i1"}) + " /= " + std::to_string(1 + Pick(9)) + ";";
        case 8: return OneOf({"i0", "i1"}) + " = " + Int(3) + ";";
        default: return OneOf({"d0", "d1"}) + " = fmod(" + Double(3) + ", 1000.0);";
        }
    }

    std::string Statement()
    {
        switch (Pick(8)) {
        case 0: return "if (" + Test(2) + ") { " + Assignment() + " } else " + Assignment();
        case 1: return "for (n0 = 0; n0 < " + Number(9) + "; n0++) { " + Assignment() + " }";
        case 2: return "for (n0 = 9; n0 >= 0; n0 -= 2) { if (" + Test(1) + ") continue; " + Assignment() + " }";
        case 3: return "n0 = 0; while (n0 < 7) { n0++; if (" + Test(1) + ") break; " + Assignment() + " }";
        case 4:
            return "for (j = 0; j < 8; j++) for (n0 = j; n0 < 8; ++n0) a[j] = fmod(a[j] * 0.5 + a[n0], 100.0); j = 2;";
        default: return Assignment();
        }
    }

    std::string Body(int lines)
    {
        std::string text = "int i0 = 5, i1 = p, n0 = 1, j = 2; char c0 = 'A'; float g0 = 1.5, g1 = 0.25;\n"
                           "double d0 = q, d1 = 2.5; int k[8]; double a[8]; static int s = 7;\n"
                           "for (n0 = 0; n0 < 8; n0++) { k[n0] = n0 * 1234567; a[n0] = n0 / 3.0; }\n";
        for (int i = 0; i < lines; ++i) {
            text += Statement() + "\n";
            text += "printf(\"%d %d %d %d %d %d\\n\", i0, i1, n0, c0, k[3], s);\n";
            text += "printf(\"%.9g %.9g %.17g %.17g %.17g\\n\", g0, g1, d0, d1, a[1]);\n";
        }
        return text;
    }

    std::mt19937 _random;
    int _functions = 0;
    bool _called = false;
};

// What the program prints when g++ compiles it; false if there is no compiler.
bool PrintedByC(const std::string& program, std::string& output)
{
    std::string directory = std::filesystem::temp_directory_path() / "qvt_sci_C_XXXXXX";
    if (!mkdtemp(directory.data())) return false;
    std::ofstream(directory + "/program.cpp") << "#include <cmath>\n#include <cstdio>\n#include <cstdlib>\n"
                                              << program << "int main() { run(); }\n";
    const std::string command = "cd " + directory +
                                " && g++ -O0 -w -fwrapv -fsigned-char -ffp-contract=off -fno-builtin "
                                "program.cpp -o program && ./program > output";
    const bool ran = std::system(command.c_str()) == 0;
    std::ostringstream text;
    text << std::ifstream(directory + "/output").rdbuf();
    output = text.str();
    std::filesystem::remove_all(directory);
    return ran;
}

void ExpectSameLines(const std::string& ours, const std::string& theirs, const std::string& program)
{
    std::istringstream a(ours), b(theirs);
    std::string lineOfA, lineOfB;
    for (int n = 1; std::getline(b, lineOfB); ++n) {
        std::getline(a, lineOfA);
        ASSERT_EQ(lineOfA, lineOfB) << "line " << n << " of the output of\n" << program;
    }
    EXPECT_EQ(ours.size(), theirs.size());
}
}   // namespace

TEST(qvt_sci_execute_C, CommonSubsetPrintsWhatCPrints)
{
    if (std::system("g++ --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "no g++";
    for (unsigned seed = 1; seed <= 3; ++seed) {
        const std::string program = Generator(seed).Program(240);
        std::string expected;
        ASSERT_TRUE(PrintedByC(program, expected)) << program;
        ASSERT_GT(expected.size(), 10000u);
        ProgramRecord record;
        RunProgram(program + "void main() { run(); }", "", record);
        ASSERT_EQ(record.messages, "");
        ExpectSameLines(record.output, expected, program);
    }
}
