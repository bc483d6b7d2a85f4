// qvt_sci: a small C-like formula language that a host program compiles at run time and calls.
//
// A host selects a namespace, parses source into it, binds what the source declared extern to its own variables and
// functions, runs the init code and then calls functions by their symbol:
//
//     Namespace* formulas = qvt_sci_NamespaceCreate();
//     qvt_sci_NamespaceSwitchTo(formulas);
//     if (qvt_sci_ParseString("double shear(double p) { return 0.1*p; }") == 0) {
//         Symbol* shear = qvt_sci_FuncPtr("shear");
//         double p = 2000;
//         double stress = qvt_sci_AsDouble(qvt_sci_Call(shear, &p));
//     }
//     qvt_sci_NamespaceSwitchTo(qvt_sci_NamespaceParent(formulas));
//
// There is no interpreter object: all state is process-wide and nothing is locked. One thread at a time may enter the
// language, for parsing as well as for calling; namespaces do not isolate threads from each other.
//
// Compiled code knows its variables by address. A variable's memory belongs to its symbol, arguments are passed by
// reference, and every node of a compiled expression has one result slot: hence no recursion.
//
// What the language itself looks like: docs/formula-language.md.

#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>

struct Symbol;      // one name: a variable, an array or a function
struct Namespace;   // a table of symbols with a parent in which names are searched next

// ---------------------------------------------------------------------------------------------------------------------
// Limits

inline constexpr int MAX_JUMP_DEP = 100;   // loops and calls that may be active at once, one inside the other
inline constexpr int MAX_ARRAY_DIMENSIONS = 5;
inline constexpr int MAX_NATIVE_ARGUMENTS = 50;     // of a function of the host that the language calls
inline constexpr int MAX_POINTER_ARGUMENTS = 100;   // of a call through a function pointer
inline constexpr int MAX_SYMBOL_NAME = 295;         // characters of a name given to qvt_sci_Symbol

// ---------------------------------------------------------------------------------------------------------------------
// Parsing. All parse functions add to the active namespace. They return 0 on success, otherwise the number of errors:
// parsing stops at the first. Messages go to qvt_sci_msg.
//
// A failed parse takes back what it declared in the namespace that is active at the place of the error. An error at top
// level thus leaves nothing behind. One inside a function leaves that function's namespace active and the items before
// it declared: a host selects its own namespace again after every parse. (qvt_sci.cpp)

/// Parses an open file or, if file is null, a text. A text is unmasked and preprocessed first (#include, #define); a
/// file is not. The file is read to its end. With neither there is nothing left to read, which is no error.
int qvt_sci_ParseAny(FILE* file, const char* text);
int qvt_sci_Parse(FILE* file);
int qvt_sci_ParseString(const char* text);

/// Parses a formula, one text with the tags "$$init" and "$$formula" that a user writes without function headers; the
/// host supplies the two headers ("void init()", "double shear(double p)"). What stands before the first tag declares
/// names for both functions.
int qvt_sci_ParseFormulaString(const char* initDeclaration, const char* formulaDeclaration, const char* text);

/// The same with prefix put before the names of both functions, so that several formulas can live in one namespace;
/// characters of the prefix that cannot stand in a name become "_". Hands out both symbols, null on failure.
int qvt_sci_ParseFormulaStringWithPrefixAndGetPtrs(const char* initDeclaration, const char* formulaDeclaration,
                                                   const char* prefix, const char* text, Symbol** initFunc,
                                                   Symbol** formulaFunc);

/// Directories in which #include looks behind the name as written. Null and empty paths are ignored; no path is
/// dropped for being there already. (qvt_sci_Preprocess.cpp)
void qvt_sci_AddIncludePath(const char* path);
void qvt_sci_ClearIncludePathes();

/// Source in a single line that is safe inside a string attribute, and back. New malloc'd strings.
char* qvt_sci_MaskedCode(const char* text);
char* qvt_sci_UnmaskedCode(const char* text);

/// Replaces all occurrences of from in *text (malloc'd, reallocated), searching from the start after each replacement,
/// and returns how many there were. A to that contains from would never come to an end and is refused with 0.
int qvt_sci_Replace(char** text, const char* from, const char* to);

/// 1 lets a function or a variable be defined anew in a namespace that already has it; 0 (the default) refuses it.
void qvt_sci_allow_symbol_redefinition(int flag);

/// Brings the parser's state back to its start; hosts need this only after they left a parse by a jump of their own.
void qvt_sci_reset_parser_after_syntax_error();

// ---------------------------------------------------------------------------------------------------------------------
// Namespaces: a tree whose root holds the predefined names. The host owns the namespaces that it creates.
// (qvt_sci_aux_Namespace.cpp)

/// The active namespace; the root on the first call of the process, which creates it.
Namespace* qvt_sci_NamespaceGetCurrent();

/// A new namespace below the active one; the active one does not change.
Namespace* qvt_sci_NamespaceCreate();

/// The same and makes the new one active.
Namespace* qvt_sci_NamespaceOpen();

