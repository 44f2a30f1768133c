#include "VorControl/Control/ControlProtocolOperations.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Threads/Locker.h"
#include "yApi/yThread.h"
#include "yApi/yTime.h"

#include <utility>

namespace VorControl {

using VorScan::AlignCompletionStatus;

namespace {

constexpr std::uint64_t QueueWait = 100000;    ///< microseconds
constexpr std::uint64_t SleepOfAction = 10000; ///< microseconds

template <class Action>
unsigned Number(Action action) {
    return static_cast<unsigned>(action);
}

} // namespace

/// A registration for the end of an alignment. It reports one end: a second end is ignored, and so is an end after the
/// alignment was abandoned.
struct ControlProtocolOperations::PendingAlignment {
    std::mutex mutex; ///< guards `operations`; held while the end is queued, so ranks before the queue's mutex
    ControlProtocolOperations* operations;
    const std::string scannerId;
    Vor::Event<AlignCompletionStatus>::CallbackId callbackId;

    PendingAlignment(ControlProtocolOperations& operations, std::string scannerId)
        : operations(&operations)
        , scannerId(std::move(scannerId)) {}

    void Complete(const std::string& serviceId, AlignCompletionStatus status) {
        const std::lock_guard guard(mutex);
        if (operations != nullptr) {
            operations->AlignmentCompletedCallback(serviceId, scannerId, status);
            operations = nullptr;
        }
    }

    /// Returns whether the end wasn't reported yet. It isn't from now on.
    bool Abandon() {
        const std::lock_guard guard(mutex);
        return std::exchange(operations, nullptr) != nullptr;
    }
};

ControlProtocolOperations::ControlProtocolOperations(IControlSystemInterface& systemInterface,
                                                     IControlScanEngineInterface& scanEngineInterface,
                                                     VorCommon::IRuntimeCache& runtimeCache)
    : systemInterface(systemInterface)
    , scanEngineInterface(scanEngineInterface)
    , runtimeCache(runtimeCache)
    , asyncRunner(std::make_unique<Vor::AsyncRunner>()) {
    Vor::ThrowIfFailed(yLock_Construct(opEndLock.Out()));
    dispatcherThread = Vor::NamedThread("CtlProtoOp.Disp", [this] { return DispatcherThreadFx(); });
}

ControlProtocolOperations::~ControlProtocolOperations() {
    asyncRunner.reset();
    dispatcherRunning.store(false, std::memory_order_relaxed);
    Vor::CleanUp([this] {
        dispatcherQueue.Add(nullptr); // ends the queue wait
        dispatcherThread.Join();
        dispatcherQueue.Clear();
    });
    dispatcherThread.Reset();
    Vor::CleanUp([this] { AbandonAlignment(); });
}

bool ControlProtocolOperations::OperationBegin() {
    std::uint32_t free = 0;
    return operationInProgress.compare_exchange_strong(free, 1);
}

std::uint32_t ControlProtocolOperations::OperationFinish() {
    return operationInProgress.exchange(0);
}

void ControlProtocolOperations::ValidateStringArg(const char* arg, const char* name, ActionId action) {
    if (arg == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "No %s for action %u", name, Number(action));
    }
    if (*arg == '\0') {
        Vor::Throw(yERROR_PARAMETER, "Empty %s for action %u", name, Number(action));
    }
}

void ControlProtocolOperations::ValidateScannerId(const char* scannerId, ActionId action) {
    if (scannerId == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "Missing scanner id parameter for action %u", Number(action));
    }
}

void ControlProtocolOperations::StartScan(const std::string& serviceId) {
    RunSynchronousOp(serviceId, ActionId::StartScan, {});
}

void ControlProtocolOperations::StopScan(const std::string& serviceId) {
    RunSynchronousOp(serviceId, ActionId::StopScan, {});
}

void ControlProtocolOperations::Alignment(const std::string& serviceId, const char* scannerId) {
    ValidateScannerId(scannerId, ActionId::Alignment);
    RunSynchronousOp(serviceId, ActionId::Alignment, {.stringArg = scannerId});
}

