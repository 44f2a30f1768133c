#pragma once

#include "Vor/IAsyncEventReceiver.h"
#include "yApi/yThread.h"

#include <cstdint>

namespace Vor {

/// The loop for events that may take long, such as calls of devices: the main loop of all who need their events one
/// after the other, but not on the application's main loop, which they would hold up. They run on a thread of their
/// own, "DeviceLoop", which the first event starts and which lives as long as the process.
class AsyncLoop {
public:
    using ReceiverHandle = std::uint64_t;
    static constexpr ReceiverHandle NoReceiver = 0;

    /// True exactly on the thread of the application's main loop, which isn't this loop's: the one that runs the
    /// MainLoop or, until one does, that made it.
    static bool OnMainLoop();
    static AsyncLoop& MainLoop();

    /// The receiver is borrowed until it is deregistered. From any thread.
    ReceiverHandle RegisterHandler(IAsyncEventReceiver& receiver);
    /// No ProcessEvent of the receiver begins afterwards. Waits for a running one, but not on the loop's own thread.
    /// False when it still ran after `timeout` microseconds; then what it uses must live on until it has returned. An
    /// unknown handle is ignored.
    bool DeregisterHandler(ReceiverHandle handle, std::uint64_t timeout = yINFINITE);
    /// Causes one later ProcessEvent on the loop, never inside this call. From any thread. Throws -999 for an unknown
    /// handle, and the status of a thread that can't be started; the name of its fault is
    /// "AsyncLoop_EnqueueImmediate".
    void EnqueueImmediate(ReceiverHandle handle);

    AsyncLoop(const AsyncLoop&) = delete;
    AsyncLoop& operator=(const AsyncLoop&) = delete;

private:
    AsyncLoop() = default;
    ~AsyncLoop() = delete;
};

} // namespace Vor
