// Formulas of comparisons, 1 or 0: for the operators themselves (qvt_sci_execute_Logic.cpp) and for the tests of loops
// and branches, which take the most frequent ones in without a call (qvt_sci_execute_Control.cpp).

#pragma once

#include "qvt_sci_execute_Internal.h"

#define QVT_SCI_COMPARISON(Name, sign)                                                                                 \
    struct Name {                                                                                                      \
        template <class T>                                                                                             \
        static int Of(T a, T b)                                                                                        \
        {                                                                                                              \
            if constexpr (std::is_pointer_v<T>)                                                                        \
                return reinterpret_cast<uintptr_t>(a) sign reinterpret_cast<uintptr_t>(b);                             \
            else                                                                                                       \
                return a sign b;                                                                                       \
        }                                                                                                              \
    };
QVT_SCI_COMPARISON(Less, <)
QVT_SCI_COMPARISON(Greater, >)
QVT_SCI_COMPARISON(LessOrEqual, <=)
QVT_SCI_COMPARISON(GreaterOrEqual, >=)
QVT_SCI_COMPARISON(Equal, ==)
QVT_SCI_COMPARISON(Unequal, !=)
#undef QVT_SCI_COMPARISON
