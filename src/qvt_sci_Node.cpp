// Nodes: their constructors and their deletion.
//
// A node is complete when its constructor returns: type, shape, conversions of its operands, evaluators. Trees can be a
// million nodes deep along the first operands, so that deletion goes by loops.
//
// While a parse builds a statement nothing owns its nodes yet. They stand in a list, and a parse that fails frees what
// is still there; what has found an owner is taken out (NodesKeep, NodesKeepAll).

#include "qvt_sci_Internal.h"

#include "qvt_sci.tab.h"

#include <algorithm>
#include <cstdarg>
#include <iterator>

// ---------------------------------------------------------------------------------------------------------------------
// Nodes without an owner

static Pile<Node*> unowned = {};

static void UnownedAdd(Node* node)
{
    node->parseIndex = int32_t(unowned.count);
    if (!unowned.Push(node)) {
        std::free(node);
        yyerror("out of memory");
    }
}

static void UnownedRemove(Node* node)
{
    if (node->parseIndex < 0) return;
    Node* last = unowned.Pop();
    last->parseIndex = node->parseIndex;
    unowned.items[node->parseIndex] = last;   // one too many behind the end if node is the last: harmless
    node->parseIndex = -1;
}

// Frees one node without its operands.
static void NodeFree(Node* node)
{
    UnownedRemove(node);
    if (currentNode == node) currentNode = nullptr;
    if (node->type == OPERATOR) {
        if (node->o.ops != node->o.op) std::free(node->o.ops);
        if (node->o.vecAlloc != 0 && node->o.opr != STATIC) std::free(node->value.p);
        std::free(node->o.chain);
    } else if (node->type == FUNCTION_CALL) {
        std::free(node->call.args);
        std::free(node->call.addresses);
    }
    std::free(node);
}

void NodesKeepAll()
{
    for (size_t i = 0; i < unowned.count; ++i) unowned.items[i]->parseIndex = -1;
    unowned.count = 0;
}

void NodesDropUnowned()
{
    while (unowned.count > 0) NodeFree(unowned.Top());
}

// ---------------------------------------------------------------------------------------------------------------------
// Walking a tree without recursion

static void Push(Pile<Node*>& pile, Node* node)
{
    if (node && node->type != DUMMY) QVT_SCI_CHECK(pile.Push(node));
}

static void PushChildren(Pile<Node*>& pile, const Node* node)
{
    if (node->type == OPERATOR) {
        for (int i = 0; i < node->o.nOps; ++i) Push(pile, node->o.ops[i]);
    } else if (node->type == SUBARRAY) {
        Push(pile, node->sub.base);
        Push(pile, node->sub.index);
    } else if (node->type == FUNCTION_CALL) {
        for (int i = 0; i < node->call.nArgs; ++i) Push(pile, node->call.args[i]);
    }
}

// Visits each node of the tree but for the subtree `stop`; visit may free it.
static void ForEachNode(Node* tree, const Node* stop, void (*visit)(Node*))
{
    Pile<Node*> pile = {};
    Push(pile, tree);
    while (pile.count > 0) {
        Node* node = pile.Pop();
        if (node == stop) continue;
        PushChildren(pile, node);
        visit(node);
    }
    pile.Free();
}

void NodesKeep(Node* tree) { ForEachNode(tree, nullptr, UnownedRemove); }
void NodeDelete(Node* node) { ForEachNode(node, nullptr, NodeFree); }
void NodeDeleteExcept(Node* node, Node* stop) { ForEachNode(node, stop, NodeFree); }

// ---------------------------------------------------------------------------------------------------------------------
// Leaves

Node* NodeNew(NodeKind kind, int dataType, const char* noMemory)
{
    Node* node = static_cast<Node*>(std::calloc(1, sizeof(Node)));
    if (!node) yyerror(noMemory);
    node->type = int16_t(kind);
    node->dataType = int16_t(dataType);
    node->line = SourceLine();
    UnownedAdd(node);
    return node;
}

Node* ConNew(int dataType, Value value)
{
    Node* node = NodeNew(CONST, dataType);
    node->value = value;
    NodeSelFuncPtr(node);
    return node;
}

