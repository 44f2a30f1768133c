#include "VorControl/Control/ControlDeviceOperations.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/Handle.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Threads/Locker.h"
#include "VorControl/Control/IControlScanEngineInterface.h"
#include "VorControl/Control/RunCaught.h"
#include "yApi/yLock.h"

#include <atomic>
#include <exception>
#include <list>
#include <map>
#include <utility>

namespace VorControl {

namespace {

constexpr std::uint32_t MaxDroppableCount = 19; ///< requests that may wait when a droppable one is added
constexpr std::uint64_t EndTimeout = 200000;    ///< microseconds

unsigned Number(ControlDeviceActionId action) {
    return static_cast<unsigned>(action);
}

} // namespace

struct ControlDeviceOperations::Work {
    using Queue = std::list<std::shared_ptr<OperationRequest>>;

    IControlScanEngineInterface& scanEngineInterface;
    /// Guards `queue`, for a few instructions; innermost.
    Vor::Handle<yLock, yLock_Destroy> queueLock;
    Queue queue;
    std::atomic<std::uint32_t> eventPending = 0; ///< 1 while an event of the loop is to come
    /// Guards `opEndEvents`. Held while handlers run, so it ranks before all locks that these use.
    Vor::Handle<yLock, yLock_Destroy> opEndLock;
    std::map<std::string, OpEndEvent> opEndEvents; ///< by client id
    std::atomic<std::uint32_t> pendingDigitalOutputSetStateRequestCount = 0;

    explicit Work(IControlScanEngineInterface& scanEngineInterface)
        : scanEngineInterface(scanEngineInterface) {
        Vor::ThrowIfFailed(yLock_Construct(queueLock.Out()));
        Vor::ThrowIfFailed(yLock_Construct(opEndLock.Out()));
    }

    bool Append(const std::shared_ptr<OperationRequest>& request, bool canDrop) {
        const bool isOutput = request->actionId == ControlDeviceActionId::SetDigitalOutputState;
        if (!isOutput && canDrop) {
            Vor::LogError("The current control device action ID (%d) should not be able to drop.", request->actionId);
            return false;
        }
        const Vor::Locker locker(queueLock.Get());
        if (isOutput && !IncrementDigitalOutputStateRequestCount(canDrop)) {
            return false;
        }
        queue.push_back(request);
        return true;
    }

    void Withdraw(const std::shared_ptr<OperationRequest>& request) {
        bool withdrawn = false;
        {
            const Vor::Locker locker(queueLock.Get());
            withdrawn = std::erase(queue, request) > 0;
        }
        if (withdrawn && request->actionId == ControlDeviceActionId::SetDigitalOutputState) {
            DecrementDigitalOutputStateRequestCount();
        }
    }

    bool IsEmpty() const {
        const Vor::Locker locker(queueLock.Get());
        return queue.empty();
    }

    /// Null when nothing is queued.
    std::shared_ptr<OperationRequest> PopFirst() {
        const Vor::Locker locker(queueLock.Get());
        if (queue.empty()) {
            return nullptr;
        }
        auto first = std::move(queue.front());
        queue.pop_front();
        return first;
    }

    /// Called with the queue's lock held, so that the count only falls meanwhile.
    bool IncrementDigitalOutputStateRequestCount(bool canDrop) {
        if (canDrop && pendingDigitalOutputSetStateRequestCount.load() > MaxDroppableCount) {
            return false;
        }
        ++pendingDigitalOutputSetStateRequestCount;
        return true;
    }

    void DecrementDigitalOutputStateRequestCount() {
        std::uint32_t count = pendingDigitalOutputSetStateRequestCount.load();
        do {
            if (count < 1) {
                Vor::LogError("pendingDigitalOutputSetStateRequestCount shouldn't be less than 1!");
                return;
            }
        } while (!pendingDigitalOutputSetStateRequestCount.compare_exchange_weak(count, count - 1));
    }

    void ProcessEvent() {
        eventPending.store(0);
        while (const auto request = PopFirst()) {
            ProcessOperation(*request);
        }
    }

    void ProcessOperation(const OperationRequest& request) {
        const unsigned action = Number(request.actionId);
        ControlDeviceOperationsResults results{.clientId = request.clientId, .actionId = request.actionId};
        RunCaught([&] { Perform(request, results); },
                  [&](const std::exception& e) {
                      Vor::LogThrown(e, "Exception processing action id %u", action);
                      results.status = yERROR;
                  });
        RunCaught([&] { NotifyOperationEnd(request, results); },
                  [&](const std::exception& e) {
                      Vor::LogThrown(e, "Exception notifying operation end for action id %u", action);
                  });
    }

    void Perform(const OperationRequest& request, ControlDeviceOperationsResults& results) {
        switch (request.actionId) {
        case ControlDeviceActionId::FindAvailableSensors:
            results.devices =
                std::make_shared<std::vector<ControlAvailableDeviceProp>>(scanEngineInterface.FindAvailableSensors());
            results.status = yOK;
            return;
        case ControlDeviceActionId::SetDigitalOutputState:
            Vor::ThrowIfFailed(scanEngineInterface.SetDigitalOutputState(request.provider, request.port, request.state,
                                                                         request.target));
            results.status = yOK;
            return;
        }
        Vor::LogError("Unexpected action id %u", Number(request.actionId));
        results.status = yERROR_PARAMETER;
    }

