#pragma once

#include "yApi/yStatus.h"

#include <atomic>

/// Fault injection for tests: makes a named call report a given status instead of doing its work.
/// Each call that can be made to fail calls `yFault_Check` with its own name, such as "yLock_Enter".

/// Arms `name`: the first `skip` calls succeed, the next `times` ones report `status`. Several names, and several
/// entries of one name, may be armed at once; the entries of a name are used in the order in which they were set.
void yFault_Set(const char* name, yStatus status, unsigned skip = 0, unsigned times = 1);

/// As `yFault_Set`, but counts and fails only the calls of the calling thread.
void yFault_SetHere(const char* name, yStatus status, unsigned skip = 0, unsigned times = 1);

/// Disarms everything.
void yFault_Clear();

/// Number of failures that were reported since the last `yFault_Clear`.
unsigned yFault_HitCount();

/// For `yFault_Check` alone: how many entries are armed, and the status of a call while any is.
extern std::atomic<int> yFault_armedCount;
yStatus yFault_Consult(const char* name);

/// `yOK`, or the status to report in place of doing the work. Costs one relaxed load while nothing is armed.
inline yStatus yFault_Check(const char* name) {
    return yFault_armedCount.load(std::memory_order_relaxed) == 0 ? yOK : yFault_Consult(name);
}
