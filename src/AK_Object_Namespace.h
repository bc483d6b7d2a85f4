// Functions of the formula language that the program calls, and the namespace in which they are looked up.

#pragma once

#include "AK_Basic.h"
#include "qvt_sci.h"

#include <cstring>
#include <initializer_list>

/// The language's root: code that is parsed directly below it sees the same names whatever code is running.
inline Namespace* AK_RootNamespace()
{
    Namespace* root = qvt_sci_NamespaceGetCurrent();
    while (Namespace* parent = qvt_sci_NamespaceParent(root)) root = parent;
    return root;
}

/// Makes a namespace active and puts the one before it back at the end.
class AK_ActiveNamespace {
public:
    explicit AK_ActiveNamespace(Namespace* space) : _before(qvt_sci_NamespaceGetCurrent())
    {
        qvt_sci_NamespaceSwitchTo(space);
    }
    ~AK_ActiveNamespace() { qvt_sci_NamespaceSwitchTo(_before); }
    AK_ActiveNamespace(const AK_ActiveNamespace&) = delete;
    AK_ActiveNamespace& operator=(const AK_ActiveNamespace&) = delete;

private:
    Namespace* _before;
};

/// The function of that name in the active namespace, if it has one of the forms: the result ("double") and the formals
/// ("double,char[]"). Null if there is none; one of another form is told in an "ERROR:", since the caller hands over
/// addresses and a function that read them as something else would read astray.
inline Symbol* AK_FunctionOfForm(const char* name, const char* result, std::initializer_list<const char*> forms)
{
    Symbol* function = qvt_sci_FuncPtr(name);
    if (!function) return nullptr;
    const bool sameResult = std::strcmp(qvt_sci_SymbolDataType(function), result) == 0;
    for (const char* formals : forms)
        if (sameResult && qvt_sci_Takes(function, formals)) return function;
    AK_String expected;
    for (const char* formals : forms)
        expected = expected + (expected.IsEmpty() ? "" : ", or ") + result + " " + name + "(" + formals + ")";
    AK_MSG("ERROR: function '" << name << "' is not of the form that is expected: " << expected);
    return nullptr;
}
