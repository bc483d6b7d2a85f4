// Statements: sequences, branches, loops, jumps, static initialisers.
//
// A statement answers how it ended. Loops take break and continue for themselves, everything else hands them on, up to
// the function (qvt_sci_execute.cpp).

#include "qvt_sci_execute_Compare.h"

#include "qvt_sci.tab.h"

// ---------------------------------------------------------------------------------------------------------------------
// Sequences

// Runs all but the last operand of a sequence; a sequence that is the last operand takes its place, so that code that
// nests to the right needs no stack. *last is what remains to be run.
static Flow RunAllButLast(Node* node, Node** last)
{
    for (;;) {
        const OperatorPart& o = node->o;
        for (int i = 0; i < o.nOps - 1; ++i) {
            const Flow flow = o.ops[i]->run(o.ops[i]);
            if (flow != FLOW_NEXT) return flow;
        }
        Node* const tail = o.ops[o.nOps - 1];
        if (tail->type != OPERATOR || tail->o.opr != ';') {
            *last = tail;
            return FLOW_NEXT;
        }
        node = tail;
    }
}

static Flow RunSequence(Node* node)   // exCOLON_
{
    Node* last;
    const Flow flow = RunAllButLast(node, &last);
    return flow == FLOW_NEXT ? last->run(last) : flow;
}

static void* SequenceAddress(Node* node)
{
    Node* last;
    return RunAllButLast(node, &last) == FLOW_NEXT ? last->ex(last) : nullptr;
}

static void SelectSequence(Node* node)
{
    AttachRun(node, RunSequence);
    node->ex = SequenceAddress;
}

// ---------------------------------------------------------------------------------------------------------------------
// Conditions

struct AnyCondition {
    static int Get(Node* condition) { return GetValue<int>(condition); }
};

template <class T, class Use>
static bool ChooseComparison(Node* condition, Use use)
{
    bool found = true;
    ChooseFetch<T>(condition, 0, condition->o.ops[1], [&]<class Left>(Left) {
        ChooseFetch<T>(condition, 1, nullptr, [&]<class Right>(Right) {
            if constexpr (std::is_same_v<Left, ByAddress> || std::is_same_v<Right, ByAddress>) {
                found = false;
            } else {
                switch (condition->o.opr) {
                case '<': return use(LeftFirst<Less, T, Left, Right>());
                case '>': return use(LeftFirst<Greater, T, Left, Right>());
                case LE: return use(LeftFirst<LessOrEqual, T, Left, Right>());
                case GE: return use(LeftFirst<GreaterOrEqual, T, Left, Right>());
                case EQ: return use(LeftFirst<Equal, T, Left, Right>());
                case NE: return use(LeftFirst<Unequal, T, Left, Right>());
                default: found = false;
                }
            }
        });
    });
    return found;
}

/// Calls use(evaluator) with the evaluator of a condition, a comparison of numbers as one that needs no call.
template <class Use>
static void ChooseCondition(Node* condition, Use use)
{
    if (condition->type == OPERATOR && condition->o.nOps == 2 && !condition->o.chain) {
        const int operands = condition->o.ops[0]->dataType;
        if (operands == INT_TYPE && ChooseComparison<int>(condition, use)) return;
        if (operands == DOUBLE_TYPE && ChooseComparison<double>(condition, use)) return;
    }
    use(AnyCondition());
}

// ---------------------------------------------------------------------------------------------------------------------
// Branches

template <class Condition>
static Flow RunIf(Node* node)
{
    Node* const* ops = node->o.op;
    return Condition::Get(ops[0]) ? ops[1]->run(ops[1]) : FLOW_NEXT;
}

template <class Condition>
static Flow RunIfElse(Node* node)
{
    Node* const* ops = node->o.op;
    Node* const branch = Condition::Get(ops[0]) ? ops[1] : ops[2];
    return branch->run(branch);
}

static void SelectIf(Node* node)
{
    ChooseCondition(node->o.ops[0], [node](auto condition) {
        using Condition = decltype(condition);
        AttachRun(node, node->o.nOps > 2 ? RunIfElse<Condition> : RunIf<Condition>);
    });
}

// ---------------------------------------------------------------------------------------------------------------------
// Loops

// Runs the body once; false if the loop is over, and then *flow says how.
static inline bool RunLoopBody(Node* body, Flow* flow)
{
    CountSteps(1);
    *flow = body->run(body);
    if (*flow == FLOW_BREAK) {
        *flow = FLOW_NEXT;
        return false;
    }
    if (*flow == FLOW_RETURN) return false;
    *flow = FLOW_NEXT;
    return true;
}