/// Destroys the active namespace and makes its parent active. Returns 1, and does nothing, if there is no parent.
int qvt_sci_NamespaceClose();

/// Null ends the process with a message, here and in NamespaceParent.
void qvt_sci_NamespaceSwitchTo(Namespace* ns);
Namespace* qvt_sci_NamespaceParent(Namespace* ns);

/// Runs the exit code of ns and frees it with all its symbols. Ignored for null, the root and the active namespace.
void qvt_sci_NamespaceDestroy(Namespace* ns);

/// Empties the active namespace (exit code first), unless it is the root. Both names do the same.
void qvt_sci_Clear();
void qvt_sci_DeleteAll();

/// Looks the active namespace's symbols through: 0 sound, -1 without a namespace, else 1 to 4 for the field that holds
/// what it must not (qualifier, symbol type, data type, mark of reference).
int qvt_sci_IsInvalidNamespace();

// ---------------------------------------------------------------------------------------------------------------------
// Symbols. A symbol pointer is valid until its namespace is cleared or destroyed. (qvt_sci_aux_Bind.cpp)

/// The symbol of that name in the active namespace alone, null if there is none. "function:variable" finds a local.
Symbol* qvt_sci_Symbol(const char* name);

/// The symbol if it is a function of the active namespace itself, else null: parents are not searched.
Symbol* qvt_sci_FuncPtr(const char* name);

/// Walks the symbols of the active namespace: each call gives the next, null at the end, then it begins anew. A table
/// of more than 102 symbols is for lookup only and shows none.
Symbol* qvt_sci_NextSymbol();

/// Removes all symbols of that name from the active namespace; returns how many.
int qvt_sci_SymbolRemove(const char* name);

const char* qvt_sci_SymbolName(const Symbol* symbol);
const char* qvt_sci_SymbolType(const Symbol* symbol);       // "var", "arr", "func"
const char* qvt_sci_SymbolDataType(const Symbol* symbol);   // "void", "char", "int", "float", "double", "ptr"
int qvt_sci_SymbolIsReferenced(const Symbol* symbol);
/// Number of a function's formals; -1 for null and for what is no function.
int qvt_sci_NumFormals(const Symbol* function);
/// 1 if the function can be called (it has a body, or a native is bound to it; a failed parse can leave one without)
/// and its formals are of these types, separated by commas: "" for none, "double,char[]".
int qvt_sci_Takes(const Symbol* function, const char* formals);

/// Binds what the source declared extern: the name is searched from the active namespace upward. A native function
/// takes pointers, one for each parameter, and returns the declared type by value. Null, with a message, if the name is
/// unknown or not extern; the address is set in the second case all the same.
Symbol* qvt_sci_Bind(const char* name, const void* address);
template <class Result, class... Arguments>
Symbol* qvt_sci_Bind(const char* name, Result (*native)(Arguments...))
{
    return qvt_sci_Bind(name, reinterpret_cast<const void*>(native));
}

void qvt_sci_BindBySym(Symbol* symbol, const void* address);   // no checks

/// Address of a formal for qvt_sci_Execute; no checks.
void qvt_sci_BindArg(Symbol* function, int index, const void* address);

/// Number of elements of the array that the host passes for a formal, from now on until it is set anew; -1, at first,
/// for unknown. Indices are checked against it, and natives that write text (strcpy, sprintf) keep within it.
void qvt_sci_BindArgLength(Symbol* function, int index, int64_t elements);

/// Address of a variable; searched upward. Null and a message if there is none.
void* qvt_sci_Address(const char* name);
void* qvt_sci_AddressInNamespace(Namespace* ns, const char* name);
/// Address of a local of a function of the active namespace; null, without a message, if either is missing.
void* qvt_sci_AddressInFunction(const char* function, const char* name);

/// Counts extern symbols without an address, those inside functions too, and names each in a message.
int qvt_sci_NumUnboundExternSymbols();

// ---------------------------------------------------------------------------------------------------------------------
// Running. (qvt_sci_aux_Embedding.cpp)

/// Runs the active namespace's init code, or exit code, if there is any.
void qvt_sci_InitAll();
void qvt_sci_ExitAll();

/// Calls a function with `count` pointer arguments, one for each formal, of exactly the formal's type: a pointer to a
/// double for a double. Returns the 8 bytes of the result, to be read as the function's type: float and int in the low
/// 4. Allocates, searches and converts nothing. A function that ends without `return` leaves the last call's result.
uint64_t qvt_sci_CallWith(Symbol* function, const void* const* arguments, int count);

template <class... Values>
uint64_t qvt_sci_Call(Symbol* function, Values*... values)
{
    const void* const arguments[sizeof...(Values) + 1] = {values..., nullptr};
    return qvt_sci_CallWith(function, arguments, int(sizeof...(Values)));
}

inline double qvt_sci_AsDouble(uint64_t result)
{
    double value;
    std::memcpy(&value, &result, sizeof value);
    return value;
}

/// Runs a function with its formals as they were last set.
void qvt_sci_Execute(Symbol* function);

