// What hosts do with compiled code besides parsing it: formulas in two tags, init and exit code, calls, and where the
// run is.

#include "qvt_sci_Internal.h"

#include <algorithm>
#include <string>

// ---------------------------------------------------------------------------------------------------------------------
// Formulas: one text whose user writes no function headers. The host supplies them.

static const char INIT_TAG[] = "$$init";
static const char FORMULA_TAG[] = "$$formula";

static int RefuseFormula(const char* what, const char* tag, const char* text, const char* initDeclaration,
                         const char* formulaDeclaration)
{
    qvt_sci_msg("formula string does not contain %s tag '%s':\n'%s'\n", what, tag, text);
    qvt_sci_msg("init   -decl: %s\n", initDeclaration);
    qvt_sci_msg("formula-decl: %s\n", formulaDeclaration);
    qvt_sci_flush_msg();
    return 1;
}

static std::string Function(const char* declaration, const std::string& body)
{
    return std::string("\n") + declaration + "\n{\n" + body + "\n}\n";
}

int qvt_sci_ParseFormulaString(const char* initDeclaration, const char* formulaDeclaration, const char* text)
{
    if (!text || !*text) {
        qvt_sci_msg("empty formula string!\n");
        qvt_sci_flush_msg();
        return 1;
    }
    const char* const init = std::strstr(text, INIT_TAG);
    if (!init) return RefuseFormula("init", INIT_TAG, text, initDeclaration, formulaDeclaration);
    const char* const initBody = init + std::strlen(INIT_TAG);
    const char* const formula = std::strstr(initBody, FORMULA_TAG);
    if (!formula) return RefuseFormula("formula", FORMULA_TAG, text, initDeclaration, formulaDeclaration);

    const std::string code = std::string(text, init) + Function(initDeclaration, std::string(initBody, formula)) +
                             Function(formulaDeclaration, formula + std::strlen(FORMULA_TAG));
    return qvt_sci_ParseAny(nullptr, code.c_str());
}

static bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

static bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The prefix as the beginning of a name.
static std::string createCleanName(const char* prefix)
{
    std::string name = prefix ? prefix : "";
    for (char& c : name) {
        if (!IsLetter(c) && !IsDigit(c)) c = '_';
    }
    if (!name.empty() && !IsLetter(name[0])) name[0] = '_';
    return name;
}

// Where the name stands in "double shear(double p)". A declaration without one is the host's mistake.
struct NamePlace {
    size_t begin, end;
};

static NamePlace FindName(const std::string& declaration)
{
    const size_t parenthesis = declaration.find('(');
    QVT_SCI_CHECK(parenthesis != std::string::npos);
    const size_t end = declaration.find_last_not_of(" \t", parenthesis > 0 ? parenthesis - 1 : 0) + 1;
    const size_t blank = declaration.find_last_of(" \t*", end > 0 ? end - 1 : 0);
    QVT_SCI_CHECK(blank != std::string::npos && blank < end);
    return {blank + 1, end};
}

static std::string insertDeclarationPrefix(const std::string& declaration, const std::string& prefix)
{
    std::string result = declaration;
    return result.insert(FindName(declaration).begin, prefix);
}

static Symbol* DeclaredFunction(const std::string& declaration)
{
    const NamePlace name = FindName(declaration);
    return qvt_sci_FuncPtr(declaration.substr(name.begin, name.end - name.begin).c_str());
}

int qvt_sci_ParseFormulaStringWithPrefixAndGetPtrs(const char* initDeclaration, const char* formulaDeclaration,
                                                   const char* prefix, const char* text, Symbol** initFunc,
                                                   Symbol** formulaFunc)
{
    *initFunc = nullptr;
    *formulaFunc = nullptr;
    const std::string name = createCleanName(prefix);
    const std::string init = insertDeclarationPrefix(initDeclaration, name);
    const std::string formula = insertDeclarationPrefix(formulaDeclaration, name);
    const int errors = qvt_sci_ParseFormulaString(init.c_str(), formula.c_str(), text);
    if (errors) return errors;
    *initFunc = DeclaredFunction(init);
    *formulaFunc = DeclaredFunction(formula);
    return 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Running

static void RunCode(Node* code)
{
    if (code) code->run(code);
}

void qvt_sci_InitAll() { RunCode(qvt_sci_NamespaceGetCurrent()->initCode); }

void qvt_sci_ExitAll() { RunCode(qvt_sci_NamespaceGetCurrent()->exitCode); }

// A native that a function has called may be about to call that function. Its formals and slots are in use.
static inline bool IsActive(const Symbol* function)
{
    if (stackDep == 0 || !qvt_sci_IsRunning(function)) return false;
    qvt_sci_msg("no recursive call supported (%s)!\n", function->name);
    qvt_sci_flush_msg();
    return true;
}

uint64_t qvt_sci_CallWith(Symbol* function, const void* const* arguments, int count)
{
    if (IsActive(function)) return 0;
    Symbol* const* formals = function->func.args;
    const int n = std::min(count, function->func.nArgs);
    for (int i = 0; i < n; ++i) {
        formals[i]->addr = const_cast<void*>(arguments[i]);
        if (formals[i]->symbolType == ARRAY_SYMBOL) FormalRefersTo(formals[i], formals[i]->arr.hostLength);
    }
    funcCall(function);
    uint64_t result;
    std::memcpy(&result, &returnValue, sizeof result);
    return result;
}

void qvt_sci_Execute(Symbol* function)
{
    if (!IsActive(function)) funcCall(function);
}

int qvt_sci_GetReturnValue(Symbol* function, void* out)
{
    if (function->dataType != VOID_TYPE && function->dataType != PTR_TYPE)
        std::memcpy(out, &returnValue, size_t(sizeOf[function->dataType]));
    switch (function->dataType) {
    case CHAR_TYPE: return returnValue.c;
    case INT_TYPE: return returnValue.i;
    default: return function->dataType;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Forwarders

extern "C" {

void ex_qvt_sci_NamespaceOpen() { qvt_sci_NamespaceOpen(); }

int ex_qvt_sci_NamespaceClose() { return qvt_sci_NamespaceClose(); }

void ex_qvt_sci_AddIncludePath(const char* path) { qvt_sci_AddIncludePath(path); }

int ex_qvt_sci_ParseString(const char* text) { return qvt_sci_ParseString(text); }

int ex_qvt_sci_ParseFormulaString(const char* initDeclaration, const char* formulaDeclaration, const char* text)
{
    return qvt_sci_ParseFormulaString(initDeclaration, formulaDeclaration, text);
}

void ex_qvt_sci_SetMessageBuffer(char* buffer, int length) { qvt_sci_SetMessageBuffer(buffer, length); }
}
