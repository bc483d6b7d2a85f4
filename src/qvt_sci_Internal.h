// The inside of the formula language, for qvt_sci* files only.
//
// The road of a text: preprocess -> tokens -> grammar actions -> symbols and trees of nodes -> evaluation. There is no
// code besides the tree: a node carries pointers to the functions that evaluate it, chosen once when it is built by
// operator, data type, shape and kind of operands. Nothing asks for a type or an operator at run time.
//
//   qvt_sci.cpp                  a parse from text to result, and what a failed one takes back
//   qvt_sci_Preprocess.cpp       masking, #include, #define
//   qvt_sci_Scan.cpp             tokens, yyerror
//   qvt_sci.y                    the language's definition
//   qvt_sci_Node.cpp             constructors and deletion of nodes
//   qvt_sci_Type.cpp             table of operators, result types, operand rules, casts, sizes
//   qvt_sci_Print.cpp            trees and source printed
//   qvt_sci_aux_Symbols.cpp      symbols, tables, hashing
//   qvt_sci_aux_Declare.cpp      declarations of variables, arrays, functions
//   qvt_sci_aux_Namespace.cpp    the tree of namespaces
//   qvt_sci_aux_Bind.cpp         symbols as the host sees them
//   qvt_sci_aux_Messages.cpp     message sinks, hooks
//   qvt_sci_execute*.cpp         evaluators: qvt_sci_execute.cpp has the state of a run and calls, _Select chooses,
//                                _Arithmetic, _Logic and _Assign have single numbers, _Vector and _Array arrays,
//                                _Control statements, _Chain long expressions, _Native the host's functions, _Exec what
//                                reaches for the language as a whole
//   qvt_sci_aux_Embedding.cpp    formulas with tags, calls from the host
//   qvt_sci_aux_Intrinsics.cpp   declaration text and binding of the predefined names; natives in
//                                qvt_sci_aux_Builtin*.cpp; qvt_sci_aux_Manual.cpp the manual
//   qvt_sci_aux_PrintScan.cpp    print and the printf and scanf families
//
// Errors found while parsing leave by longjmp from yyerror to qvt_sci_ParseAny: whatever can call yyerror keeps plain
// structures only. Control flow of running code does not jump: statements answer how to go on (Flow).

#pragma once

#include "qvt_sci.h"

#include <csetjmp>
#include <cstddef>
#include <cstdlib>

struct Node;
struct Symtab;

// ---------------------------------------------------------------------------------------------------------------------
// A growing array of plain items without a destructor, so that a jump may cross it. All zero is the empty one.

template <class Item>
struct Pile {
    Item* items;
    size_t count;
    size_t capacity;

    /// Room for so many more. False, with nothing changed, if there is no memory; so does Push.
    bool Reserve(size_t more)
    {
        if (capacity - count >= more) return true;
        const size_t grown = 2 * capacity + 16 + more;
        void* memory = std::realloc(static_cast<void*>(items), grown * sizeof(Item));
        if (!memory) return false;
        items = static_cast<Item*>(memory);
        capacity = grown;
        return true;
    }
    bool Push(const Item& item)
    {
        if (count == capacity && !Reserve(1)) return false;
        items[count++] = item;
        return true;
    }
    Item Pop() { return items[--count]; }
    Item& Top() { return items[count - 1]; }
    void Free()
    {
        std::free(static_cast<void*>(items));
        *this = {};
    }
};

inline bool BeginsWith(const char* text, const char* begin)
{
    return std::strncmp(text, begin, std::strlen(begin)) == 0;
}
inline bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// ---------------------------------------------------------------------------------------------------------------------
// Types

// ORDER TYPES   code, C type, member of Value and Evaluate, name in messages, name for hosts. The larger code of two
// operands is the usual arithmetic promotion.
#define QVT_SCI_TYPES(ROW)                                                                                             \
    ROW(CHAR_TYPE, signed char, c, "char", "char")                                                                     \
    ROW(INT_TYPE, int, i, "int", "int")                                                                                \
    ROW(FLOAT_TYPE, float, f, "float", "float")                                                                        \
    ROW(DOUBLE_TYPE, double, d, "double", "double")                                                                    \
    ROW(PTR_TYPE, void*, p, "*", "ptr")

enum DataType { VOID_TYPE, CHAR_TYPE, INT_TYPE, FLOAT_TYPE, DOUBLE_TYPE, PTR_TYPE };   // ORDER TYPES
inline constexpr int DATA_TYPES = 6;
extern const char* const dataTypeName[DATA_TYPES];   // "void", "char", ... "*"; ORDER TYPES (qvt_sci_Type.cpp)
extern const int sizeOf[DATA_TYPES];                 // bytes; void has 0