Node* VarNew(const char* name)
{
    Symbol* symbol = FindSymbolRecursively(gActiveNamespace, name);
    if (!symbol) yyerrorf("symbol '%s' not declared", name);
    symbol->referenced = 1;
    const bool isFunction = symbol->symbolType == FUNCTION_SYMBOL;
    Node* node =
        NodeNew(symbol->symbolType == ARRAY_SYMBOL ? ARRAY : VARIABLE, isFunction ? int(PTR_TYPE) : symbol->dataType);
    node->value.symbol = symbol;
    node->leaf.symbol = symbol;
    NodeSelFuncPtr(node);
    return node;
}

Node* TextNew(char* text)
{
    static int counter = 0;
    char name[32];
    std::snprintf(name, sizeof name, "%s%06d", TEXT_CONSTANT, counter++);
    const int size = int(std::strlen(text)) + 1;
    Symbol* symbol = DeclareArr(EXTERN_QUALIFIER, CHAR_TYPE, name, 1, &size, nullptr);
    symbol->qualifier = NO_QUALIFIER;
    symbol->memory = text;
    ScannerTextTaken();
    symbol->addr = text;
    return VarNew(name);
}

Node* AllocNew(Symbol* array)
{
    Node* node = NodeNew(ALLOC, VOID_TYPE);
    node->value.symbol = array;
    NodeSelFuncPtr(node);
    return node;
}

Node* FreeNew(Symbol* array)
{
    Node* node = NodeNew(FREE, VOID_TYPE);
    node->value.symbol = array;
    NodeSelFuncPtr(node);
    return node;
}

// Never evaluated: its parent reads the namespace.
Node* InternalPointerNodeNew(Namespace* ns)
{
    Node* node = NodeNew(INTERNAL_POINTER, PTR_TYPE);
    node->value.ns = ns;
    return node;
}

Node* SubarrNew(Node* base, Node* index)
{
    int level = 0;
    const Node* root = base;
    for (; root->type == SUBARRAY; root = root->sub.base) ++level;
    if (root->type != ARRAY) yyerror("base type for sub-array must be array!");
    ArrayPart& array = root->value.symbol->arr;
    if (level >= array.nDims) yyerror("more array dimensions specified than available!");

    index = NumberTo(INT_TYPE, index);
    Node* node = NodeNew(SUBARRAY, base->dataType);
    const bool hasLimit = level == 0 && root->value.symbol->qualifier == FORMAL_QUALIFIER;
    node->sub.dimPtr = hasLimit ? &array.limit : &array.dims[level];
    node->sub.base = base;
    node->sub.index = index;
    node->value.stride = 1;
    for (int i = level + 1; i < array.nDims; ++i) node->value.stride *= array.dims[i];
    NodeSelFuncPtr(node);
    return node;
}

// ---------------------------------------------------------------------------------------------------------------------
// Operators

// Room for nOps operands; those that fit live in the node.
static void SetOperands(Node* node, int nOps, Node* const* list)
{
    OperatorPart& o = node->o;
    o.ops = o.op;
    if (nOps > int(std::size(o.op))) {
        o.ops = static_cast<Node**>(std::malloc(size_t(nOps) * sizeof(Node*)));
        if (!o.ops) {
            o.ops = o.op;
            yyerror("out of memory");
        }
    }
    std::copy(list, list + nOps, o.ops);
    o.nOps = nOps;
}

static void SetShape(Node* node, ShapeRule rule)
{
    OperatorPart& o = node->o;
    o.vecSize = 1;
    if (rule == SHAPE_WHOLE) return;
    for (int i = 0; i < o.nOps; ++i) {
        if (NodeIsVector(o.ops[i])) o.isVector = 1;
        const int size = NodeVecSize(o.ops[i]);
        if (size < 0 && rule == SHAPE_VECTOR) yyerror("invalid vector operation involving unknown-size array");
        o.vecSize = std::max(o.vecSize, size);
    }
}

// The evaluator was chosen with the operands' type and shape; the result is a single number.
static void PresentAsScalar(Node* node, int dataType)
{
    node->dataType = int16_t(dataType);
    node->o.isVector = 0;
    node->o.vecSize = 1;
}

Node* OprNewList(int opr, int nOps, Node* const* list)
{
    Node* node = NodeNew(OPERATOR, VOID_TYPE);
    node->o.opr = opr;
    SetOperands(node, nOps, list);
    const Operator* row = FindOperator(opr);
    if (!row) yyerror("unknown operator type");
    SetShape(node, row->shape);
    node->dataType = int16_t(OprDataType(node));
    OprCorrectTypes(node);
    NodeSelFuncPtr(node);
    if (row->result == RESULT_INT_SCALAR) PresentAsScalar(node, INT_TYPE);
    if (row->result == RESULT_DOUBLE_SCALAR) PresentAsScalar(node, DOUBLE_TYPE);
    return node;
}