    void NotifyOperationEnd(const OperationRequest& request, const ControlDeviceOperationsResults& results) {
        if (request.actionId == ControlDeviceActionId::SetDigitalOutputState) {
            DecrementDigitalOutputStateRequestCount();
        }
        try {
            OnOperationEnd(request.clientId, results);
        } catch (const std::exception& e) {
            Vor::LogThrown(e, "EXCEPTION THROWN: ");
            throw;
        }
    }

    void OnOperationEnd(const std::string& clientId, const ControlDeviceOperationsResults& results) {
        const Vor::Locker locker(opEndLock.Get());
        const auto found = opEndEvents.find(clientId);
        if (found != opEndEvents.end()) {
            found->second.Raise(results);
        }
    }

    /// Called with the lock of the handlers held.
    OpEndEvent& OperationEndEvent(const std::string& clientId) { return opEndEvents[clientId]; }
};

ControlDeviceOperations::ControlDeviceOperations(IControlScanEngineInterface& scanEngineInterface)
    : loop(Vor::AsyncLoop::MainLoop())
    , work(std::make_shared<Work>(scanEngineInterface))
    , receiver(loop.RegisterHandler(*this)) {}

ControlDeviceOperations::~ControlDeviceOperations() {
    Vor::CleanUp([this] {
        Work::Queue dropped;
        const Vor::Locker locker(work->queueLock.Get());
        dropped.swap(work->queue);
    });
    Vor::CleanUp([this] {
        if (!loop.DeregisterHandler(receiver, EndTimeout)) {
            Vor::LogError("A call of a device doesn't return. Nothing waits for it any more.");
        }
    });
}

ControlDeviceOperations::OpEndEvent::CallbackId
ControlDeviceOperations::AddOpEndEventHandler(const std::string& clientId,
                                              std::function<void(ControlDeviceOperationsResults)> handler) {
    const Vor::Locker locker(work->opEndLock.Get());
    return work->OperationEndEvent(clientId).Add(std::move(handler));
}

void ControlDeviceOperations::RemoveOpEndEventHandler(const std::string& clientId, OpEndEvent::CallbackId& id) {
    const Vor::Locker locker(work->opEndLock.Get());
    work->OperationEndEvent(clientId).Remove(id);
}

bool ControlDeviceOperations::FindAvailableSensors(const std::string& clientId) {
    return RunSynchronousOp({.clientId = clientId, .actionId = ControlDeviceActionId::FindAvailableSensors}, false);
}

bool ControlDeviceOperations::SetDigitalOutputState(const std::string& clientId,
                                                    std::shared_ptr<VorCommon::IDigitalOutputProvider> provider,
                                                    unsigned long long port, bool canDrop, bool state,
                                                    long long target) {
    return RunSynchronousOp({.clientId = clientId,
                             .actionId = ControlDeviceActionId::SetDigitalOutputState,
                             .provider = std::move(provider),
                             .port = port,
                             .state = state,
                             .target = target},
                            canDrop);
}

bool ControlDeviceOperations::RunSynchronousOp(OperationRequest request, bool canDrop) {
    const auto queued = std::make_shared<OperationRequest>(std::move(request));
    if (!work->Append(queued, canDrop)) {
        return false;
    }
    const auto wake = [this](const auto& giveUp) {
        std::uint32_t none = 0;
        if (!work->eventPending.compare_exchange_strong(none, 1)) {
            return;
        }
        try {
            loop.EnqueueImmediate(receiver);
        } catch (...) {
            RunCaught(giveUp, [](const std::exception& e) { Vor::LogThrown(e, "Exception withdrawing a request"); });
            work->eventPending.store(0);
            throw;
        }
    };
    try {
        wake([&] { work->Withdraw(queued); });
    } catch (...) {
        // A request that another thread has queued meanwhile relied on the same event.
        const auto wakeAgain = [&] {
            if (!work->IsEmpty()) {
                wake([] {});
            }
        };
        RunCaught(wakeAgain, [](const std::exception& e) { Vor::LogThrown(e, "Exception waking the device loop"); });
        throw;
    }
    return true;
}

std::uint32_t ControlDeviceOperations::PendingDigitalOutputSetStateRequestCount() const {
    return work->pendingDigitalOutputSetStateRequestCount.load();
}

void ControlDeviceOperations::ClearPendingOperations(ControlDeviceActionId actionId) {
    Work::Queue cleared;
    {
        const Vor::Locker locker(work->queueLock.Get());
        for (auto request = work->queue.begin(); request != work->queue.end();) {
            const auto next = std::next(request);
            if ((*request)->actionId == actionId) {
                cleared.splice(cleared.end(), work->queue, request);
            }
            request = next;
        }
        if (actionId == ControlDeviceActionId::SetDigitalOutputState) {
            work->pendingDigitalOutputSetStateRequestCount.store(0);
        }
    }
    Vor::LogInfo("Cleared %u queued operations of actionId %hhu.", cleared.size(), actionId);
}

void ControlDeviceOperations::ProcessEvent() {
    const auto kept = work;
    kept->ProcessEvent();
}

} // namespace VorControl