union Value {
    signed char c;
    int i;
    float f;
    double d;
    void* p;
    Symbol* symbol;
    Namespace* ns;
    int64_t stride;   // elements that one step of a sub-array's index skips
    Node* next;       // link of lists of nodes that are being deleted
};
static_assert(sizeof(Value) == 8);

// ---------------------------------------------------------------------------------------------------------------------
// Nodes

enum NodeKind {
    DUMMY,              // the empty statement
    CONST,              // value: the constant
    VARIABLE,           // value.symbol; a function's name is a VARIABLE of pointer type whose value is the symbol
    ARRAY,              // value.symbol
    SUBARRAY,           // value.stride
    OPERATOR,           // value: the result slot, for a vector the pointer to its elements
    FUNCTION_CALL,      // value: the result slot
    ALLOC,              // value.symbol: allocates a dynamic array
    FREE,               // value.symbol: frees it
    INTERNAL_POINTER,   // value.ns: the namespace that exec, func_addr and iqsort search from
};

/// How a statement ended.
enum Flow { FLOW_NEXT, FLOW_BREAK, FLOW_CONTINUE, FLOW_RETURN };

/// Evaluators that hand the value over in a register; the node's data type names the member in use. A vector's is its
/// first element.
union Evaluate {
    signed char (*c)(Node*);
    int (*i)(Node*);
    float (*f)(Node*);
    double (*d)(Node*);
    void* (*p)(Node*);
};

enum { DIVISOR_UNCHECKED, DIVISOR_FIRST, DIVISOR_KEPT };   // KEPT: by its chain, in the node's own slot

struct LeafPart {
    void* self;          // CONST, function name: &value
    Symbol* symbol;      // VARIABLE, ARRAY: whose name it is. A function's name is a value, which code can overwrite
    Value converted;     // CONST below a cast: the value in the cast's type
    void* convertedAt;   // and its address
};

struct OperatorPart {
    int32_t opr;   // operator code: token, character, or CAST, NONZERO
    int32_t nOps;
    Node** ops;   // op, or a malloc'd array if there are more than three
    Node* op[3];
    void** at[2];   // place of the first two operands, null if they must be evaluated
    int8_t isVector;
    int8_t isList;      // '=' with a brace list: operand 0 is the target, the others are the elements
    int16_t depth;      // operators below this one along the first operands, counted from the last rung of struct Chain
    int32_t vecSize;    // at least 1
    int32_t vecAlloc;   // elements of the result buffer, 0: owns none. On a static initialiser: 1 once it has run
    int32_t divisor;    // when a checked division evaluates its divisor
    struct Chain* chain;   // null, or this node is a rung of a long chain
};

struct SubarrayPart {
    int32_t* dimPtr;   // size of this level, in the symbol; of a formal's first level its limit
    Node* base;        // ARRAY or SUBARRAY
    Node* index;       // of type int
    void** baseAt;     // &symbol->addr of the array if base is one, else null
    void** indexAt;    // place of the index, null if it must be evaluated
};

struct CallPart {
    Symbol* symbol;   // function, or pointer variable
    int32_t nArgs;
    int32_t mayMove;    // 1: evaluating an argument may resize the array that another one lies in
    Node** args;        // malloc'd
    void** addresses;   // malloc'd, nArgs: where the arguments of the call under way lie
};

/// One record for all kinds. Every node has one result slot: that is why no function may be active twice.
struct Node {
    int16_t type;         // NodeKind
    int16_t dataType;     // of the result
    int32_t parseIndex;   // place in the parse's list of nodes without an owner, -1 once owned (qvt_sci_Node.cpp)
    int32_t line;         // of the source, where the node's text ends

    /// Address of the value: a variable's own memory, so that it can be written through (passing by reference is no
    /// more than that); for an operator `value`; for a vector its first element; null for statements.
    void* (*ex)(Node*);
    Evaluate get;         // the value itself; unset for void
    Flow (*run)(Node*);   // the node as a statement; expressions drop their value and answer FLOW_NEXT

    /// Set if the value can be read in place, *(T*)*place, without a call: &symbol->addr of a scalar variable,
    /// &leaf.self of a constant or function name, &leaf.convertedAt of the constant for its cast. Null for all else.
    /// The symbol's address is read anew each time: it changes with calls and bindings.
    void** place;
    Value value;

