// Predefined names: how the files qvt_sci_aux_Builtin*.cpp declare theirs. For qvt_sci* files only.
//
// A predefined name is one row: the declaration as the root namespace parses it, the comment that a user reads behind
// it, and what it stands for. A native function gets a pointer for each parameter: to the value of a scalar, to the
// first element of an array. It does not report errors; failure is in its result, as in the C library.
//
// Whoever writes text asks how much room the array has and cuts there; whoever reads text stops at the array's end.

#pragma once

#include "qvt_sci_execute_Internal.h"

#include <cstdint>
#include <cstring>
#include <span>
#include <string>

struct Builtin {
    const char* declaration;   // "double sqrt(double x);", or a line without a symbol: heading, comment, blank
    const char* comment;       // null: none
    const void* native;        // function or value; null on a line without a symbol
};

template <class Result, class... Parameters>
const void* Native(Result (*function)(Parameters...))
{
    return reinterpret_cast<const void*>(function);
}

// The rows by section, in the order in which users see them.
std::span<const Builtin> ConstantBuiltins();   // qvt_sci_aux_BuiltinMath.cpp
std::span<const Builtin> SystemBuiltins();     // qvt_sci_aux_BuiltinSystem.cpp
std::span<const Builtin> MathBuiltins();       // qvt_sci_aux_BuiltinMath.cpp
std::span<const Builtin> StringBuiltins();     // qvt_sci_aux_BuiltinString.cpp
std::span<const Builtin> FileBuiltins();       // qvt_sci_aux_BuiltinFile.cpp
std::span<const Builtin> SortBuiltins();       // qvt_sci_aux_BuiltinSort.cpp
std::span<const Builtin> SolverBuiltins();     // qvt_sci_aux_BuiltinSolver.cpp

inline constexpr size_t UNKNOWN_ROOM = PTRDIFF_MAX;   // of an array whose length nobody told: taken as unlimited

inline size_t RoomOf(int64_t elements) { return elements < 0 ? UNKNOWN_ROOM : size_t(elements); }

/// Elements from the address passed as argument `index` of the native under way to the end of its array.
inline size_t RoomOfArgument(int index) { return RoomOf(qvt_sci_ArgLength(index)); }

/// Length of a text that may lack its null byte: then it ends with its array. Null counts as empty.
inline size_t TextLength(const char* text, size_t room) { return text ? strnlen(text, room) : 0; }

/// A text as a C string. It is copied only if its array holds no null byte.
class CText {
public:
    CText(const char* text, size_t room) : _length(TextLength(text, room))
    {
        if (text && _length < room) {
            _text = text;
        } else {
            if (text) _copy.assign(text, _length);
            _text = _copy.c_str();
        }
    }

    CText(const CText&) = delete;
    CText& operator=(const CText&) = delete;

    const char* c_str() const { return _text; }
    size_t length() const { return _length; }

private:
    size_t _length;
    const char* _text;
    std::string _copy;
};

/// A text argument of the native under way.
class TextArgument : public CText {
public:
    TextArgument(const char* text, int index) : CText(text, RoomOfArgument(index)) {}
};
