// Declarations: what a name may be declared as, beside what it is already, and where its memory comes from.
//
//   qualifier        a scalar's memory                    an array's memory
//   none, static     in the symbol, zeroed                malloc'd and zeroed; a dynamic one's by ALLOC at run time
//   extern           none until the host binds it         likewise
//   formal           none: each call points it to the caller's memory
//
// Extern declarations reach through to the namespaces above; all others shadow what stands there. Every failure leaves
// by yyerror.

#include "qvt_sci_Internal.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

int qvtsci_allow_symbol_redefinition = 0;

void qvt_sci_allow_symbol_redefinition(int flag) { qvtsci_allow_symbol_redefinition = flag; }

// ---------------------------------------------------------------------------------------------------------------------
// Variables

// An extern declaration may also name a plain global of the enclosing namespaces: a function says so that it means it.
static bool CanBeExtern(const Symbol* symbol)
{
    return symbol->qualifier == EXTERN_QUALIFIER || symbol->qualifier == NO_QUALIFIER;
}

// The earlier declaration that the new one repeats, or null if there is none; any other use of the name is an error.
static Symbol* FindVariable(int qualifier, int dataType, const char* name)
{
    if (qualifier == EXTERN_QUALIFIER) {
        Symbol* symbol = FindSymbolRecursively(gActiveNamespace, name);
        if (symbol && (symbol->symbolType != VARIABLE_SYMBOL || symbol->dataType != dataType || !CanBeExtern(symbol))) {
            yyerrorf("inconsistent redeclaration of symbol '%s'", name);
        }
        return symbol;
    }
    Symbol* symbol = SymtabFind(gActiveNamespace->symtab, name);
    if (!symbol) return nullptr;
    if (!qvtsci_allow_symbol_redefinition) yyerrorf("symbol '%s' already defined", name);
    if (symbol->symbolType != VARIABLE_SYMBOL || symbol->dataType != dataType || symbol->qualifier != qualifier) {
        yyerrorf("symbol '%s' already used with differing declaration", name);
    }
    return symbol;
}

Symbol* DeclareVar(int qualifier, int dataType, const char* name)
{
    if (Symbol* earlier = FindVariable(qualifier, dataType, name)) return earlier;
    Symbol* symbol = SymbolNew(name, qualifier, VARIABLE_SYMBOL, dataType);
    SymtabAdd(gActiveNamespace->symtab, symbol);
    if (qualifier == NO_QUALIFIER || qualifier == STATIC_QUALIFIER) symbol->addr = &symbol->own;
    return symbol;
}

// ---------------------------------------------------------------------------------------------------------------------
// Arrays

static bool HostOrCallerOwns(int qualifier) { return qualifier == EXTERN_QUALIFIER || qualifier == FORMAL_QUALIFIER; }

static void CheckDimensions(int qualifier, int nDims, const int* dims)
{
    if (nDims < 1) yyerror("number of array dimensions must be > 0!");
    if (nDims > MAX_ARRAY_DIMENSIONS) {
        yyerrorf("number of array dimensions must be <= %d!", MAX_ARRAY_DIMENSIONS);
    }
    if (dims[0] == -1 && !HostOrCallerOwns(qualifier)) {
        yyerror("invalid array definition with unspecified dimension!");
    }
}

static Symbol* FindArray(int qualifier, int dataType, const char* name, int nDims, const int* dims)
{
    if (qualifier == EXTERN_QUALIFIER) {
        Symbol* symbol = FindSymbolRecursively(gActiveNamespace, name);
        if (!symbol) return nullptr;
        if (symbol->symbolType != ARRAY_SYMBOL || symbol->dataType != dataType || !CanBeExtern(symbol) ||
            symbol->arr.nDims != nDims) {
            yyerrorf("inconsistent redeclaration of symbol '%s'", name);
        }
        for (int i = 1; i < nDims; ++i) {
            if (symbol->arr.dims[i] != dims[i]) {
                yyerrorf("inconsistent dimension %d in redeclaration of symbol '%s'", i + 1, name);
            }
        }
        return symbol;
    }
    Symbol* symbol = SymtabFind(gActiveNamespace->symtab, name);
    if (!symbol) return nullptr;
    if (!qvtsci_allow_symbol_redefinition) yyerrorf("symbol '%s' already defined", name);
    if (symbol->symbolType != ARRAY_SYMBOL || symbol->dataType != dataType || symbol->qualifier != qualifier ||
        symbol->arr.nDims != nDims) {
        yyerrorf("symbol '%s' already used with differing declaration", name);
    }
    return symbol;
}

// Product of the dimensions, cut to what an int64_t can hold when multiplied by an element's size.
static int64_t NumElements(int nDims, const int* dims)
{
    int64_t size = 1;
    for (int i = 0; i < nDims; ++i) {
        size *= dims[i];
        size = std::clamp<int64_t>(size, -INT_MAX, INT_MAX);
    }
    return size;
}

