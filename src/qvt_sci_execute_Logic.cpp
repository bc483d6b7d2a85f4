// Evaluators of comparisons, truth and choice: < > <= >= == != && || ! ?:, and conversions between types.

#include "qvt_sci_execute_Compare.h"

#include "qvt_sci.tab.h"

// ---------------------------------------------------------------------------------------------------------------------
// Comparisons

template <class Formula, class T>
static void SelectComparison(Node* node)
{
    ChooseFetch<T>(node, 0, node->o.ops[1], [node](auto left) {
        ChooseFetch<T>(node, 1, nullptr,
                       [node](auto right) { Attach<Comparison<Formula, T, decltype(left), decltype(right)>>(node); });
    });
}

// ---------------------------------------------------------------------------------------------------------------------
// && and || evaluate the right operand only if the left leaves the answer open. Both are ints: a double was cut to one,
// so that 0.5 counts as false here (and as true in !, ?: and conditions). That is the language's rule.

template <class Left, class Right>
struct And {
    static int Get(Node* node)
    {
        if (Left::template Read<int>(Left::template Evaluate<int>(node, 0)) == 0) return 0;
        return Right::template Read<int>(Right::template Evaluate<int>(node, 1)) != 0;
    }
};

template <class Left, class Right>
struct Or {
    static int Get(Node* node)
    {
        if (Left::template Read<int>(Left::template Evaluate<int>(node, 0)) != 0) return 1;
        return Right::template Read<int>(Right::template Evaluate<int>(node, 1)) != 0;
    }
};

template <template <class, class> class Operation>
static void SelectConnective(Node* node)
{
    ChooseFetch<int>(node, 0, nullptr, [node](auto left) {
        ChooseFetch<int>(node, 1, nullptr,
                         [node](auto right) { Attach<Operation<decltype(left), decltype(right)>>(node); });
    });
}

template <class Operand>
struct Not {
    static int Get(Node* node) { return Operand::template Read<int>(Operand::template Evaluate<int>(node, 0)) == 0; }
};

static void SelectNot(Node* node)
{
    ChooseFetch<int>(node, 0, nullptr, [node](auto operand) { Attach<Not<decltype(operand)>>(node); });
}

// Only the branch that is taken is evaluated.
template <class T>
struct Choice {
    static T Get(Node* node)
    {
        Node* const* ops = node->o.op;
        return GetValue<T>(GetValue<int>(ops[0]) ? ops[1] : ops[2]);
    }
};

template <class T>
static void SelectChoice(Node* node)
{
    Attach<Choice<T>>(node);
}

// ---------------------------------------------------------------------------------------------------------------------
// The test against zero that conditions imply. NaN is not zero. An array is true if it has memory.

template <class T, class Operand>
struct TruthOf {
    static int Get(Node* node) { return Operand::template Read<T>(Operand::template Evaluate<T>(node, 0)) != T(0); }
};

template <class T>
static void SelectTruthOf(Node* node)
{
    ChooseFetch<T>(node, 0, nullptr, [node](auto operand) { Attach<TruthOf<T, decltype(operand)>>(node); });
}

struct TruthOfArray {
    static int Get(Node* node)
    {
        const Node* array = node->o.op[0];
        while (array->type == SUBARRAY) array = array->sub.base;
        return array->value.symbol->addr != nullptr;
    }
};

static void SelectTruth(Node* node)
{
    const Node* operand = node->o.op[0];
    if (operand->type == ARRAY || (operand->type == SUBARRAY && operand->value.stride != 1)) {
        return Attach<TruthOfArray>(node);
    }
    switch (operand->dataType) {
    case CHAR_TYPE: return SelectTruthOf<signed char>(node);
    case INT_TYPE: return SelectTruthOf<int>(node);
    case FLOAT_TYPE: return SelectTruthOf<float>(node);
    case DOUBLE_TYPE: return SelectTruthOf<double>(node);
    case PTR_TYPE: return Attach<TruthOf<void*, ByValue>>(node);
    default: return yyerror("non-zero: unknown data type");
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Casts

template <class To, class From, class Operand>
struct CastOf {
    static To Get(Node* node)
    {
        return Convert<To>(Operand::template Read<From>(Operand::template Evaluate<From>(node, 0)));
    }
};

template <class To, class From>
static void SelectConversion(Node* node)
{
    ChooseFetch<From>(node, 0, nullptr, [node](auto operand) { Attach<CastOf<To, From, decltype(operand)>>(node); });
}

template <class To>
static void SelectCastTo(Node* node)
{
    switch (node->o.op[0]->dataType) {
    case CHAR_TYPE: return SelectConversion<To, signed char>(node);
    case INT_TYPE: return SelectConversion<To, int>(node);
    case FLOAT_TYPE: return SelectConversion<To, float>(node);
    case DOUBLE_TYPE: return SelectConversion<To, double>(node);
    default: return yyerror("cast: unknown data type");
    }
}

static void SelectCast(Node* node)
{
    switch (node->dataType) {
    case CHAR_TYPE: return SelectCastTo<signed char>(node);
    case INT_TYPE: return SelectCastTo<int>(node);
    case FLOAT_TYPE: return SelectCastTo<float>(node);
    case DOUBLE_TYPE: return SelectCastTo<double>(node);
    default: return yyerror("cast to: unknown data type");
    }
}

// ---------------------------------------------------------------------------------------------------------------------

#define INT_ONLY(...)                                                                                                  \
    {                                                                                                                  \
        nullptr, nullptr, __VA_ARGS__                                                                                  \
    }
#define CHOOSE                                                                                                         \
    {                                                                                                                  \
        nullptr, SelectChoice<signed char>, SelectChoice<int>, SelectChoice<float>, SelectChoice<double>,              \
            SelectChoice<void*>                                                                                        \
    }
#define COMPARE(Formula)                                                                                               \
    {                                                                                                                  \
        nullptr, SelectComparison<Formula, signed char>, SelectComparison<Formula, int>,                               \
            SelectComparison<Formula, float>, SelectComparison<Formula, double>, SelectComparison<Formula, void*>      \
    }

std::span<const FamilyRow> ComparisonFamilies()
{
    // ORDER OPERATORS
    static constexpr FamilyRow rows[] = {
        {'!', INT_ONLY(SelectNot)            },
        {'<', COMPARE(Less)                  },
        {'>', COMPARE(Greater)               },
        {'?', CHOOSE                         },
        {OR,  INT_ONLY(SelectConnective<Or>) },
        {AND, INT_ONLY(SelectConnective<And>)},
        {GE,  COMPARE(GreaterOrEqual)        },
        {LE,  COMPARE(LessOrEqual)           },
        {EQ,  COMPARE(Equal)                 },
        {NE,  COMPARE(Unequal)               },
    };
    return rows;
}

std::span<const PlainRow> ConversionOperators()
{
    static constexpr PlainRow rows[] = {
        {CAST,    SelectCast },
        {NONZERO, SelectTruth}
    };
    return rows;
}
