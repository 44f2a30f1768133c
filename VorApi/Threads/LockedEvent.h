#pragma once

#include "VorApi/Event.h"
#include "VorApi/Threads/Locker.h"

#include <functional>
#include <utility>

namespace Vor {

/// An event with a recursive lock of its own, which is held while its callbacks run: removal waits for a raise on
/// another thread, and a callback may add and remove. A lock that fails is thrown with its status.
template <class... Args>
class LockedEvent {
public:
    using CallbackId = typename Event<Args...>::CallbackId;

    LockedEvent() { ThrowIfFailed(yLock_Construct(&lock)); }
    ~LockedEvent() { yLock_Destroy(lock); }

    LockedEvent(const LockedEvent&) = delete;
    LockedEvent& operator=(const LockedEvent&) = delete;

    CallbackId AddListener(std::function<void(Args...)> function) {
        const Locker locker(lock);
        return event.Add(std::move(function));
    }

    void RemoveListener(CallbackId& id) {
        const Locker locker(lock);
        event.Remove(id);
    }

    /// An exception of a callback ends the walk and passes on.
    void Raise(Args... args) const {
        const Locker locker(lock);
        event.Raise(args...);
    }

    std::size_t Count() const {
        const Locker locker(lock);
        return event.Count();
    }

    /// For whoever needs several of these calls in one.
    yLock Lock() const { return lock; }

private:
    yLock lock = nullptr; ///< guards the walk of `event`; ranks behind every lock of the one who raises
    Event<Args...> event;
};

} // namespace Vor
