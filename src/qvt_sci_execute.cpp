// The state of a run, calls of functions and the reports of errors.
//
// A call binds the callee's formals to where the arguments lie and runs its body. Nothing is pushed but the function's
// symbol, for reports; formals and locals are fields of symbols, so that a function cannot be active twice. Loops and
// calls under way are counted together, and their number is limited.
//
// A host may leave a run by a jump, from its signal handler or from qvt_sci_raise: what a run holds on to therefore
// stands in static variables, and qvt_sci_AbandonRun finds it there.

#include "qvt_sci_execute_Internal.h"

#include <algorithm>
#include <cstdlib>

Value returnValue = {};
int jumpDep = -1;
Symbol* callStack[MAX_JUMP_DEP];
int stackDep = 0;
Node* currentNode = nullptr;

#ifdef KORVO_FUZZ
FuzzSwitches qvt_sci_fuzz = {};
#endif

// ---------------------------------------------------------------------------------------------------------------------
// Reports

// The function and the line of the node that was last marked as executing.
static void ReportPlace()
{
    if (!currentNode || currentNode->line <= 0) return;
    if (stackDep > 0) {
        qvt_sci_msg("in function '%s', line %d\n", callStack[stackDep - 1]->name, currentNode->line);
    } else {
        qvt_sci_msg("in line %d\n", currentNode->line);
    }
}

void RaiseSignal(int signal)
{
    ReportPlace();
    qvt_sci_flush_msg();
    qvt_sci_raise(signal);
}

void EndRun()
{
    qvt_sci_flush_msg();
    std::exit(1);
}

void RunFail(const char* message)
{
    curLineNumber = -1;
    yyerror(message);
    RaiseSignal(11);
    EndRun();
}

void ReportDivisionByZero(int dataType)
{
    qvt_sci_msg("\nqvt_sci_execute:ERROR: %s-division by zero!\n", dataTypeName[dataType]);
    RaiseSignal(8);
}

void ReportDivisionByZeroAt(int dataType, int divisorIndex)
{
    qvt_sci_msg("\nqvt_sci_execute:ERROR: array %s-division by zero at divisor index %d!\n", dataTypeName[dataType],
                divisorIndex);
    RaiseSignal(8);
}

void ReportUnboundVariable(const char* name)
{
    qvt_sci_msg("\nqvt_sci_execute:ERROR: using unbound extern variable '%s'!\n", name);
    RaiseSignal(11);
}

static void ReportUnbound(const char* name)
{
    qvt_sci_msg("\nqvt_sci_execute:ERROR: calling unbound extern function '%s'!\n", name);
    RaiseSignal(4);
}

// ---------------------------------------------------------------------------------------------------------------------
// Where the run is

int qvt_sci_StackDepth() { return stackDep; }

const char* qvt_sci_StackFuncName(int index)
{
    return index >= 0 && index < stackDep ? callStack[index]->name : nullptr;
}

bool IsOnStack(const Symbol* function)
{
    return std::find(callStack, callStack + stackDep, function) != callStack + stackDep;
}

// Hosts get at a function that is active by way of a native that it called.
int qvt_sci_IsRunning(const Symbol* function) { return nativeFrame && IsOnStack(function); }

// ---------------------------------------------------------------------------------------------------------------------
// Running a function

void EnterJump()
{
    if (jumpDep >= MAX_JUMP_DEP - 1) RunFail("MAX_JUMP_DEP exceeded");
    ++jumpDep;
    CountSteps(1);
}

// A return runs the exit code of the function's namespace. A body that ends in any other jump ran into a break or a
// continue outside of a loop, and begins anew: the language has it so, scripts may count on it.
static void RunBody(const Symbol* function)
{
    Node* const body = function->func.body;
    for (;;) {
        const Flow flow = body->run(body);
        if (flow == FLOW_NEXT) return;
        if (flow == FLOW_RETURN) {
            Node* const exitCode = function->func.ns->exitCode;
            if (exitCode) exitCode->run(exitCode);
            return;
        }
        CountSteps(1);
    }
}

void funcCall(Symbol* function)
{
    if (!function->func.body) return ReportUnbound(function->name);
    EnterJump();
    callStack[stackDep++] = function;
    RunBody(function);
    --stackDep;
    --jumpDep;
}

// ---------------------------------------------------------------------------------------------------------------------
// Calls: exFUNCTION_CALL_

// A scalar that is the caller's or the host's: what lies behind it is not known.
static bool IsReference(const Node* argument)
{
    const int qualifier = argument->type == VARIABLE ? argument->leaf.symbol->qualifier : NO_QUALIFIER;
    return qualifier == FORMAL_QUALIFIER || qualifier == EXTERN_QUALIFIER;
}

// All arguments are evaluated, first to last, before the first formal is bound: in f(a, f(b, c)) the inner call binds
// the same formals.
static void CallDefined(Node* node)
{
    const CallPart& call = node->call;
    Symbol* const function = call.symbol;
    EvaluateArguments<false>(call);
    Symbol* const* formals = function->func.args;
    for (int i = 0; i < call.nArgs; ++i) {
        formals[i]->addr = call.addresses[i];
        if (formals[i]->symbolType == ARRAY_SYMBOL) {
            FormalRefersTo(formals[i], NodeRoom(call.args[i], call.addresses[i]));
            if (IsReference(call.args[i])) formals[i]->arr.limit = formals[i]->arr.dims[0];
        }
    }
    currentNode = node;
    if (function->func.active++ != 0) {
        qvt_sci_msg("no recursive call supported (%s)!\n", function->name);
        ReportPlace();
        EndRun();
    }
    funcCall(function);
    if (function->func.active-- != 1) {
        qvt_sci_msg("no recursive call supported!\n");
        EndRun();
    }
}

