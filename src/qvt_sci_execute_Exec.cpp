// Evaluators that reach for the language as a whole: exec, func_addr, func_call, iqsort, and those of print and scan.
//
// Names are searched from the namespace in which the code was compiled: an operand of the node keeps it.

#include "qvt_sci_execute_Internal.h"

#include "qvt_sci.tab.h"

#include <algorithm>
#include <cstdlib>

// ---------------------------------------------------------------------------------------------------------------------
// Texts

// A copy of the text in an array of char, which ends with the array if it has no null byte. To be freed.
static char* CopyOfText(Node* array)
{
    const char* text = static_cast<const char*>(array->ex(array));
    const int64_t room = text ? NodeRoom(array, text) : 0;
    const size_t length = !text ? 0 : room < 0 ? std::strlen(text) : strnlen(text, size_t(room));
    char* copy = static_cast<char*>(std::malloc(length + 1));
    QVT_SCI_CHECK(copy);
    if (length > 0) std::memcpy(copy, text, length);
    copy[length] = '\0';
    return copy;
}

// The symbol whose name stands in an array of char, searched from the namespace kept in another operand.
static Symbol* FindNamed(Node* name, const Node* from)
{
    char* text = CopyOfText(name);
    Symbol* symbol = FindSymbolRecursively(from->value.ns, text);
    std::free(text);
    return symbol;
}

// ---------------------------------------------------------------------------------------------------------------------
// exec(code)

// Namespaces of the execs under way. Each holds a call, its main; one more may still be parsing.
struct ExecFrame {
    Namespace* caller;
    Namespace* own;
};
static ExecFrame execFrames[MAX_JUMP_DEP + 1];
static int nExecFrames = 0;

static void OpenExec(Namespace* compiledIn)
{
    Namespace* const caller = gActiveNamespace;
    qvt_sci_NamespaceSwitchTo(compiledIn);
    Namespace* const own = qvt_sci_NamespaceCreate();
    qvt_sci_NamespaceSwitchTo(own);
    execFrames[nExecFrames++] = {caller, own};
}

static void CloseExec()
{
    const ExecFrame frame = execFrames[--nExecFrames];
    qvt_sci_NamespaceSwitchTo(frame.caller);
    qvt_sci_NamespaceDestroy(frame.own);
}

void AbandonExec()
{
    while (nExecFrames > 0) CloseExec();
}

// The text as a program: statements alone become the body of main.
static char* ProgramOf(char* text)
{
    if (std::strstr(text, "void main()")) return text;
    const size_t size = std::strlen(text) + sizeof "void main(){}";
    char* program = static_cast<char*>(std::malloc(size));
    QVT_SCI_CHECK(program);
    std::snprintf(program, size, "void main(){%s}", text);
    std::free(text);
    return program;
}

struct Exec {
    static int Get(Node* node)
    {
        CountSteps(200);   // a parse costs as much as many turns of a loop
        OpenExec(node->o.op[1]->value.ns);
        Namespace* const own = gActiveNamespace;
        char* program = ProgramOf(CopyOfText(node->o.op[0]));
        const int errors = qvt_sci_ParseString(program);
        std::free(program);
        if (errors) {
            qvt_sci_reset_parser_after_syntax_error();
        } else {
            Symbol* main = SymtabFind(own->symtab, "main");
            if (main && main->symbolType == FUNCTION_SYMBOL && main->func.nArgs == 0) funcCall(main);
        }
        CloseExec();
        return errors;
    }
};

// ---------------------------------------------------------------------------------------------------------------------
// func_addr(name), func_call(pointer, ...)

struct FunctionAddress {
    static void* Get(Node* node) { return FindNamed(node->o.op[0], node->o.op[1]); }
};

struct FunctionCall {
    static double Get(Node* node)
    {
        Symbol* function = static_cast<Symbol*>(GetValue<void*>(node->o.ops[0]));
        currentNode = node;
        return funcPtrCall("pointer", function, node->o.nOps - 1, node->o.ops + 1);
    }
};

// ---------------------------------------------------------------------------------------------------------------------
// iqsort(n, order, name)

static Symbol* comparison = nullptr;   // of the sort under way

static int qvt_sci_iqsort_compare(const void* i, const void* j)
{
    Symbol* const* formals = comparison->func.args;
    formals[0]->addr = const_cast<void*>(i);
    formals[1]->addr = const_cast<void*>(j);
    funcCall(comparison);
    return returnValue.i;
}

static bool ComparesInts(const Symbol* function)
{
    return qvt_sci_Takes(function, "int,int") && function->dataType == INT_TYPE && function->func.body;
}

bool SortByFunction(int* order, int n, Symbol* compare)
{
    if (!compare) return false;
    if (!IsFunction(compare) || !ComparesInts(compare)) {
        const char* const name = IsSymbol(compare) ? compare->name : "compare";
        qvt_sci_msg("\nqvt_sci_execute:ERROR: '%s' cannot compare, the form that is expected is: "
                    "int %s(int i, int j)\n",
                    name, name);
        qvt_sci_flush_msg();
        return false;
    }
    Symbol* const outer = comparison;
    if (outer && IsOnStack(compare)) {
        qvt_sci_msg("no recursive call supported (%s)!\n", compare->name);
        qvt_sci_flush_msg();
        return false;
    }
    comparison = compare;
    if (n > 1) std::qsort(order, size_t(n), sizeof(int), qvt_sci_iqsort_compare);
    comparison = outer;
    return true;
}

// No more elements are touched than the array has.
struct Iqsort {
    static int Get(Node* node)
    {
        Node* const* ops = node->o.ops;
        const int count = GetValue<int>(ops[0]);
        int* const order = static_cast<int*>(ops[1]->ex(ops[1]));
        const int64_t room = order ? NodeRoom(ops[1], order) : 0;
        const int n = int(room < 0 ? std::max(count, 0) : std::clamp<int64_t>(count, 0, room));
        for (int i = 0; i < n; ++i) order[i] = i;
        Symbol* const function = FindNamed(ops[2], ops[3]);
        currentNode = node;
        Loan sorted;
        Lend(sorted, order);
        const bool isSorted = SortByFunction(order, n, function);
        TakeBack(sorted);
        return isSorted ? 0 : 1;
    }
};

// ---------------------------------------------------------------------------------------------------------------------

template <int (*run)(Node*)>
struct Library {
    static int Get(Node* node) { return run(node); }
};

std::span<const PlainRow> ExecOperators()
{
    // ORDER OPERATORS
    static constexpr PlainRow rows[] = {
        // clang-format off
        {RESIZE,   SelectResize                          },
        {EXEC,     AttachStatement<Exec>                 },
        {FUNCADDR, Attach<FunctionAddress>               },
        {FUNCCALL, AttachStatement<FunctionCall>         },
        {IQSORT,   AttachStatement<Iqsort>               },
        {PRINT,    AttachStatement<Library<RunPrint>>    },
        {PRINTF,   AttachStatement<Library<RunPrintScan>>},
        {FPRINTF,  AttachStatement<Library<RunPrintScan>>},
        {SPRINTF,  AttachStatement<Library<RunPrintScan>>},
        {SCANF,    AttachStatement<Library<RunPrintScan>>},
        {FSCANF,   AttachStatement<Library<RunPrintScan>>},
        {SSCANF,   AttachStatement<Library<RunPrintScan>>},
        // clang-format on
    };
    return rows;
}
