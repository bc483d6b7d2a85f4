// Trees and code printed through qvt_sci_msg: aids for whoever wants to see what became of a source, and the text of
// the place in reports of run-time errors.
//
// Trees can be a million nodes deep along the first operands, so that printing goes by loops: a pile holds the nodes
// that are begun or still to come.

#include "qvt_sci_Internal.h"

#include "qvt_sci.tab.h"

#include <string_view>

// Prints a piece of text. Never an empty one: an empty message would silence a message buffer.
static void Put(const char* text, int length)
{
    if (length > 0) qvt_sci_msg("%.*s", length, text);
}

static void Put(const char* text) { Put(text, int(std::strlen(text))); }

static bool IsSequence(const Node* node) { return node->type == OPERATOR && node->o.opr == ';'; }

// No name of a source begins with a digit.
static bool IsTextConstant(const Symbol* symbol) { return BeginsWith(symbol->name, TEXT_CONSTANT); }

// What stands in a string constant. Code can have changed it, by resize too: it ends with its array at the latest.
static std::string_view TextOf(const Symbol* constant)
{
    const char* text = static_cast<const char*>(constant->addr);
    return text ? std::string_view(text, strnlen(text, size_t(constant->arr.size))) : "";
}

// ---------------------------------------------------------------------------------------------------------------------
// One node

