// Evaluators of whole arrays, rows of arrays and what is computed from them.
//
// A vector is an address and a length. Operands are evaluated left, then right, each once; then the lengths are read,
// so that a dynamic array counts with its present one. The shorter operand is used from its start again, a single
// number is a vector of length 1. Assignments write into the left operand's own memory and never change its length; the
// other operations own a buffer in their node, which is kept from one evaluation to the next.
//
// Operands are read through their addresses element by element, while results are written: `a *= a[0]` multiplies the
// elements behind the first by the new a[0]. A vector without elements has nothing to give: an assignment from it
// changes nothing, and the result of an operation on it has no elements either.

#include "qvt_sci_execute_Internal.h"

#include "qvt_sci.tab.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

// ---------------------------------------------------------------------------------------------------------------------
// Operands

template <class T>
struct Vector {
    T* values;
    int length;
};

static void ReportTooShort(const Node* operand, int elements)
{
    while (operand->type == SUBARRAY) operand = operand->sub.base;
    qvt_sci_msg("\nqvt_sci_execute:ERROR: '%s' has %d elements only!\n", operand->value.symbol->name, elements);
    RaiseSignal(11);
}

// An operand after all have been evaluated.
template <class T>
static Vector<T> VectorOf(const Node* operand, void* evaluated)
{
    int length = evaluated ? std::max(NodeVecSize(operand), 0) : 0;
    if (NodeIsVector(operand) && operand->type != OPERATOR) {
        const int64_t room = NodeRoom(operand, evaluated);
        if (room >= 0 && room < length) {   // of a parameter, to which less was passed than it declares
            length = int(room);
            ReportTooShort(operand, length);
        }
    }
    CountSteps(length);
    return {static_cast<T*>(evaluated), length};
}

template <class T>
struct Operands {
    Vector<T> a, b;
    explicit Operands(Node* node)
    {
        Node* const* ops = node->o.op;
        const Kept left = Keep(ops[0], ops[0]->ex(ops[0]));
        void* const right = ops[1]->ex(ops[1]);
        currentNode = node;
        a = VectorOf<T>(ops[0], AddressOf(left));
        b = VectorOf<T>(ops[1], right);
    }
    int LongerLength() const { return a.length && b.length ? std::max(a.length, b.length) : 0; }
};

// The position behind i in a vector of that length, from the start again at its end.
static int Behind(int i, int length) { return i + 1 == length ? 0 : i + 1; }

// ---------------------------------------------------------------------------------------------------------------------
// Attaching

// As a number a vector is its first element.
template <class T>
static T FirstElement(Node* node)
{
    const T* first = static_cast<const T*>(node->ex(node));
    return first ? *first : T(0);
}

template <class T>
static void AttachVector(Node* node, void* (*ex)(Node*))
{
    node->ex = ex;
    node->run = DropAddress;
    TypeOf<T>::Of(node->get) = FirstElement<T>;
}

// ---------------------------------------------------------------------------------------------------------------------
// Assignments: exVEC_ASS_, exVEC_ADD_ and so on

// The value of an assignment is its target, whatever the length of the other operand.
template <class T>
static void PresentTarget(Node* node, const Vector<T>& target)
{
    node->value.p = target.values;
    node->o.vecSize = target.length;
}

template <class Formula, class T, bool CheckDivisor>
static void* AssignVector(Node* node)
{
    const Operands<T> operands(node);
    const auto [a, b] = operands;
    PresentTarget(node, a);
    if (b.length == 0) return a.values;
    for (int i = 0, k = 0; i < a.length; ++i, k = Behind(k, b.length)) {
        if constexpr (CheckDivisor) {
            if (b.values[k] == 0) ReportDivisionByZeroAt(TypeOf<T>::code, k);
        }
        a.values[i] = Formula::template Of<T>(a.values[i], b.values[k]);
    }
    return a.values;
}

template <class Formula, class T>
static void SelectAssignVector(Node* node)
{
    if constexpr (std::is_same_v<Formula, Over>) {
        if (qvt_sci_on_div_by_zero >= 1) return AttachVector<T>(node, AssignVector<Formula, T, true>);
    }
    AttachVector<T>(node, AssignVector<Formula, T, false>);
}

// exVEC_LIST_ASS_: element i takes list element i modulo the shorter length of the two, each evaluated when its turn
// comes. `double e[3] = {2.7}` therefore sets all three.
template <class T>
static void* AssignList(Node* node)
{
    Node* const target = node->o.ops[0];
    Node* const* const list = node->o.ops + 1;
    const int listLength = node->o.nOps - 1;
    const Kept kept = Keep(target, target->ex(target));
    currentNode = node;
    Vector<T> a = VectorOf<T>(target, AddressOf(kept));
    for (int i = 0; i < a.length; ++i) {
        const T value = GetValue<T>(list[i % std::min(a.length, listLength)]);
        a = VectorOf<T>(target, AddressOf(kept));
        if (i < a.length) a.values[i] = value;
    }
    PresentTarget(node, a);
    return a.values;
}

