#include "Vor/AsyncLoop.h"

#include "Vor/CallGate.h"
#include "Vor/Exception.h"
#include "Vor/LoopCore.h"

#include <map>
#include <memory>
#include <mutex>

namespace Vor {

namespace {

struct Receiver {
    explicit Receiver(IAsyncEventReceiver& target)
        : target(target) {}

    IAsyncEventReceiver& target;
    CallGate gate;
};

struct Receivers {
    /// Guards the members below. No other lock is taken while it is held.
    std::mutex mutex;
    std::map<AsyncLoop::ReceiverHandle, std::shared_ptr<Receiver>> byHandle;
    AsyncLoop::ReceiverHandle lastHandle = AsyncLoop::NoReceiver;

    static Receivers& Instance() {
        static Receivers* const Instance = new Receivers;
        return *Instance;
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
    auto entry = std::make_shared<Receiver>(receiver);
    Receivers& receivers = Receivers::Instance();
    const std::lock_guard lock(receivers.mutex);
    receivers.byHandle.emplace(receivers.lastHandle + 1, std::move(entry));
    return ++receivers.lastHandle;
}

void AsyncLoop::DeregisterHandler(ReceiverHandle handle) {
    Receivers& receivers = Receivers::Instance();
    std::shared_ptr<Receiver> receiver;
    {
        const std::lock_guard lock(receivers.mutex);
        const auto found = receivers.byHandle.find(handle);
        if (found == receivers.byHandle.end()) {
            return;
        }
        receiver = std::move(found->second);
        receivers.byHandle.erase(found);
    }
    receiver->gate.Close();
}

void AsyncLoop::EnqueueImmediate(ReceiverHandle handle) {
    Receivers& receivers = Receivers::Instance();
    std::shared_ptr<Receiver> receiver;
    {
        const std::lock_guard lock(receivers.mutex);
        const auto found = receivers.byHandle.find(handle);
        if (found == receivers.byHandle.end()) {
            Throw(yERROR_NOT_FOUND, "The main loop has no receiver %llu", handle);
        }
        receiver = found->second;
    }
    LoopCore::Instance().Post([receiver] {
        if (const CallGate::Passage passage(receiver->gate); passage) {
            receiver->target.ProcessEvent();
        }
    });
}

} // namespace Vor
