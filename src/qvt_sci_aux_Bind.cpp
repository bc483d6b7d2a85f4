// Symbols as the host sees them: looked up, walked, removed, bound to its own variables and functions.

#include "qvt_sci_Internal.h"

#include <cstring>

static Symbol* cursor = nullptr;   // of qvt_sci_NextSymbol: the symbol it gave last; one for all namespaces

// ---------------------------------------------------------------------------------------------------------------------
// Looking up

Symbol* qvt_sci_Symbol(const char* name)
{
    if (!name || !gActiveNamespace || std::strlen(name) > MAX_SYMBOL_NAME) return nullptr;
    char function[MAX_SYMBOL_NAME + 1];
    std::strcpy(function, name);
    char* const colon = std::strchr(function, ':');
    if (!colon) return SymtabFind(gActiveNamespace->symtab, name);

    *colon = 0;
    const Symbol* owner = qvt_sci_FuncPtr(function);
    return owner ? SymtabFind(owner->func.ns->symtab, colon + 1) : nullptr;
}

Symbol* qvt_sci_FuncPtr(const char* name)
{
    if (!name || !gActiveNamespace) return nullptr;
    Symbol* symbol = SymtabFind(gActiveNamespace->symtab, name);
    return symbol && symbol->symbolType == FUNCTION_SYMBOL ? symbol : nullptr;
}

Symbol* qvt_sci_NextSymbol()
{
    if (!gActiveNamespace) return nullptr;
    cursor = cursor ? cursor->next : gActiveNamespace->symtab->first;
    return cursor;
}

void SymbolForget(const Symbol* symbol)
{
    if (cursor == symbol) cursor = nullptr;
}

int qvt_sci_SymbolRemove(const char* name)
{
    if (!name || !gActiveNamespace) return 0;
    int removed = 0;
    for (Symbol** link = &gActiveNamespace->symtab->first; *link;) {
        Symbol* symbol = *link;
        if (std::strcmp(symbol->name, name) == 0) {
            *link = symbol->next;
            SymbolDelete(symbol);
            ++removed;
        } else {
            link = &symbol->next;
        }
    }
    return removed;
}

const char* qvt_sci_SymbolName(const Symbol* symbol) { return symbol ? symbol->name : nullptr; }

const char* qvt_sci_SymbolType(const Symbol* symbol)
{
    static const char* const names[] = {"var", "arr", "func"};
    return symbol ? names[symbol->symbolType] : nullptr;
}

const char* qvt_sci_SymbolDataType(const Symbol* symbol)
{
#define HOST_NAME(code, Type, member, name, hostName) hostName,
    static const char* const names[DATA_TYPES] = {"void", QVT_SCI_TYPES(HOST_NAME)};
#undef HOST_NAME
    return symbol ? names[symbol->dataType] : nullptr;
}

int qvt_sci_SymbolIsReferenced(const Symbol* symbol) { return symbol ? symbol->referenced : 0; }

int qvt_sci_NumFormals(const Symbol* function)
{
    return function && function->symbolType == FUNCTION_SYMBOL ? function->func.nArgs : -1;
}

// Passes over a formal's type at the start of a list of types; null if the list has another one there.
static const char* SkipFormalType(const Symbol* formal, const char* list)
{
    const char* const type = qvt_sci_SymbolDataType(formal);
    const size_t length = strlen(type);
    if (strncmp(list, type, length) != 0) return nullptr;
    list += length;
    const int isArray = strncmp(list, "[]", 2) == 0;
    if (isArray != (formal->symbolType == ARRAY_SYMBOL)) return nullptr;
    return list + 2 * isArray;
}

int qvt_sci_Takes(const Symbol* function, const char* formals)
{
    const int count = qvt_sci_NumFormals(function);
    if (count < 0 || (!function->func.body && !function->addr)) return 0;
    for (int i = 0; i < count && formals; ++i) {
        if (i > 0 && *formals++ != ',') return 0;
        formals = SkipFormalType(function->func.args[i], formals);
    }
    return formals && !*formals;
}

// ---------------------------------------------------------------------------------------------------------------------
// Binding

static void* Writable(const void* address) { return const_cast<void*>(address); }   // whether it is, the host knows

Symbol* qvt_sci_Bind(const char* name, const void* address)
{
    CreateRootNamespace();
    Symbol* symbol = FindSymbolRecursively(gActiveNamespace, name);
    if (!symbol) {
        std::snprintf(mess, sizeof mess, "cannot bind unknown symbol '%s'", name);
        qvt_sci_msg("%s\n", mess);
        return nullptr;
    }
    symbol->addr = Writable(address);
    if (symbol->qualifier != EXTERN_QUALIFIER) {
        std::snprintf(mess, sizeof mess, "cannot bind non-extern symbol '%s' to extern address", name);
        qvt_sci_msg("%s\n", mess);
        return nullptr;
    }
    return symbol;
}

void qvt_sci_BindBySym(Symbol* symbol, const void* address) { symbol->addr = Writable(address); }

void qvt_sci_BindArg(Symbol* function, int index, const void* address)
{
    function->func.args[index]->addr = Writable(address);
}

void qvt_sci_BindArgLength(Symbol* function, int index, int64_t elements)
{
    Symbol* formal = function->func.args[index];
    if (formal->symbolType != ARRAY_SYMBOL) return;
    FormalRefersTo(formal, elements);
    formal->arr.hostLength = elements;
}

void* qvt_sci_AddressInNamespace(Namespace* ns, const char* name)
{
    const Symbol* symbol = FindSymbolRecursively(ns, name);
    if (symbol) return symbol->addr;
    std::snprintf(mess, sizeof mess, "cannot find unknown symbol '%s'", name);
    qvt_sci_msg("%s\n", mess);
    return nullptr;
}

void* qvt_sci_Address(const char* name)
{
    CreateRootNamespace();
    return qvt_sci_AddressInNamespace(gActiveNamespace, name);
}

void* qvt_sci_AddressInFunction(const char* function, const char* name)
{
    const Symbol* owner = qvt_sci_FuncPtr(function);
    const Symbol* symbol = owner && name ? SymtabFind(owner->func.ns->symtab, name) : nullptr;
    return symbol ? symbol->addr : nullptr;
}

int qvt_sci_NumUnboundExternSymbols()
{
    CreateRootNamespace();
    return SymtabNumUnboundExtern(gActiveNamespace->symtab);
}