void ControlProtocolOperations::ClearAlignment(const std::string& serviceId, const char* scannerId) {
    ValidateScannerId(scannerId, ActionId::ClearAlignment);
    RunSynchronousOp(serviceId, ActionId::ClearAlignment, {.stringArg = scannerId});
}

void ControlProtocolOperations::LoadJob(const std::string& serviceId, const char* jobName) {
    ValidateStringArg(jobName, "job name", ActionId::LoadJob);
    RunSynchronousOp(serviceId, ActionId::LoadJob, {.stringArg = jobName});
}

void ControlProtocolOperations::SoftwareTrigger(const std::string& serviceId, const char* scannerId) {
    ValidateScannerId(scannerId, ActionId::SoftwareTrigger);
    RunSynchronousOp(serviceId, ActionId::SoftwareTrigger, {.stringArg = scannerId});
}

void ControlProtocolOperations::FactoryRestore(const std::string& serviceId) {
    RunSynchronousOp(serviceId, ActionId::FactoryRestore, {});
}

void ControlProtocolOperations::Restart(const std::string& serviceId) {
    RunSynchronousOp(serviceId, ActionId::Restart, {});
}

void ControlProtocolOperations::SetNextIpConfig(const std::string& serviceId, const yIpConfig& config, bool flag) {
    RunSynchronousOp(serviceId, ActionId::SetNextIpConfig, {.ipConfig = config, .flagA = flag});
}

void ControlProtocolOperations::BlinkLed(const std::string& serviceId, bool systemLed, bool ledBlinkEnabled,
                                         bool ledLightOn) {
    RunSynchronousOp(serviceId, ActionId::BlinkLed,
                     {.flagB = systemLed, .flagC = ledBlinkEnabled, .flagD = ledLightOn});
}

void ControlProtocolOperations::SetLocalNodeDateTime(const std::string& serviceId, long long dateTime) {
    RunSynchronousOp(serviceId, ActionId::SetLocalNodeDateTime, {.dateTime = dateTime});
}

void ControlProtocolOperations::SetLocalNodeNtpHost(const std::string& serviceId, const std::string& host, bool flag) {
    RunSynchronousOp(serviceId, ActionId::SetLocalNodeNtpHost, {.flagA = flag, .ntpHost = host});
}

void ControlProtocolOperations::RunSynchronousOp(const std::string& serviceId, ActionId action,
                                                 ControlOperationsParams params) {
    if (!OperationBegin()) {
        Vor::Throw(yERROR_BUSY, "Protocol %s operation %u rejected because another operation is in progress", serviceId,
                   Number(action));
    }
    if (action == ActionId::SoftwareTrigger) {
        const std::lock_guard guard(recordsMutex);
        begins[serviceId] = yTime_Monotonic();
    }
    asyncRunner->Run([this, serviceId, action, params = std::move(params)] { RunAction(serviceId, action, params); });
}

std::uint64_t ControlProtocolOperations::BeginOfLastTrigger(const std::string& serviceId) const {
    const std::lock_guard guard(recordsMutex);
    const auto found = begins.find(serviceId);
    return found == begins.end() ? 0 : found->second;
}

ControlProtocolOperations::Failure ControlProtocolOperations::LastFailure(const std::string& serviceId) const {
    const std::lock_guard guard(recordsMutex);
    const auto found = failures.find(serviceId);
    return found == failures.end() ? Failure() : found->second;
}

void ControlProtocolOperations::RunAction(const std::string& serviceId, ActionId action,
                                          const ControlOperationsParams& params) {
    try {
        if (PerformAction(serviceId, action, params)) {
            NotifyOperationEnd(serviceId, yOK, "", {});
        }
    } catch (const Vor::Exception& e) {
        Vor::LogThrown(e, "Exception processing action id %u", Number(action));
        if (action == ActionId::Alignment) {
            EndFormerAlignment();
        }
        NotifyOperationEnd(serviceId, yERROR, "", {.status = e.Status(), .text = e.what()});
    }
}