/// Copies the last result into *out in the size of the function's type (void and pointer: nothing). Returns the value
/// for char and int, else the code of the data type.
int qvt_sci_GetReturnValue(Symbol* function, void* out);

/// Within a native function: the elements from the address passed as argument `index` to the end of the array it
/// points into, of a text in an array of texts to the end of its row; -1 if unknown (no array, or one whose length
/// nobody told). (qvt_sci_execute_Native.cpp)
int64_t qvt_sci_ArgLength(int index);

/// Where the run is, for a report or a signal handler: the functions that are active, outermost first, and the code of
/// the node that was last marked as executing, cut to size.
int qvt_sci_StackDepth();
const char* qvt_sci_StackFuncName(int index);
void qvt_sci_GetCurrentCode(char* buffer, int size);

/// For natives: 1 while the function is active. It cannot be called then: qvt_sci_Call and qvt_sci_Execute report that
/// and do nothing, the result is 0.
int qvt_sci_IsRunning(const Symbol* function);

/// Declares a run as over that the host left by a jump of its own (longjmp out of qvt_sci_raise or a native): no
/// function counts as active any more. (qvt_sci_execute.cpp)
void qvt_sci_AbandonRun();

/// Read when code is compiled, not when it runs: 1 (the default) compiles the checks of indices and divisors in.
extern int qvt_sci_on_out_of_bounds;
extern int qvt_sci_on_div_by_zero;

// ---------------------------------------------------------------------------------------------------------------------
// Texts for the user (qvt_sci_aux_Intrinsics.cpp, qvt_sci_aux_Manual.cpp)

const char* qvt_sci_intrinsics();     // declarations of all predefined names, the source that the root is parsed from
const char* qvt_sci_explanations();   // the language manual

/// The compiled function as a tree of nodes, or as source, through qvt_sci_msg. (qvt_sci_Print.cpp)
void qvt_sci_PrintFunctionTree(const Symbol* function);
void qvt_sci_PrintFunctionCode(const Symbol* function);

// ---------------------------------------------------------------------------------------------------------------------
// Messages: every message of the language goes through these two. (qvt_sci_aux_Messages.cpp)

extern int (*qvt_sci_msg)(const char* format, ...);
extern void (*qvt_sci_flush_msg)();

/// Sets either or both; null keeps the old one.
void qvt_sci_ResetPrintf(int (*msg)(const char* format, ...), void (*flush)());

/// The stream of the default sink; null stands for stderr from the next parse on. The stream stays the caller's.
void qvt_sci_ResetOutputStream(FILE* stream);

/// Messages go into buffer from now on, with a terminating null byte, as far as they fit; null brings the default sink
/// back. A message of zero characters silences the buffer.
void qvt_sci_SetMessageBuffer(char* buffer, int length);

// ---------------------------------------------------------------------------------------------------------------------
// Hooks: file and console traffic and signals of the language go through these pointers, so that a host can redirect
// them. Each is at first the C library's function of that name.

// ORDER HOOKS   name, result, parameters
#define QVT_SCI_HOOKS(ROW)                                                                                             \
    ROW(raise, int, (int signal))                                                                                      \
    ROW(remove, int, (const char* path))                                                                               \
    ROW(tmpfile, FILE*, ())                                                                                            \
    ROW(scanf, int, (const char* format, ...))                                                                         \
    ROW(printf, int, (const char* format, ...))                                                                        \
    ROW(fprintf, int, (FILE * stream, const char* format, ...))                                                        \
    ROW(fscanf, int, (FILE * stream, const char* format, ...))                                                         \
    ROW(fputs, int, (const char* text, FILE* stream))                                                                  \
    ROW(fgets, char*, (char* text, int size, FILE* stream))                                                            \
    ROW(fputc, int, (int c, FILE* stream))                                                                             \
    ROW(fgetc, int, (FILE * stream))                                                                                   \
    ROW(ferror, int, (FILE * stream))                                                                                  \
    ROW(feof, int, (FILE * stream))                                                                                    \
    ROW(fclose, int, (FILE * stream))                                                                                  \
    ROW(fopen, FILE*, (const char* path, const char* mode))

#define QVT_SCI_DECLARE_HOOK(name, Result, Parameters) extern Result(*qvt_sci_##name) Parameters;
QVT_SCI_HOOKS(QVT_SCI_DECLARE_HOOK)
#undef QVT_SCI_DECLARE_HOOK

extern void (*qvt_sci_flush_stdout)();   // called after each print and printf unless it is null, as it is at first

// ---------------------------------------------------------------------------------------------------------------------
// Plain exported forwarders of the functions of those names, for hosts that load the language as a library.
// (qvt_sci_aux_Embedding.cpp)

extern "C" {
void ex_qvt_sci_NamespaceOpen();
int ex_qvt_sci_NamespaceClose();
void ex_qvt_sci_AddIncludePath(const char* path);
int ex_qvt_sci_ParseString(const char* text);
int ex_qvt_sci_ParseFormulaString(const char* initDeclaration, const char* formulaDeclaration, const char* text);
void ex_qvt_sci_SetMessageBuffer(char* buffer, int length);
}
