#pragma once

#include "VorApi/Event.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

namespace VorCore {

/// Calls its handlers with each published result set, on a thread of its own and in order of publishing.
class ResultHub {
public:
    using CallbackId = Vor::Event<void*>::CallbackId;

    ResultHub();
    /// Waits for a running handler; sets that weren't delivered yet are dropped.
    ~ResultHub();

    ResultHub(const ResultHub&) = delete;
    ResultHub& operator=(const ResultHub&) = delete;

    /// The handler is called with a `ResultSet`, which lives at least as long as the call. What it throws is logged.
    CallbackId AddResultHandler(std::function<void(void*)> handler);

    /// On return the handler isn't running and isn't called any more; it may be running only if it removes itself. A
    /// handler must not wait for a thread that is removing a handler. Clears the id.
    void RemoveResultHandler(CallbackId& id);

    std::size_t ResultHandlerCount() const;

    /// Adds a share of the set, queues it and returns. May be called on any thread. The queue has no limit.
    void Publish(void* resultSet);

    /// Waits until the handlers have been called with all that was published before; false at the time-out. A handler
    /// must not call it.
    bool Drain(std::uint64_t timeoutMicroseconds);

    /// Sets that were published and wait for the handlers; the one with which these are called isn't one of them.
    std::size_t QueuedCount() const;

private:
    class Worker;
    std::unique_ptr<Worker> worker;
};

} // namespace VorCore
