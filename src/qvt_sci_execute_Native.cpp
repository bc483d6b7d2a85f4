// Calls of native functions: the host's and the built-in ones.
//
// A native takes a pointer for each parameter and returns its result by value. C++ has no call with a number of
// arguments known at run time only; there is a function for each count and type of result, generated from one template,
// and a table of them by count.

#include "qvt_sci_execute_Internal.h"

#include <algorithm>
#include <array>
#include <utility>

NativeFrame* nativeFrame = nullptr;

// ---------------------------------------------------------------------------------------------------------------------
// One caller for each number of arguments

#if defined(__clang__)   // natives are declared with pointers to the types they want, not with void*
#define CALLS_ANY_SIGNATURE __attribute__((no_sanitize("function")))
#else
#define CALLS_ANY_SIGNATURE
#endif

template <size_t>
using Pointer = void*;

template <class Result, size_t... I>
CALLS_ANY_SIGNATURE static Result CallWithArguments(void* native, void* const* arguments)
{
    using Function = Result (*)(Pointer<I>...);
    return reinterpret_cast<Function>(native)(arguments[I]...);
}

template <class Result>
using Caller = Result (*)(void* native, void* const* arguments);

template <class Result, size_t... I>
static constexpr Caller<Result> CallerFor(std::index_sequence<I...>)
{
    return CallWithArguments<Result, I...>;
}

template <class Result, size_t... N>
static constexpr std::array<Caller<Result>, sizeof...(N)> CallersFor(std::index_sequence<N...>)
{
    return {CallerFor<Result>(std::make_index_sequence<N>())...};
}

template <class Result>
static constexpr auto callers = CallersFor<Result>(std::make_index_sequence<MAX_NATIVE_ARGUMENTS + 1>());

// ---------------------------------------------------------------------------------------------------------------------
// Evaluators of extern calls: exFun_void, exFun_char and so on. Arguments are evaluated from the last to the first.

template <class Result>
static void CallNative(Node* node)
{
    const CallPart& call = node->call;
    EvaluateArguments<true>(call);
    if (call.nArgs > MAX_NATIVE_ARGUMENTS) {
        qvt_sci_msg("external function calls with > %d args not supported\n", MAX_NATIVE_ARGUMENTS);
        return;
    }
    NativeFrame frame = {&call, nativeFrame};
    nativeFrame = &frame;
    if constexpr (std::is_void_v<Result>) {
        callers<Result>[size_t(call.nArgs)](call.symbol->addr, call.addresses);
    } else {
        TypeOf<Result>::In(returnValue) = callers<Result>[size_t(call.nArgs)](call.symbol->addr, call.addresses);
    }
    nativeFrame = frame.outer;
}

void (*SymbolGetExFun(int dataType))(Node*)
{
    switch (dataType) {
    case VOID_TYPE: return CallNative<void>;
    case CHAR_TYPE: return CallNative<signed char>;
    case INT_TYPE: return CallNative<int>;
    case FLOAT_TYPE: return CallNative<float>;
    case DOUBLE_TYPE: return CallNative<double>;
    case PTR_TYPE: return CallNative<void*>;
    default: yyerror("unknown function data type"); return nullptr;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Room behind an address

// Elements of an array from its start; -1 unknown. A formal has as many as were passed.
static int64_t NumElements(const Symbol* array)
{
    const ArrayPart& arr = array->arr;
    if (array->qualifier == FORMAL_QUALIFIER && arr.length >= 0) return arr.length;
    return arr.size < 0 ? -1 : arr.size;
}

int64_t NodeRoom(const Node* node, const void* address)
{
    if (!address) return 0;   // an extern array that nobody bound
    const Node* root = node;
    while (root->type == SUBARRAY) root = root->sub.base;
    if (root->type != ARRAY) return NodeVecSize(root);
    const Symbol* array = root->value.symbol;
    const int64_t elements = NumElements(array);
    if (elements < 0) return -1;
    const int64_t passed =
        (static_cast<const char*>(address) - static_cast<const char*>(array->addr)) / sizeOf[array->dataType];
    if (passed < 0 || passed >= elements) return 0;
    // In an array of texts each row is a text of its own.
    const bool isText = node->type == SUBARRAY && array->dataType == CHAR_TYPE && array->arr.nDims > 1;
    const int64_t row = isText ? array->arr.dims[array->arr.nDims - 1] : 0;
    return row > 0 ? std::min(elements - passed, row - passed % row) : elements - passed;
}

int64_t qvt_sci_ArgLength(int index)
{
    if (!nativeFrame || index < 0 || index >= nativeFrame->call->nArgs) return -1;
    return NodeRoom(nativeFrame->call->args[index], nativeFrame->call->addresses[index]);
}
