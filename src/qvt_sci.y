/* The formula language: its grammar, and what each construct means in terms of nodes (qvt_sci_Node.cpp) and
   declarations (qvt_sci_aux_Declare.cpp).

   A program is a list of declarations, function prototypes and function definitions. Within a function all local
   declarations stand before the first statement; blocks open no scope. Types are known as soon as an expression is
   reduced, so that conversions are put in while the tree grows.

   Errors leave yyparse by longjmp (yyerror): the parser's own stack is a block of the parse's garbage list, and what
   the actions have built so far is freed by the caller. */

%code {
#include "qvt_sci_Internal.h"

#include <algorithm>

#define YYMALLOC garbage_malloc
#define YYFREE(block) static_cast<void>(block)
#define YYMAXDEPTH 5000   /* symbols under way: bounds how deep code can nest, and so the C stack of its evaluation */
#define YY_(text) ParserMessage(text)

static const char* ParserMessage(const char* text);

/* State between the actions; qvt_sci_reset_parser_after_syntax_error brings all of it back to this. */
static int curDataType = VOID_TYPE;
static int curQual = NO_QUALIFIER;
int curReturnType = VOID_TYPE;
static int nArrDim = 0;
static int arrDims[MAX_ARRAY_DIMENSIONS];
static Node* dynArrDim = nullptr;   /* a dynamic first dimension */
static Node* initNode = nullptr;    /* initialisers and allocations of the top-level item under way */
static Node* exitNode = nullptr;    /* and what undoes them */

/* Lists of arguments under way, one above the other; a null stands before the first element of each. */
static Pile<void*> arg_lists = {};

static void arg_list_new(void* first);
static void arg_list_add(void* element);
static void* const* arg_list();
static int arg_list_size();
static void arg_lists_pop();

static void MoveCodesToNamespace();
static Symbol* EndFunctionHeader(int dataType, const char* name);
static void EndFunction(Symbol* function, Node* statements);
static void BeginFormals(int returnType);
static void CheckHasValue(int dataType);
static void DeclareVariable(const char* name, Node* value);
static void DeclareArray(const char* name);
static void DeclareFormal(const char* name, bool isArray);
static void AddInitialiser(Node* assignment);
static void AddFixedDimension(int size);
static void AddDynamicDimension(Node* size);
static Node* ListOperator(int opr);
static Node* ListAssignment(Node* target);
static Node* CallByName(const char* name);
static Node* CallThroughElement(Node* element);
static Node* Constant(int dataType, Value value);
}

%code requires {
struct Node;
struct Symbol;
}

%union {
    char character;
    int integer;
    double floating;
    char* text;          /* malloc'd */
    const char* name;    /* lives for this parse */
    int dataType;
    Node* node;
    Symbol* symbol;
}

%token EXTERN 257 STATIC 258 NULL_T 259 EOF_T 260
%token PTR_T 261
%token RESIZE 262 EXEC 263 FUNCADDR 264 FUNCCALL 265 IQSORT 266
%token BREAK 267 CONTINUE 268 RETURN 269
%token <text> TEXT_LIT 270
%token <character> CHAR 271
%token <integer> INTEGER 272
%token <floating> FLOATING 273
%token <name> SYMBOL 274
%token FOR 275 WHILE 276 IF 277
%token PRINT 278 PRINTF 279 FPRINTF 280 SPRINTF 281 SCANF 282 FSCANF 283 SSCANF 284
%token IFX 285 ELSE 286
%token ADD 287 SUB 288 MULT 289 DIV 290
%token OR 291 AND 292 GE 293 LE 294 EQ 295 NE 296 POWER 297
%token UPLUS 298 UMINUS 299 INC_PRE 300 DEC_PRE 301 INC 302 DEC 303
%token <dataType> DATA_TYPE 304
%token CAST 305 NONZERO 306   /* operators that only the type rules write */

%type <dataType> type cast_prefix
%type <symbol> function_header
%type <node> statements statement_list statement expression element lvalue text

%expect 0

/* Lowest first. PRINT's list takes all that follows, commas too, so that `print a, b + c` prints two things wherever it
   stands; a single number between brackets is a fixed dimension, not an expression. Assignments need no associativity:
   only an lvalue can stand on their left. */
