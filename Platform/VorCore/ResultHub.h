#pragma once

#include "VorApi/Event.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

namespace VorCore {

/// Hands result sets to its handlers on a thread of its own, in order of publishing.
class ResultHub {
public:
    using CallbackId = Vor::Event<void*>::CallbackId;

    ResultHub();
    /// Waits for a running handler; sets that weren't delivered yet are dropped.
    ~ResultHub();

    ResultHub(const ResultHub&) = delete;
    ResultHub& operator=(const ResultHub&) = delete;

    /// The handler gets a `ResultSet`, which is held for the call. Its exceptions are logged and go no further.
    CallbackId AddResultHandler(std::function<void(void*)> handler);

    /// On return the handler doesn't run and never will again; a handler that removes itself is not waited for. A
    /// handler must not wait for a thread that is removing a handler. Clears the id.
    void RemoveResultHandler(CallbackId& id);

    std::size_t ResultHandlerCount() const;

    /// Queues the set for delivery, with a share of its own, and returns. For any thread; there is no limit.
    void Publish(void* resultSet);

    /// Waits until all that was published before has been delivered. False at the time-out. Not for handlers.
    bool Drain(std::uint64_t timeoutMicroseconds);

private:
    class Worker;
    std::unique_ptr<Worker> worker;
};

} // namespace VorCore
