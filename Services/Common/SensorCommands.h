#pragma once

#include "Vor/AsyncRunner.h"
#include "Vor/AsyncTimer.h"
#include "VorControl/Control/IControlHost.h"
#include "VorControl/ControlProtocol/ControlRegisterTypes.h"
#include "VorMsg/ResultSet.h"
#include "yApi/yStatus.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace Services::Common {

/// What clients can read about the sensor. What can't be read is empty.
struct SensorState {
    std::optional<VorControl::IControlSystemInterface::SystemStats> system;
    /// Of the first scanner. Without a scanner its id is empty.
    std::optional<VorControl::IControlScanEngineInterface::ScannerStateInfo> scanner;
    yStatus status = yOK; ///< of the first read that failed
};

/// Runs the commands of a service's clients on the sensor, one at a time, and reads the sensor's state for them. The
/// service passes on what it learns: the ends of its operations, its results, and the end of a scan or of a map.
///
/// A software trigger has ended well only when its frame is there: when the operation has ended well and the service
/// holds a result set that was published after the operation began, in whichever order the two come. It doesn't wait
/// for a frame when the sensor has none of the service's data sources, or when the time-out is 0.
///
/// All functions may be called on any thread. `ended` functions are called without a lock of this object, on the thread
/// that reports the end: in Run, in one of the functions that pass something on, or on the main loop.
class SensorCommands {
public:
    using Command = VorControl::ControlProtocol::ControlRegisterCommandData;
    /// Receives yOK, yERROR_BUSY when another service's operation is in progress, yERROR_TIMEOUT when the frame of a
    /// trigger didn't come in time, yERROR_STATE when it can't come any more, or the status of the operation.
    using Ended = std::function<void(yStatus)>;

    static constexpr std::chrono::milliseconds DefaultTriggerTimeout{1000};
    static constexpr std::chrono::milliseconds MaxTriggerTimeout{60000};

    /// The service. The functions are called without a lock of this object.
    struct Service {
        VorControl::IControlHost& host;
        std::function<void(const Command&)> process;       ///< ProtocolBase::ProcessReceivedCommonCommands
        std::function<std::uint64_t()> beginOfTrigger;     ///< ProtocolBase::BeginOfLastTrigger
        std::function<std::vector<std::string>()> sources; ///< the data sources of the service's map; on the main loop
    };

    explicit SensorCommands(Service service);
    /// No `ended` is called afterwards. The service must have called ProtocolBase::StopOperationEndEvents before.
    ~SensorCommands();
    SensorCommands(const SensorCommands&) = delete;
    SensorCommands& operator=(const SensorCommands&) = delete;

    /// How long a trigger waits for its frame, from the next one on. 0: it doesn't wait.
    void SetTriggerTimeout(std::chrono::milliseconds value);

    /// Whether an operation of the service is in progress, or a trigger waits for its frame.
    bool IsBusy() const;
    /// Starts a command and returns true; `ended` is called once, possibly before this returns. While another command
    /// is in progress it returns false and does nothing. It doesn't wait for the sensor.
    bool Run(const Command& command, Ended ended);

    /// For ProtocolBase::OperationEndEventImpl.
    void OperationEnded(yStatus status);
    /// For the end of IProtocol::ProcessResultSets, with its list: clients can read these results now.
    void ResultsHeld(void* resultSets);
    /// The scan, the map or the job has ended, or the service stops: a trigger that waits has failed.
    void Interrupt();

    /// The last known state, without waiting. On the main loop it is the present one.
    SensorState LastState() const;
    /// One half of `LastState` each.
    void ReadSystem(SensorState& state) const;
    void ReadScanner(SensorState& state) const;
    /// Calls `read` with the present state on the main loop.
    void ReadState(std::function<void(const SensorState&)> read);

private:
    struct Running;

    void PrepareWait(const std::shared_ptr<Running>& command, std::chrono::milliseconds timeout);
    bool HasSource() const;
    /// If the running command waits for a frame, it has failed with this status.
    void FailFrame(std::unique_lock<std::mutex> lock, yStatus status);
    /// Ends the running command for its client once its outcome is clear, and forgets it once its operation has ended.
    void EndIfReady(std::unique_lock<std::mutex> lock);

    const Service service;
    /// Guards the members below and the content of `running`. No other lock is acquired under it.
    mutable std::mutex mutex;
    std::chrono::milliseconds triggerTimeout = DefaultTriggerTimeout;
    std::shared_ptr<Running> running;
    std::uint64_t lastPublished = 0; ///< of the sets that clients can read
    Vor::AsyncRunner mainLoop;
};

} // namespace Services::Common
