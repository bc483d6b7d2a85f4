// Elements and rows of arrays with their run-time check, and the memory of arrays that change their length.

#include "qvt_sci_execute_Internal.h"

#include "qvt_sci.tab.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

// ---------------------------------------------------------------------------------------------------------------------
// Elements: index first, then base, then the check.

// What the index was meant for, as the user writes it: "a", "m[2]". Its indices are read off the place where it lies:
// evaluating them once more could have effects of its own.
void ReportOutOfBounds(const Node* subarray, int index, const void* base)
{
    const Node* root = subarray->sub.base;
    int levels = 0;
    for (; root->type == SUBARRAY; root = root->sub.base) ++levels;
    const Symbol* array = root->value.symbol;
    if (!array->addr && array->qualifier == EXTERN_QUALIFIER) return ReportUnboundVariable(array->name);

    char text[MAX_ARRAY_DIMENSIONS * sizeof "[-9223372036854775808]"] = "";
    char* end = text;
    int64_t place = int64_t(uintptr_t(base) - uintptr_t(array->addr)) / sizeOf[array->dataType];
    for (int level = 0; level < levels; ++level, end += std::strlen(end)) {
        int64_t stride = 1;
        for (int i = level + 1; i < array->arr.nDims; ++i) stride *= array->arr.dims[i];
        const int64_t row = stride ? place / stride : 0;
        place -= row * stride;
        std::snprintf(end, size_t(text + sizeof text - end), "[%lld]", static_cast<long long>(row));
    }
    const int size = index < 0 ? array->arr.dims[levels] : *subarray->sub.dimPtr;
    qvt_sci_msg("\nqvt_sci_execute:ERROR: '%s%s': index out of bounds: %d\n", array->name, text, size);
    RaiseSignal(11);
}

struct IndexInPlace {
    static int Get(Node* node) { return *static_cast<int*>(*node->sub.indexAt); }
};

struct AnyIndex {
    static int Get(Node* node) { return GetValue<int>(node->sub.index); }
};

struct PlainBase {   // the array itself
    static void* Get(Node* node) { return *node->sub.baseAt; }
};

struct AnyBase {
    static void* Get(Node* node) { return node->sub.base->ex(node->sub.base); }
};

template <class T, bool CheckIndex, class Index, class Base>
static T* ElementOf(Node* node)
{
    const int index = Index::Get(node);
    void* const base = Base::Get(node);
    if constexpr (CheckIndex) CheckBounds(node, index, base);
    T* const address = static_cast<T*>(Displaced(base, node->value.stride * index, sizeof(T)));
    CheckRoom(node, address, node->value.stride);
    return address;
}

template <class T, bool CheckIndex, class Index, class Base>
static void* ElementAddress(Node* node)
{
    return ElementOf<T, CheckIndex, Index, Base>(node);
}

template <class T, bool CheckIndex, class Index, class Base>
static T ElementValue(Node* node)
{
    return *ElementOf<T, CheckIndex, Index, Base>(node);
}

template <class T, bool CheckIndex, class Index, class Base>
static void SelectElement(Node* node)
{
    node->ex = ElementAddress<T, CheckIndex, Index, Base>;
    node->run = DropAddress;
    if constexpr (std::is_pointer_v<T>) {
        node->get.p = PointerOf;
    } else {
        TypeOf<T>::Of(node->get) = ElementValue<T, CheckIndex, Index, Base>;
    }
}

template <class T, bool CheckIndex>
static void SelectByOperands(Node* node)
{
    const bool plainBase = node->sub.baseAt != nullptr;
    if (node->sub.indexAt) {
        plainBase ? SelectElement<T, CheckIndex, IndexInPlace, PlainBase>(node)
                  : SelectElement<T, CheckIndex, IndexInPlace, AnyBase>(node);
    } else {
        plainBase ? SelectElement<T, CheckIndex, AnyIndex, PlainBase>(node)
                  : SelectElement<T, CheckIndex, AnyIndex, AnyBase>(node);
    }
}

template <class T>
static void SelectByCheck(Node* node)   // exSubarr_checked, exSubarr
{
    if (qvt_sci_on_out_of_bounds == 1) return SelectByOperands<T, true>(node);
    SelectByOperands<T, false>(node);
}

