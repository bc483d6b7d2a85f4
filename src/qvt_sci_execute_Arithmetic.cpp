// Evaluators of arithmetic on single numbers: + - * / % ** and the signs.
//
// A family is a formula and an order: sums and products evaluate left, then right; a checked division evaluates and
// checks its divisor first and only then the left operand. The order is part of the language, operands may have
// effects.

#include "qvt_sci_execute_Internal.h"

#include "qvt_sci.tab.h"

#include <cmath>

// ---------------------------------------------------------------------------------------------------------------------
// Left, then right

template <class Formula, class T>
static void SelectLeftFirst(Node* node)
{
    ChooseFastFetch<T>(node, 0, node->o.ops[1], [node](auto left) {
        ChooseFastFetch<T>(node, 1, nullptr, [node](auto right) {
            Attach<LeftFirst<Formula, T, decltype(left), decltype(right)>>(node);
        });
    });
}

// ---------------------------------------------------------------------------------------------------------------------
// Divisor, check, then left: exOVER_FPE_, exIMOD_FPE_int

template <class T, class Right>
static auto EvaluateDivisor(Node* node)
{
    const auto divisor = Right::template Evaluate<T>(node, 1);
    currentNode = node;
    if (Right::template Read<T>(divisor) == 0) [[unlikely]]
        ReportDivisionByZero(TypeOf<T>::code);
    return divisor;
}

template <class Formula, class T, class Left, class Right>
struct DivisorFirst {
    static T Get(Node* node)
    {
        const auto right = EvaluateDivisor<T, Right>(node);
        const auto left = Left::template Evaluate<T>(node, 0);
        return Formula::template Of<T>(Left::template Read<T>(left), Right::template Read<T>(right));
    }
};

template <class Formula, class T>
static void SelectDivision(Node* node)
{
    if (qvt_sci_on_div_by_zero < 1) return SelectLeftFirst<Formula, T>(node);
    node->o.divisor = DIVISOR_FIRST;
    ChooseFetch<T>(node, 1, node->o.ops[0], [node](auto right) {
        ChooseFetch<T>(node, 0, nullptr,
                       [node](auto left) { Attach<DivisorFirst<Formula, T, decltype(left), decltype(right)>>(node); });
    });
}

// In a long chain the divisors come first too, all of them, and wait in their nodes until the left operands are known.
template <class Formula, class T>
struct DivisorKept {
    static T Get(Node* node) { return Formula::template Of<T>(GetValue<T>(node->o.ops[0]), Slot<T>(node)); }
};

template <class T>
static void KeepValueOfDivisor(Node* node)
{
    const T divisor = GetValue<T>(node->o.ops[1]);
    currentNode = node;
    if (divisor == 0) ReportDivisionByZero(TypeOf<T>::code);
    Slot<T>(node) = divisor;
}

void KeepDivisor(Node* node)
{
    switch (node->dataType) {
    case CHAR_TYPE: return KeepValueOfDivisor<signed char>(node);
    case INT_TYPE: return KeepValueOfDivisor<int>(node);
    case FLOAT_TYPE: return KeepValueOfDivisor<float>(node);
    default: return KeepValueOfDivisor<double>(node);
    }
}

void SelectDivisorKept(Node* node)
{
    switch (node->dataType) {
    case CHAR_TYPE: return Attach<DivisorKept<Over, signed char>>(node);
    case INT_TYPE:
        if (node->o.opr == '%') return Attach<DivisorKept<Modulo, int>>(node);
        return Attach<DivisorKept<Over, int>>(node);
    case FLOAT_TYPE: return Attach<DivisorKept<Over, float>>(node);
    default: return Attach<DivisorKept<Over, double>>(node);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Powers and signs

struct Power {
    template <class T>
    static T Of(T a, T b)
    {
        return std::pow(a, b);
    }
};

struct Negative {
    template <class T>
    static T Of(T a)
    {
        if constexpr (isWhole<T>)
            return T(0u - unsigned(a));
        else
            return -a;
    }
};

template <class Formula, class T, class Operand>
struct Sign {
    static T Get(Node* node)
    {
        return Formula::template Of<T>(Operand::template Read<T>(Operand::template Evaluate<T>(node, 0)));
    }
};

template <class Formula, class T>
static void SelectSign(Node* node)
{
    ChooseFastFetch<T>(node, 0, nullptr, [node](auto operand) { Attach<Sign<Formula, T, decltype(operand)>>(node); });
}

// ---------------------------------------------------------------------------------------------------------------------

std::span<const FamilyRow> ArithmeticFamilies()
{
    // ORDER OPERATORS
    static constexpr FamilyRow rows[] = {
        // clang-format off
        {'+',    NUMBERS(SelectLeftFirst,     Plus)    },
        {'-',    NUMBERS(SelectLeftFirst,     Minus)   },
        {'*',    NUMBERS(SelectLeftFirst,     Times)   },
        {'/',    NUMBERS(SelectDivision,      Over)    },
        {'%',    INT_ONLY(SelectDivision,     Modulo)  },
        {POWER,  DOUBLE_ONLY(SelectLeftFirst, Power)   },
        {UMINUS, NUMBERS(SelectSign,          Negative)},
        // clang-format on
    };
    return rows;
}
