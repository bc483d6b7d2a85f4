// Which evaluators a node gets, by kind, operator, data type, shape and kind of operands; and those of the leaves.
//
// Operators stand in the tables of the files that hold their evaluators. Families have a member for each data type and
// partly a second set for vectors; of which kind a node is, is known when it is complete.

#include "qvt_sci_execute_Internal.h"

#include "qvt_sci.tab.h"

int qvt_sci_on_out_of_bounds = 1;
int qvt_sci_on_div_by_zero = 1;

// ---------------------------------------------------------------------------------------------------------------------
// Leaves

static void* NoAddress(Node*) { return nullptr; }

static Flow DoNothing(Node*) { return FLOW_NEXT; }

// exDUMMY_
Node dummyNode = {DUMMY, VOID_TYPE, -1, 0, NoAddress, {}, DoNothing, nullptr, {}, {}};

static void* RunForAddress(Node* node)
{
    node->run(node);
    return nullptr;
}

void AttachRun(Node* node, Flow (*run)(Node*))
{
    node->ex = RunForAddress;
    node->run = run;
}

// A leaf is read through its place.
static void* AddressInPlace(Node* node) { return *node->place; }

template <class T>
struct ReadInPlace {
    static T Get(Node* node) { return *static_cast<T*>(*node->place); }
};

static void SelectLeaf(Node* node, void** place)
{
    node->place = place;
    node->ex = AddressInPlace;
    node->run = DoNothing;
    AttachReader<ReadInPlace>(node);
}

static void SelectConstant(Node* node)   // exConc and its like, exFUNCP_
{
    node->leaf.self = &node->value;
    SelectLeaf(node, &node->leaf.self);
}

// An extern variable or array that the host had not bound when the code was compiled, and may never bind.
static void* BoundAddress(Node* node)
{
    const Symbol* symbol = node->value.symbol;
    if (!symbol->addr) [[unlikely]] {
        currentNode = node;
        ReportUnboundVariable(symbol->name);
    }
    return symbol->addr;
}

// Whoever survives the report gets a 0 to read, and what he writes is lost.
static void* BoundVariable(Node* node)
{
    static Value nothing;
    void* const address = BoundAddress(node);
    nothing = {};
    return address ? address : &nothing;
}

template <class T>
struct ReadBound {
    static T Get(Node* node) { return *static_cast<T*>(BoundVariable(node)); }
};

static bool MayBeUnbound(const Symbol* symbol) { return symbol->qualifier == EXTERN_QUALIFIER && !symbol->addr; }

static void SelectVariable(Node* node)   // exVar
{
    Symbol* symbol = node->value.symbol;
    if (symbol->symbolType == FUNCTION_SYMBOL) return SelectConstant(node);
    if (!MayBeUnbound(symbol)) return SelectLeaf(node, &symbol->addr);
    node->ex = BoundVariable;
    node->run = DoNothing;
    AttachReader<ReadBound>(node);
}

static void* ArrayAddress(Node* node) { return node->value.symbol->addr; }

// As a number an array is its first element, and 0 as long as it has none.
template <class T>
struct FirstElement {
    static T Get(Node* node)
    {
        const T* first = static_cast<const T*>(node->ex(node));
        return first ? *first : T(0);
    }
};

static void SelectArray(Node* node)   // exArr
{
    node->ex = MayBeUnbound(node->value.symbol) ? BoundAddress : ArrayAddress;
    node->run = DoNothing;
    AttachReader<FirstElement>(node);
}

// ---------------------------------------------------------------------------------------------------------------------
// Kinds of operands

bool OnlyReads(int opr)
{
    switch (opr) {
    case '+':
    case '-':
    case '*':
    case '/':
    case '%':
    case '.':
    case '^':
    case '<':
    case '>':
    case '?':
    case '!':
    case LE:
    case GE:
    case EQ:
    case NE:
    case AND:
    case OR:
    case POWER:
    case UMINUS:
    case CAST:
    case NONZERO: return true;
    default: return false;
    }
}

