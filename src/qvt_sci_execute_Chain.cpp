// Long chains of operators: a + b + c + ... is a tree as deep as the text is long, and evaluating it by recursion would
// need as much of the C stack.
//
//     rung                    Every CHAIN_STEP operators along the first operands one is a rung. The topmost rung
//      / \                    evaluates all of them from the lowest up, and each leaves its value in its slot. A rung
//     +   d                   that is not the topmost therefore just hands out its slot, so that the operators of the
//    / \                      step above it find the value there when they evaluate their first operand.
//   +   c
//  / \                        Divisors come before the left operand. In a chain all divisors of the path are evaluated
// rung'  b                    from the top down, each into its node's own slot, before the climb begins.

#include "qvt_sci_execute_Internal.h"

#include "qvt_sci.tab.h"

#include <cstdlib>

// ---------------------------------------------------------------------------------------------------------------------
// Evaluating

static void EvaluateRungsBelow(Node* top)
{
    if (top->o.chain->hasDivisors) {
        for (Node* node = top;; node = node->o.ops[0]) {
            if (node->o.divisor == DIVISOR_KEPT) KeepDivisor(node);
            if (node->o.depth == 0) break;
        }
    }
    for (Node* rung = top->o.chain->lowest; rung != top; rung = rung->o.chain->above) rung->o.chain->ex(rung);
}

static void* ClimbForAddress(Node* top)
{
    EvaluateRungsBelow(top);
    return top->o.chain->ex(top);
}

template <class T>
static T Climb(Node* top)
{
    EvaluateRungsBelow(top);
    return TypeOf<T>::Of(top->o.chain->get)(top);
}

template <class T>
static void* StoreOfRung(Node* rung)
{
    Slot<T>(rung) = TypeOf<T>::Of(rung->o.chain->get)(rung);
    return &rung->value;
}

template <class T>
static T FinishedValue(Node* rung)
{
    return Slot<T>(rung);
}

static void* FinishedAddress(Node* rung) { return &rung->value; }

static void* FinishedVector(Node* rung) { return rung->value.p; }

template <class T>
static T FirstOfFinishedVector(Node* rung)
{
    return rung->value.p ? *static_cast<const T*>(rung->value.p) : T(0);
}

// ---------------------------------------------------------------------------------------------------------------------
// Building

static bool IsLink(const Node* node) { return node->type == OPERATOR && OnlyReads(node->o.opr); }

// Operators with one operand nest no deeper than the parser's stack allows. A cast may also be put on top of a tree for
// a single call through a pointer, and must leave no trace there.
static bool CanBeRung(const Node* node) { return node->o.nOps > 1; }

// The node's own evaluators go into the chain, the climbing ones into the node.
template <class T>
static void MakeTopmost(Node* node)
{
    Chain* chain = node->o.chain;
    chain->get = node->get;
    chain->ex = node->ex;
    node->ex = ClimbForAddress;
    if constexpr (!std::is_pointer_v<T>) {
        if (chain->ex == StoreValue<T>) chain->ex = StoreOfRung<T>;
        TypeOf<T>::Of(node->get) = Climb<T>;
    }
}

template <class T>
static void MakeInner(Node* node)
{
    const bool isNumber = std::is_pointer_v<T> || node->o.chain->ex == StoreOfRung<T>;
    node->ex = isNumber ? FinishedAddress : FinishedVector;
    if constexpr (!std::is_pointer_v<T>) {
        TypeOf<T>::Of(node->get) = isNumber ? FinishedValue<T> : FirstOfFinishedVector<T>;
    }
}

// Type of the node's value; comparisons and products of vectors have the operands' while they are built.
static int ResultType(const Node* node)
{
    switch (FindOperator(node->o.opr)->result) {
    case RESULT_INT_SCALAR: return INT_TYPE;
    case RESULT_DOUBLE_SCALAR: return DOUBLE_TYPE;
    default: return node->dataType;
    }
}

#define BY_RESULT_TYPE(node, Action)                                                                                   \
    switch (ResultType(node)) {                                                                                        \
    case CHAR_TYPE: Action<signed char>(node); break;                                                                  \
    case INT_TYPE: Action<int>(node); break;                                                                           \
    case FLOAT_TYPE: Action<float>(node); break;                                                                       \
    case DOUBLE_TYPE: Action<double>(node); break;                                                                     \
    case PTR_TYPE: Action<void*>(node); break;                                                                         \
    default: break;                                                                                                    \
    }

// The nodes from the new rung to the one below it, null if it is the first, let the chain evaluate their divisors.
static Node* KeepDivisorsOfStep(Node* top)
{
    for (Node* node = top;; node = node->o.ops[0]) {
        if (node != top && node->o.chain) return node;
        if (node->o.divisor == DIVISOR_FIRST) {
            node->o.divisor = DIVISOR_KEPT;
            SelectDivisorKept(node);
            top->o.chain->hasDivisors = 1;
        }
        if (node->o.depth == 0) return nullptr;
    }
}

void JoinChain(Node* node)
{
    const Node* first = node->o.nOps > 0 ? node->o.ops[0] : nullptr;
    if (!first || !IsLink(node) || !IsLink(first)) return;
    node->o.depth = int16_t(first->o.chain ? 1 : first->o.depth + 1);
    if (node->o.depth < CHAIN_STEP || !CanBeRung(node)) return;

    Chain* chain = static_cast<Chain*>(std::calloc(1, sizeof(Chain)));
    if (!chain) return yyerror("out of memory");
    node->o.chain = chain;
    chain->lowest = node;
    if (Node* below = KeepDivisorsOfStep(node)) {
        below->o.chain->above = node;
        chain->lowest = below->o.chain->lowest;
        chain->hasDivisors |= below->o.chain->hasDivisors;
        BY_RESULT_TYPE(below, MakeInner)
    }
    BY_RESULT_TYPE(node, MakeTopmost)
}