static void CallExtern(Node* node)
{
    Symbol* const function = node->call.symbol;
    currentNode = node;
    if (!function->addr) return ReportUnbound(function->name);
    function->func.exFun(node);
}

// A function that was declared only when the call was compiled may have been defined since.
static void Call(Node* node) { node->call.symbol->func.exFun ? CallExtern(node) : CallDefined(node); }

static void* CallForAddress(Node* node)
{
    Call(node);
    node->value = returnValue;
    return &node->value;
}

template <class T>
struct CallForValue {
    static T Get(Node* node)
    {
        Call(node);
        return TypeOf<T>::In(returnValue);
    }
};

static Flow RunCall(Node* node)
{
    Call(node);
    return FLOW_NEXT;
}

// ---------------------------------------------------------------------------------------------------------------------
// Calls through pointers: exFUNCTIONPTR_CALL_ and, with the text "pointer" as name, func_call

static Pile<Node*> casts = {};   // made for the arguments of calls through pointers that are under way

static void DropCasts(size_t kept)
{
    while (casts.count > kept) {
        Node* cast = casts.Pop();
        NodeDeleteExcept(cast, cast->o.op[0]);
    }
}

[[noreturn]] static void AbortRun()
{
    ReportPlace();
    qvt_sci_flush_msg();
    std::abort();
}

// The argument as the formal's type wants it; a node that this takes is temporary.
static Node* ArgumentFor(const Symbol* function, int index, Node* argument, const char* pointerName)
{
    const Symbol* formal = function->func.args[index];
    Node* const cast = ArgumentTo(formal, argument);
    if (nSyntaxErrors > 0) {
        qvt_sci_msg(
            "\nqvt_sci_execute:FATAL: wrong type '%s' instead of '%s' of argument %d of function '%s' called via "
            "function pointer '%s'\n",
            dataTypeName[argument->dataType], dataTypeName[formal->dataType], index + 1, function->name, pointerName);
        AbortRun();
    }
    if (cast != argument) QVT_SCI_CHECK(casts.Push(cast));
    return cast;
}

static void CheckPointerCall(const char* pointerName, const Symbol* function, int nArgs)
{
    if (nArgs != function->func.nArgs) {
        qvt_sci_msg("\nqvt_sci_execute:FATAL: calling function '%s' via function pointer '%s' with %d instead of %d "
                    "arguments!\n",
                    function->name, pointerName, nArgs, function->func.nArgs);
        AbortRun();
    }
    if (nArgs > MAX_POINTER_ARGUMENTS) {
        qvt_sci_msg("\nqvt_sci_execute:FATAL: max number of tmp-nodes (%d) too small\n", MAX_POINTER_ARGUMENTS);
        AbortRun();
    }
}

static double ReturnValueAsDouble(int dataType)
{
    switch (dataType) {
    case CHAR_TYPE: return returnValue.c;
    case INT_TYPE:
    case PTR_TYPE: return returnValue.i;   // a pointer by its low half
    case FLOAT_TYPE: return double(returnValue.f);
    case DOUBLE_TYPE: return returnValue.d;
    default: return 0.0;
    }
}

double funcPtrCall(const char* pointerName, Symbol* function, int nArgs, Node** args)
{
    if (!IsFunction(function)) {
        ReportUnbound(pointerName);
        return 0.0;
    }
    CheckPointerCall(pointerName, function, nArgs);
    curLineNumber = -1;   // no parse is under way: a failed cast prints and returns
    nSyntaxErrors = 0;
    const size_t castsBefore = casts.count;
    Node* arguments[MAX_POINTER_ARGUMENTS];
    void* addresses[MAX_POINTER_ARGUMENTS];
    for (int i = 0; i < nArgs; ++i) arguments[i] = ArgumentFor(function, i, args[i], pointerName);
    NodesKeepAll();   // the casts have an owner, this call: a failed parse in exec must not free them

    Node call = {};
    call.type = FUNCTION_CALL;
    call.dataType = int16_t(function->dataType);
    call.parseIndex = -1;
    call.call = {function, nArgs, 1, arguments, addresses};
    Node* const caller = currentNode;
    Call(&call);
    currentNode = caller;
    DropCasts(castsBefore);
    return ReturnValueAsDouble(function->dataType);
}

struct PointerCall {
    static double Get(Node* node)
    {
        const CallPart& call = node->call;
        Symbol** const pointer = static_cast<Symbol**>(call.symbol->addr);
        currentNode = node;
        return funcPtrCall(call.symbol->name, pointer ? *pointer : nullptr, call.nArgs, call.args);
    }
};

// ---------------------------------------------------------------------------------------------------------------------

void SelectCall(Node* node)
{
    node->call.mayMove = std::any_of(node->call.args, node->call.args + node->call.nArgs, MayWrite);
    if (node->call.symbol->symbolType != FUNCTION_SYMBOL) return AttachStatement<PointerCall>(node);
    node->ex = CallForAddress;
    node->run = RunCall;
    AttachReader<CallForValue>(node);
}

void qvt_sci_AbandonRun()
{
    for (int i = 0; i < stackDep; ++i) callStack[i]->func.active = 0;
    stackDep = 0;
    jumpDep = -1;
    nativeFrame = nullptr;
    innermostLoan = nullptr;
    currentNode = nullptr;
    DropCasts(0);
    AbandonExec();
    ForgetFormats();
}