%precedence IFX
%precedence ELSE
%precedence PRINT INTEGER
%precedence ',' ']'
%precedence '=' ADD SUB MULT DIV
%left '?' ':'
%left OR
%left AND
%left EQ NE '<' '>' GE LE
%left '+' '-'
%left '*' '/' '%' '.' '^'
%left POWER
%precedence UPLUS UMINUS '!' CAST

%%

program:
    %empty
    | program top_item                              { MoveCodesToNamespace(); }
    ;

top_item:
    declaration
    | function_prototype
    | function_definition
    ;

/* ------------------------------------------------------------------------------------------------------ functions */

function_prototype:
    function_header ';'                             { CloseLocNamespace(); }
    ;

function_definition:
    function_header '{' local_declarations statements '}'
                                                    { EndFunction($1, $4); }
    ;

function_header:
    type SYMBOL '(' ')'                             { BeginFormals($1); $$ = EndFunctionHeader($1, $2); }
    | type SYMBOL '(' { BeginFormals($1); } formal_list ')'
                                                    { $$ = EndFunctionHeader($1, $2); }
    ;

formal_list:
    type formal                                     { CheckHasValue($1); }
    | formal_list ',' type formal                   { CheckHasValue($3); }
    ;

formal:
    SYMBOL                                          { DeclareFormal($1, false); }
    | SYMBOL dimensions                             { DeclareFormal($1, true); }
    ;

local_declarations:
    %empty
    | local_declarations declaration
    ;

/* --------------------------------------------------------------------------------------------------- declarations */

declaration:
    type declarator_list ';'                        { CheckHasValue($1); }
    | storage_class type declarator_list ';'        { CheckHasValue($2); curQual = NO_QUALIFIER; }
    ;

storage_class:
    EXTERN                                          { curQual = EXTERN_QUALIFIER; }
    | STATIC                                        { curQual = STATIC_QUALIFIER; }
    ;

declarator_list:
    declarator
    | declarator_list ',' declarator
    ;

declarator:
    SYMBOL                                          { DeclareVariable($1, nullptr); }
    | SYMBOL '=' expression                         { DeclareVariable($1, $3); }
    | SYMBOL dimensions                             { DeclareArray($1); }
    | SYMBOL dimensions '=' '{' { DeclareArray($1); } expression_list '}'
                                                    { AddInitialiser(ListAssignment(VarNew($1))); }
    | SYMBOL dimensions '=' { DeclareArray($1); } expression
                                                    { AddInitialiser(OprNew('=', 2, VarNew($1), $5)); }
    ;

dimensions:
    dimension
    | dimensions dimension
    ;

dimension:
    '[' INTEGER ']'                                 { AddFixedDimension($2); }
    | '[' ']'                                       { AddFixedDimension(-1); }
    | '[' expression ']'                            { AddDynamicDimension($2); }
    ;

type:
    DATA_TYPE                                       { $$ = curDataType = $1; }
    | PTR_T '*'                                     { $$ = curDataType = PTR_TYPE; }
    ;

/* ----------------------------------------------------------------------------------------------------- statements */

statements:
    %empty                                          { $$ = &dummyNode; }
    | statement_list
    ;

statement_list:
    statement
    | statement_list statement                      { $$ = SequenceAppend($1, $2); }
    ;

statement:
    expression ';'
    | WHILE '(' expression ')' statement            { $$ = OprNew(WHILE, 2, $3, $5); }
    | FOR '(' ';' ';' ')' statement                 { $$ = OprNew(WHILE, 2, Constant(INT_TYPE, {.i = 1}), $6); }
    | FOR '(' expression ';' expression ';' expression ')' statement
                                                    { $$ = OprNew(FOR, 4, $3, $5, $7, $9); }
    | IF '(' expression ')' statement  %prec IFX    { $$ = OprNew(IF, 2, $3, $5); }
    | IF '(' expression ')' statement ELSE statement
                                                    { $$ = OprNew(IF, 3, $3, $5, $7); }
    | '{' statements '}'                            { $$ = $2; }
    | BREAK ';'                                     { $$ = OprNew(BREAK, 0); }
    | CONTINUE ';'                                  { $$ = OprNew(CONTINUE, 0); }
    | RETURN ';'                                    { $$ = OprNew(RETURN, 0); }
    | RETURN expression ';'                         { $$ = OprNew(RETURN, 1, $2); }
    | ';'                                           { $$ = &dummyNode; }
    ;

