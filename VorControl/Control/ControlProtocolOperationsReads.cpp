#include "Vor/AsyncLoop.h"
#include "Vor/Exception.h"
#include "VorApi/Object.h"
#include "VorCommon/IRuntimeCache.h"
#include "VorControl/Control/ControlProtocolOperations.h"

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <utility>

namespace VorControl {

namespace {

/// A call for the main loop, for which the caller waits for a limited time. What the call throws reaches the caller, or
/// the main loop if the caller waits no longer.
class BoundedCall {
public:
    explicit BoundedCall(std::function<void()> call)
        : call(std::move(call)) {}

    /// On the main loop. Does nothing if the caller waits no longer.
    void Run() {
        if (state == State::Abandoned) {
            return;
        }
        try {
            call();
        } catch (...) {
            failure = std::current_exception();
            if (state.exchange(State::Failed) == State::Abandoned) {
                throw;
            }
        }
    }

    /// The caller waits no longer. Throws what the call threw before.
    void Abandon() {
        if (state.exchange(State::Abandoned) == State::Failed) {
            std::rethrow_exception(failure);
        }
    }

private:
    enum class State { Waiting, Failed, Abandoned };

    const std::function<void()> call;
    std::atomic<State> state = State::Waiting;
    std::exception_ptr failure; ///< set before the state is
};

/// Runs the call on the main loop and returns whether it is done. After the time-out it may be running, and it must own
/// all that it touches; it doesn't begin any more. What it throws is thrown, also yERROR_TIMEOUT.
bool RunBounded(Vor::AsyncRunner& runner, std::function<void()> call, unsigned long long timeout) {
    const auto bounded = std::make_shared<BoundedCall>(std::move(call));
    bool done = true;
    try {
        runner.RunAndWait([bounded] { bounded->Run(); }, timeout);
    } catch (const Vor::Exception& e) {
        if (e.Status() != yERROR_TIMEOUT) {
            throw;
        }
        done = false;
    }
    bounded->Abandon();
    return done;
}

/// Runs the call on the main loop, unless it can't begin in time. It isn't running on return.
void RunOrDrop(std::function<void()> call, unsigned long long timeout) {
    Vor::AsyncRunner runner;
    RunBounded(runner, std::move(call), timeout);
}

/// Returns what `read` writes, or a fresh answer after the time-out. The closure shares the answer that it writes into,
/// as it may run longer than its caller waits.
template <class Answer>
Answer ReadBounded(Vor::AsyncRunner& runner, std::function<void(Answer&)> read, unsigned long long timeout) {
    const auto answer = std::make_shared<Answer>();
    if (RunBounded(
            runner, [answer, read = std::move(read)] { read(*answer); }, timeout)) {
        return std::move(*answer);
    }
    return Answer{};
}

} // namespace

bool ControlProtocolOperations::MainLoopAvailable() const {
    return !runtimeCache.IsMainLoopBlocked();
}

bool ControlProtocolOperations::CanReadInPlace() const {
    return Vor::AsyncLoop::OnMainLoop() || !MainLoopAvailable();
}

long long ControlProtocolOperations::LocalNodeDateTime(unsigned long long timeout) {
    if (CanReadInPlace()) {
        return systemInterface.LocalNodeDateTime();
    }
    return ReadBounded<long long>(
        *asyncRunner, [this](long long& answer) { answer = systemInterface.LocalNodeDateTime(); }, timeout);
}

std::string ControlProtocolOperations::LocalNodeNtpHost(unsigned long long timeout) {
    if (CanReadInPlace()) {
        return systemInterface.LocalNodeNtpHost();
    }
    return ReadBounded<std::string>(
        *asyncRunner, [this](std::string& answer) { answer = systemInterface.LocalNodeNtpHost(); }, timeout);
}

bool ControlProtocolOperations::LocalNodeSyncTime(const std::string& host, unsigned long long timeout) {
    if (CanReadInPlace()) {
        return systemInterface.LocalNodeSyncTime(host);
    }
    return ReadBounded<bool>(
        *asyncRunner, [this, host](bool& answer) { answer = systemInterface.LocalNodeSyncTime(host); }, timeout);
}

void ControlProtocolOperations::AddDataSourceEventHandler(
    const IControlSystemInterface::DataSourceEventHandlerContainer& handlers,
    IControlSystemInterface::DataSourceEventCallbackIdContainer& ids, unsigned long long timeout) {
    if (runtimeCache.IsMainLoopBlocked()) {
        return;
    }
    if (Vor::AsyncLoop::OnMainLoop()) {
        systemInterface.AddDataSourceEventHandler(handlers, ids);
        return;
    }
    const auto made = std::make_shared<IControlSystemInterface::DataSourceEventCallbackIdContainer>(ids);
    RunOrDrop([this, handlers, made] { systemInterface.AddDataSourceEventHandler(handlers, *made); }, timeout);
    // A subscription that was made too late has ids, too: they are needed to end it.
    ids = *made;
}

void ControlProtocolOperations::RemoveDataSourceEventHandler(
    IControlSystemInterface::DataSourceEventCallbackIdContainer& ids, unsigned long long timeout) {
    if (CanReadInPlace()) {
        systemInterface.RemoveDataSourceEventHandler(ids);
        return;
    }
    const auto left = std::make_shared<IControlSystemInterface::DataSourceEventCallbackIdContainer>(ids);
    RunOrDrop([this, left] { systemInterface.RemoveDataSourceEventHandler(*left); }, timeout);
    ids = *left;
}

void ControlProtocolOperations::DataSourceProperties(const std::string& name,
                                                     IControlSystemInterface::ControlDataSourceProperties& out,
                                                     unsigned long long timeout) {
    using Properties = IControlSystemInterface::ControlDataSourceProperties;
    // `name` may be a member of `out`, which is cleared.
    const std::string nameCopy = name; // NOLINT(performance-unnecessary-copy-initialization): see above
    out = Properties{};
    if (CanReadInPlace()) {
        systemInterface.DataSourceProperties(nameCopy, out);
        return;
    }
    out = ReadBounded<Properties>(
        *asyncRunner, [this, nameCopy](Properties& answer) { systemInterface.DataSourceProperties(nameCopy, answer); },
        timeout);
}

void* ControlProtocolOperations::LiveJob(unsigned long long timeout) {
    if (CanReadInPlace()) {
        return systemInterface.LiveJob();
    }
    return ReadBounded<Vor::Object>(
               *asyncRunner, [this](Vor::Object& answer) { answer = Vor::Object::Adopt(systemInterface.LiveJob()); },
               timeout)
        .Release();
}

} // namespace VorControl