    union {
        LeafPart leaf;
        OperatorPart o;
        SubarrayPart sub;
        CallPart call;
    };
};

inline constexpr int CHAIN_STEP = 32;   // small: right operands nest too, each with its own step on the C stack

/// a+b+c+... a million times is a million nodes deep along the first operands. Every CHAIN_STEP-th operator of such a
/// path is a rung: rungs know each other, and the topmost evaluates them from the lowest up, so that the C stack holds
/// no more than one step. Made by NodeSelFuncPtr, freed by NodeDelete; evaluation and meaning:
/// qvt_sci_execute_Chain.cpp.
struct Chain {
    Node* lowest;          // first rung of the chain
    Node* above;           // next rung up, null on the topmost
    int32_t hasDivisors;   // 1: divisions of the chain from here down keep their divisors
    void* (*ex)(Node*);    // the evaluators that the node would have otherwise
    Evaluate get;
};

extern Node dummyNode;   // shared by all empty statements, never deleted (qvt_sci_execute_Select.cpp)

// ---------------------------------------------------------------------------------------------------------------------
// Operators

// How OprDataType types the result.
enum ResultRule {
    RESULT_INT,
    RESULT_INT_SCALAR,   // evaluated with the operands' common type, then an int whatever their shape
    RESULT_DOUBLE,
    RESULT_DOUBLE_SCALAR,   // evaluated with the operands' common type, then a double whatever their shape
    RESULT_LARGER,          // largest type of the operands
    RESULT_LARGER_BRANCH,   // of operands 2 and 3
    RESULT_FIRST,           // first operand's
    RESULT_VOID,
    RESULT_PTR,
    RESULT_RETURN,   // the type of the function being parsed, void without operand
    RESULT_OWN,      // set by its constructor
    RESULT_NONE,     // parses, but there is no such operation
};

// What OprNew makes of vectors among the operands.
enum ShapeRule {
    SHAPE_VECTOR,   // has evaluators for vectors; arrays of unknown size are refused
    SHAPE_SCALAR,   // has none: "operation 'X_' not supported for vectors"
    SHAPE_WHOLE,    // takes arrays as they are; the node itself is a scalar
};

// What OprCorrectTypes does with the operands.
enum OperandRule {
    OPERANDS_AS_ARE,
    OPERANDS_CAST,        // all to the type the node has at this moment
    OPERANDS_TRUTH,       // first by NonZero
    OPERANDS_COND_EXPR,   // first by NonZero, the others cast
    OPERANDS_LOOP,        // the condition by NonZero
    OPERANDS_RETURN,      // to the function's type
    OPERANDS_RESIZE,
    OPERANDS_EXEC,
    OPERANDS_FUNCADDR,
    OPERANDS_FUNCCALL,
    OPERANDS_IQSORT,
    OPERANDS_PRINTF,    // format first
    OPERANDS_FPRINTF,   // stream, format
    OPERANDS_SPRINTF,   // text, format
};

