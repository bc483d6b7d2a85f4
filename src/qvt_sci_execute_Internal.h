// The inside of the execution engine, for qvt_sci_execute*.cpp only: the arithmetic of the language, how an evaluator
// comes by its operands, how evaluators are attached to a node, and the tables they are chosen from.
//
// An evaluator is a struct with a static function `Get` that takes the node and hands its value over; it is put
// together from a formula, a type and the ways in which its operands are fetched. What all operators share hangs on
// that one function: Attach makes the node's ex, get and run of it.
//
// Evaluating an operand and reading its value are two steps. The value of a variable or of an array's element is its
// address, so that what is evaluated first is read last: with i = 1, `i + i++` is 3. Fetch policies therefore have
// Evaluate, called in the stated order, and Read, called when all operands have been evaluated:
//     InPlace     a scalar variable, a constant: nothing to evaluate
//     ByValue     anything whose value cannot change before it is read
//     ByAddress   an element of an array that evaluating the other operand may write to
//     Element     an element of a plain array whose index is in place (bounds checked), without a call
//     Nested      a sum, difference or product of two operands in place, without a call

#pragma once

#include "qvt_sci_execute_Switches.h"

#include <span>
#include <type_traits>

// ---------------------------------------------------------------------------------------------------------------------
// Types

template <class T>
struct TypeOf;

#define QVT_SCI_TYPE_OF(typeCode, Type, member, name, hostName)                                                        \
    template <>                                                                                                        \
    struct TypeOf<Type> {                                                                                              \
        static constexpr DataType code = typeCode;                                                                     \
        static Type& In(Value& value) { return value.member; }                                                         \
        static auto& Of(Evaluate& get) { return get.member; }                                                          \
    };
QVT_SCI_TYPES(QVT_SCI_TYPE_OF)
#undef QVT_SCI_TYPE_OF

template <class T>
T& Slot(Node* node)
{
    return TypeOf<T>::In(node->value);
}

template <class T>
T GetValue(Node* node)
{
    return TypeOf<T>::Of(node->get)(node);
}

// ---------------------------------------------------------------------------------------------------------------------
// Arithmetic. Whole numbers wrap around, so they are computed unsigned. Dividing a whole number by zero, after a check
// whose signal was survived, gives 0: the processor would end the run. INT_MIN / -1 wraps too.

template <class T>
constexpr bool isWhole = std::is_integral_v<T>;

struct Plus {
    template <class T>
    static T Of(T a, T b)
    {
        if constexpr (isWhole<T>)
            return T(unsigned(a) + unsigned(b));
        else
            return a + b;
    }
};

struct Minus {
    template <class T>
    static T Of(T a, T b)
    {
        if constexpr (isWhole<T>)
            return T(unsigned(a) - unsigned(b));
        else
            return a - b;
    }
};

struct Times {
    template <class T>
    static T Of(T a, T b)
    {
        if constexpr (isWhole<T>)
            return T(unsigned(a) * unsigned(b));
        else
            return a * b;
    }
};

struct Over {
    template <class T>
    static T Of(T a, T b)
    {
        if constexpr (isWhole<T>) {
            if (b == 0) return 0;
            if (b == -1) return T(0u - unsigned(a));
        }
        return T(a / b);
    }
};

struct Store {
    template <class T>
    static T Of(T, T b)
    {
        return b;
    }
};

struct Modulo {
    template <class T>
    static T Of(T a, T b)
    {
        return b == 0 || b == -1 ? T(0) : T(a % b);
    }
};

