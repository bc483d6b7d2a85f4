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
        return ByAddress::Evaluate<T>(node, 0);
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

struct Store {
    template <class T>
    static T Of(T, T b)
    {
        return b;
    }
};

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

template <class Formula, class T, bool ValueIsNew, class Target>
struct Step {
    static T Get(Node* node)
    {
        T* const target = Target::template Address<T>(node);
        const T old = *target;
        *target = Formula::template Of<T>(old, T(1));
        return ValueIsNew ? *target : old;
    }
};

template <class Formula, class T, bool ValueIsNew>
static void SelectStep(Node* node)
{
    ChooseTarget<T>(node,
                    [node](auto target) { AttachStatement<Step<Formula, T, ValueIsNew, decltype(target)>>(node); });
}

// ---------------------------------------------------------------------------------------------------------------------

#define ASSIGNMENT(Formula)                                                                                            \
    {                                                                                                                  \
        nullptr, SelectAssignment<Formula, signed char>, SelectAssignment<Formula, int>,                               \
            SelectAssignment<Formula, float>, SelectAssignment<Formula, double>, nullptr                               \
    }
#define STORE                                                                                                          \
    {                                                                                                                  \
        nullptr, SelectAssignment<Store, signed char>, SelectAssignment<Store, int>, SelectAssignment<Store, float>,   \
            SelectAssignment<Store, double>, SelectAssignment<Store, void*>                                            \
    }
#define STEP(Formula, valueIsNew)                                                                                      \
    {                                                                                                                  \
        nullptr, SelectStep<Formula, signed char, valueIsNew>, SelectStep<Formula, int, valueIsNew>,                   \
            SelectStep<Formula, float, valueIsNew>, SelectStep<Formula, double, valueIsNew>, nullptr                   \
    }

std::span<const FamilyRow> AssignmentFamilies()
{
    // ORDER OPERATORS
    static constexpr FamilyRow rows[] = {
        {'=',               STORE                     },
        {                                                      ADD, ASSIGNMENT(Plus)                          },
        {                                                    SUB,                 ASSIGNMENT(Minus)                                       },
        {                       MULT,               ASSIGNMENT(Times)                 },
        {                                                 DIV,        ASSIGNMENT(Over)                      },
        {                                                        INC_PRE,       STEP(Plus,                     true)},
        {                                                     DEC_PRE,        STEP(Minus,                      true)},
        {                                                                           INC,       STEP(Plus, false)},
        { DEC,                           STEP(Minus,                                                      false)},
    };
    return rows;
}