// ORDER OPERATORS   code (token of qvt_sci.y), family of evaluators, OprName, OprCode, shape, result, operands.
// In a template `$` marks an operand. The evaluators' own tables (qvt_sci_execute*.cpp) are keyed by the same codes.
#define QVT_SCI_OPERATORS(ROW)                                                                                         \
    ROW('!', NOT, "!", "!$", SHAPE_SCALAR, RESULT_INT, OPERANDS_TRUTH)                                                 \
    ROW('%', IMOD, "%", "$ % $", SHAPE_SCALAR, RESULT_INT, OPERANDS_CAST)                                              \
    ROW('*', TIMES, "*", "$ * $", SHAPE_VECTOR, RESULT_LARGER, OPERANDS_CAST)                                          \
    ROW('+', PLUS, "+", "($ + $)", SHAPE_VECTOR, RESULT_LARGER, OPERANDS_CAST)                                         \
    ROW('-', MINUS, "-", "($ - $)", SHAPE_VECTOR, RESULT_LARGER, OPERANDS_CAST)                                        \
    ROW('.', DOT_PROD, ".", "($ . $)", SHAPE_VECTOR, RESULT_DOUBLE_SCALAR, OPERANDS_CAST)                              \
    ROW('/', OVER, "/", "$ / $", SHAPE_VECTOR, RESULT_LARGER, OPERANDS_CAST)                                           \
    ROW(';', COLON, ";", "$;\n$;\n", SHAPE_WHOLE, RESULT_INT, OPERANDS_AS_ARE)                                         \
    ROW('<', LT, "<", "$ < $", SHAPE_SCALAR, RESULT_INT_SCALAR, OPERANDS_CAST)                                         \
    ROW('=', ASS, "=", "$ = $", SHAPE_VECTOR, RESULT_FIRST, OPERANDS_CAST)                                             \
    ROW('>', GT, ">", "$ > $", SHAPE_SCALAR, RESULT_INT_SCALAR, OPERANDS_CAST)                                         \
    ROW('?', COND_EXPR_OPR, "?", nullptr, SHAPE_SCALAR, RESULT_LARGER_BRANCH, OPERANDS_COND_EXPR)                      \
    ROW('^', CROSS_PROD, "^", "($ ^ $)", SHAPE_VECTOR, RESULT_LARGER, OPERANDS_CAST)                                   \
    ROW('|', MAG, "|", "|$|", SHAPE_VECTOR, RESULT_DOUBLE_SCALAR, OPERANDS_AS_ARE)                                     \
    ROW(STATIC, STATIC, "STATIC", nullptr, SHAPE_WHOLE, RESULT_VOID, OPERANDS_AS_ARE)                                  \
    ROW(RESIZE, RESIZE, "RESIZE", "resize(", SHAPE_WHOLE, RESULT_INT_SCALAR, OPERANDS_RESIZE)                          \
    ROW(EXEC, EXEC, "EXEC", "exec(", SHAPE_WHOLE, RESULT_INT_SCALAR, OPERANDS_EXEC)                                    \
    ROW(FUNCADDR, FUNCADDR, "FUNCADDR", "func_addr(", SHAPE_WHOLE, RESULT_PTR, OPERANDS_FUNCADDR)                      \
    ROW(FUNCCALL, FUNCCALL, "FUNCCALL", "func_call(", SHAPE_WHOLE, RESULT_DOUBLE, OPERANDS_FUNCCALL)                   \
    ROW(IQSORT, IQSORT, "IQSORT", "iqsort(", SHAPE_WHOLE, RESULT_INT_SCALAR, OPERANDS_IQSORT)                          \
    ROW(BREAK, BREAK, "BREAK", "break", SHAPE_WHOLE, RESULT_INT, OPERANDS_AS_ARE)                                      \
    ROW(CONTINUE, CONTINUE, "CONTINUE", "continue", SHAPE_WHOLE, RESULT_INT, OPERANDS_AS_ARE)                          \
    ROW(RETURN, RETURN, "RETURN", "return(", SHAPE_WHOLE, RESULT_RETURN, OPERANDS_RETURN)                              \
    ROW(FOR, FOR, "FOR", "for($; $; $){\n$}", SHAPE_WHOLE, RESULT_VOID, OPERANDS_LOOP)                                 \
    ROW(WHILE, WHILE, "WHILE", "while($){\n$}", SHAPE_WHOLE, RESULT_VOID, OPERANDS_LOOP)                               \
    ROW(IF, IF, "IF", "if($) $", SHAPE_WHOLE, RESULT_VOID, OPERANDS_LOOP)                                              \
    ROW(PRINT, PRINT, "PRINT", "print ", SHAPE_WHOLE, RESULT_INT, OPERANDS_AS_ARE)                                     \
    ROW(PRINTF, PRINTF, "PRINTF", "printf(", SHAPE_WHOLE, RESULT_INT, OPERANDS_PRINTF)                                 \
    ROW(FPRINTF, FPRINTF, "FPRINTF", "fprintf(", SHAPE_WHOLE, RESULT_INT, OPERANDS_FPRINTF)                            \
    ROW(SPRINTF, SPRINTF, "SPRINTF", "sprintf(", SHAPE_WHOLE, RESULT_INT, OPERANDS_SPRINTF)                            \
    ROW(SCANF, SCANF, "SCANF", "scanf(", SHAPE_WHOLE, RESULT_INT, OPERANDS_PRINTF)                                     \
    ROW(FSCANF, FSCANF, "FSCANF", "fscanf(", SHAPE_WHOLE, RESULT_INT, OPERANDS_FPRINTF)                                \
    ROW(SSCANF, SSCANF, "SSCANF", "sscanf(", SHAPE_WHOLE, RESULT_INT, OPERANDS_SPRINTF)                                \
    ROW(ADD, ADD, "ADD", "$ += $", SHAPE_VECTOR, RESULT_FIRST, OPERANDS_CAST)                                          \
    ROW(SUB, SUB, "SUB", "$ -= $", SHAPE_VECTOR, RESULT_FIRST, OPERANDS_CAST)                                          \
    ROW(MULT, MULT, "MULT", "$ *= $", SHAPE_VECTOR, RESULT_FIRST, OPERANDS_CAST)                                       \
    ROW(DIV, DIV, "DIV", "$ /= $", SHAPE_VECTOR, RESULT_FIRST, OPERANDS_CAST)                                          \
    ROW(OR, OR, "OR", "$ || $", SHAPE_SCALAR, RESULT_INT, OPERANDS_CAST)                                               \
    ROW(AND, AND, "AND", "$ && $", SHAPE_SCALAR, RESULT_INT, OPERANDS_CAST)                                            \
    ROW(GE, GE, "GE", "$ >= $", SHAPE_SCALAR, RESULT_INT_SCALAR, OPERANDS_CAST)                                        \
    ROW(LE, LE, "LE", "$ <= $", SHAPE_SCALAR, RESULT_INT_SCALAR, OPERANDS_CAST)                                        \
    ROW(EQ, EQ, "EQ", "$ == $", SHAPE_SCALAR, RESULT_INT_SCALAR, OPERANDS_CAST)                                        \
    ROW(NE, NE, "NE", "$ != $", SHAPE_SCALAR, RESULT_INT_SCALAR, OPERANDS_CAST)                                        \
    ROW(POWER, POWER, "**", "($ ** $)", SHAPE_SCALAR, RESULT_DOUBLE, OPERANDS_CAST)                                    \
    ROW(UPLUS, UPLUS, "UPLUS", "+$", SHAPE_SCALAR, RESULT_NONE, OPERANDS_AS_ARE)                                       \
    ROW(UMINUS, UMINUS, "UMINUS", "-$", SHAPE_SCALAR, RESULT_FIRST, OPERANDS_AS_ARE)                                   \
    ROW(INC_PRE, INC_PRE, "INC_PRE", "++$", SHAPE_SCALAR, RESULT_FIRST, OPERANDS_AS_ARE)                               \
    ROW(DEC_PRE, DEC_PRE, "DEC_PRE", "--$", SHAPE_SCALAR, RESULT_FIRST, OPERANDS_AS_ARE)                               \
    ROW(INC, INC, "INC", "$++", SHAPE_SCALAR, RESULT_FIRST, OPERANDS_AS_ARE)                                           \
    ROW(DEC, DEC, "DEC", "$--", SHAPE_SCALAR, RESULT_FIRST, OPERANDS_AS_ARE)                                           \
    ROW(CAST, CAST, "CAST", "$", SHAPE_WHOLE, RESULT_OWN, OPERANDS_AS_ARE)                                             \
    ROW(NONZERO, NONZERO, "NONZERO", "$ != 0", SHAPE_WHOLE, RESULT_INT, OPERANDS_AS_ARE)