Symbol* DeclareArr(int qualifier, int dataType, const char* name, int nDims, const int* dims, Node* dynNode)
{
    CheckDimensions(qualifier, nDims, dims);
    if (Symbol* earlier = FindArray(qualifier, dataType, name, nDims, dims)) {
        NodeDelete(dynNode);   // it keeps its own dimensions
        return earlier;
    }

    // Sizes count in 32 bits: an array of more, its owner whoever it may be, is as good as one without memory.
    const int64_t size = NumElements(nDims, dims);
    const int64_t nBytes = size * sizeOf[dataType];
    const bool allocate = !HostOrCallerOwns(qualifier) && !dynNode && size != 0;
    if (nBytes > INT_MAX || (allocate && nBytes <= 0)) {
        yyerrorf("cannot allocate %d bytes for array '%s'", int(nBytes), name);
    }

    Symbol* symbol = SymbolNew(name, qualifier, ARRAY_SYMBOL, dataType);
    std::copy(dims, dims + nDims, symbol->arr.dims);
    symbol->arr.nDims = nDims;
    symbol->arr.limit = dims[0];
    symbol->arr.size = size;
    SymtabAdd(gActiveNamespace->symtab, symbol);
    if (dynNode) {
        symbol->arr.dimNode = NumberTo(INT_TYPE, dynNode);
        NodesKeep(symbol->arr.dimNode);
    } else if (allocate) {
        symbol->memory = std::calloc(size_t(nBytes), 1);
        if (!symbol->memory) yyerrorf("cannot allocate %d bytes for array '%s'", int(nBytes), name);
        symbol->addr = symbol->memory;
    }
    return symbol;
}

// ---------------------------------------------------------------------------------------------------------------------
// Functions. A definition may follow a prototype, whose formals it replaces.

static Pile<Symbol*> defined = {};   // functions that the parse under way has given a body

static void DeleteBody(Symbol* function)
{
    NodeDelete(function->func.body);
    function->func.body = nullptr;
    function->qualifier = EXTERN_QUALIFIER;
    function->addr = nullptr;
    function->func.exFun = SymbolGetExFun(function->dataType);
}

// May the active namespace be the formals of this function, declared before? If not, that is an error.
static void CheckRedeclaration(Symbol* function, int dataType, int nArgs, Symbol* const* args)
{
    if (function->symbolType != FUNCTION_SYMBOL) yyerrorf("symbol '%s' already declared", function->name);
    if (function->dataType != dataType) yyerror("function already declared with different type");
    if (function->func.nArgs != nArgs) yyerror("function already declared with different number of arguments");
    if (function->func.body && (!qvtsci_allow_symbol_redefinition || IsOnStack(function))) {
        yyerrorf("function '%s' already defined", function->name);
    }
    for (int i = 0; i < nArgs; ++i) {
        const Symbol* earlier = function->func.args[i];
        if (earlier->symbolType != args[i]->symbolType || earlier->dataType != args[i]->dataType) {
            yyerrorf("type of argument %d differs from initial declaration", i + 1);
        }
    }
}

Symbol* DeclareFunc(int dataType, const char* name, int nArgs, Symbol* const* args)
{
    Namespace* const ns = gActiveNamespace;
    Symbol* function = SymtabFind(ns->parent->symtab, name);
    if (function) {
        CheckRedeclaration(function, dataType, nArgs, args);
        if (function->func.body) DeleteBody(function);
        NamespaceDelete(function->func.ns);
        std::free(function->func.args);
    } else {
        function = SymbolNew(name, EXTERN_QUALIFIER, FUNCTION_SYMBOL, dataType);
        SymtabAdd(ns->parent->symtab, function);
    }
    NamespaceGiveTo(ns, function);
    ns->initCode = nullptr;
    ns->exitCode = nullptr;
    function->func.ns = ns;
    function->func.nArgs = nArgs;
    function->func.args = static_cast<Symbol**>(std::calloc(size_t(nArgs) + 1, sizeof(Symbol*)));
    QVT_SCI_CHECK(function->func.args);
    std::copy(args, args + nArgs, function->func.args);
    function->func.body = nullptr;
    function->func.active = 0;
    function->func.exFun = SymbolGetExFun(dataType);
    return function;
}

void DefineFunc(Symbol* function, Node* body)
{
    if (function->func.body) yyerrorf("function '%s' was already defined", function->name);
    function->qualifier = NO_QUALIFIER;
    function->func.exFun = nullptr;
    function->func.body = body;
    QVT_SCI_CHECK(defined.Push(function));
}

void ForgetDefinitions() { defined.count = 0; }

void TakeBackDefinitions()
{
    while (defined.count > 0) {
        Symbol* function = defined.Pop();
        if (function->func.body) DeleteBody(function);
    }
}