/* ---------------------------------------------------------------------------------------------------- expressions */

expression_list:
    expression  %prec PRINT                         { arg_list_new($1); }
    | expression_list ',' expression  %prec PRINT   { arg_list_add($3); }
    ;

element:
    SYMBOL '[' expression ']'                       { $$ = SubarrNew(VarNew($1), $3); }
    | element '[' expression ']'                    { $$ = SubarrNew($1, $3); }
    ;

lvalue:
    SYMBOL                                          { $$ = VarNew($1); }
    | element
    ;

cast_prefix:
    '(' { $<dataType>$ = curDataType; } type ')'    { $$ = $3; curDataType = $<dataType>2; }
    ;

text:
    TEXT_LIT                                        { $$ = TextNew($1); }
    ;

expression:
    CHAR                                            { $$ = Constant(CHAR_TYPE, {.c = static_cast<signed char>($1)}); }
    | INTEGER                                       { $$ = Constant(INT_TYPE, {.i = $1}); }
    | FLOATING                                      { $$ = Constant(DOUBLE_TYPE, {.d = $1}); }
    | NULL_T                                        { $$ = Constant(PTR_TYPE, {.p = nullptr}); }
    | EOF_T                                         { $$ = Constant(INT_TYPE, {.i = -1}); }
    | text
    | SYMBOL                                        { $$ = VarNew($1); }
    | element
    | SYMBOL '(' ')'                                { $$ = FuncCallNew($1, 0, nullptr); }
    | SYMBOL '(' expression_list ')'                { $$ = CallByName($1); }
    | element '(' expression_list ')'               { $$ = CallThroughElement($1); }
    | '(' expression ')'                            { $$ = $2; }
    | '|' expression '|'                            { $$ = OprNew('|', 1, $2); }
    | cast_prefix expression  %prec CAST            { $$ = CastTo($1, $2); }

    | '+' expression  %prec UPLUS                   { $$ = OprNew(UPLUS, 1, $2); }
    | '-' expression  %prec UMINUS                  { $$ = OprNew(UMINUS, 1, $2); }
    | '!' expression                                { $$ = OprNew('!', 1, $2); }
    | INC lvalue                                    { $$ = OprNew(INC_PRE, 1, $2); }
    | DEC lvalue                                    { $$ = OprNew(DEC_PRE, 1, $2); }
    | lvalue INC                                    { $$ = OprNew(INC, 1, $1); }
    | lvalue DEC                                    { $$ = OprNew(DEC, 1, $1); }

    | expression POWER expression                   { $$ = OprNew(POWER, 2, $1, $3); }
    | expression '*' expression                     { $$ = OprNew('*', 2, $1, $3); }
    | expression '/' expression                     { $$ = OprNew('/', 2, $1, $3); }
    | expression '%' expression                     { $$ = OprNew('%', 2, $1, $3); }
    | expression '.' expression                     { $$ = OprNew('.', 2, $1, $3); }
    | expression '^' expression                     { $$ = OprNew('^', 2, $1, $3); }
    | expression '+' expression                     { $$ = OprNew('+', 2, $1, $3); }
    | expression '-' expression                     { $$ = OprNew('-', 2, $1, $3); }
    | expression EQ expression                      { $$ = OprNew(EQ, 2, $1, $3); }
    | expression NE expression                      { $$ = OprNew(NE, 2, $1, $3); }
    | expression '<' expression                     { $$ = OprNew('<', 2, $1, $3); }
    | expression '>' expression                     { $$ = OprNew('>', 2, $1, $3); }
    | expression LE expression                      { $$ = OprNew(LE, 2, $1, $3); }
    | expression GE expression                      { $$ = OprNew(GE, 2, $1, $3); }
    | expression AND expression                     { $$ = OprNew(AND, 2, $1, $3); }
    | expression OR expression                      { $$ = OprNew(OR, 2, $1, $3); }
    | expression '?' expression ':' expression      { $$ = OprNew('?', 3, $1, $3, $5); }

    | lvalue '=' expression                         { $$ = OprNew('=', 2, $1, $3); }
    | lvalue '=' '{' expression_list '}'            { $$ = ListAssignment($1); }
    | lvalue ADD expression                         { $$ = OprNew(ADD, 2, $1, $3); }
    | lvalue SUB expression                         { $$ = OprNew(SUB, 2, $1, $3); }
    | lvalue MULT expression                        { $$ = OprNew(MULT, 2, $1, $3); }
    | lvalue DIV expression                         { $$ = OprNew(DIV, 2, $1, $3); }

    | PRINT expression_list                         { $$ = ListOperator(PRINT); }
    | PRINTF '(' expression_list ')'                { $$ = ListOperator(PRINTF); }
    | FPRINTF '(' expression_list ')'               { $$ = ListOperator(FPRINTF); }
    | SPRINTF '(' expression_list ')'               { $$ = ListOperator(SPRINTF); }
    | SCANF '(' expression_list ')'                 { $$ = ListOperator(SCANF); }
    | FSCANF '(' expression_list ')'                { $$ = ListOperator(FSCANF); }
    | SSCANF '(' expression_list ')'                { $$ = ListOperator(SSCANF); }

    | RESIZE '(' expression ',' expression ')'      { $$ = OprNew(RESIZE, 2, $3, $5); }
    | EXEC '(' expression ')'                       { $$ = OprNew(EXEC, 2, $3,
                                                                  InternalPointerNodeNew(gActiveNamespace)); }
    | FUNCADDR '(' expression ')'                   { $$ = OprNew(FUNCADDR, 2, $3,
                                                                  InternalPointerNodeNew(gActiveNamespace)); }
    | FUNCCALL '(' expression_list ')'              { $$ = ListOperator(FUNCCALL); }
    | IQSORT '(' expression ',' expression ',' expression ')'
                                                    { $$ = OprNew(IQSORT, 4, $3, $5, $7,
                                                                  InternalPointerNodeNew(gActiveNamespace)); }
    ;