/// One row of the table, for those who look it up by code.
struct Operator {
    int code;
    const char* family;   // "PLUS_": with "ex" before and a type behind it is the evaluator's name
    const char* name;
    const char* text;   // template; null: none
    ShapeRule shape;
    ResultRule result;
    OperandRule operands;
};

// qvt_sci_Type.cpp
const Operator* FindOperator(int opr);   // null if there is none; by code in constant time
const char* OprName(int opr);            // "?" if there is none
const char* OprCode(const Node* node);   // template; "?(" if there is none
const char* NodeTypeName(const Node* node);
int OprDataType(const Node* node);
void OprCorrectTypes(Node* node);
int NodeIsVector(const Node* node);
int NodeVecSize(const Node* node);   // elements, negative if unknown; a dynamic array's present ones
/// Conversions that there are none of are errors by yyerror; if that returns (code is running), so does the node.
/// A pointer cast to int stays the same node, of pointer type: its value as an int is the low half. Nodes of pointer
/// type therefore all have get.p = PointerOf, which reads through ex, and get.i = LowHalfOf once cast to int.
Node* CastNew(int dataType, Node* node);
Node* CastTo(int dataType, Node* node);   // the node itself if nothing is to be done
/// The same where a single number is wanted: an array is refused though it be of that type.
Node* NumberTo(int dataType, Node* node);
Node* ArgumentTo(const Symbol* formal, Node* node);
void* PointerOf(Node* node);
int LowHalfOf(Node* node);
Node* NonZeroNew(Node* node);
Node* NonZero(Node* node);

