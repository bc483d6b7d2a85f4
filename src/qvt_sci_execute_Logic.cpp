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
                       [node](auto right) { Attach<LeftFirst<Formula, T, decltype(left), decltype(right)>>(node); });
    });
}

// ---------------------------------------------------------------------------------------------------------------------
// && and || evaluate the right operand only if the left leaves the answer open. Both are ints: a double was cut to one,
// so that 0.5 counts as false here (and as true in !, ?: and conditions). That is the language's rule.

struct And {
    static constexpr int decided = 0;
};

struct Or {
    static constexpr int decided = 1;
};

template <class Formula, class Left, class Right>
struct Connective {
    static int Get(Node* node)
    {
        const int left = Left::template Read<int>(Left::template Evaluate<int>(node, 0)) != 0;
        if (left == Formula::decided) return left;
        return Right::template Read<int>(Right::template Evaluate<int>(node, 1)) != 0;
    }
};

template <class Formula, class T>
static void SelectConnective(Node* node)
{
    ChooseFetch<T>(node, 0, nullptr, [node](auto left) {
        ChooseFetch<T>(node, 1, nullptr,
                       [node](auto right) { Attach<Connective<Formula, decltype(left), decltype(right)>>(node); });
    });
}

struct Not {
    static int Of(int a) { return a == 0; }
};

template <class Formula, class Operand>
struct Opposite {
    static int Get(Node* node)
    {
        return Formula::Of(Operand::template Read<int>(Operand::template Evaluate<int>(node, 0)));
    }
};

template <class Formula, class T>
static void SelectOpposite(Node* node)
{
    ChooseFetch<T>(node, 0, nullptr, [node](auto operand) { Attach<Opposite<Formula, decltype(operand)>>(node); });
}

// Only the branch that is taken is evaluated.
struct Choice {
    static Node* Of(Node* const* ops) { return GetValue<int>(ops[0]) ? ops[1] : ops[2]; }
};

template <class Formula, class T>
struct Branch {
    static T Get(Node* node) { return GetValue<T>(Formula::Of(node->o.op)); }
};

template <class Formula, class T>
static void SelectBranch(Node* node)
{
    Attach<Branch<Formula, T>>(node);
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

// `2 * x`: a constant is converted once and read in place from then on. Its address, for a function that it is passed
// to, stays the cast's own slot, which is set anew each time.
template <class To, class From>
static void KeepConverted(Node* cast)
{
    Node* const constant = cast->o.op[0];
    LeafPart& leaf = constant->leaf;
    TypeOf<To>::In(leaf.converted) = Convert<To>(Slot<From>(constant));
    leaf.convertedAt = &leaf.converted;
    cast->place = &leaf.convertedAt;
}

template <class To, class From>
static void SelectConversion(Node* node)
{
    ChooseFetch<From>(node, 0, nullptr, [node](auto operand) { Attach<CastOf<To, From, decltype(operand)>>(node); });
    if (node->o.op[0]->type == CONST) KeepConverted<To, From>(node);
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

std::span<const FamilyRow> ComparisonFamilies()
{
    // ORDER OPERATORS
    static constexpr FamilyRow rows[] = {
        // clang-format off
        {'!', INT_ONLY(SelectOpposite,    Not)           },
        {'<', ALL_TYPES(SelectComparison, Less)          },
        {'>', ALL_TYPES(SelectComparison, Greater)       },
        {'?', ALL_TYPES(SelectBranch,     Choice)        },
        {OR,  INT_ONLY(SelectConnective,  Or)            },
        {AND, INT_ONLY(SelectConnective,  And)           },
        {GE,  ALL_TYPES(SelectComparison, GreaterOrEqual)},
        {LE,  ALL_TYPES(SelectComparison, LessOrEqual)   },
        {EQ,  ALL_TYPES(SelectComparison, Equal)         },
        {NE,  ALL_TYPES(SelectComparison, Unequal)       },
        // clang-format on
    };
    return rows;
}

std::span<const PlainRow> ConversionOperators()
{
    static constexpr PlainRow rows[] = {
        // clang-format off
        {CAST,    SelectCast },
        {NONZERO, SelectTruth}
        // clang-format on
    };
    return rows;
}