void NodePrint(const Node* node)
{
    qvt_sci_msg("node %p: type %s, data type %s, ex %p\n", static_cast<const void*>(node), NodeTypeName(node),
                dataTypeName[node->dataType], reinterpret_cast<void*>(node->ex));
    if (node->type == ARRAY || node->type == VARIABLE) {
        qvt_sci_msg("%s '%s', sym %p\n", NodeTypeName(node), node->leaf.symbol->name,
                    static_cast<void*>(node->leaf.symbol));
    } else if (node->type == INTERNAL_POINTER) {
        qvt_sci_msg("internal pointer: %p\n", static_cast<void*>(node->value.ns));
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Trees: one line a node, the children below it and further in

struct TreeItem {
    const Node* node;
    int depth;
};

static void Indent(int depth)
{
    for (int i = 0; i < depth; ++i) Put("  ");
}

static void PrintConstantLine(const Node* node)
{
    switch (node->dataType) {
    case CHAR_TYPE: qvt_sci_msg("CONST CHAR %c\n", node->value.c); break;
    case INT_TYPE: qvt_sci_msg("CONST INT %d\n", node->value.i); break;
    case FLOAT_TYPE: qvt_sci_msg("CONST FLOAT %g\n", double(node->value.f)); break;
    case DOUBLE_TYPE: qvt_sci_msg("CONST DOUBLE %g\n", node->value.d); break;
    default: qvt_sci_msg("CONST PTR %p\n", node->value.p); break;
    }
}

static void PrintTreeLine(const Node* node)
{
    switch (node->type) {
    case CONST: PrintConstantLine(node); break;
    case VARIABLE: qvt_sci_msg("VAR '%s'\n", node->leaf.symbol->name); break;
    case ARRAY: {
        const Symbol* symbol = node->leaf.symbol;
        if (IsTextConstant(symbol)) {
            const std::string_view text = TextOf(symbol);
            qvt_sci_msg("CONST STRING '%.*s'\n", int(text.size()), text.data());
        } else {
            qvt_sci_msg("ARRAY '%s'\n", symbol->name);
        }
        break;
    }
    case SUBARRAY: qvt_sci_msg("ARRAY ELEMENT []\n"); break;
    case OPERATOR: qvt_sci_msg("%s\n", OprName(node->o.opr)); break;
    case FUNCTION_CALL: qvt_sci_msg("CALL FUNCTION '%s'\n", node->call.symbol->name); break;
    default: qvt_sci_msg("OPR %s, type %d, data type %d\n", NodeTypeName(node), node->type, node->dataType); break;
    }
}

static void PushTreeItem(Pile<TreeItem>& pile, const Node* node, int depth)
{
    if (node) QVT_SCI_CHECK(pile.Push({node, depth}));
}

// a; b; c stands for the pairs ((a; b); c): the further left, the deeper.
static void PrintSequence(Pile<TreeItem>& pile, const Node* node, int depth)
{
    const int nOps = node->o.nOps;
    for (int pair = 0; pair < nOps - 1; ++pair) {
        Indent(depth + pair);
        PrintTreeLine(node);
    }
    for (int i = nOps - 1; i >= 0; --i) PushTreeItem(pile, node->o.ops[i], depth + (i > 0 ? nOps - i : nOps - 1));
}

static void PushTreeChildren(Pile<TreeItem>& pile, const Node* node, int depth)
{
    if (node->type == OPERATOR) {
        for (int i = node->o.nOps - 1; i >= 0; --i) PushTreeItem(pile, node->o.ops[i], depth);
    } else if (node->type == SUBARRAY) {
        PushTreeItem(pile, node->sub.index, depth);
        PushTreeItem(pile, node->sub.base, depth);
    } else if (node->type == FUNCTION_CALL) {
        for (int i = node->call.nArgs - 1; i >= 0; --i) PushTreeItem(pile, node->call.args[i], depth);
    }
}

void NodePrintTree(const Node* node, int depth, const char* label)
{
    if (label) Put(label);
    Pile<TreeItem> pile = {};
    PushTreeItem(pile, node, depth);
    while (pile.count > 0) {
        const TreeItem item = pile.Pop();
        if (IsSequence(item.node)) {
            PrintSequence(pile, item.node, item.depth);
        } else {
            Indent(item.depth);
            PrintTreeLine(item.node);
            PushTreeChildren(pile, item.node, item.depth + 1);
        }
    }
    pile.Free();
}

// ---------------------------------------------------------------------------------------------------------------------
// Code

// A node whose text is begun.
struct CodeItem {
    const Node* node;
    int next;            // operand that comes next
    const char* point;   // operators: how far the template is printed
    bool listing;        // the template has no $ left and its rest is printed: operands follow as a list
};

// The literal again: quotes around it, line ends and tabs as they are written.
static void PrintText(std::string_view text)
{
    Put("\"");
    for (const char& c : text) {
        if (c == '\n') {
            Put("\\n");
        } else if (c == '\t') {
            Put("\\t");
        } else {
            Put(&c, 1);
        }
    }
    Put("\"");
}

static void PrintLeaf(const Node* node)
{
    if (node->type == VARIABLE) {
        qvt_sci_msg("%s", node->leaf.symbol->name);
    } else if (node->type == ARRAY) {
        const Symbol* symbol = node->leaf.symbol;
        if (IsTextConstant(symbol)) {
            PrintText(TextOf(symbol));
        } else {
            Put(symbol->name);
        }
    } else if (node->type == CONST) {
        switch (node->dataType) {
        case CHAR_TYPE: qvt_sci_msg("%c", node->value.c); break;
        case INT_TYPE: qvt_sci_msg("%d", node->value.i); break;
        case FLOAT_TYPE: qvt_sci_msg("%g", double(node->value.f)); break;
        case DOUBLE_TYPE: qvt_sci_msg("%g", node->value.d); break;
        default: qvt_sci_msg("%p", node->value.p); break;
        }
    }
}

// Nodes that no source spells: the allocation of arrays, the namespace that exec keeps.
static bool HasNoCode(const Node* node)
{
    return node->type == ALLOC || node->type == FREE || node->type == INTERNAL_POINTER;
}

// Statements that bring their own end.
static bool NodeIsBlocked(const Node* node)
{
    if (node->type != OPERATOR) return false;
    if (IsSequence(node)) return true;
    const char* text = OprCode(node);
    return text[std::strlen(text) - 1] == '}';
}

// Each of the next functions prints what stands before the item's next operand and returns that operand, or prints the
// end and returns null.

static const Node* NextOfSequence(CodeItem& item)
{
    const OperatorPart& o = item.node->o;
    if (item.next > 0) {
        const Node* printed = o.ops[item.next - 1];
        if (!NodeIsBlocked(printed)) Put(";");
        if (!IsSequence(printed)) Put("\n");
    }
    while (item.next < o.nOps && HasNoCode(o.ops[item.next])) ++item.next;
    return item.next < o.nOps ? o.ops[item.next++] : nullptr;
}

static void PrintEndOfTemplate(const CodeItem& item)
{
    if (*item.point == '(') {
        Put(")");
    } else if (*item.point == '{') {
        Put("}");
    } else if (std::strspn(item.point, " ") < std::strlen(item.point)) {
        Put(item.point);
    }
}

static const Node* NextOfOperator(CodeItem& item)
{
    const OperatorPart& o = item.node->o;
    while (item.next < o.nOps && HasNoCode(o.ops[item.next])) ++item.next;
    if (item.next == o.nOps) {
        PrintEndOfTemplate(item);
        return nullptr;
    }
    if (const char* dollar = std::strchr(item.point, '$')) {
        Put(item.point, int(dollar - item.point));
        item.point = dollar + 1;
    } else if (!item.listing && *item.point) {
        Put(item.point);
        item.point += std::strlen(item.point) - 1;   // its last character says how the list ends
        item.listing = true;
    } else {
        Put(", ");
    }
    return o.ops[item.next++];
}

static const Node* NextOfSubarray(CodeItem& item)
{
    switch (item.next++) {
    case 0: return item.node->sub.base;
    case 1: Put("["); return item.node->sub.index;
    default: Put("]"); return nullptr;
    }
}

static const Node* NextOfCall(CodeItem& item)
{
    const CallPart& call = item.node->call;
    if (item.next == 0) {
        qvt_sci_msg("%s(", call.symbol->name);
    } else if (item.next < call.nArgs) {
        Put(", ");
    }
    if (item.next < call.nArgs) return call.args[item.next++];
    Put(")");
    return nullptr;
}

static const Node* NextOperand(CodeItem& item)
{
    switch (item.node->type) {
    case SUBARRAY: return NextOfSubarray(item);
    case FUNCTION_CALL: return NextOfCall(item);
    case OPERATOR: return IsSequence(item.node) ? NextOfSequence(item) : NextOfOperator(item);
    default: PrintLeaf(item.node); return nullptr;
    }
}

void NodePrintCode(const Node* node, int depth, const char* label)
{
    if (label) Put(label);
    Indent(depth);
    Pile<CodeItem> pile = {};
    while (node || pile.count > 0) {
        if (node) {
            QVT_SCI_CHECK(pile.Push({node, 0, node->type == OPERATOR ? OprCode(node) : "", false}));
        } else {
            pile.Pop();
        }
        node = pile.count > 0 ? NextOperand(pile.Top()) : nullptr;
    }
    pile.Free();
}

// ---------------------------------------------------------------------------------------------------------------------
// For the host

void qvt_sci_PrintFunctionTree(const Symbol* function)
{
    if (function && function->symbolType == FUNCTION_SYMBOL) NodePrintTree(function->func.body, 0, nullptr);
}

void qvt_sci_PrintFunctionCode(const Symbol* function)
{
    if (function && function->symbolType == FUNCTION_SYMBOL) NodePrintCode(function->func.body, 0, nullptr);
}

void qvt_sci_GetCurrentCode(char* buffer, int size)
{
    if (size < 1) return;
    buffer[0] = 0;
    const MessageSink sink = RedirectMessages(buffer, size);
    NodePrintCode(currentNode, 0, nullptr);
    RestoreMessages(sink);
}