%%

static const char* ParserMessage(const char* text)
{
    return std::strcmp(text, "memory exhausted") == 0 ? "yacc stack overflow" : text;
}

static Node* Constant(int dataType, Value value) { return ConNew(dataType, value); }

// ---------------------------------------------------------------------------------------------------------------------
// Lists of arguments

static void arg_list_add(void* element)
{
    if (!arg_lists.Push(element)) yyerror("out of memory");
}

static void arg_list_new(void* first)
{
    arg_list_add(nullptr);
    arg_list_add(first);
}

// The elements of the top list.
static int arg_list_size()
{
    int size = 0;
    while (arg_lists.items[arg_lists.count - 1 - size_t(size)]) ++size;
    return size;
}

static void* const* arg_list() { return arg_lists.items + arg_lists.count - size_t(arg_list_size()); }

static void arg_lists_pop()
{
    while (arg_lists.Pop()) {
    }
}

void arg_lists_clear() { arg_lists.count = 0; }

static Node* const* NodesOfList() { return reinterpret_cast<Node* const*>(arg_list()); }

// ---------------------------------------------------------------------------------------------------------------------
// Expressions over the top list, which they consume

static Node* ListOperator(int opr)
{
    Node* node = OprNewList(opr, arg_list_size(), NodesOfList());
    arg_lists_pop();
    return node;
}

static Node* ListAssignment(Node* target)
{
    Node* node = OprNewListAss(target, arg_list_size(), NodesOfList());
    arg_lists_pop();
    return node;
}

static Node* CallByName(const char* name)
{
    Node* node = FuncCallNew(name, arg_list_size(), NodesOfList());
    arg_lists_pop();
    return node;
}

// func_call with the element in front of the list.
static Node* CallThroughElement(Node* element)
{
    const size_t size = size_t(arg_list_size());
    arg_list_add(element);
    void** const end = arg_lists.items + arg_lists.count;
    std::rotate(end - size - 1, end - 1, end);
    return ListOperator(FUNCCALL);
}

// ---------------------------------------------------------------------------------------------------------------------
// Declarations

