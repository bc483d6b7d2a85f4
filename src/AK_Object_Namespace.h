// The active namespace of the formula language, exchanged for a while.

#pragma once

#include "qvt_sci.h"

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