void SelectListAssignment(Node* node)
{
    switch (node->dataType) {
    case CHAR_TYPE: return AttachVector<signed char>(node, AssignList<signed char>);
    case INT_TYPE: return AttachVector<int>(node, AssignList<int>);
    case FLOAT_TYPE: return AttachVector<float>(node, AssignList<float>);
    case DOUBLE_TYPE: return AttachVector<double>(node, AssignList<double>);
    default: return yyerror("unsupported data type for vector operation");
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Operations with a result of their own: exVEC_PLUS_ and so on, exVEC_CROSS_PROD_

// The node's buffer for n elements.
template <class T>
static T* ResultBuffer(Node* node, int n)
{
    OperatorPart& o = node->o;
    if (o.vecAlloc != n) {
        if (n == 0) {
            std::free(node->value.p);
            node->value.p = nullptr;
        } else {
            void* buffer = std::realloc(node->value.p, size_t(n) * sizeof(T));
            if (!buffer) RunFail("out of memory");
            node->value.p = buffer;
        }
        o.vecAlloc = n;
    }
    o.vecSize = n;
    return static_cast<T*>(node->value.p);
}

template <class Formula, class T>
static void Combine(T* result, int n, const Vector<T>& a, const Vector<T>& b)
{
    if (a.length == n && b.length == n) {
        for (int i = 0; i < n; ++i) result[i] = Formula::template Of<T>(a.values[i], b.values[i]);
    } else if (a.length == n && b.length == 1) {
        for (int i = 0; i < n; ++i) result[i] = Formula::template Of<T>(a.values[i], *b.values);
    } else {
        for (int i = 0, ia = 0, ib = 0; i < n; ++i, ia = Behind(ia, a.length), ib = Behind(ib, b.length)) {
            result[i] = Formula::template Of<T>(a.values[ia], b.values[ib]);
        }
    }
}

template <class T>
static void CheckDivisors(int n, const Vector<T>& b)
{
    for (int i = 0, k = 0; i < n; ++i, k = Behind(k, b.length)) {
        if (b.values[k] == 0) ReportDivisionByZeroAt(TypeOf<T>::code, k);
    }
}

template <class Formula, class T, bool CheckDivisor>
static void* CombineVectors(Node* node)
{
    const Operands<T> operands(node);
    const int n = operands.LongerLength();
    T* const result = ResultBuffer<T>(node, n);
    if constexpr (CheckDivisor) CheckDivisors(n, operands.b);
    Combine<Formula>(result, n, operands.a, operands.b);
    return result;
}

template <class Formula, class T>
static void SelectCombineVectors(Node* node)
{
    if constexpr (std::is_same_v<Formula, Over>) {
        if (qvt_sci_on_div_by_zero >= 1) return AttachVector<T>(node, CombineVectors<Formula, T, true>);
    }
    AttachVector<T>(node, CombineVectors<Formula, T, false>);
}

// Of two vectors of length 3 the cross product. Of length 2: its component out of the plane in element 1, and the
// negative of that in element 0.
template <class Product, class T>
static void* CrossProduct(Node* node)
{
    const Operands<T> operands(node);
    const auto [a, b] = operands;
    const int n = operands.LongerLength();
    T* const result = ResultBuffer<T>(node, n);
    for (int64_t i = 0; i < n; ++i) {
        const T forward = Product::template Of<T>(a.values[(i + 1) % a.length], b.values[(i + 2) % b.length]);
        const T backward = Product::template Of<T>(a.values[(i + 2) % a.length], b.values[(i + 1) % b.length]);
        result[i] = Minus::Of<T>(forward, backward);
    }
    return result;
}

template <class Product, class T>
static void SelectCrossProduct(Node* node)
{
    AttachVector<T>(node, CrossProduct<Product, T>);
}

// ---------------------------------------------------------------------------------------------------------------------
// Products and magnitudes, a double each. Every product is made in the elements' type first.

template <class Product, class T>
struct DotProduct {
    static double Get(Node* node)
    {
        const Operands<T> operands(node);
        const auto [a, b] = operands;
        const int n = operands.LongerLength();
        double sum = 0;
        for (int i = 0, ia = 0, ib = 0; i < n; ++i, ia = Behind(ia, a.length), ib = Behind(ib, b.length)) {
            sum += double(Product::template Of<T>(a.values[ia], b.values[ib]));
        }
        return sum;
    }
};

template <class Product, class T>
static void SelectDotProduct(Node* node)
{
    Attach<DotProduct<Product, T>>(node);
}

template <class Product, class T>
struct Magnitude {
    static double Get(Node* node)
    {
        Node* const operand = node->o.op[0];
        void* const evaluated = operand->ex(operand);
        currentNode = node;
        const Vector<T> a = VectorOf<T>(operand, evaluated);
        double sum = 0;
        for (int i = 0; i < a.length; ++i) sum += double(Product::template Of<T>(a.values[i], a.values[i]));
        return std::sqrt(sum);
    }
};

template <class Product, class T>
static void SelectMagnitude(Node* node)
{
    Attach<Magnitude<Product, T>>(node);
}

// ---------------------------------------------------------------------------------------------------------------------

std::span<const FamilyRow> VectorFamilies()
{
    // ORDER OPERATORS
    static constexpr FamilyRow rows[] = {
        // clang-format off
        {'*',  NUMBERS(SelectCombineVectors, Times)},
        {'+',  NUMBERS(SelectCombineVectors, Plus) },
        {'-',  NUMBERS(SelectCombineVectors, Minus)},
        {'.',  NUMBERS(SelectDotProduct,     Times)},
        {'/',  NUMBERS(SelectCombineVectors, Over) },
        {'=',  NUMBERS(SelectAssignVector,   Store)},
        {'^',  NUMBERS(SelectCrossProduct,   Times)},
        {'|',  NUMBERS(SelectMagnitude,      Times)},
        {ADD,  NUMBERS(SelectAssignVector,   Plus) },
        {SUB,  NUMBERS(SelectAssignVector,   Minus)},
        {MULT, NUMBERS(SelectAssignVector,   Times)},
        {DIV,  NUMBERS(SelectAssignVector,   Over) },
        // clang-format on
    };
    return rows;
}
