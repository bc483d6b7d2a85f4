// Elements and rows of arrays with their run-time check, and the memory of arrays that change their length.

#include "qvt_sci_execute_Internal.h"

#include "qvt_sci.tab.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

// ---------------------------------------------------------------------------------------------------------------------
// Elements: index first, then base, then the check.

// The code as the user sees it, "a[2][7]"; every index is evaluated once more for it.
void ReportOutOfBounds(Node* subarray)
{
    int indices[MAX_ARRAY_DIMENSIONS];
    int levels = 0;
    const Node* root = subarray;
    for (; root->type == SUBARRAY; root = root->sub.base) indices[levels++] = GetValue<int>(root->sub.index);

    char text[MAX_ARRAY_DIMENSIONS * sizeof "[-2147483648]"] = "";
    for (char* end = text; levels > 0; end += std::strlen(end)) {
        std::snprintf(end, size_t(text + sizeof text - end), "[%d]", indices[--levels]);
    }
    qvt_sci_msg("\nqvt_sci_execute:ERROR: '%s%s': index out of bounds: %d\n", root->value.symbol->name, text,
                *subarray->sub.dimPtr);
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
        if (nBytes <= INT_MAX) memory = MovedMemory(array->memory, size_t(keptBytes), size_t(nBytes));
        if (!memory) {
            char message[256];
            std::snprintf(message, sizeof message, "cannot allocate %d bytes for array %s", int(nBytes), array->name);
            RunFail(message);
        }
        if (nBytes > keptBytes) std::memset(static_cast<char*>(memory) + keptBytes, 0, size_t(nBytes - keptBytes));
    } else {
        FreeMoved(array->memory);
    }
    array->memory = memory;
    array->addr = memory;
    array->arr.dims[0] = length;
    array->arr.size = size;
}

static Flow RunAlloc(Node* node)
{
    Symbol* array = node->value.symbol;
    SetLength(array, GetValue<int>(array->arr.dimNode), 0);
    return FLOW_NEXT;
}

void SelectAlloc(Node* node) { AttachRun(node, RunAlloc); }

static Flow RunFree(Node* node)
{
    Symbol* array = node->value.symbol;
    FreeMoved(array->memory);
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
        SetLength(array, length, array->memory ? array->arr.size : 0);
        return int(array->arr.size);
    }
};

void SelectResize(Node* node) { AttachStatement<Resize>(node); }