static void AddInitialiser(Node* assignment)
{
    if (curQual == STATIC_QUALIFIER) assignment = OprNew(STATIC, 1, assignment);
    initNode = SequenceAppend(initNode, assignment);
}

static void CheckHasValue(int dataType)
{
    if (dataType == VOID_TYPE) yyerror("only functions can be of type void");
}

static void DeclareVariable(const char* name, Node* value)
{
    DeclareVar(curQual, curDataType, name);
    if (value) AddInitialiser(OprNew('=', 2, VarNew(name), value));
}

static void ResetDimensions()
{
    nArrDim = 0;
    dynArrDim = nullptr;
}

static void AddDimension(int size)
{
    if (nArrDim == MAX_ARRAY_DIMENSIONS) yyerrorf("array dimension must be <= %d!", MAX_ARRAY_DIMENSIONS);
    arrDims[nArrDim++] = size;
}

static void AddFixedDimension(int size)
{
    if (size == -1 && nArrDim > 0) yyerror("only first array dimension may be ommitted!");
    AddDimension(size);
}

static void AddDynamicDimension(Node* size)
{
    if (nArrDim > 0) yyerror("only first array dimension may be dynamic!");
    AddDimension(1);
    dynArrDim = size;
}

// Arrays whose memory is the host's or the caller's cannot be allocated: an expression as their first dimension tells
// the reader something, the language no more than empty brackets do.
static void ForgetDynamicDimension()
{
    if (!dynArrDim) return;
    NodeDelete(dynArrDim);
    dynArrDim = nullptr;
    arrDims[0] = -1;
}

// Of two dynamic arrays the first is allocated first and freed last. One that is declared anew stays what it was.
static void DeclareArray(const char* name)
{
    if (curQual == EXTERN_QUALIFIER) ForgetDynamicDimension();
    const Symbol* earlier = SymtabFind(gActiveNamespace->symtab, name);
    Symbol* symbol = DeclareArr(curQual, curDataType, name, nArrDim, arrDims, dynArrDim);
    if (dynArrDim && symbol != earlier) {
        initNode = SequenceAppend(initNode, AllocNew(symbol));
        exitNode = SequenceNew(FreeNew(symbol), exitNode);
    }
    ResetDimensions();
}

static void DeclareFormal(const char* name, bool isArray)
{
    if (isArray) ForgetDynamicDimension();
    Symbol* symbol = isArray ? DeclareArr(FORMAL_QUALIFIER, curDataType, name, nArrDim, arrDims, nullptr)
                             : DeclareVar(FORMAL_QUALIFIER, curDataType, name);
    ResetDimensions();
    if (arg_lists.count == 0) {
        arg_list_new(symbol);
    } else {
        arg_list_add(symbol);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Functions

static void BeginFormals(int returnType)
{
    curReturnType = returnType;
    OpenLocNamespace();
    curQual = FORMAL_QUALIFIER;
}

static Symbol* EndFunctionHeader(int dataType, const char* name)
{
    curQual = NO_QUALIFIER;
    const bool hasFormals = arg_lists.count > 0;
    Symbol* const* formals = hasFormals ? reinterpret_cast<Symbol* const*>(arg_list()) : nullptr;
    Symbol* function = DeclareFunc(dataType, name, hasFormals ? arg_list_size() : 0, formals);
    arg_lists_clear();
    return function;
}

static void EndFunction(Symbol* function, Node* statements)
{
    Node* body = SequenceNew(SequenceAppend(initNode, statements), exitNode);
    initNode = nullptr;
    exitNode = nullptr;
    DefineFunc(function, body);
    CloseLocNamespace();
}

// The item is complete: what it has built belongs to the namespace now.
static void MoveCodesToNamespace()
{
    NamespaceAddInitCode(initNode);
    NamespaceAddExitCode(exitNode);
    initNode = nullptr;
    exitNode = nullptr;
    NodesKeepAll();
}

void qvt_sci_reset_parser_after_syntax_error()
{
    curDataType = VOID_TYPE;
    curQual = NO_QUALIFIER;
    curReturnType = VOID_TYPE;
    initNode = nullptr;
    exitNode = nullptr;
    ResetDimensions();
    arg_lists_clear();
}
