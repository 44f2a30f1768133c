#include "Vor/AsyncLoop.h"

#include "Vor/Exception.h"
#include "Vor/LoopCore.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Threads/NamedThread.h"
#include "yApi/yFault.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

namespace Vor {

namespace {

/// The receivers, the events and the thread of the loop. It is never destroyed, so the thread may outlive main.
struct Events {
    using Handle = AsyncLoop::ReceiverHandle;

    /// Guards the members below. No lock of others is taken while it is held.
    std::mutex mutex;
    std::condition_variable changed; ///< an event was queued, or one has ended
    std::map<Handle, IAsyncEventReceiver*> receivers;
    std::deque<Handle> queue;
    Handle lastHandle = AsyncLoop::NoReceiver;
    Handle running = AsyncLoop::NoReceiver; ///< whose event runs
    std::thread::id threadId;
    NamedThread thread;

    static Events& Instance() {
        static Events* const Instance = new Events;
        return *Instance;
    }

    [[noreturn]] void Run() {
        std::unique_lock lock(mutex);
        threadId = std::this_thread::get_id();
        for (;;) {
            changed.wait(lock, [this] { return !queue.empty(); });
            const auto receiver = receivers.find(queue.front());
            if (receiver != receivers.end()) {
                running = queue.front();
                IAsyncEventReceiver& target = *receiver->second;
                lock.unlock();
                RunLogged("Exception in an event of the device loop", [&] { target.ProcessEvent(); });
                lock.lock();
                running = AsyncLoop::NoReceiver;
                changed.notify_all();
            }
            queue.pop_front();
        }
    }
};

} // namespace

bool AsyncLoop::OnMainLoop() {
    return LoopCore::Instance().OnThread();
}

AsyncLoop& AsyncLoop::MainLoop() {
    static AsyncLoop* const Instance = new AsyncLoop;
    return *Instance;
}

AsyncLoop::ReceiverHandle AsyncLoop::RegisterHandler(IAsyncEventReceiver& receiver) {
    Events& events = Events::Instance();
    const std::lock_guard lock(events.mutex);
    events.receivers.emplace(events.lastHandle + 1, &receiver);
    return ++events.lastHandle;
}

bool AsyncLoop::DeregisterHandler(ReceiverHandle handle, std::uint64_t timeout) {
    Events& events = Events::Instance();
    std::unique_lock lock(events.mutex);
    if (events.receivers.erase(handle) == 0 || events.threadId == std::this_thread::get_id()) {
        return true;
    }
    const auto ended = [&] { return events.running != handle; };
    if (timeout == yINFINITE) {
        events.changed.wait(lock, ended);
        return true;
    }
    return events.changed.wait_for(lock, LoopCore::Duration(timeout), ended);
}

void AsyncLoop::EnqueueImmediate(ReceiverHandle handle) {
    ThrowIfFailed(yFault_Check("AsyncLoop_EnqueueImmediate"));
    Events& events = Events::Instance();
    const std::lock_guard lock(events.mutex);
    if (!events.receivers.contains(handle)) {
        Throw(yERROR_NOT_FOUND, "The device loop has no receiver %llu", handle);
    }
    if (!events.thread) {
        events.thread = NamedThread("DeviceLoop", [&events]() -> yStatus { events.Run(); });
    }
    events.queue.push_back(handle);
    events.changed.notify_all();
}

} // namespace Vor
