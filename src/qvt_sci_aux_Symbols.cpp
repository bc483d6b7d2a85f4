// Symbols and their tables.
//
// A table starts as a list, which serves the many small namespaces of functions; the 103rd symbol turns it into a hash
// table, which serves the large global ones. From then on the table is for lookup only: whatever walks the list
// (iteration, removal, printing, counting) sees an empty table. Callers rely on that, so it must stay. Only the freeing
// of a table reaches all its symbols.

#include "qvt_sci_Internal.h"

#include <cmath>
#include <cstdlib>
#include <unordered_set>

static constexpr int SYMBOLS_PASSED_BEFORE_HASHING = 100;
static constexpr int SYMBOLS_PER_BUCKET = 11;   // the average length of a chain at which the hash table grows

// ---------------------------------------------------------------------------------------------------------------------
// Symbols

// All symbols that there are: a FUNC* may come from a function that is gone, or be a FILE*, which has the same type.
static std::unordered_set<const void*>& Symbols()
{
    static auto* const symbols = new std::unordered_set<const void*>;   // outlives all namespaces
    return *symbols;
}

bool IsSymbol(const void* pointer) { return Symbols().count(pointer) > 0; }

bool IsFunction(const void* pointer)
{
    return IsSymbol(pointer) && static_cast<const Symbol*>(pointer)->symbolType == FUNCTION_SYMBOL;
}

Symbol* SymbolNew(const char* name, int qualifier, int symbolType, int dataType)
{
    Symbol* symbol = static_cast<Symbol*>(std::calloc(1, sizeof(Symbol)));
    QVT_SCI_CHECK(symbol);
    Symbols().insert(symbol);
    symbol->name = strdup(name);
    QVT_SCI_CHECK(symbol->name);
    symbol->qualifier = qualifier;
    symbol->symbolType = symbolType;
    symbol->dataType = dataType;
    if (symbolType == FUNCTION_SYMBOL) {
        symbol->func.ns = gActiveNamespace;
        gActiveNamespace->initCode = nullptr;
        gActiveNamespace->exitCode = nullptr;
    } else if (symbolType == ARRAY_SYMBOL) {
        symbol->arr.length = -1;
        symbol->arr.hostLength = -1;
    }
    return symbol;
}

void SymbolDelete(Symbol* symbol)
{
    SymbolForget(symbol);
    Symbols().erase(symbol);
    if (symbol->symbolType == FUNCTION_SYMBOL) {
        NodeDelete(symbol->func.body);
        NamespaceDelete(symbol->func.ns);
        std::free(symbol->func.args);
    } else if (symbol->symbolType == ARRAY_SYMBOL) {
        NodeDelete(symbol->arr.dimNode);
    }
    std::free(symbol->memory);
    std::free(symbol->name);
    std::free(symbol);
}

static const char* SymbolTypeName(const Symbol* symbol)
{
    static const char* const names[] = {"variable", "array", "function"};
    return names[symbol->symbolType];
}

void SymbolPrint(const Symbol* symbol)
{
    qvt_sci_msg("symbol '%s' (%p) of type %s of data type %s (%d bytes), ref %c, addr %p\n", symbol->name,
                static_cast<const void*>(symbol), SymbolTypeName(symbol), dataTypeName[symbol->dataType],
                sizeOf[symbol->dataType], '0' + symbol->referenced, symbol->addr);
}

void SymbolPrintDecl(const Symbol* symbol)
{
    qvt_sci_msg("%s %s", dataTypeName[symbol->dataType], symbol->name);
    if (symbol->symbolType == ARRAY_SYMBOL) {
        for (int i = 0; i < symbol->arr.nDims; ++i) qvt_sci_msg("[%d]", symbol->arr.dims[i]);
    }
    qvt_sci_msg(";\n");
}