void SelectSubarray(Node* node)
{
    SubarrayPart& sub = node->sub;
    sub.baseAt = sub.base->type == ARRAY ? &sub.base->value.symbol->addr : nullptr;
    sub.indexAt = sub.index->place;
    switch (node->dataType) {
    case CHAR_TYPE: return SelectByCheck<signed char>(node);
    case INT_TYPE: return SelectByCheck<int>(node);
    case FLOAT_TYPE: return SelectByCheck<float>(node);
    case DOUBLE_TYPE: return SelectByCheck<double>(node);
    case PTR_TYPE: return SelectByCheck<void*>(node);
    default: return yyerror("operator: unknown data type");
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Addresses held

// The array whose memory may move that the operand is or lies in; null if there is none.
static const Symbol* MovableArray(const Node* operand)
{
    while (operand->type == SUBARRAY) operand = operand->sub.base;
    if (operand->type != ARRAY) return nullptr;
    const Symbol* array = operand->value.symbol;
    return array->qualifier == NO_QUALIFIER || array->qualifier == STATIC_QUALIFIER ? array : nullptr;
}

Kept Keep(const Node* operand, void* address)
{
    const Symbol* array = MovableArray(operand);
    if (!array) return {operand, address};
    return {operand, reinterpret_cast<void*>(uintptr_t(address) - uintptr_t(array->addr))};
}

void* AddressOf(const Kept& kept)
{
    const Symbol* array = MovableArray(kept.operand);
    if (!array) return kept.place;
    const auto distance = uintptr_t(kept.place);
    const int size = sizeOf[array->dataType];
    const int64_t stride = kept.operand->type == SUBARRAY ? kept.operand->value.stride : 0;
    if (!stride || (array->addr && distance + uintptr_t(stride * size) <= uintptr_t(array->arr.size * size))) {
        return reinterpret_cast<void*>(uintptr_t(array->addr) + distance);
    }
    currentNode = const_cast<Node*>(kept.operand);
    qvt_sci_msg("\nqvt_sci_execute:ERROR: '%s' was resized, and what was taken from it is gone!\n", array->name);
    RaiseSignal(11);
    static Value nothing;
    nothing = {};
    return stride > 1 ? nullptr : &nothing;
}

Loan* innermostLoan = nullptr;

bool IsLent(const void* memory, size_t bytes)
{
    const auto isInside = [=](const void* p) { return uintptr_t(p) - uintptr_t(memory) < bytes; };
    for (int i = 0; i < stackDep; ++i) {
        const FunctionPart& function = callStack[i]->func;
        for (int k = 0; k < function.nArgs; ++k) {
            if (isInside(function.args[k]->addr)) return true;
        }
    }
    for (const NativeFrame* frame = nativeFrame; frame; frame = frame->outer) {
        for (int k = 0; k < frame->call->nArgs; ++k) {
            if (isInside(frame->call->addresses[k])) return true;
        }
    }
    for (const Loan* loan = innermostLoan; loan; loan = loan->outer) {
        if (isInside(loan->address)) return true;
    }
    return false;
}

// ---------------------------------------------------------------------------------------------------------------------
// What a formal refers to

void FormalRefersTo(Symbol* formal, int64_t elements)
{
    ArrayPart& arr = formal->arr;
    arr.length = elements;
    arr.limit = arr.dims[0];
    if (elements < 0) return;
    int64_t row = 1;
    for (int i = 1; i < arr.nDims; ++i) row *= arr.dims[i];
    const int rows = row > 0 ? int(std::min<int64_t>(elements / row, INT_MAX)) : 0;
    arr.limit = arr.limit < 0 ? rows : std::min(arr.limit, rows);
}

// ---------------------------------------------------------------------------------------------------------------------
// Memory

static int64_t NumBytes(const Symbol* array, int64_t elements) { return elements * sizeOf[array->dataType]; }

// Elements with the first dimension set to `length`, cut to what a count of bytes can hold.
static int64_t SizeWithLength(const ArrayPart& arr, int length)
{
    int64_t size = length;
    for (int i = 1; i < arr.nDims; ++i) size = std::min<int64_t>(size * arr.dims[i], INT_MAX);
    return size;
}

// Sets the first dimension, a negative one to 0, and fits the memory to it. The first `kept` elements keep their
// values, all others are zero. Without memory the array stays as it was and the run ends.
static void SetLength(Symbol* array, int length, int64_t kept)
{
    length = std::max(length, 0);
    const int64_t size = SizeWithLength(array->arr, length);
    const int64_t nBytes = NumBytes(array, size);
    const int64_t keptBytes = NumBytes(array, kept);
    void* memory = nullptr;
    CountSteps(long(size));
    if (nBytes > 0) {
        if (nBytes <= INT_MAX) memory = std::realloc(array->memory, size_t(nBytes));
        if (!memory) {
            char message[256];
            std::snprintf(message, sizeof message, "cannot allocate %d bytes for array %s", int(nBytes), array->name);
            RunFail(message);
        }
        if (nBytes > keptBytes) std::memset(static_cast<char*>(memory) + keptBytes, 0, size_t(nBytes - keptBytes));
    } else {
        std::free(array->memory);
    }
    array->memory = memory;
    array->addr = memory;
    array->arr.dims[0] = length;
    array->arr.size = size;
}

static Flow RunAlloc(Node* node)
{
    Symbol* array = node->value.symbol;
    currentNode = node;
    SetLength(array, GetValue<int>(array->arr.dimNode), 0);
    return FLOW_NEXT;
}

void SelectAlloc(Node* node) { AttachRun(node, RunAlloc); }

static Flow RunFree(Node* node)
{
    Symbol* array = node->value.symbol;
    std::free(array->memory);
    array->memory = nullptr;
    array->addr = nullptr;
    return FLOW_NEXT;
}

void SelectFree(Node* node) { AttachRun(node, RunFree); }

struct Resize {
    static int Get(Node* node)
    {
        const int length = GetValue<int>(node->o.op[1]);
        Symbol* array = node->o.op[0]->value.symbol;
        currentNode = node;
        if (array->memory && IsLent(array->memory, size_t(NumBytes(array, array->arr.size)))) {
            qvt_sci_msg("\nqvt_sci_execute:ERROR: resizing array '%s' while a parameter refers to it!\n", array->name);
            RaiseSignal(11);
        } else {
            SetLength(array, length, array->memory ? array->arr.size : 0);
        }
        return int(array->arr.size);
    }
};

void SelectResize(Node* node) { AttachStatement<Resize>(node); }