// qvt_sci_Node.cpp. Constructors end in NodeSelFuncPtr.
Node* NodeNew(NodeKind kind, int dataType, const char* noMemory = "out of memory");   // zeroed, without evaluators
Node* ConNew(int dataType, Value value);
Node* VarNew(const char* name);
Node* SubarrNew(Node* base, Node* index);
Node* TextNew(char* text);              // takes over a malloc'd text
Node* OprNew(int opr, int nOps, ...);   // Node* each
Node* OprNewList(int opr, int nOps, Node* const* list);
Node* OprNewListAss(Node* target, int n, Node* const* list);
Node* FuncCallNew(const char* name, int nArgs, Node* const* args);
Node* AllocNew(Symbol* array);
Node* FreeNew(Symbol* array);
Node* InternalPointerNodeNew(Namespace* ns);

/// Statements one after the other: one ';' node with any number of operands, so that a million of them are a loop. It
/// stands for, and prints as, the nested pairs ((a; b); c). SequenceNew makes a pair; SequenceAppend puts `second` into
/// `first` if that is a sequence already. Either may be null: the result is then the other. A sequence as last operand
/// is run without recursion: exit code nests to the right.
Node* SequenceNew(Node* first, Node* second);
Node* SequenceAppend(Node* first, Node* second);

void NodeDelete(Node* node);                     // the tree; null and dummyNode are passed over
void NodeDeleteExcept(Node* node, Node* stop);   // the tree, but for the subtree `stop`
void NodesKeep(Node* tree);                      // the tree has an owner now: a failed parse leaves it alone
void NodesKeepAll();                             // all nodes made by this parse have
void NodesDropUnowned();                         // frees what a failed parse left without an owner

// qvt_sci_Print.cpp
void NodePrint(const Node* node);
void NodePrintTree(const Node* node, int depth, const char* label);
void NodePrintCode(const Node* node, int depth, const char* label);

// ---------------------------------------------------------------------------------------------------------------------
// Symbols

enum Qualifier { NO_QUALIFIER, EXTERN_QUALIFIER, FORMAL_QUALIFIER, STATIC_QUALIFIER };
enum SymbolKind { VARIABLE_SYMBOL, ARRAY_SYMBOL, FUNCTION_SYMBOL };

struct FunctionPart {
    Namespace* ns;   // formals and locals; owned
    int32_t nArgs;
    int32_t active;         // 1 while it runs: guards against recursion
    Symbol** args;          // the formals; the array is owned
    Node* body;             // null until defined
    void (*exFun)(Node*);   // calls the native at addr and stores returnValue; null for a defined function
};

struct ArrayPart {
    int32_t nDims;
    int32_t dims[MAX_ARRAY_DIMENSIONS];   // the first is -1 when unspecified
    int64_t size;                         // elements: the product of dims; fits an int
    Node* dimNode;                        // int expression of a dynamic first dimension, or null
    int64_t length;                       // formal: elements of the array last passed in, -1 unknown
    int32_t limit;                        // formal: dims[0], or the rows that were passed if they are known to be fewer
    int64_t hostLength;   // formal: elements of what the host passes (qvt_sci_BindArgLength), -1 unknown
};

/// A string literal is an array whose name begins like this: no source can spell it.
inline constexpr char TEXT_CONSTANT[] = "0const_char_";

struct Symbol {
    char* name;           // owned
    int32_t qualifier;    // Qualifier
    int32_t symbolType;   // SymbolKind
    int32_t dataType;
    char referenced;   // 1 once a node refers to it
    void* addr;        // of the value; of the native code of an extern function
    Value own;         // memory of a scalar that is neither extern nor formal: addr points here unless a host bound it
    void* memory;      // malloc'd memory of such an array, and of a string constant; addr points to it likewise
    Symbol* next;      // in the table's list
    union {
        FunctionPart func;
        ArrayPart arr;
    };
};

struct LinkedSymPtr {
    Symbol* symbol;   // null in the head of a bucket: the chain begins at its next
    LinkedSymPtr* next;
};

struct SymHashTab {
    int32_t size;   // buckets, a prime
    int32_t nSymbols;
    LinkedSymPtr* table;
};

struct Symtab {
    Symbol* first;      // list; null once the symbols live in hash
    SymHashTab* hash;   // null while the list is short
};

struct Namespace {
    Symtab* symtab;   // owned
    Node* initCode;   // owned unless borrowsCode is set; null if there is none
    Node* exitCode;
    int32_t borrowsCode;    // 1: a failed parse left the codes of the namespace above here
    int32_t isLocal;        // 1: made for a function
    Symbol* function;       // that function, which owns this; null before its declaration is complete
    Namespace* parent;      // null for the root
    Namespace* locals;      // owned: namespaces made for functions that have no owner, as after a failed parse
    Namespace* nextLocal;   // link of that list
};

