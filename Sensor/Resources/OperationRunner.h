#pragma once

#include "Sensor/Resources/SensorProperties.h"
#include "Vor/AsyncRunner.h"
#include "Vor/AsyncTimer.h"
#include "VorApi/Event.h"
#include "VorControl/Control/ControlManager.h"
#include "VorControl/Control/ControlProtocolOperations.h"
#include "VorCore/ResultHub.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace Sensor::Resources {

/// An operation on the sensor that a client of the resources has started.
struct Operation {
    enum class State { Running, Succeeded, Failed };

    std::string id;
    std::string command;  ///< such as "load"
    std::string argument; ///< a job or a scanner; may be empty
    State state = State::Running;
    yStatus status = yOK; ///< of the failure
    std::string text = std::string();
    /// Of a load that has succeeded.
    std::vector<VorControl::ServiceLoadNotes> notes = {};
};

/// Runs operations on the sensor for the clients of the resources, as one more client beside the services: the sensor
/// has one operation at a time. Keeps the last ones. Main loop only.
class OperationRunner {
public:
    static constexpr const char* ClientId = "/sensor";
    static constexpr std::size_t MaxKept = 32;
    /// How long a trigger that was done waits for its frame.
    static constexpr std::chrono::microseconds FrameTimeout{1'000'000};

    struct Request {
        std::string command;
        std::string argument = std::string();
        /// Starts the operation for the client of that id.
        std::function<void(VorControl::ControlProtocolOperations& operations, const std::string& clientId)> start;
        /// Done only when a frame has been published that the operation has made.
        bool waitsForFrame = false;
        bool loadsJob = false;
    };
    using Ended = std::function<void(const Operation&)>;

    explicit OperationRunner(const SensorEnviron& environ);
    ~OperationRunner();
    OperationRunner(const OperationRunner&) = delete;
    OperationRunner& operator=(const OperationRunner&) = delete;

    /// Starts an operation. `ended` is called once at its end, unless it is empty; never in this call. Throws what
    /// `start` throws, such as yERROR_BUSY.
    const Operation& Run(const Request& request, Ended ended);

    /// Oldest first.
    std::vector<std::string> Ids() const;
    /// Null for one that isn't kept.
    const Operation* Find(const std::string& id) const;
    /// Raised when an operation has ended, before its `ended` is called.
    Vor::Event<const Operation&>& EndedEvent() { return endedEvent; }

private:
    using Failure = VorControl::ControlProtocolOperations::Failure;

    struct Entry {
        Operation operation;
        Ended ended;
        bool waitsForFrame;
        bool loadsJob;
        bool isDone = false;     ///< the sensor has reported the end
        std::uint64_t begin = 0; ///< a frame of the operation is published later
        std::unique_ptr<Vor::AsyncTimer> limit = nullptr;
    };

    /// The oldest operation that has ended, which makes room for one more; the end while there is room. Throws
    /// yERROR_BUSY when none has ended.
    std::list<Entry>::iterator EntryToForget();
    void OnResults(void* resultSet);
    void OnFrame(std::uint64_t published);
    void OnEnd(int status, const Failure& failure);
    void WaitForFrame(Entry& entry);
    void Finish(Entry& entry, const Failure& failure);

    const SensorEnviron environ;
    std::list<Entry> entries; ///< in the order of their start
    std::uint64_t lastId = 0;
    std::uint64_t lastPublished = 0; ///< of the frames while one was waited for
    std::atomic<unsigned> framesWanted = 0;
    Vor::Event<const Operation&> endedEvent;
    Vor::AsyncRunner mainLoop;
    Vor::Event<int>::CallbackId endHandler;
    VorCore::ResultHub::CallbackId resultHandler;
};

} // namespace Sensor::Resources
