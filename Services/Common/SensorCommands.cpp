#include "Services/Common/SensorCommands.h"

#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"
#include "VorMsg/ResultItem.h"
#include "yApi/yArrayList.h"

#include <algorithm>
#include <utility>

namespace Services::Common {

using VorControl::IControlSystemInterface;

namespace {

/// Whether the command is an operation on the sensor, which runs for one service at a time.
bool IsOperation(const SensorCommands::Command& command) {
    return command.commandId >= SensorCommands::Command::Start &&
           command.commandId <= SensorCommands::Command::SoftwareTrigger;
}

/// Writes what `read` returns, or the status of its failure unless there is one.
template <class Record, class Read>
void ReadInto(std::optional<Record>& record, yStatus& status, const Read& read) {
    try {
        record = read();
    } catch (const Vor::Exception& e) {
        status = status == yOK ? e.Status() : status;
    }
}

} // namespace

struct SensorCommands::Running {
    Ended ended;                         ///< empty once it was called
    bool isOperation = false;            ///< see IsOperation
    std::thread::id starter;             ///< the thread that starts the command, while it does
    bool waitsForFrame = false;          ///< the command is done only when its frame is there
    std::optional<yStatus> operationEnd; ///< the operation has ended with this status
    std::uint64_t begin = 0;             ///< frames of the command are published later; valid at the operation's end
    std::optional<yStatus> frameFailure; ///< why the frame isn't waited for any more
    std::unique_ptr<Vor::AsyncTimer> timer = nullptr; ///< of the wait for the frame
};

SensorCommands::SensorCommands(Service service)
    : service(std::move(service)) {}

SensorCommands::~SensorCommands() = default;

void SensorCommands::SetTriggerTimeout(std::chrono::milliseconds value) {
    const std::lock_guard lock(mutex);
    triggerTimeout = value;
}

bool SensorCommands::IsBusy() const {
    const std::lock_guard lock(mutex);
    return running != nullptr;
}

bool SensorCommands::Run(const Command& command, Ended ended) {
    const auto started = std::make_shared<Running>();
    started->ended = std::move(ended);
    started->isOperation = IsOperation(command);
    started->starter = std::this_thread::get_id();
    std::chrono::milliseconds timeout{0};
    {
        const std::lock_guard lock(mutex);
        if (running != nullptr) {
            return false;
        }
        if (command.commandId == Command::SoftwareTrigger) {
            timeout = triggerTimeout;
        }
        started->waitsForFrame = timeout.count() > 0;
        running = started;
    }
    if (timeout.count() > 0) {
        try {
            PrepareWait(started, timeout);
        } catch (const std::exception& e) {
            Vor::LogThrown(e, "A trigger can't wait for its frame.");
            OperationEnded(yERROR);
            return true;
        }
    }
    service.process(command);
    const std::lock_guard lock(mutex);
    started->starter = {};
    return true;
}

// The main loop looks for the sources before it runs the operation, which is queued later.
void SensorCommands::PrepareWait(const std::shared_ptr<Running>& command, std::chrono::milliseconds timeout) {
    const std::weak_ptr<Running> weak = command;
    mainLoop.Run([this, weak] {
        const bool hasSource = HasSource();
        const auto waiting = weak.lock();
        const std::lock_guard lock(mutex);
        if (waiting != nullptr) {
            waiting->waitsForFrame = hasSource;
        }
    });
    command->timer = std::make_unique<Vor::AsyncTimer>([this, weak](Vor::AsyncTimer&) {
        const auto waiting = weak.lock();
        std::unique_lock lock(mutex);
        if (waiting != nullptr && waiting == running) {
            FailFrame(std::move(lock), yERROR_TIMEOUT);
        }
    });
    command->timer->Start(static_cast<unsigned long long>(std::chrono::microseconds(timeout).count()), true);
}

bool SensorCommands::HasSource() const {
    const auto sources = service.sources();
    return std::ranges::any_of(sources, [this](const std::string& source) {
        try {
            IControlSystemInterface::ControlDataSourceProperties properties;
            service.host.DataSourceProperties(source, properties, 0);
            return true;
        } catch (const Vor::Exception&) {
            return false;
        }
    });
}

void SensorCommands::OperationEnded(yStatus status) {
    const std::uint64_t begin = service.beginOfTrigger();
    std::unique_lock lock(mutex);
    if (running == nullptr) {
        return;
    }
    // An operation that fails before it has begun was refused because another service's runs.
    const bool isRefused = status == yERROR && running->isOperation && running->starter == std::this_thread::get_id();
    running->operationEnd = isRefused ? yERROR_BUSY : status;
    running->begin = begin;
    EndIfReady(std::move(lock));
}

void SensorCommands::ResultsHeld(void* resultSets) {
    const auto sets = static_cast<yArrayList>(resultSets);
    const std::size_t count = yArrayList_Count(sets);
    if (count == 0) {
        return;
    }
    const ResultSet last = yArrayList_At(sets, count - 1);
    const std::uint64_t published = yMsgInfo_Published(ResultItem_MsgInfo(ResultSet_At(last, 0)));
    std::unique_lock lock(mutex);
    lastPublished = std::max(lastPublished, published);
    EndIfReady(std::move(lock));
}

void SensorCommands::Interrupt() {
    FailFrame(std::unique_lock(mutex), yERROR_STATE);
}

void SensorCommands::FailFrame(std::unique_lock<std::mutex> lock, yStatus status) {
    if (running != nullptr && running->waitsForFrame) {
        running->frameFailure = status;
        EndIfReady(std::move(lock));
    }
}

// The command's timer waits for a call that runs, so it goes without the lock.
void SensorCommands::EndIfReady(std::unique_lock<std::mutex> lock) {
    if (running == nullptr) {
        return;
    }
    const std::shared_ptr<Running> command = running;
    yStatus status = yOK;
    if (command->frameFailure) {
        status = *command->frameFailure;
    } else if (!command->operationEnd) {
        return;
    } else {
        status = *command->operationEnd;
        if (status == yOK && command->waitsForFrame && lastPublished < command->begin) {
            return;
        }
    }
    if (command->operationEnd) {
        running = nullptr;
    }
    const Ended ended = std::exchange(command->ended, nullptr);
    lock.unlock();
    if (ended) {
        ended(status);
    }
}

SensorState SensorCommands::LastState() const {
    SensorState state;
    ReadSystem(state);
    ReadScanner(state);
    return state;
}

void SensorCommands::ReadSystem(SensorState& state) const {
    ReadInto(state.system, state.status, [this] { return service.host.SystemStats(0); });
}

void SensorCommands::ReadScanner(SensorState& state) const {
    ReadInto(state.scanner, state.status, [this] { return service.host.ScannerInfo("", 0); });
}

void SensorCommands::ReadState(std::function<void(const SensorState&)> read) {
    mainLoop.Run([this, read = std::move(read)] { read(LastState()); });
}

} // namespace Services::Common