extern Namespace* rootNamespace;
extern Namespace* gActiveNamespace;   // declarations go into it, lookups start from it
extern int qvtsci_allow_symbol_redefinition;

// qvt_sci_aux_Symbols.cpp
Symbol* SymbolNew(const char* name, int qualifier, int symbolType, int dataType);
void SymbolDelete(Symbol* symbol);    // with its memory, a function with its namespace
bool IsSymbol(const void* pointer);   // a symbol that there is: a FUNC*, of func_addr also one of another kind
bool IsFunction(const void* pointer);
void SymbolPrint(const Symbol* symbol);
void SymbolPrintDecl(const Symbol* symbol);
int SymbolIsInvalid(const Symbol* symbol);
Symtab* SymtabNew();
void SymtabDelete(Symtab* symtab);   // with its symbols
void SymtabAdd(Symtab* symtab, Symbol* symbol);
Symbol* SymtabFind(const Symtab* symtab, const char* name);
Symbol* SymtabLastSymbol(const Symtab* symtab);   // of the list
void SymtabDeleteAfter(Symtab* symtab, Symbol* last);
int SymtabNumUnboundExtern(const Symtab* symtab);
int SymtabIsInvalid(const Symtab* symtab);
void SymtabPrint(const Symtab* symtab);
void SymtabPrintDecls(const Symtab* symtab);
Symbol* FindSymbolRecursively(Namespace* ns, const char* name);   // null if no namespace up to the root has it
int next_prime(int n);
SymHashTab* SymHashTabNew(int size);
void SymHashTabDelete(SymHashTab* tab);   // not the symbols
int SymHashTabIndex(const SymHashTab* tab, const char* name);
void SymHashTabInsert(SymHashTab* tab, Symbol* symbol);
Symbol* SymHashTabFind(const SymHashTab* tab, const char* name);
void SymHashTabPrintInfo(const SymHashTab* tab);

// qvt_sci_aux_Declare.cpp
Symbol* DeclareVar(int qualifier, int dataType, const char* name);
Symbol* DeclareArr(int qualifier, int dataType, const char* name, int nDims, const int* dims, Node* dynNode);
Symbol* DeclareFunc(int dataType, const char* name, int nArgs, Symbol* const* args);
void DefineFunc(Symbol* function, Node* body);
void ForgetDefinitions();     // start of a parse
void TakeBackDefinitions();   // a failed parse: functions defined since its start lose their body again

// qvt_sci_aux_Bind.cpp
void SymbolForget(
    const Symbol* symbol);   // it is about to go: a walk of qvt_sci_NextSymbol does not stand on it any more

// qvt_sci_aux_Namespace.cpp
void CreateRootNamespace();   // if there is none; runs qvt_sci_CreatePredefinedSymbols once
Namespace* NamespaceNew(Namespace* parent);
void NamespaceDelete(Namespace* ns);   // frees trees and symbols; runs nothing
void OpenLocNamespace();               // for the parser: a function's own
void CloseLocNamespace();
void NamespaceGiveTo(Namespace* local, Symbol* function);   // the function owns it from now on

// qvt_sci_aux_Intrinsics.cpp
void qvt_sci_CreatePredefinedSymbols();   // parses qvt_sci_intrinsics() into the active (root) namespace and binds

// ---------------------------------------------------------------------------------------------------------------------
// Parsing: state, one for the process, reset by every parse

extern int curLineNumber;        // from 1; -1: code is running, nothing is being parsed
extern char curLineText[256];    // the current line as scanned so far
extern const char* parsedCode;   // preprocessed text, null when a file is parsed
extern int nSyntaxErrors;        // of this parse
extern char mess[256];           // scratch text of messages
extern jmp_buf syntax_error_jmp_buf;
extern char* qvt_sci_includePathes;   // each directory with "/" and a newline behind it; null if there are none

// qvt_sci_Scan.cpp
int yylex();
void ScannerStart(const char* text, size_t length);   // borrowed until ScannerEnd
void ScannerEnd();
int SourceLine();          // of the token that the parser took last; a carriage return begins none here
void ScannerTextTaken();   // the string literal scanned last has an owner: until then the scanner frees it

