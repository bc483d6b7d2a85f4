// Evaluators that write to a single variable or element: = += -= *= /= ++ --.
//
// The right side is evaluated first, then the address of the left; a checked division looks at its divisor in between.
// The value of an assignment is the number stored, not the variable: passed by reference it is a copy.

#include "qvt_sci_execute_Internal.h"

#include "qvt_sci.tab.h"

// ---------------------------------------------------------------------------------------------------------------------
// Targets: operand 0 as something to write to

struct Variable {
    template <class T>
    static T* Address(Node* node)
    {
        return static_cast<T*>(*node->o.at[0]);
    }
};

struct TargetElement {
    template <class T>
    static T* Address(Node* node)
    {
        return Element::Evaluate<T>(node, 0);
    }
};

struct AnyTarget {
    template <class T>
    static T* Address(Node* node)
    {
        return static_cast<T*>(node->o.ops[0]->ex(node->o.ops[0]));
    }
};

template <class T, class Use>
static void ChooseTarget(Node* node, Use use)
{
    if (node->o.at[0]) return use(Variable());
    if constexpr (std::is_same_v<T, int> || std::is_same_v<T, double>) {
        if (IsElement(node, 0, TypeOf<T>::code)) return use(TargetElement());
    }
    use(AnyTarget());
}

// ---------------------------------------------------------------------------------------------------------------------
// Assignments

template <class Formula, class T, bool CheckDivisor, class Target, class Source>
struct Assignment {
    static T Get(Node* node)
    {
        const auto source = Source::template Evaluate<T>(node, 1);
        if constexpr (CheckDivisor) {
            currentNode = node;
            if (Source::template Read<T>(source) == 0) [[unlikely]]
                ReportDivisionByZero(TypeOf<T>::code);
        }
        T* const target = Target::template Address<T>(node);
        T value = Source::template Read<T>(source);
        if constexpr (!std::is_same_v<Formula, Store>) value = Formula::template Of<T>(*target, value);
        *target = value;
        return value;
    }
};

template <class Formula, class T, bool CheckDivisor>
static void SelectWithCheck(Node* node)
{
    ChooseTarget<T>(node, [node](auto target) {
        ChooseFastFetch<T>(node, 1, node->o.ops[0], [node](auto source) {
            AttachStatement<Assignment<Formula, T, CheckDivisor, decltype(target), decltype(source)>>(node);
        });
    });
}

template <class Formula, class T>
static void SelectAssignment(Node* node)
{
    if constexpr (std::is_same_v<Formula, Over>) {
        if (qvt_sci_on_div_by_zero >= 1) return SelectWithCheck<Formula, T, true>(node);
    }
    SelectWithCheck<Formula, T, false>(node);
}

// ---------------------------------------------------------------------------------------------------------------------
// ++ and --

template <class Formula, class T, class Target, bool ValueIsNew>
struct Step {
    static T Get(Node* node)
    {
        T* const target = Target::template Address<T>(node);
        const T old = *target;
        *target = Formula::template Of<T>(old, T(1));
        return ValueIsNew ? *target : old;
    }
};

template <class Formula, class T>
static void SelectStepBefore(Node* node)
{
    ChooseTarget<T>(node, [node](auto target) { AttachStatement<Step<Formula, T, decltype(target), true>>(node); });
}

template <class Formula, class T>
static void SelectStepBehind(Node* node)
{
    ChooseTarget<T>(node, [node](auto target) { AttachStatement<Step<Formula, T, decltype(target), false>>(node); });
}

// ---------------------------------------------------------------------------------------------------------------------

std::span<const FamilyRow> AssignmentFamilies()
{
    // ORDER OPERATORS
    static constexpr FamilyRow rows[] = {
        // clang-format off
        {'=',     ALL_TYPES(SelectAssignment, Store)},
        {ADD,     NUMBERS(SelectAssignment,   Plus) },
        {SUB,     NUMBERS(SelectAssignment,   Minus)},
        {MULT,    NUMBERS(SelectAssignment,   Times)},
        {DIV,     NUMBERS(SelectAssignment,   Over) },
        {INC_PRE, NUMBERS(SelectStepBefore,   Plus) },
        {DEC_PRE, NUMBERS(SelectStepBefore,   Minus)},
        {INC,     NUMBERS(SelectStepBehind,   Plus) },
        {DEC,     NUMBERS(SelectStepBehind,   Minus)},
        // clang-format on
    };
    return rows;
}
