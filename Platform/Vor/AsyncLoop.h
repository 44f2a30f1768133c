#pragma once

#include "Vor/IAsyncEventReceiver.h"

#include <cstdint>

namespace Vor {

/// The main loop, for those who need their events there. It exists for the whole life of the process; events that are
/// enqueued while nobody runs it wait.
class AsyncLoop {
public:
    using ReceiverHandle = std::uint64_t;
    static constexpr ReceiverHandle NoReceiver = 0;

    /// True exactly on the main loop's thread: the one that runs the MainLoop or, until one does, that made it.
    static bool OnMainLoop();
    static AsyncLoop& MainLoop();

    /// The receiver is borrowed until it is deregistered. From any thread.
    ReceiverHandle RegisterHandler(IAsyncEventReceiver& receiver);
    /// On return no ProcessEvent of the receiver runs or will run; it waits for a running one, but on the loop's own
    /// thread it doesn't wait. An unknown handle is ignored.
    void DeregisterHandler(ReceiverHandle handle);
    /// Causes one later ProcessEvent on the loop, never inside this call. From any thread. Throws -999 for an unknown
    /// handle.
    void EnqueueImmediate(ReceiverHandle handle);

    AsyncLoop(const AsyncLoop&) = delete;
    AsyncLoop& operator=(const AsyncLoop&) = delete;

private:
    AsyncLoop() = default;
    ~AsyncLoop() = delete;
};

} // namespace Vor
