#pragma once

#include "yApi/yMemory.h"
#include "yApi/yStatus.h"

/// A recursive lock. A null lock gives `yERROR_PARAMETER`.
using yLock = struct yLockObject*;

yStatus yLock_Construct(yLock* lock, yAllocator allocator = nullptr);
/// Null is legal. Nobody may hold the lock or wait for it.
yStatus yLock_Destroy(yLock lock);

/// Waits until the lock is free; its holder may enter again and leaves as often.
yStatus yLock_Enter(yLock lock);
/// `yERROR_STATE`, without any effect, when the calling thread doesn't hold the lock.
yStatus yLock_Exit(yLock lock);

/// How often the holder has entered, 0 when nobody holds the lock. For tests.
unsigned yLock_Depth(yLock lock);
/// Whether the calling thread holds the lock. For tests and assertions.
bool yLock_IsOwner(yLock lock);
