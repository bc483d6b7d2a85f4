// Developers' switches of the execution engine.
//
// KORVO_FUZZ (CMake option of that name): turn it on to fuzz running code. A user's program may run forever or index an
// array whose dimension nobody told; that is its own affair and no fault of the engine. With the switch such a program
// is left by a function that the fuzz target supplies, so that whatever the sanitizers still find is a fault.

#pragma once

#include "qvt_sci_Internal.h"

#ifdef KORVO_FUZZ

struct FuzzSwitches {
    long stepsLeft;       // calls, turns of loops, elements of vectors, parses of exec
    void (*leaveRun)();   // does not return; null: nothing is left
};
extern FuzzSwitches qvt_sci_fuzz;   // qvt_sci_execute.cpp

inline void LeaveRunIf(bool condition)
{
    if (condition && qvt_sci_fuzz.leaveRun) qvt_sci_fuzz.leaveRun();
}

inline void CountSteps(long n)
{
    qvt_sci_fuzz.stepsLeft -= n;
    LeaveRunIf(qvt_sci_fuzz.stepsLeft < 0);
}

/// Leaves the run if fewer than so many elements are known to lie at the address, a value of the array or row.
inline void CheckRoom(const Node* array, const void* address, int64_t elements)
{
    LeaveRunIf(NodeRoom(array, address) < elements);
}

#else

inline void CountSteps(long) {}
inline void CheckRoom(const Node*, const void*, int64_t) {}
#endif