static bool MayWriteWithin(const Node* node, int levels)
{
    switch (node->type) {
    case CONST:
    case VARIABLE:
    case ARRAY: return false;
    case SUBARRAY:
        return levels == 0 || MayWriteWithin(node->sub.index, levels - 1) || MayWriteWithin(node->sub.base, levels - 1);
    case OPERATOR:
        if (levels == 0 || !OnlyReads(node->o.opr)) return true;
        for (int i = 0; i < node->o.nOps; ++i) {
            if (MayWriteWithin(node->o.ops[i], levels - 1)) return true;
        }
        return false;
    default: return true;
    }
}

bool MayWrite(const Node* node)
{
    static constexpr int LEVELS = 7;   // each node asks this when it is built: the effort must stay bounded
    return MayWriteWithin(node, LEVELS);
}

bool IsElement(const Node* node, int k, int dataType)
{
    const Node* operand = node->o.ops[k];
    return qvt_sci_on_out_of_bounds == 1 && operand->type == SUBARRAY && operand->dataType == dataType &&
           operand->value.stride == 1 && operand->sub.baseAt && operand->sub.indexAt;
}

bool IsNested(const Node* node, int k, int dataType, int opr)
{
    const Node* operand = node->o.ops[k];
    return operand->type == OPERATOR && operand->o.opr == opr && operand->dataType == dataType &&
           !operand->o.isVector && operand->o.at[0] && operand->o.at[1];
}

// ---------------------------------------------------------------------------------------------------------------------
// Operators

// Families of arithmetic have no meaning for pointers. The result is a null pointer.
struct DummyForPointers {
    static void* Get(Node* node)
    {
        qvt_sci_msg("dummy operator %s%s must never be called!\n", FindOperator(node->o.opr)->family, "pointer");
        return nullptr;
    }
};

template <class Row>
static const Row* FindRow(std::span<const Row> rows, int opr)
{
    for (const Row& row : rows) {
        if (row.opr == opr) return &row;
    }
    return nullptr;
}

static Selector FindPlain(int opr)
{
    for (const auto& rows : {ConversionOperators(), ControlOperators(), ExecOperators()}) {
        if (const PlainRow* row = FindRow(rows, opr)) return row->select;
    }
    return nullptr;
}

static const FamilyRow* FindFamily(int opr)
{
    for (const auto& rows : {ArithmeticFamilies(), AssignmentFamilies(), ComparisonFamilies()}) {
        if (const FamilyRow* row = FindRow(rows, opr)) return row;
    }
    return nullptr;
}

static void SelectMember(Node* node, const FamilyRow& family, const char* unknownType)
{
    if (Selector select = family.member[node->dataType]) return select(node);
    yyerror(unknownType);
}

static void SelectByFamily(Node* node)
{
    const int opr = node->o.opr;
    const FamilyRow* scalars = FindFamily(opr);
    const FamilyRow* vectors = FindRow(VectorFamilies(), opr);
    if (!scalars && !vectors) return yyerror("unknown operator type");
    if (node->dataType == PTR_TYPE) {
        if (scalars && scalars->member[PTR_TYPE]) return scalars->member[PTR_TYPE](node);
        return Attach<DummyForPointers>(node);
    }
    if (!NodeIsVector(node) && scalars) return SelectMember(node, *scalars, "operator: unknown data type");
    if (!vectors) return yyerrorf("operation '%s' not supported for vectors", FindOperator(opr)->family);
    SelectMember(node, *vectors,
                 NodeIsVector(node) ? "unsupported data type for vector operation" : "operator: unknown data type");
}

static void SelectOperator(Node* node)
{
    OperatorPart& o = node->o;
    for (int i = 0; i < 2 && i < o.nOps; ++i) o.at[i] = o.ops[i]->place;
    if (Selector select = FindPlain(o.opr)) {
        select(node);
    } else if (o.isList) {
        SelectListAssignment(node);
    } else {
        SelectByFamily(node);
    }
    JoinChain(node);
}

void NodeSelFuncPtr(Node* node)
{
    switch (node->type) {
    case CONST: return SelectConstant(node);
    case VARIABLE: return SelectVariable(node);
    case ARRAY: return SelectArray(node);
    case SUBARRAY: return SelectSubarray(node);
    case OPERATOR: return SelectOperator(node);
    case FUNCTION_CALL: return SelectCall(node);
    case ALLOC: return SelectAlloc(node);
    case FREE: return SelectFree(node);
    default: return yyerror("unknown node type");   // the dummy is one node, complete from the start
    }
}