bool ControlProtocolOperations::PerformAction(const std::string& serviceId, ActionId action,
                                              const ControlOperationsParams& params) {
    switch (action) {
    case ActionId::StartScan:
        systemInterface.Start();
        return true;
    case ActionId::StopScan:
        systemInterface.Stop();
        return true;
    case ActionId::Alignment:
        StartAlignment(serviceId, params.stringArg);
        return false;
    case ActionId::ClearAlignment:
        scanEngineInterface.ClearAlignment(params.stringArg);
        return true;
    case ActionId::LoadJob:
        systemInterface.LoadJob(params.stringArg);
        return true;
    case ActionId::SoftwareTrigger:
        scanEngineInterface.SoftwareTrigger(params.stringArg);
        return true;
    case ActionId::SetNextIpConfig:
        systemInterface.SetNextIpConfig(params.ipConfig, params.flagA);
        return true;
    case ActionId::FactoryRestore:
        systemInterface.FactoryRestore();
        return true;
    case ActionId::Restart:
        systemInterface.Restart();
        return true;
    case ActionId::BlinkLed:
        if (params.flagB) {
            systemInterface.BlinkLed();
        } else {
            scanEngineInterface.BlinkLed(params.flagC, params.flagD);
        }
        return true;
    case ActionId::SetLocalNodeNtpHost:
        systemInterface.SetLocalNodeNtpHost(params.ntpHost, params.flagA);
        return true;
    case ActionId::SetLocalNodeDateTime:
        systemInterface.SetLocalNodeDateTime(params.dateTime);
        return true;
    case ActionId::EndAtOnce:
        NotifyOperationEnd(serviceId, yOK, "", {});
        return false;
    case ActionId::SleepThenEnd:
        Vor::ThrowIfFailed(yThread_Sleep(SleepOfAction));
        return true;
    case ActionId::Fail:
        Vor::Throw(static_cast<yStatus>(action), "Testing action id %u", Number(action));
    case ActionId::NeverEnd:
        return false;
    case ActionId::FailAsync:
        Vor::Throw(static_cast<yStatus>(action), "Async test action id %u", Number(action));
    }
    Vor::LogError("Unexpected action id %u", Number(action));
    NotifyOperationEnd(serviceId, yERROR_PARAMETER, "", {});
    return false;
}

void ControlProtocolOperations::StartAlignment(const std::string& serviceId, const std::string& scannerId) {
    auto& event = scanEngineInterface.AlignmentCompletedEvent(scannerId);
    // The registration of an alignment without a scanner id is still there after its end.
    EndFormerAlignment();
    const auto alignment = std::make_shared<PendingAlignment>(*this, scannerId);
    alignment->callbackId =
        event.Add([alignment, serviceId](AlignCompletionStatus status) { alignment->Complete(serviceId, status); });
    {
        const std::lock_guard guard(alignMutex);
        pendingAlignment = alignment;
    }
    try {
        scanEngineInterface.Alignment(scannerId);
    } catch (const Vor::Exception& e) {
        if (alignment->Abandon()) {
            throw;
        }
        // The scanner reported the end before it threw. Another operation may have begun since.
        Vor::LogThrown(e, "Exception processing action id %u", Number(ActionId::Alignment));
    }
}

void ControlProtocolOperations::AlignmentCompletedCallback(const std::string& serviceId, const std::string& scannerId,
                                                           AlignCompletionStatus status) {
    NotifyOperationEnd(serviceId, status == AlignCompletionStatus::Succeeded ? yOK : yERROR, scannerId.c_str(), {});
}

void ControlProtocolOperations::CleanUpAlignmentCompletedEvent(const std::string& scannerId) {
    if (scannerId.empty()) {
        return;
    }
    std::shared_ptr<PendingAlignment> alignment;
    {
        const std::lock_guard guard(alignMutex);
        alignment.swap(pendingAlignment);
    }
    if (alignment) {
        scanEngineInterface.AlignmentCompletedEvent(scannerId).Remove(alignment->callbackId);
    }
}

