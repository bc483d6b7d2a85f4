// The tree of namespaces: a root with the predefined names, those that the host creates, one for each function.
//
// Who owns what: the host owns the namespaces it creates; a function's belongs to the function's symbol. While a
// function is being parsed its namespace has no owner yet and waits in its parent's list `locals`; a parse that fails
// there leaves it in that list, to go with the parent. The host can meet such a namespace, since a syntax error inside
// a function leaves it active: closing or destroying it must not take it from its owner.

#include "qvt_sci_Internal.h"

#include <cstdlib>

Namespace* rootNamespace = nullptr;
Namespace* gActiveNamespace = nullptr;

Namespace* NamespaceNew(Namespace* parent)
{
    Namespace* ns = static_cast<Namespace*>(std::calloc(1, sizeof(Namespace)));
    QVT_SCI_CHECK(ns);
    ns->symtab = SymtabNew();
    ns->parent = parent;
    return ns;
}

// Deletes init and exit code.
static void DeleteCodes(Namespace* ns)
{
    if (!ns->borrowsCode) {
        NodeDelete(ns->initCode);
        NodeDelete(ns->exitCode);
    }
    ns->initCode = nullptr;
    ns->exitCode = nullptr;
    ns->borrowsCode = 0;
}

static void DeleteLocals(Namespace* ns)
{
    while (Namespace* local = ns->locals) {
        ns->locals = local->nextLocal;
        NamespaceDelete(local);
    }
}

void NamespaceDelete(Namespace* ns)
{
    DeleteCodes(ns);
    SymtabDelete(ns->symtab);
    DeleteLocals(ns);
    std::free(ns);
}

void CreateRootNamespace()
{
    if (rootNamespace) return;
    rootNamespace = NamespaceNew(nullptr);
    gActiveNamespace = rootNamespace;
    qvt_sci_CreatePredefinedSymbols();
    gActiveNamespace = rootNamespace;
}

// ---------------------------------------------------------------------------------------------------------------------
// For the parser

void OpenLocNamespace()
{
    Namespace* local = NamespaceNew(gActiveNamespace);
    local->isLocal = 1;
    local->nextLocal = gActiveNamespace->locals;
    gActiveNamespace->locals = local;
    gActiveNamespace = local;
}

void CloseLocNamespace()
{
    if (!gActiveNamespace->parent) yyerror("CloseLocNamespace: gActiveNamespace has no parent");
    gActiveNamespace = gActiveNamespace->parent;
}

void NamespaceGiveTo(Namespace* local, Symbol* function)
{
    for (Namespace** link = &local->parent->locals; *link; link = &(*link)->nextLocal) {
        if (*link == local) {
            *link = local->nextLocal;
            break;
        }
    }
    local->nextLocal = nullptr;
    local->function = function;
}

// ---------------------------------------------------------------------------------------------------------------------
// For the host

Namespace* qvt_sci_NamespaceGetCurrent()
{
    CreateRootNamespace();
    return gActiveNamespace;
}

Namespace* qvt_sci_NamespaceCreate()
{
    CreateRootNamespace();
    return NamespaceNew(gActiveNamespace);
}

Namespace* qvt_sci_NamespaceOpen()
{
    gActiveNamespace = qvt_sci_NamespaceCreate();
    return gActiveNamespace;
}

int qvt_sci_NamespaceClose()
{
    Namespace* ns = gActiveNamespace;
    if (!ns || !ns->parent) return 1;
    gActiveNamespace = ns->parent;
    qvt_sci_NamespaceDestroy(ns);
    return 0;
}

void qvt_sci_NamespaceSwitchTo(Namespace* ns)
{
    QVT_SCI_CHECK(ns);
    gActiveNamespace = ns;
}

Namespace* qvt_sci_NamespaceParent(Namespace* ns)
{
    QVT_SCI_CHECK(ns);
    return ns->parent;
}

static bool IsInside(const Namespace* ns, const Namespace* outer)
{
    while (ns && ns != outer) ns = ns->parent;
    return ns != nullptr;
}

void qvt_sci_NamespaceDestroy(Namespace* ns)
{
    if (!ns || ns == rootNamespace || ns == gActiveNamespace || ns->isLocal) return;
    // A syntax error may have left a function of ns active: it goes too.
    Namespace* const next = IsInside(gActiveNamespace, ns) ? ns->parent : gActiveNamespace;
    gActiveNamespace = ns;
    qvt_sci_Clear();
    gActiveNamespace = next;
    NamespaceDelete(ns);
}

// A function that loses its formals has none: whoever calls it is told so by the count of arguments.
static void ForgetFormals(Symbol* function)
{
    if (!function) return;
    function->func.nArgs = 0;
    std::free(function->func.args);
    function->func.args = nullptr;
}

void qvt_sci_Clear()
{
    arg_lists_clear();
    Namespace* ns = gActiveNamespace;
    if (!ns || ns == rootNamespace) return;
    qvt_sci_ExitAll();
    DeleteCodes(ns);
    ForgetFormals(ns->function);
    SymtabDelete(ns->symtab);
    ns->symtab = SymtabNew();
    DeleteLocals(ns);
}

void qvt_sci_DeleteAll() { qvt_sci_Clear(); }

int qvt_sci_IsInvalidNamespace() { return gActiveNamespace ? SymtabIsInvalid(gActiveNamespace->symtab) : -1; }
