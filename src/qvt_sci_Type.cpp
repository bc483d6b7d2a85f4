// Types: the table of operators, the type and shape of their results, what operands they take, conversions.
//
// All of this happens while a node is built; nothing of it is asked for at run time. The errors leave by yyerror.

#include "qvt_sci_Internal.h"

#include "qvt_sci.tab.h"

#include <algorithm>

#define TYPE_NAME(code, Type, member, name, hostName) name,
#define TYPE_SIZE(code, Type, member, name, hostName) sizeof(Type),
const char* const dataTypeName[DATA_TYPES] = {"void", QVT_SCI_TYPES(TYPE_NAME)};
const int sizeOf[DATA_TYPES] = {0, QVT_SCI_TYPES(TYPE_SIZE)};
#undef TYPE_NAME
#undef TYPE_SIZE

// ---------------------------------------------------------------------------------------------------------------------
// The table of operators

static constexpr int OPERATOR_CODES = NONZERO + 1;   // NONZERO is the last code

const Operator* FindOperator(int opr)
{
#define OPERATOR_ROW(code, family, name, text, shape, result, operands)                                                \
    {code, #family "_", name, text, shape, result, operands},
    static const Operator table[] = {QVT_SCI_OPERATORS(OPERATOR_ROW)};
#undef OPERATOR_ROW
    static const Operator* byCode[OPERATOR_CODES];
    if (!byCode[NONZERO]) {
        for (const Operator& row : table) byCode[row.code] = &row;
    }
    return opr >= 0 && opr < OPERATOR_CODES ? byCode[opr] : nullptr;
}

const char* OprName(int opr)
{
    const Operator* row = FindOperator(opr);
    return row ? row->name : "?";
}

const char* OprCode(const Node* node)
{
    switch (node->o.opr) {   // some have more than one form
    case RETURN: return node->o.nOps > 0 ? "return(" : "return";
    case IF: return node->o.nOps > 2 ? "if($){\n$}else{\n$}" : "if($) $";
    case '=': return node->o.isList ? "$ = {" : "$ = $";
    default: break;
    }
    const Operator* row = FindOperator(node->o.opr);
    return row && row->text ? row->text : "?(";
}

const char* NodeTypeName(const Node* node)
{
    static const char* const names[] = {"dummy", "const", "variable", "array", "sub-array"};
    if (node->type < OPERATOR) return names[node->type];
    if (node->type == OPERATOR) return OprName(node->o.opr);
    return node->type == FUNCTION_CALL ? "function call" : "UNKNOWN";
}

// ---------------------------------------------------------------------------------------------------------------------
// Shape

int NodeIsVector(const Node* node)
{
    switch (node->type) {
    case ARRAY: return 1;
    case SUBARRAY: return node->value.stride > 1;
    case OPERATOR: return node->o.isVector && node->o.vecSize > 0;
    default: return 0;
    }
}

int NodeVecSize(const Node* node)
{
    switch (node->type) {
    case ARRAY: return int(node->value.symbol->arr.size);
    case SUBARRAY: return int(node->value.stride);
    case OPERATOR: return node->o.vecSize;
    default: return 1;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Result type

static int LargestType(Node* const* ops, int from, int to)
{
    int largest = VOID_TYPE;
    for (int i = from; i < to; ++i) largest = std::max<int>(largest, ops[i]->dataType);
    return largest;
}

int OprDataType(const Node* node)
{
    if (node->type != OPERATOR) {
        yyerror("no operator data type for non-operator!");
        return VOID_TYPE;
    }
    const OperatorPart& o = node->o;
    const Operator* row = FindOperator(o.opr);
    switch (row ? row->result : RESULT_NONE) {
    case RESULT_INT: return INT_TYPE;
    case RESULT_DOUBLE: return DOUBLE_TYPE;
    case RESULT_INT_SCALAR:   // what they are presented as, OprNew sets after the evaluator is chosen
    case RESULT_DOUBLE_SCALAR:
    case RESULT_LARGER: return LargestType(o.ops, 0, o.nOps);
    case RESULT_LARGER_BRANCH: return LargestType(o.ops, 1, o.nOps);
    case RESULT_FIRST: return o.ops[0]->dataType;
    case RESULT_VOID: return VOID_TYPE;
    case RESULT_PTR: return PTR_TYPE;
    case RESULT_RETURN: return o.nOps > 0 ? curReturnType : VOID_TYPE;
    case RESULT_OWN: return node->dataType;
    case RESULT_NONE: break;
    }
    yyerror("unknown operator type");
    return VOID_TYPE;
}

// ---------------------------------------------------------------------------------------------------------------------
// Conversions

void* PointerOf(Node* node) { return *static_cast<void**>(node->ex(node)); }
int LowHalfOf(Node* node)
{
    int low;
    std::memcpy(&low, node->ex(node), sizeof low);
    return low;
}

static Node* ConversionNew(int opr, int dataType, Node* operand, const char* noMemory)
{
    Node* node = NodeNew(OPERATOR, dataType, noMemory);
    node->o.opr = opr;
    node->o.nOps = 1;
    node->o.ops = node->o.op;
    node->o.op[0] = operand;
    node->o.vecSize = 1;
    NodeSelFuncPtr(node);
    return node;
}

static const char* NameOfArray(const Node* node)
{
    if (node->type == OPERATOR) return OprName(node->o.opr);
    while (node->type == SUBARRAY) node = node->sub.base;
    return node->value.symbol->name;
}

Node* CastNew(int dataType, Node* node)
{
    if (node->dataType == dataType) {
        if (dataType == PTR_TYPE) node->get.p = PointerOf;
        return node;
    }
    if (dataType == VOID_TYPE) {
        yyerror("cannot cast to void");
    } else if (node->dataType == PTR_TYPE && dataType == INT_TYPE) {
        node->get.i = LowHalfOf;
    } else if (node->dataType == PTR_TYPE) {
        yyerror("can cast pointer to int only");
    } else if (node->dataType == VOID_TYPE) {
        yyerror("cannot cast from void");
    } else if (NodeIsVector(node)) {
        qvt_sci_msg("cannot cast %s array '%s' to type %s\n", dataTypeName[node->dataType], NameOfArray(node),
                    dataTypeName[dataType]);
        yyerror("cannot cast array to another type");
    } else {
        return ConversionNew(CAST, dataType, node, "CastNew: out of memory");
    }
    return node;
}

Node* CastTo(int dataType, Node* node) { return CastNew(dataType, node); }

static void ReportArray(const Node* node)
{
    qvt_sci_msg("%s array '%s' stands where a single number is wanted\n", dataTypeName[node->dataType],
                NameOfArray(node));
    yyerror("array instead of a single number");
}

Node* NumberTo(int dataType, Node* node)
{
    if (node->dataType == dataType && NodeIsVector(node)) ReportArray(node);
    return CastTo(dataType, node);
}

Node* ArgumentTo(const Symbol* formal, Node* node)
{
    return formal->symbolType == ARRAY_SYMBOL ? CastTo(formal->dataType, node) : NumberTo(formal->dataType, node);
}

Node* NonZeroNew(Node* node)
{
    if (node->type == OPERATOR && NodeIsVector(node)) ReportArray(node);
    if (node->dataType == INT_TYPE) return node;
    if (node->dataType == VOID_TYPE) {
        yyerror("cannot compare void to zero");
        return node;
    }
    return ConversionNew(NONZERO, INT_TYPE, node, "NonZeroNew: out of memory");
}

Node* NonZero(Node* node) { return NonZeroNew(node); }

// ---------------------------------------------------------------------------------------------------------------------
// Operands

static void CastAll(Node** ops, int from, int to, int dataType)
{
    for (int i = from; i < to; ++i) ops[i] = CastTo(dataType, ops[i]);
}

static void CheckString(const Node* node)
{
    if ((node->type != ARRAY && node->type != SUBARRAY) || node->dataType != CHAR_TYPE) {
        yyerror("arg must be char array");
    }
}

static void CheckArray(const Node* node, int dataType, const char* noArray, const char* otherType)
{
    if (node->type != ARRAY) yyerror(noArray);
    if (node->dataType != dataType) yyerror(otherType);
}

static void CheckNumArgs(const OperatorPart& o, int least, const char* message)
{
    if (o.nOps < least) yyerror(message);
}

static void CheckResize(OperatorPart& o)
{
    const Node* array = o.ops[0];
    const int qualifier = array->type == ARRAY ? array->value.symbol->qualifier : EXTERN_QUALIFIER;
    if (qualifier == EXTERN_QUALIFIER || qualifier == FORMAL_QUALIFIER) {
        yyerror("arg 1 of resize must not be extern or formal array");
    }
    o.ops[1] = NumberTo(INT_TYPE, o.ops[1]);
}

static void CheckIqsort(const OperatorPart& o)
{
    if (o.ops[0]->dataType != INT_TYPE) yyerror("arg 1 is not an integer");
    CheckArray(o.ops[1], INT_TYPE, "arg 2 is not an array", "arg 2 is not an integer array");
    CheckArray(o.ops[2], CHAR_TYPE, "arg 2 is not an array", "arg 2 is not a character array");
}

static bool Scans(int opr) { return opr == SCANF || opr == FSCANF || opr == SSCANF; }

static void CheckFprintf(const OperatorPart& o)
{
    const bool scan = Scans(o.opr);
    CheckNumArgs(o, 2, scan ? "less than 2 args for fscanf" : "less than 2 args for fprintf");
    if (o.ops[0]->dataType != PTR_TYPE) {
        yyerror(scan ? "arg 1 of fscanf must be FILE *" : "arg 1 of fprintf must be FILE *");
    }
    CheckString(o.ops[1]);
}

static void CheckSprintf(const OperatorPart& o)
{
    CheckNumArgs(o, 2, Scans(o.opr) ? "less than 2 args for sscanf" : "less than 2 args for sprintf");
    CheckString(o.ops[0]);
    CheckString(o.ops[1]);
}

void OprCorrectTypes(Node* node)
{
    OperatorPart& o = node->o;
    const int condition = o.opr == FOR ? 1 : 0;
    switch (FindOperator(o.opr)->operands) {
    case OPERANDS_AS_ARE: break;
    case OPERANDS_CAST: CastAll(o.ops, 0, o.nOps, node->dataType); break;
    case OPERANDS_TRUTH:
    case OPERANDS_LOOP: o.ops[condition] = NonZero(o.ops[condition]); break;
    case OPERANDS_COND_EXPR:
        o.ops[0] = NonZero(o.ops[0]);
        CastAll(o.ops, 1, o.nOps, node->dataType);
        break;
    case OPERANDS_RETURN: CastAll(o.ops, 0, o.nOps, node->dataType); break;
    case OPERANDS_RESIZE: CheckResize(o); break;
    case OPERANDS_EXEC: CheckString(o.ops[0]); break;
    case OPERANDS_FUNCADDR:
        CheckArray(o.ops[0], CHAR_TYPE, "arg 1 is not an array", "arg 1 is not a character array");
        break;
    case OPERANDS_FUNCCALL:
        if (o.ops[0]->dataType != PTR_TYPE) yyerror("arg 1 is not a function pointer");
        break;
    case OPERANDS_IQSORT: CheckIqsort(o); break;
    case OPERANDS_PRINTF:
        CheckNumArgs(o, 1, Scans(o.opr) ? "less than 1 args for scanf" : "less than 1 args for printf");
        CheckString(o.ops[0]);
        break;
    case OPERANDS_FPRINTF: CheckFprintf(o); break;
    case OPERANDS_SPRINTF: CheckSprintf(o); break;
    }
}