/// Reports an error; while parsing it does not return but jumps to syntax_error_jmp_buf. While code runs
/// (curLineNumber -1) it counts, prints "ERROR: " and the message, and returns.
void yyerror(const char* message);
void yyerrorf(const char* format, ...) __attribute__((format(printf, 1, 2)));   // by way of mess, cut to its size

inline constexpr size_t MAX_SOURCE = 8 << 20;   // bytes of a source, expanded; real ones have a few thousand

// qvt_sci_Preprocess.cpp
/// Expands #include and #define in *text (malloc'd, reallocated). 0 on success; on failure the reason has been printed.
int qvt_sci_Preprocess(char** text);

// qvt_sci.y
int yyparse();
extern int yychar;          // the token that the parser holds back, YYEMPTY: none
extern int curReturnType;   // of the function being parsed
void arg_lists_clear();

// qvt_sci.cpp
void NamespaceAddInitCode(Node* code);   // to the active namespace, behind what it has; null adds nothing
void NamespaceAddExitCode(Node* code);   // before what it has

// Blocks that live for one parse (qvt_sci.cpp)
void garbage_add(void* block);
void* garbage_malloc(size_t size);   // calls yyerror when memory is out
void garbage_delete();

/// Messages into a buffer for a while, and back (qvt_sci_aux_Messages.cpp).
struct MessageSink {
    int (*msg)(const char* format, ...);
    void (*flush)();
    char* buffer;
    int room;
};
MessageSink RedirectMessages(char* buffer, int length);
void RestoreMessages(const MessageSink& sink);

/// Reports a failed allocation or a broken promise of the caller, "at <line> in <file>" and "<what> failed!", through
/// qvt_sci_printf and ends the process with status 1. (qvt_sci_aux_Messages.cpp)
[[noreturn]] void qvt_sci_Fail(const char* what, int line, const char* file);
#define QVT_SCI_CHECK(what)                                                                                            \
    do {                                                                                                               \
        if (!(what)) qvt_sci_Fail(#what, __LINE__, __FILE__);                                                          \
    } while (0)

// ---------------------------------------------------------------------------------------------------------------------
// Running

extern Value returnValue;   // of the latest function
extern int jumpDep;         // loops and calls under way, minus 1: -1 when idle
extern Symbol* callStack[MAX_JUMP_DEP];
extern int stackDep;   // functions on it
bool IsOnStack(const Symbol* function);
extern Node* currentNode;   // last marked as executing, by the nodes that can fail

// qvt_sci_execute_Select.cpp
/// Sets ex, get, run, place and (OPERATOR) at of a node whose type, data type, operands and shape are complete.
/// Unknown and unsupported combinations are errors of the parse.
void NodeSelFuncPtr(Node* node);

// qvt_sci_execute.cpp
/// Runs a function with its formals as they are bound: pushes it on callStack, runs the body, restarts it if that
/// ended in a break or continue outside of a loop, leaves the result in returnValue.
void funcCall(Symbol* function);
/// A call through a pointer: checks the count, casts the arguments to the formals' types, converts the result.
double funcPtrCall(const char* pointerName, Symbol* function, int nArgs, Node** args);
/// An error that no run survives ("MAX_JUMP_DEP exceeded", memory): prints "ERROR: <message>", raises signal 11 and
/// ends the process with status 1 if that returns.
[[noreturn]] void RunFail(const char* message);
/// Flushes the messages, then qvt_sci_raise(signal).
void RaiseSignal(int signal);

// qvt_sci_execute_Array.cpp
/// A formal array refers to so many elements, -1 unknown.
void FormalRefersTo(Symbol* formal, int64_t elements);

// qvt_sci_execute_Exec.cpp
/// Sorts indices by a function of the language: int compare(int i, int j). False, with nothing done, if this is none;
/// what is not null is reported then.
bool SortByFunction(int* order, int n, Symbol* compare);

// qvt_sci_execute_Native.cpp
void (*SymbolGetExFun(int dataType))(Node*);   // yyerror "unknown function data type" if there is none
/// Elements from address, the value of array or sub-array node `array`, to the end of the array, in an array of texts
/// to the end of the row; -1 unknown, 1 for a scalar variable. What natives and the print and scan family may write.
int64_t NodeRoom(const Node* array, const void* address);

// qvt_sci_aux_PrintScan.cpp: the evaluators of print and of the printf and scanf families, on the whole OPERATOR node;
// the result is the operator's.
int RunPrint(Node* node);
int RunPrintScan(Node* node);
void ForgetFormats();   // of statements that a jump of the host left; for qvt_sci_AbandonRun