template <class Condition>
static Flow RunWhile(Node* node)
{
    Node* const* ops = node->o.op;
    Flow flow = FLOW_NEXT;
    currentNode = node;
    EnterJump();
    while (Condition::Get(ops[0])) {
        if (!RunLoopBody(ops[1], &flow)) break;
    }
    --jumpDep;
    return flow;
}

static void SelectWhile(Node* node)
{
    ChooseCondition(node->o.ops[0], [node](auto condition) { AttachRun(node, RunWhile<decltype(condition)>); });
}

struct AnyStep {
    static void Run(Node* step) { step->run(step); }
};

struct CountUp {   // i++, ++i of an int variable
    static void Run(Node* step)
    {
        int* const counter = static_cast<int*>(*step->o.at[0]);
        *counter = Plus::Of<int>(*counter, 1);
    }
};

static bool IsCountUp(const Node* step)
{
    return step->type == OPERATOR && (step->o.opr == INC || step->o.opr == INC_PRE) && step->dataType == INT_TYPE &&
           step->o.at[0];
}

template <class Condition, class Step>
static Flow RunFor(Node* node)
{
    Node* const* ops = node->o.ops;   // first, condition, step, body
    Flow flow = FLOW_NEXT;
    currentNode = node;
    EnterJump();
    for (ops[0]->run(ops[0]); Condition::Get(ops[1]); Step::Run(ops[2])) {
        if (!RunLoopBody(ops[3], &flow)) break;
    }
    --jumpDep;
    return flow;
}

static void SelectFor(Node* node)
{
    ChooseCondition(node->o.ops[1], [node](auto condition) {
        using Condition = decltype(condition);
        AttachRun(node, IsCountUp(node->o.ops[2]) ? RunFor<Condition, CountUp> : RunFor<Condition, AnyStep>);
    });
}

// ---------------------------------------------------------------------------------------------------------------------
// Jumps

static Flow RunBreak(Node*) { return FLOW_BREAK; }

static Flow RunContinue(Node*) { return FLOW_CONTINUE; }

static Flow RunReturn(Node*) { return FLOW_RETURN; }

// The result takes as many bytes as its type has; the others keep what they hold.
template <class T, class Operand>
static Flow RunReturnValue(Node* node)
{
    TypeOf<T>::In(returnValue) = Operand::template Read<T>(Operand::template Evaluate<T>(node, 0));
    return FLOW_RETURN;
}

template <class T>
static void SelectReturnValue(Node* node)
{
    ChooseFetch<T>(node, 0, nullptr, [node](auto operand) { AttachRun(node, RunReturnValue<T, decltype(operand)>); });
}

static void SelectBreak(Node* node) { AttachRun(node, RunBreak); }

static void SelectContinue(Node* node) { AttachRun(node, RunContinue); }

static void SelectReturn(Node* node)   // exRETURN_
{
    if (node->o.nOps == 0) return AttachRun(node, RunReturn);
    switch (node->o.ops[0]->dataType) {
    case CHAR_TYPE: return SelectReturnValue<signed char>(node);
    case INT_TYPE: return SelectReturnValue<int>(node);
    case FLOAT_TYPE: return SelectReturnValue<float>(node);
    case DOUBLE_TYPE: return SelectReturnValue<double>(node);
    case PTR_TYPE: return SelectReturnValue<void*>(node);
    default: return yyerror("operator: unknown data type");
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Static initialisers run once in the life of the code.

static Flow RunStatic(Node* node)
{
    if (node->o.vecAlloc) return FLOW_NEXT;
    node->o.vecAlloc = 1;
    return node->o.op[0]->run(node->o.op[0]);
}

static void SelectStatic(Node* node) { AttachRun(node, RunStatic); }

std::span<const PlainRow> ControlOperators()
{
    // ORDER OPERATORS
    static constexpr PlainRow rows[] = {
        // clang-format off
        {';',      SelectSequence},
        {STATIC,   SelectStatic  },
        {BREAK,    SelectBreak   },
        {CONTINUE, SelectContinue},
        {RETURN,   SelectReturn  },
        {FOR,      SelectFor     },
        {WHILE,    SelectWhile   },
        {IF,       SelectIf      },
        // clang-format on
    };
    return rows;
}
