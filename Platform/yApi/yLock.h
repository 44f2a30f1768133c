#pragma once

#include "yApi/yMemory.h"
#include "yApi/yStatus.h"

/// A recursive lock. Calls with a null lock return `yERROR_PARAMETER`.
using yLock = struct yLockObject*;

yStatus yLock_Construct(yLock* lock, yAllocator allocator = nullptr);
/// Null is legal. No thread may hold the lock or wait for it.
yStatus yLock_Destroy(yLock lock);

/// Waits until the lock is free. Its holder may enter it again and must then leave it as often.
yStatus yLock_Enter(yLock lock);
/// `yERROR_STATE`, without any effect, when the calling thread doesn't hold the lock.
yStatus yLock_Exit(yLock lock);

/// How often the holder has entered the lock, 0 when it is free. For tests.
unsigned yLock_Depth(yLock lock);
/// Whether the calling thread holds the lock. For tests and assertions.
bool yLock_IsOwner(yLock lock);
