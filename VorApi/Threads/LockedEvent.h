#pragma once

#include "VorApi/Event.h"
#include "VorApi/Handle.h"
#include "VorApi/Threads/Locker.h"

#include <functional>
#include <utility>

namespace Vor {

/// An event with its own recursive lock, which is held while the callbacks run: removal waits for a raise on another
/// thread, and a callback may add and remove, but must not wait for another thread that uses the event. A failure of
/// the lock is thrown with its status.
template <class... Args>
class LockedEvent {
public:
    using CallbackId = typename Event<Args...>::CallbackId;

    LockedEvent() { ThrowIfFailed(yLock_Construct(lock.Out())); }

    LockedEvent(const LockedEvent&) = delete;
    LockedEvent& operator=(const LockedEvent&) = delete;

    CallbackId AddListener(std::function<void(Args...)> function) {
        const Locker locker(lock.Get());
        return event.Add(std::move(function));
    }

    void RemoveListener(CallbackId& id) {
        const Locker locker(lock.Get());
        event.Remove(id);
    }

    /// Throws what a callback throws; the callbacks after it aren't called then.
    void Raise(Args... args) const {
        const Locker locker(lock.Get());
        event.Raise(args...);
    }

    std::size_t Count() const {
        const Locker locker(lock.Get());
        return event.Count();
    }

    /// For a caller that combines several of these calls.
    yLock Lock() const { return lock.Get(); }

private:
    /// Held during each use of `event`. Entered after all locks of the thread that raises.
    Handle<yLock, yLock_Destroy> lock;
    Event<Args...> event;
};

} // namespace Vor