void ControlProtocolOperations::EndFormerAlignment() {
    try {
        AbandonAlignment();
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "Exception cleaning up after an alignment");
    }
}

void ControlProtocolOperations::AbandonAlignment() {
    std::shared_ptr<PendingAlignment> alignment;
    {
        const std::lock_guard guard(alignMutex);
        alignment.swap(pendingAlignment);
    }
    if (!alignment) {
        return;
    }
    alignment->Abandon();
    scanEngineInterface.AlignmentCompletedEvent(alignment->scannerId).Remove(alignment->callbackId);
}

void ControlProtocolOperations::NotifyOperationEnd(const std::string& serviceId, yStatus status, const char* scannerId,
                                                   const Failure& failure) {
    dispatcherQueue.Add(std::make_unique<EndOfOpResult>(
        EndOfOpResult{.protocolId = serviceId, .status = status, .scannerId = scannerId, .failure = failure}));
}

yStatus ControlProtocolOperations::DispatcherThreadFx() {
    while (dispatcherRunning.load(std::memory_order_relaxed)) {
        try {
            DispatchNext();
        } catch (const std::exception& e) {
            Vor::LogThrown(e, "EXCEPTION THROWN: ");
        } catch (...) {
            Vor::LogError("EXCEPTION THROWN: ");
        }
    }
    return yOK;
}

void ControlProtocolOperations::DispatchNext() {
    std::unique_ptr<EndOfOpResult> result;
    const yStatus status = dispatcherQueue.Remove(result, QueueWait);
    if (status == yOK) {
        if (result) {
            EndOperation(*result);
        }
    } else if (status != yERROR_TIMEOUT) {
        Vor::LogError("Dispatcher queue wait failed with error %d", status);
        yThread_Sleep(QueueWait);
    }
}

void ControlProtocolOperations::EndOperation(const EndOfOpResult& result) {
    try {
        CleanUpAlignmentCompletedEvent(result.scannerId);
    } catch (const std::exception& e) {
        // The slot must be freed even if the scanner doesn't exist any more.
        Vor::LogThrown(e, "EXCEPTION THROWN: ");
    }
    {
        const std::lock_guard guard(recordsMutex);
        failures[result.protocolId] = result.failure;
    }
    const std::uint32_t former = OperationFinish();
    OnOperationEnd(result.protocolId, result.status);
    if (former != 1) {
        Vor::Throw(yERROR_STATE);
    }
}

Vor::Event<int>& ControlProtocolOperations::OperationEndEvent(const std::string& serviceId) {
    return opEndEvents[serviceId];
}

Vor::Event<int>::CallbackId ControlProtocolOperations::AddOpEndEventHandler(const std::string& serviceId,
                                                                            std::function<void(int)> handler) {
    const std::lock_guard guard(opEndEventsMutex);
    return OperationEndEvent(serviceId).Add(std::move(handler));
}

void ControlProtocolOperations::RemoveOpEndEventHandler(const std::string& serviceId, Vor::Event<int>::CallbackId& id) {
    const Vor::Locker locker(opEndLock.Get());
    const std::lock_guard guard(opEndEventsMutex);
    const auto found = opEndEvents.find(serviceId);
    if (found != opEndEvents.end()) {
        found->second.Remove(id);
        opEndEvents.erase(found);
    }
}

void ControlProtocolOperations::OnOperationEnd(const std::string& serviceId, int status) {
    const Vor::Locker locker(opEndLock.Get());
    const Vor::Event<int>* event = nullptr;
    {
        const std::lock_guard guard(opEndEventsMutex);
        const auto found = opEndEvents.find(serviceId);
        if (found == opEndEvents.end()) {
            return;
        }
        event = &found->second;
    }
    event->Raise(status);
}

} // namespace VorControl
