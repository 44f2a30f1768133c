#pragma once

#include "Vor/AsyncRunner.h"
#include "VorApi/Event.h"
#include "VorApi/Handle.h"
#include "VorApi/Threads/MsgQueue.h"
#include "VorApi/Threads/NamedThread.h"
#include "VorControl/Control/IControlScanEngineInterface.h"
#include "VorControl/Control/IControlSystemInterface.h"
#include "VorScan/AlignCompletionStatus.h"
#include "yApi/yIpConfig.h"
#include "yApi/yLock.h"
#include "yApi/yStatus.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace VorCommon {
class IRuntimeCache;
}

namespace VorControl {

/// Runs the operations of services on the sensor, one at a time in the whole sensor. An operation runs on the main loop
/// and its caller doesn't wait. At its end the handlers of the caller's service are called on the thread
/// "CtlProtoOp.Disp", with yOK or another status. Any thread may call.
class ControlProtocolOperations {
public:
    /// What an operation does. Those from 200 on exercise each way in which an operation can end.
    enum class ActionId : std::uint8_t {
        StartScan = 0,
        StopScan = 1,
        Alignment = 2,
        ClearAlignment = 3,
        LoadJob = 4,
        SoftwareTrigger = 5,
        SetNextIpConfig = 6,
        FactoryRestore = 7,
        Restart = 8,
        BlinkLed = 9,
        SetLocalNodeNtpHost = 10,
        SetLocalNodeDateTime = 11,
        EndAtOnce = 200,
        SleepThenEnd = 201,
        Fail = 202,
        NeverEnd = 203,
        FailAsync = 204
    };

    /// The arguments of one operation. Those that it doesn't have keep their defaults.
    struct ControlOperationsParams {
        std::string stringArg = std::string(); ///< scanner id or job name
        yIpConfig ipConfig = yIpConfig();      ///< next network settings
        bool flagA = false; ///< SetNextIpConfig, SetLocalNodeNtpHost: whether the core keeps it for later starts
        bool flagB = false; ///< BlinkLed: the LED of the system, not that of the scanner
        bool flagC = false; ///< BlinkLed: whether the scanner's LED blinks
        bool flagD = false; ///< BlinkLed: whether the scanner's LED is on
        std::string ntpHost = std::string(); ///< time server
        std::int64_t dateTime = 0;           ///< microseconds since the beginning of 1970, UTC
    };

    /// Why an operation has failed.
    struct Failure {
        yStatus status = yOK; ///< yOK: nothing has failed, or nothing said why
        std::string text = std::string();
    };

    /// The objects outlive this one. Throws the status of a thread, lock or queue that can't be made.
    ControlProtocolOperations(IControlSystemInterface& systemInterface,
                              IControlScanEngineInterface& scanEngineInterface, VorCommon::IRuntimeCache& runtimeCache);
    /// Actions that haven't begun are dropped, and so are ends that weren't reported yet.
    ~ControlProtocolOperations();
    ControlProtocolOperations(const ControlProtocolOperations&) = delete;
    ControlProtocolOperations& operator=(const ControlProtocolOperations&) = delete;

    /// Each throws yERROR_BUSY while another operation of this or any other service is in progress, and
    /// yERROR_PARAMETER for a null argument and for an empty job name.
    void StartScan(const std::string& serviceId);
    void StopScan(const std::string& serviceId);
    /// Ends when the scanner reports the end; there is no time-out.
    void Alignment(const std::string& serviceId, const char* scannerId);
    void ClearAlignment(const std::string& serviceId, const char* scannerId);
    void LoadJob(const std::string& serviceId, const char* jobName);
    void SoftwareTrigger(const std::string& serviceId, const char* scannerId);
    void FactoryRestore(const std::string& serviceId);
    void Restart(const std::string& serviceId);
    void SetNextIpConfig(const std::string& serviceId, const yIpConfig& config, bool flag);
    void BlinkLed(const std::string& serviceId, bool systemLed, bool ledBlinkEnabled, bool ledLightOn);
    void SetLocalNodeDateTime(const std::string& serviceId, long long dateTime);
    void SetLocalNodeNtpHost(const std::string& serviceId, const std::string& host, bool flag);

    /// Starts the action of each of the operations above. It doesn't wait for the action.
    void RunSynchronousOp(const std::string& serviceId, ActionId action, ControlOperationsParams params);
    /// When the service's last software trigger was accepted: a yTime_Monotonic after the end of each earlier operation
    /// and before the start of this one's action. 0 when there was none.
    std::uint64_t BeginOfLastTrigger(const std::string& serviceId) const;

    /// What has made that operation of the service fail that has ended last: in a handler of an end, the one that has
    /// ended.
    Failure LastFailure(const std::string& serviceId) const;

