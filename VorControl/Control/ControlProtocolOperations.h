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

/// Where services act on the sensor, one operation at a time in the whole sensor. An operation runs on the main loop;
/// its caller doesn't wait, and its end reaches the handlers of the caller's service on the thread "CtlProtoOp.Disp",
/// with yOK or with what stands for a failure. Any thread.
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

    /// Borrows what it is given. Throws the status of a thread, lock or queue that can't be made.
    ControlProtocolOperations(IControlSystemInterface& systemInterface,
                              IControlScanEngineInterface& scanEngineInterface, VorCommon::IRuntimeCache& runtimeCache);
    /// Actions that haven't begun never do, and ends that weren't told yet are lost.
    ~ControlProtocolOperations();
    ControlProtocolOperations(const ControlProtocolOperations&) = delete;
    ControlProtocolOperations& operator=(const ControlProtocolOperations&) = delete;

    /// Each throws yERROR_BUSY while another operation, whosever it is, is under way, and yERROR_PARAMETER for an
    /// argument that is null or, of a job name, empty.
    void StartScan(const std::string& serviceId);
    void StopScan(const std::string& serviceId);
    /// Ends when the scanner says so; there is no time-out.
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

    /// The door of all of these. It doesn't wait for the action.
    void RunSynchronousOp(const std::string& serviceId, ActionId action, ControlOperationsParams params);

    /// Handlers of a service's ends, called in order of adding with a lock held: a handler may start an operation, but
    /// must not remove handlers. Add them before the first operation. An empty function isn't added.
    Vor::Event<int>::CallbackId AddOpEndEventHandler(const std::string& serviceId, std::function<void(int)> handler);
    /// Forgets all handlers of the service, also when the id isn't set. Waits for a handler that runs.
    void RemoveOpEndEventHandler(const std::string& serviceId, Vor::Event<int>::CallbackId& id);

    /// Reads, done on the main loop while the caller waits for at most `timeout` microseconds; on the main loop itself
    /// and while it is blocked they are done in place. What the read throws is thrown.
    /// 0 when there was no answer in time.
    long long LocalNodeDateTime(unsigned long long timeout);
    /// Empty when there was no answer in time.
    std::string LocalNodeNtpHost(unsigned long long timeout);
    /// False when there was no answer in time.
    bool LocalNodeSyncTime(const std::string& host, unsigned long long timeout);
    /// Without an answer in time the ids are unchanged. While the main loop is blocked it does nothing.
    void AddDataSourceEventHandler(const IControlSystemInterface::DataSourceEventHandlerContainer& handlers,
                                   IControlSystemInterface::DataSourceEventCallbackIdContainer& ids,
                                   unsigned long long timeout);
    void RemoveDataSourceEventHandler(IControlSystemInterface::DataSourceEventCallbackIdContainer& ids,
                                      unsigned long long timeout);
    /// Without an answer in time `out` is a cleared record.
    void DataSourceProperties(const std::string& name, IControlSystemInterface::ControlDataSourceProperties& out,
                              unsigned long long timeout);
    /// A share of the loaded job's object, which the caller releases; null when there was no answer in time.
    void* LiveJob(unsigned long long timeout);

private:
    struct EndOfOpResult {
        std::string protocolId; ///< the service that the operation was for
        yStatus status;
        std::string scannerId; ///< empty unless an alignment ended
    };

    struct PendingAlignment;

    bool OperationBegin();
    /// The former value of the slot.
    std::uint32_t OperationFinish();
    static void ValidateStringArg(const char* arg, const char* name, ActionId action);
    static void ValidateScannerId(const char* scannerId, ActionId action);

    /// On the main loop.
    void RunAction(const std::string& serviceId, ActionId action, const ControlOperationsParams& params);
    /// Whether the action is done with and its end is still to be told.
    bool PerformAction(const std::string& serviceId, ActionId action, const ControlOperationsParams& params);
    void StartAlignment(const std::string& serviceId, const std::string& scannerId);
    void AlignmentCompletedCallback(const std::string& serviceId, const std::string& scannerId,
                                    VorScan::AlignCompletionStatus status);
    void CleanUpAlignmentCompletedEvent(const std::string& scannerId);
    void AbandonAlignment(const char* failureText);
    void NotifyOperationEnd(const std::string& serviceId, yStatus status, const char* scannerId);

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
    /// Guards the structure of `opEndEvents`, for a few instructions; ranks behind `opEndLock`.
    std::mutex opEndEventsMutex;
    /// Held while handlers run and while they are removed; ranks before whatever handlers lock.
    Vor::Handle<yLock, yLock_Destroy> opEndLock;
    std::atomic<std::uint32_t> operationInProgress = 0;
    std::atomic<bool> dispatcherRunning = true;
    Vor::MsgQueue<EndOfOpResult> dispatcherQueue;
    Vor::NamedThread dispatcherThread;
    /// Guards `pendingAlignment`, not what it points to; innermost.
    std::mutex alignMutex;
    std::shared_ptr<PendingAlignment> pendingAlignment;
};

} // namespace VorControl
