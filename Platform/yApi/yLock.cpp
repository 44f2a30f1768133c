#include "yApi/yLock.h"

#include "yApi/yFault.h"

#include <atomic>
#include <mutex>
#include <new>
#include <pthread.h>

/// On a cache line of its own, so that locks of different threads don't slow each other down.
struct alignas(64) yLockObject {
    explicit yLockObject(yAllocator allocator)
        : allocator(allocator) {}

    bool IsOwner() const {
        return depth.load(std::memory_order_relaxed) > 0 &&
               pthread_equal(owner.load(std::memory_order_relaxed), pthread_self()) != 0;
    }

    const yAllocator allocator;
    std::mutex mutex; ///< held by the owner from its first entering to its last leaving
    std::atomic<pthread_t> owner{};
    std::atomic<unsigned> depth{0};
};

yStatus yLock_Construct(yLock* lock, yAllocator allocator) {
    if (const yStatus fault = yFault_Check("yLock_Construct"); fault != yOK) {
        return fault;
    }
    if (lock == nullptr) {
        return yERROR_PARAMETER;
    }
    *lock = new (yMemory_Allocate(allocator, sizeof(yLockObject), alignof(yLockObject))) yLockObject(allocator);
    return yOK;
}

yStatus yLock_Destroy(yLock lock) {
    if (lock == nullptr) {
        return yOK;
    }
    const yAllocator allocator = lock->allocator;
    lock->~yLockObject();
    yMemory_Free(allocator, lock, sizeof(yLockObject), alignof(yLockObject));
    return yOK;
}

yStatus yLock_Enter(yLock lock) {
    if (const yStatus fault = yFault_Check("yLock_Enter"); fault != yOK) {
        return fault;
    }
    if (lock == nullptr) {
        return yERROR_PARAMETER;
    }
    if (lock->IsOwner()) {
        lock->depth.store(lock->depth.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        return yOK;
    }
    lock->mutex.lock();
    lock->owner.store(pthread_self(), std::memory_order_relaxed);
    lock->depth.store(1, std::memory_order_relaxed);
    return yOK;
}

yStatus yLock_Exit(yLock lock) {
    if (lock == nullptr) {
        return yERROR_PARAMETER;
    }
    if (!lock->IsOwner()) {
        return yERROR_STATE;
    }
    const unsigned depth = lock->depth.load(std::memory_order_relaxed) - 1;
    if (depth == 0) {
        lock->owner.store(pthread_t{}, std::memory_order_relaxed);
    }
    lock->depth.store(depth, std::memory_order_relaxed);
    if (depth == 0) {
        lock->mutex.unlock();
    }
    return yFault_Check("yLock_Exit");
}

unsigned yLock_Depth(yLock lock) {
    return lock == nullptr ? 0 : lock->depth.load(std::memory_order_relaxed);
}

bool yLock_IsOwner(yLock lock) {
    return lock != nullptr && lock->IsOwner();
}