    /// Adds a handler of the ends of a service's operations. Handlers are called in order of adding, with a lock held:
    /// a handler may start an operation, but must not remove handlers. Add it before the first operation. An empty
    /// function isn't added.
    Vor::Event<int>::CallbackId AddOpEndEventHandler(const std::string& serviceId, std::function<void(int)> handler);
    /// Removes all handlers of the service, also when the id isn't set. Waits for a running handler.
    void RemoveOpEndEventHandler(const std::string& serviceId, Vor::Event<int>::CallbackId& id);

    /// The reads run on the main loop while the caller waits for at most `timeout` microseconds; a read that hasn't
    /// begun then never does. On the main loop itself, and while it is blocked, they run on the caller's thread. What a
    /// read throws is thrown here or, after the time-out, logged.
    /// Returns 0 when there was no answer in time.
    long long LocalNodeDateTime(unsigned long long timeout);
    /// Returns an empty text when there was no answer in time.
    std::string LocalNodeNtpHost(unsigned long long timeout);
    /// Returns false when there was no answer in time.
    bool LocalNodeSyncTime(const std::string& host, unsigned long long timeout);
    /// This and the removal are short, so they are waited for once they have begun, whatever the time-out. Without an
    /// answer in time the ids don't change. Does nothing while the main loop is blocked.
    void AddDataSourceEventHandler(const IControlSystemInterface::DataSourceEventHandlerContainer& handlers,
                                   IControlSystemInterface::DataSourceEventCallbackIdContainer& ids,
                                   unsigned long long timeout);
    void RemoveDataSourceEventHandler(IControlSystemInterface::DataSourceEventCallbackIdContainer& ids,
                                      unsigned long long timeout);
    /// Without an answer in time `out` is a cleared record.
    void DataSourceProperties(const std::string& name, IControlSystemInterface::ControlDataSourceProperties& out,
                              unsigned long long timeout);
    /// Returns a share of the loaded job's object, which the caller releases; null when there was no answer in time.
    void* LiveJob(unsigned long long timeout);

private:
    struct EndOfOpResult {
        std::string protocolId; ///< the service that the operation was for
        yStatus status;
        std::string scannerId; ///< empty unless an alignment ended
        Failure failure = {};
    };

    struct PendingAlignment;

    /// Reserves the slot of the one operation; returns false when it isn't free.
    bool OperationBegin();
    /// Frees the slot and returns its former value.
    std::uint32_t OperationFinish();
    static void ValidateStringArg(const char* arg, const char* name, ActionId action);
    static void ValidateScannerId(const char* scannerId, ActionId action);

    /// On the main loop.
    void RunAction(const std::string& serviceId, ActionId action, const ControlOperationsParams& params);
    /// Returns whether the action is finished and its end must still be reported.
    bool PerformAction(const std::string& serviceId, ActionId action, const ControlOperationsParams& params);
    void StartAlignment(const std::string& serviceId, const std::string& scannerId);
    void AlignmentCompletedCallback(const std::string& serviceId, const std::string& scannerId,
                                    VorScan::AlignCompletionStatus status);
    void CleanUpAlignmentCompletedEvent(const std::string& scannerId);
    void EndFormerAlignment();
    void AbandonAlignment();
    void NotifyOperationEnd(const std::string& serviceId, yStatus status, const char* scannerId,
                            const Failure& failure);

    yStatus DispatcherThreadFx();
    void DispatchNext();
    void EndOperation(const EndOfOpResult& result);
    void OnOperationEnd(const std::string& serviceId, int status);
    Vor::Event<int>& OperationEndEvent(const std::string& serviceId);

    bool MainLoopAvailable() const;
    bool CanReadInPlace() const;

    IControlSystemInterface& systemInterface;
    IControlScanEngineInterface& scanEngineInterface;
    VorCommon::IRuntimeCache& runtimeCache;
    std::unique_ptr<Vor::AsyncRunner> asyncRunner;
    std::map<std::string, Vor::Event<int>> opEndEvents;
    /// Guards the structure of `opEndEvents`, for a few instructions; ranks after `opEndLock`.
    std::mutex opEndEventsMutex;
    /// Held while handlers run and while they are removed; ranks before all locks that handlers use.
    Vor::Handle<yLock, yLock_Destroy> opEndLock;
    std::atomic<std::uint32_t> operationInProgress = 0; ///< the slot of the one operation: 0 free, 1 taken
    /// Guards the two members below, for a few instructions; innermost.
    mutable std::mutex recordsMutex;
    std::map<std::string, std::uint64_t> begins; ///< when the last trigger of each service was accepted
    std::map<std::string, Failure> failures;     ///< of the last operation of each service that has ended
    std::atomic<bool> dispatcherRunning = true;
    Vor::MsgQueue<EndOfOpResult> dispatcherQueue;
    Vor::NamedThread dispatcherThread;
    /// Guards `pendingAlignment`, not what it points to; innermost.
    std::mutex alignMutex;
    std::shared_ptr<PendingAlignment> pendingAlignment;
};

} // namespace VorControl