Node* OprNew(int opr, int nOps, ...)
{
    static constexpr int MOST_OPERANDS = 4;
    Node* list[MOST_OPERANDS];
    va_list operands;
    va_start(operands, nOps);
    for (int i = 0; i < nOps; ++i) list[i] = va_arg(operands, Node*);
    va_end(operands);
    return OprNewList(opr, nOps, list);
}

// target = {list}: element i of the target takes element i of the list, both from the start again at the shorter's end.
Node* OprNewListAss(Node* target, int n, Node* const* list)
{
    if (NodeVecSize(target) < 0) yyerror("invalid vector operation involving unknown-size array");
    Node* node = NodeNew(OPERATOR, target->dataType);
    node->o.opr = '=';
    node->o.isList = 1;
    node->o.ops = static_cast<Node**>(std::malloc((size_t(n) + 1) * sizeof(Node*)));
    if (!node->o.ops) {
        node->o.ops = node->o.op;
        yyerror("out of memory");
    }
    node->o.ops[0] = target;
    node->o.nOps = 1;
    for (int i = 0; i < n; ++i) node->o.ops[node->o.nOps++] = NumberTo(target->dataType, list[i]);
    node->o.isVector = int8_t(NodeIsVector(target));
    node->o.vecSize = NodeVecSize(target);
    NodeSelFuncPtr(node);
    return node;
}

Node* SequenceNew(Node* first, Node* second)
{
    if (!first) return second;
    if (!second) return first;
    return OprNew(';', 2, first, second);
}

Node* SequenceAppend(Node* first, Node* second)
{
    if (!first || !second || first->type != OPERATOR || first->o.opr != ';') return SequenceNew(first, second);
    OperatorPart& o = first->o;
    const bool full = o.nOps == int(std::size(o.op)) || (o.nOps > int(std::size(o.op)) && (o.nOps & (o.nOps - 1)) == 0);
    if (full) {   // the room is 3, then powers of two
        const size_t room = o.ops == o.op ? 4 : 2 * size_t(o.nOps);
        Node** grown = static_cast<Node**>(std::realloc(o.ops == o.op ? nullptr : o.ops, room * sizeof(Node*)));
        if (!grown) yyerror("out of memory");
        if (o.ops == o.op) std::copy(o.op, o.op + o.nOps, grown);
        o.ops = grown;
    }
    o.ops[o.nOps++] = second;
    return first;
}

// ---------------------------------------------------------------------------------------------------------------------
// Calls

Node* FuncCallNew(const char* name, int nArgs, Node* const* args)
{
    Symbol* symbol = FindSymbolRecursively(gActiveNamespace, name);
    if (!symbol) yyerrorf("cannot call undeclared function '%s'", name);
    const bool isFunction = symbol->symbolType == FUNCTION_SYMBOL;
    if (!isFunction && (symbol->symbolType != VARIABLE_SYMBOL || symbol->dataType != PTR_TYPE)) {
        yyerrorf("'%s' is not a callable function", name);
    }
    if (isFunction && symbol->func.nArgs != nArgs) {
        yyerrorf("function %s must be called with %d arguments", name, symbol->func.nArgs);
    }
    symbol->referenced = 1;

    Node* node = NodeNew(FUNCTION_CALL, isFunction ? symbol->dataType : int(DOUBLE_TYPE), "FuncCallNew: out of memory");
    node->call.symbol = symbol;
    node->call.args = static_cast<Node**>(std::calloc(size_t(nArgs) + 1, sizeof(Node*)));
    node->call.addresses = static_cast<void**>(std::calloc(size_t(nArgs) + 1, sizeof(void*)));
    if (!node->call.args || !node->call.addresses) yyerror("FuncCallNew: out of memory");
    for (int i = 0; i < nArgs; ++i) {
        // The arguments of a call through a pointer are tested when it is made.
        node->call.args[i] = isFunction ? ArgumentTo(symbol->func.args[i], args[i]) : args[i];
    }
    node->call.nArgs = nArgs;
    NodeSelFuncPtr(node);
    return node;
}
