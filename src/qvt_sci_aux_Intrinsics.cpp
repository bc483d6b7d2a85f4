// The predefined names: their declarations as text, and what binds them in the root namespace.
//
// The root is parsed from the same text that users read. Each name is thus an ordinary extern symbol, called the way a
// host's own functions are. Keywords (print, exec, ...) have no symbol: the text describes them within a comment.

#include "qvt_sci_aux_Builtin.h"

#include <initializer_list>

static std::span<const Builtin> KeywordDescriptions()
{
    static const Builtin rows[] = {
        // clang-format off
        {"// PRINT AND SCAN FUNCTIONS",                    nullptr,                                                                        nullptr},
        {"/*",                                             nullptr,                                                                        nullptr},
        {"print x, y, ...;",                               "each value with a blank before it, then a new line; arrays with all elements", nullptr},
        {"int printf(char format[], ...);",                "as in C; each % of the format takes the next argument",                        nullptr},
        {"int fprintf(FILE *stream, char format[], ...);", "the same into a file",                                                         nullptr},
        {"int sprintf(char s[], char format[], ...);",     "the text must be shorter than the array s",                                    nullptr},
        {"int scanf(char format[], ...);",                 "as in C; variables are given as they are, without &",                          nullptr},
        {"int fscanf(FILE *stream, char format[], ...);",  "the same from a file; all three return the number of values read",
         nullptr                                                                                                                                  },
        {"int sscanf(char s[], char format[], ...);",      "the same from a text",                                                         nullptr},
        {"*/",                                             nullptr,                                                                        nullptr},
        {"",                                               nullptr,                                                                        nullptr},
        {"// EXEC FUNCTION",                               nullptr,                                                                        nullptr},
        {"/*",                                             nullptr,                                                                        nullptr},
        {"int exec(char code[]);",                         "compiles and runs code; 0: success, else the number of errors",                nullptr},
        {"*/",                                             nullptr,                                                                        nullptr},
        {"",                                               nullptr,                                                                        nullptr},
        {"// FUNCTION POINTERS",                           nullptr,                                                                        nullptr},
        {"/*",                                             nullptr,                                                                        nullptr},
        {"FUNC *func_addr(char name[]);",                  "the function of that name, NULL: none",                                        nullptr},
        {"double func_call(FUNC *func, ...);",             "calls it; the result is converted to double",                                  nullptr},
        {"*/",                                             nullptr,                                                                        nullptr},
        {"",                                               nullptr,                                                                        nullptr},
        // clang-format on
    };
    return rows;
}

static std::initializer_list<std::span<const Builtin>> AllSections()
{
    static const std::initializer_list<std::span<const Builtin>> sections = {
        ConstantBuiltins(), SystemBuiltins(),      MathBuiltins(), StringBuiltins(),
        FileBuiltins(),     KeywordDescriptions(), SortBuiltins(), SolverBuiltins(),
    };
    return sections;
}

static std::string DeclarationText()
{
    constexpr size_t COMMENT_COLUMN = 56;
    std::string text;
    for (const auto& section : AllSections()) {
        for (const Builtin& row : section) {
            std::string line = row.declaration;
            if (row.comment) {
                line.resize(std::max(line.size() + 1, COMMENT_COLUMN), ' ');
                line += std::string("// ") + row.comment;
            }
            text += line + "\n";
        }
    }
    return text;
}

const char* qvt_sci_intrinsics()
{
    static const std::string text = DeclarationText();
    return text.c_str();
}

// "double sqrt(double x);" -> "sqrt"
static std::string NameIn(const std::string& declaration)
{
    const size_t end = declaration.find_first_of("(;");
    const size_t begin = declaration.find_last_of(" *", end) + 1;
    return declaration.substr(begin, end - begin);
}

void qvt_sci_CreatePredefinedSymbols()
{
    QVT_SCI_CHECK(qvt_sci_ParseString(qvt_sci_intrinsics()) == 0);
    for (const auto& section : AllSections()) {
        for (const Builtin& row : section) {
            if (row.native) QVT_SCI_CHECK(qvt_sci_Bind(NameIn(row.declaration).c_str(), row.native));
        }
    }
}
