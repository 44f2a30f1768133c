#include "Vor/AsyncLoop.h"
#include "Vor/Exception.h"
#include "VorApi/Object.h"
#include "VorCommon/IRuntimeCache.h"
#include "VorControl/Control/ControlProtocolOperations.h"

#include <utility>

namespace VorControl {

namespace {

/// Runs the call on the main loop; returns false after the time-out. On return the call isn't running and will not run,
/// but after a time-out it may have run.
bool RunBounded(std::function<void()> call, unsigned long long timeout) {
    try {
        Vor::AsyncRunner runner;
        runner.RunAndWait(std::move(call), timeout);
        return true;
    } catch (const Vor::Exception& e) {
        if (e.Status() != yERROR_TIMEOUT) {
            throw;
        }
        return false;
    }
}

/// Returns what `read` writes, or a fresh answer after the time-out. The closure shares the answer that it writes into,
/// as it may run too late.
template <class Answer>
Answer ReadBounded(std::function<void(Answer&)> read, unsigned long long timeout) {
    const auto answer = std::make_shared<Answer>();
    if (RunBounded([answer, read = std::move(read)] { read(*answer); }, timeout)) {
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
    return ReadBounded<long long>([this](long long& answer) { answer = systemInterface.LocalNodeDateTime(); }, timeout);
}

std::string ControlProtocolOperations::LocalNodeNtpHost(unsigned long long timeout) {
    if (CanReadInPlace()) {
        return systemInterface.LocalNodeNtpHost();
    }
    return ReadBounded<std::string>([this](std::string& answer) { answer = systemInterface.LocalNodeNtpHost(); },
                                    timeout);
}

bool ControlProtocolOperations::LocalNodeSyncTime(const std::string& host, unsigned long long timeout) {
    if (CanReadInPlace()) {
        return systemInterface.LocalNodeSyncTime(host);
    }
    return ReadBounded<bool>([this, host](bool& answer) { answer = systemInterface.LocalNodeSyncTime(host); }, timeout);
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
    RunBounded([this, handlers, made] { systemInterface.AddDataSourceEventHandler(handlers, *made); }, timeout);
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
    RunBounded([this, left] { systemInterface.RemoveDataSourceEventHandler(*left); }, timeout);
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
        [this, nameCopy](Properties& answer) { systemInterface.DataSourceProperties(nameCopy, answer); }, timeout);
}

void* ControlProtocolOperations::LiveJob(unsigned long long timeout) {
    if (CanReadInPlace()) {
        return systemInterface.LiveJob();
    }
    return ReadBounded<Vor::Object>(
               [this](Vor::Object& answer) { answer = Vor::Object::Adopt(systemInterface.LiveJob()); }, timeout)
        .Release();
}

} // namespace VorControl