int SymbolIsInvalid(const Symbol* symbol)
{
    // A static variable counts as invalid though its qualifier is legal: the check is older than the storage class.
    if (symbol->qualifier > FORMAL_QUALIFIER) return 1;
    if (symbol->symbolType > FUNCTION_SYMBOL) return 2;
    if (symbol->dataType > DATA_TYPES) return 3;
    if (symbol->referenced != 0 && symbol->referenced != 1) return 4;
    return 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Tables

Symtab* SymtabNew()
{
    Symtab* symtab = static_cast<Symtab*>(std::calloc(1, sizeof(Symtab)));
    QVT_SCI_CHECK(symtab);
    return symtab;
}

void SymtabDelete(Symtab* symtab)
{
    SymtabDeleteAfter(symtab, nullptr);
    if (SymHashTab* hash = symtab->hash) {
        for (int i = 0; i < hash->size; ++i) {
            for (const LinkedSymPtr* link = hash->table[i].next; link; link = link->next) SymbolDelete(link->symbol);
        }
        SymHashTabDelete(hash);
    }
    std::free(symtab);
}

// Moves all symbols from the list to a hash table.
static void StartHashing(Symtab* symtab)
{
    symtab->hash = SymHashTabNew(next_prime(10));
    for (Symbol* symbol = symtab->first; symbol;) {
        Symbol* next = symbol->next;
        symbol->next = nullptr;   // a walk that stands on this symbol ends here
        SymHashTabInsert(symtab->hash, symbol);
        symbol = next;
    }
    symtab->first = nullptr;
}

void SymtabAdd(Symtab* symtab, Symbol* symbol)
{
    if (!symtab->first) {
        if (symtab->hash) {
            SymHashTabInsert(symtab->hash, symbol);
        } else {
            symtab->first = symbol;
        }
        return;
    }
    int passed = 0;
    Symbol* last = symtab->first;
    for (; last->next; last = last->next) ++passed;
    last->next = symbol;
    if (!symtab->hash && passed > SYMBOLS_PASSED_BEFORE_HASHING) StartHashing(symtab);
}

Symbol* SymtabFind(const Symtab* symtab, const char* name)
{
    if (symtab->hash) return SymHashTabFind(symtab->hash, name);
    for (Symbol* symbol = symtab->first; symbol; symbol = symbol->next) {
        if (std::strcmp(symbol->name, name) == 0) return symbol;
    }
    return nullptr;
}

Symbol* SymtabLastSymbol(const Symtab* symtab)
{
    Symbol* last = symtab->first;
    while (last && last->next) last = last->next;
    return last;
}

void SymtabDeleteAfter(Symtab* symtab, Symbol* last)
{
    Symbol* symbol = last ? last->next : symtab->first;
    if (last) {
        last->next = nullptr;
    } else {
        symtab->first = nullptr;
    }
    while (symbol) {
        Symbol* next = symbol->next;
        SymbolDelete(symbol);
        symbol = next;
    }
}

int SymtabNumUnboundExtern(const Symtab* symtab)
{
    int unbound = 0;
    for (const Symbol* symbol = symtab->first; symbol; symbol = symbol->next) {
        if (symbol->qualifier == EXTERN_QUALIFIER) {
            if (symbol->addr) continue;
            qvt_sci_msg("unbound extern symbol %s\n", symbol->name);
            ++unbound;
        } else if (symbol->symbolType == FUNCTION_SYMBOL) {
            unbound += SymtabNumUnboundExtern(symbol->func.ns->symtab);
        }
    }
    return unbound;
}

int SymtabIsInvalid(const Symtab* symtab)
{
    for (const Symbol* symbol = symtab->first; symbol; symbol = symbol->next) {
        if (const int fault = SymbolIsInvalid(symbol)) return fault;
    }
    return 0;
}

void SymtabPrint(const Symtab* symtab)
{
    qvt_sci_msg("______________________symbol table\n");
    for (const Symbol* symbol = symtab->first; symbol; symbol = symbol->next) SymbolPrint(symbol);
    qvt_sci_msg("_______________end of symbol table\n");
}

void SymtabPrintDecls(const Symtab* symtab)
{
    for (const Symbol* symbol = symtab->first; symbol; symbol = symbol->next) SymbolPrintDecl(symbol);
}

Symbol* FindSymbolRecursively(Namespace* ns, const char* name)
{
    for (; ns; ns = ns->parent) {
        if (Symbol* symbol = SymtabFind(ns->symtab, name)) return symbol;
    }
    return nullptr;
}

// ---------------------------------------------------------------------------------------------------------------------
// Hashing

int next_prime(int n)
{
    for (int candidate = n < 2 ? 2 : n + 1;; ++candidate) {
        int divisor = 2;
        while (int64_t(divisor) * divisor <= candidate && candidate % divisor != 0) ++divisor;
        if (int64_t(divisor) * divisor > candidate) return candidate;
    }
}

SymHashTab* SymHashTabNew(int size)
{
    SymHashTab* tab = static_cast<SymHashTab*>(std::calloc(1, sizeof(SymHashTab)));
    QVT_SCI_CHECK(tab);
    tab->size = size;
    tab->table = static_cast<LinkedSymPtr*>(std::calloc(size_t(size), sizeof(LinkedSymPtr)));
    QVT_SCI_CHECK(tab->table);
    return tab;
}

static void DeleteChains(LinkedSymPtr* table, int size)
{
    for (int i = 0; i < size; ++i) {
        for (LinkedSymPtr* link = table[i].next; link;) {
            LinkedSymPtr* next = link->next;
            std::free(link);
            link = next;
        }
    }
    std::free(table);
}

void SymHashTabDelete(SymHashTab* tab)
{
    DeleteChains(tab->table, tab->size);
    std::free(tab);
}

int SymHashTabIndex(const SymHashTab* tab, const char* name)
{
    uint32_t sum = 0;   // unsigned: names of a hundred thousand characters would run over
    for (const char* c = name; *c; ++c) {
        const int byte = static_cast<signed char>(*c);
        sum += uint32_t(byte * byte);
    }
    return int(sum % uint32_t(tab->size));
}

static void SymHashTabGrow(SymHashTab* tab)
{
    LinkedSymPtr* const oldTable = tab->table;
    const int oldSize = tab->size;
    tab->size = next_prime(2 * oldSize);
    tab->nSymbols = 0;
    tab->table = static_cast<LinkedSymPtr*>(std::calloc(size_t(tab->size), sizeof(LinkedSymPtr)));
    QVT_SCI_CHECK(tab->table);
    for (int i = 0; i < oldSize; ++i) {
        for (const LinkedSymPtr* link = oldTable[i].next; link; link = link->next) SymHashTabInsert(tab, link->symbol);
    }
    DeleteChains(oldTable, oldSize);
}

void SymHashTabInsert(SymHashTab* tab, Symbol* symbol)
{
    LinkedSymPtr* last = &tab->table[SymHashTabIndex(tab, symbol->name)];
    while (last->next) last = last->next;
    last->next = static_cast<LinkedSymPtr*>(std::calloc(1, sizeof(LinkedSymPtr)));
    QVT_SCI_CHECK(last->next);
    last->next->symbol = symbol;
    ++tab->nSymbols;
    if (tab->nSymbols / tab->size >= SYMBOLS_PER_BUCKET) SymHashTabGrow(tab);
}

Symbol* SymHashTabFind(const SymHashTab* tab, const char* name)
{
    for (const LinkedSymPtr* link = tab->table[SymHashTabIndex(tab, name)].next; link; link = link->next) {
        if (std::strcmp(link->symbol->name, name) == 0) return link->symbol;
    }
    return nullptr;
}

static int ChainLength(const LinkedSymPtr* head)
{
    int length = 0;
    for (const LinkedSymPtr* link = head->next; link; link = link->next) ++length;
    return length;
}

void SymHashTabPrintInfo(const SymHashTab* tab)
{
    float sum = 0;
    for (int i = 0; i < tab->size; ++i) sum += float(ChainLength(&tab->table[i]));
    const float mean = sum / float(tab->size);
    float squares = 0;
    for (int i = 0; i < tab->size; ++i) {
        const float deviation = float(ChainLength(&tab->table[i])) - mean;
        squares += deviation * deviation;
    }
    qvt_sci_msg("SymHashTabInfo: size:%d, symbols:%d, ", tab->size, tab->nSymbols);
    qvt_sci_msg("(%g), ", double(sum));
    qvt_sci_msg("avg: %g, stdev: %g\n", double(mean), double(std::sqrt(squares / float(tab->size))));
}