/// Conversion as the host's processor does it: a number that no int can hold becomes INT_MIN, a char takes the low
/// byte.
template <class To, class From>
To Convert(From from)
{
    if constexpr (isWhole<To> && !isWhole<From>) {
        const bool fits = double(from) > -2147483649.0 && double(from) < 2147483648.0;
        return To(fits ? int(from) : int(-2147483647 - 1));
    } else {
        return To(from);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Reports (qvt_sci_execute.cpp, qvt_sci_execute_Array.cpp)

void ReportDivisionByZero(int dataType);
void ReportDivisionByZeroAt(int dataType, int divisorIndex);
void ReportOutOfBounds(const Node* subarray, int index, const void* base);   // base: the value of its base
void ReportUnboundVariable(const char* name);

// ---------------------------------------------------------------------------------------------------------------------
// Places of elements

/// Bytes behind an address, counted as a number: an array without memory, once its error has been reported and
/// survived, has no valid address to start from.
inline void* Displaced(void* base, int64_t elements, size_t elementSize)
{
    return reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(base) + uintptr_t(elements) * elementSize);
}

/// A dimension of -1, which only a formal has of which nobody knows what was passed, lets every index pass that is not
/// negative. Without memory no index is valid.
inline void CheckBounds(Node* node, int index, const void* base)
{
    currentNode = node;
    if (index < 0 || unsigned(index) >= unsigned(*node->sub.dimPtr) || !base) [[unlikely]] {
        ReportOutOfBounds(node, index, base);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Addresses that are held while something else is evaluated, which may resize the array (qvt_sci_execute_Array.cpp).
// They are kept as distances from the array's start. What a parameter or a native holds on to cannot be kept so: such
// an array is on loan, and is not resized.

struct Kept {
    const Node* operand;
    void* place;   // a distance in bytes if the operand is an array that has its own memory, or lies in one
};

Kept Keep(const Node* operand, void* address);
/// The address again; an element or row that is gone is an error, behind which a 0 to no purpose lies there, for a row
/// nothing.
void* AddressOf(const Kept& kept);

/// Something holds on to an address from Lend to TakeBack, which bracket a block. What a jump of the host leaves,
/// qvt_sci_AbandonRun forgets.
struct Loan {
    const void* address;
    Loan* outer;
};
extern Loan* innermostLoan;

inline void Lend(Loan& loan, const void* address)
{
    loan = {address, innermostLoan};
    innermostLoan = &loan;
}
inline void TakeBack(const Loan& loan) { innermostLoan = loan.outer; }
/// Whether a formal of a function that is active, an argument of a native or a loan lies in this memory.
bool IsLent(const void* memory, size_t bytes);

// ---------------------------------------------------------------------------------------------------------------------
// Fetching operand k of an operator

struct InPlace {
    template <class T>
    static void** Evaluate(Node* node, int k)
    {
        return node->o.at[k];
    }
    template <class T>
    static T Read(void** place)
    {
        return *static_cast<T*>(*place);
    }
};

struct ByValue {
    template <class T>
    static T Evaluate(Node* node, int k)
    {
        return GetValue<T>(node->o.ops[k]);
    }
    template <class T>
    static T Read(T value)
    {
        return value;
    }
};

struct ByAddress {
    template <class T>
    static Kept Evaluate(Node* node, int k)
    {
        return Keep(node->o.ops[k], node->o.ops[k]->ex(node->o.ops[k]));
    }
    template <class T>
    static T Read(const Kept& kept)
    {
        return *static_cast<T*>(AddressOf(kept));
    }
};

struct Element {
    template <class T>
    static T* Evaluate(Node* node, int k)
    {
        Node* const element = node->o.op[k];
        const int index = *static_cast<int*>(*element->sub.indexAt);
        void* const base = *element->sub.baseAt;
        CheckBounds(element, index, base);
        T* const address = static_cast<T*>(Displaced(base, index, sizeof(T)));
        CheckRoom(element, address, 1);
        return address;
    }
    template <class T>
    static T Read(T* address)
    {
        return *address;
    }
};

template <class Formula>
struct Nested {
    template <class T>
    static T Evaluate(Node* node, int k)
    {
        void** const* const at = node->o.op[k]->o.at;
        return Formula::template Of<T>(*static_cast<T*>(*at[0]), *static_cast<T*>(*at[1]));
    }
    template <class T>
    static T Read(T value)
    {
        return value;
    }
};

/// Operators that do nothing but compute from their operands. All of them evaluate the first operand before they do
/// anything else, but for a divisor.
bool OnlyReads(int opr);
/// May evaluating this node change a variable or the memory of an array? Looks a few levels deep and else says yes.
bool MayWrite(const Node* node);
/// Is operand k what the policies Element and Nested take?
bool IsElement(const Node* node, int k, int dataType);
bool IsNested(const Node* node, int k, int dataType, int opr);

/// Calls use(policy) with the policy for operand k of a node. `meanwhile`: an operand that is evaluated after this one
/// and before it is read, or null.
template <class T, class Use>
void ChooseFetch(Node* node, int k, const Node* meanwhile, Use use)
{
    const Node* operand = node->o.ops[k];
    if (node->o.at[k]) {
        use(InPlace());
    } else if (operand->type == SUBARRAY && meanwhile && MayWrite(meanwhile)) {
        use(ByAddress());
    } else {
        use(ByValue());
    }
}

/// The same with the policies that save a call, for the types that loops compute with.
template <class T, class Use>
void ChooseFastFetch(Node* node, int k, const Node* meanwhile, Use use)
{
    if constexpr (std::is_same_v<T, int> || std::is_same_v<T, double>) {
        const bool mayMove = meanwhile && MayWrite(meanwhile);
        if (!mayMove && IsElement(node, k, TypeOf<T>::code)) return use(Element());
        if (IsNested(node, k, TypeOf<T>::code, '+')) return use(Nested<Plus>());
        if (IsNested(node, k, TypeOf<T>::code, '-')) return use(Nested<Minus>());
        if (IsNested(node, k, TypeOf<T>::code, '*')) return use(Nested<Times>());
    }
    ChooseFetch<T>(node, k, meanwhile, use);
}

/// The evaluator of most operators: left, then right, then the formula.
template <class Formula, class T, class Left, class Right>
struct LeftFirst {
    static auto Get(Node* node)
    {
        const auto left = Left::template Evaluate<T>(node, 0);
        const auto right = Right::template Evaluate<T>(node, 1);
        return Formula::template Of<T>(Left::template Read<T>(left), Right::template Read<T>(right));
    }
};

// ---------------------------------------------------------------------------------------------------------------------
// Attaching evaluators

template <class T>
void* StoreValue(Node* node)
{
    Slot<T>(node) = GetValue<T>(node);
    return &node->value;
}

template <class T>
Flow DropValue(Node* node)
{
    GetValue<T>(node);
    return FLOW_NEXT;
}

template <class Evaluator>
void* StorePointer(Node* node)
{
    node->value.p = Evaluator::Get(node);
    return &node->value;
}

inline Flow DropAddress(Node* node)
{
    node->ex(node);
    return FLOW_NEXT;
}

/// Makes Evaluator::Get the node's value.
template <class Evaluator>
void Attach(Node* node)
{
    using T = decltype(Evaluator::Get(node));
    if constexpr (std::is_pointer_v<T>) {
        node->ex = StorePointer<Evaluator>;
        node->get.p = PointerOf;
        node->run = DropAddress;
    } else {
        node->ex = StoreValue<T>;
        TypeOf<T>::Of(node->get) = Evaluator::Get;
        node->run = DropValue<T>;
    }
}

template <class Evaluator>
Flow RunEvaluator(Node* node)
{
    Evaluator::Get(node);
    return FLOW_NEXT;
}

/// The same for what mostly stands as a statement: saves the call from run to get.
template <class Evaluator>
void AttachStatement(Node* node)
{
    Attach<Evaluator>(node);
    node->run = RunEvaluator<Evaluator>;
}

/// Makes `run` the node's evaluator: a statement, which has no value.
void AttachRun(Node* node, Flow (*run)(Node*));

/// Makes Reader<T>::Get, T being the node's type, what hands its value over. Pointers are read through ex, void has no
/// value.
template <template <class> class Reader>
void AttachReader(Node* node)
{
    switch (node->dataType) {
    case CHAR_TYPE: node->get.c = Reader<signed char>::Get; break;
    case INT_TYPE: node->get.i = Reader<int>::Get; break;
    case FLOAT_TYPE: node->get.f = Reader<float>::Get; break;
    case DOUBLE_TYPE: node->get.d = Reader<double>::Get; break;
    case PTR_TYPE: node->get.p = PointerOf; break;
    default: break;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Tables of evaluators

using Selector = void (*)(Node*);   // attaches the evaluators that fit the node's operands

/// The members of the family of one operator, by data type. A family without a member for pointers has a dummy there.
struct FamilyRow {
    int opr;
    Selector member[DATA_TYPES];
};

// Members of a row that a template over a formula and a type selects.
#define NUMBERS(Select, Formula)                                                                                       \
    {                                                                                                                  \
        nullptr, Select<Formula, signed char>, Select<Formula, int>, Select<Formula, float>, Select<Formula, double>,  \
            nullptr                                                                                                    \
    }
#define ALL_TYPES(Select, Formula)                                                                                     \
    {                                                                                                                  \
        nullptr, Select<Formula, signed char>, Select<Formula, int>, Select<Formula, float>, Select<Formula, double>,  \
            Select<Formula, void*>                                                                                     \
    }
#define INT_ONLY(Select, Formula)                                                                                      \
    {                                                                                                                  \
        nullptr, nullptr, Select<Formula, int>                                                                         \
    }
#define DOUBLE_ONLY(Select, Formula)                                                                                   \
    {                                                                                                                  \
        nullptr, nullptr, nullptr, nullptr, Select<Formula, double>                                                    \
    }

/// An operator that looks at its operands itself, or has but one evaluator.
struct PlainRow {
    int opr;
    Selector select;
};

std::span<const FamilyRow> ArithmeticFamilies();
std::span<const FamilyRow> AssignmentFamilies();
std::span<const FamilyRow> ComparisonFamilies();
std::span<const FamilyRow> VectorFamilies();   // '.', '^' and '|' stand here alone: scalars are vectors of length 1
std::span<const PlainRow> ConversionOperators();
std::span<const PlainRow> ControlOperators();
std::span<const PlainRow> ExecOperators();

void SelectListAssignment(Node* node);   // target = {list}; qvt_sci_execute_Vector.cpp
void SelectSubarray(Node* node);         // qvt_sci_execute_Array.cpp
void SelectAlloc(Node* node);
void SelectFree(Node* node);
void SelectResize(Node* node);
void SelectCall(Node* node);   // qvt_sci_execute.cpp
void JoinChain(Node* node);    // qvt_sci_execute_Chain.cpp

// ---------------------------------------------------------------------------------------------------------------------
// Between the files

/// Divisions of a chain: evaluates the divisor into the node's slot; makes the division take it from there.
void KeepDivisor(Node* node);   // qvt_sci_execute_Arithmetic.cpp
void SelectDivisorKept(Node* node);

/// Counts a loop or a call as under way; its end is --jumpDep. Too many end the run. (qvt_sci_execute.cpp)
void EnterJump();

/// Evaluates the arguments of a call, from the first to the last or the other way round, into call.addresses.
template <bool fromLast>
inline void EvaluateArguments(const CallPart& call)
{
    for (int k = 0; k < call.nArgs; ++k) {
        const int i = fromLast ? call.nArgs - 1 - k : k;
        void* const address = call.args[i]->ex(call.args[i]);
        call.addresses[i] = call.mayMove ? Keep(call.args[i], address).place : address;
    }
    for (int i = 0; call.mayMove && i < call.nArgs; ++i) {
        call.addresses[i] = AddressOf({call.args[i], call.addresses[i]});
    }
}

/// Calls of native functions that are under way, the innermost first.
struct NativeFrame {
    const CallPart* call;
    NativeFrame* outer;
};
extern NativeFrame* nativeFrame;   // qvt_sci_execute_Native.cpp

void AbandonExec();           // leaves the namespaces of exec (qvt_sci_execute_Exec.cpp)
[[noreturn]] void EndRun();   // flushes the messages and ends the process with status 1
