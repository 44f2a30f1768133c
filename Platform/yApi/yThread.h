#pragma once

#include "yApi/yMemory.h"
#include "yApi/yStatus.h"

#include <cstdint>
#include <functional>

/// A time-out that never ends. Time-outs and durations are microseconds.
inline constexpr std::uint64_t yINFINITE = UINT64_MAX;

/// A named thread: construct, name, start, join, destroy, all by its owner. Calls with a null thread return
/// `yERROR_PARAMETER`.
using yThread = struct yThreadObject*;

yStatus yThread_Construct(yThread* thread, std::function<yStatus()> function, yAllocator allocator = nullptr);
/// Waits for the thread's end if it was started and not joined. Null is legal.
yStatus yThread_Destroy(yThread thread);

/// The system keeps the first 15 characters. May be called before or after the start.
yStatus yThread_SetName(yThread thread, const char* name);
const char* yThread_Name(yThread thread);

/// `yERROR_STATE` for a thread that was started before. An exception that leaves the function ends the thread with
/// `yERROR` and isn't passed on.
yStatus yThread_Start(yThread thread);

/// Waits for the end of the function and stores its status in `exit`, which may be null. `yERROR_TIMEOUT` when it still
/// runs at the time-out, `yERROR_STATE` for a thread that wasn't started, was joined before, or is the calling one.
yStatus yThread_Join(yThread thread, std::uint64_t timeoutMicroseconds, yStatus* exit);

yStatus yThread_Sleep(std::uint64_t microseconds);
