#include "Sensor/StartRetry.h"

#include "Vor/Logging.h"
#include "VorControl/Control/IControlManager.h"
#include "yApi/yStatus.h"

#include <utility>

namespace Sensor {

namespace {

bool MayStartLater(const VorControl::IControlInstance& instance) {
    const auto failure = instance.IsEnabled() ? instance.LastEnableFailure() : std::nullopt;
    return failure && failure->status == yERROR_CONFLICT;
}

} // namespace

StartRetry::StartRetry(const UserLog& log, std::function<void(VorControl::IControlInstance& instance)> started)
    : log(log)
    , started(std::move(started))
    , timer([this](Vor::AsyncTimer&) { TryAgain(); }) {}

void StartRetry::Watch(VorControl::IControlManager& manager) {
    if (services == nullptr) {
        services = &manager;
        enabled.emplace(
            manager,
            [this](VorControl::IControlInstance& instance) {
                return instance.AddEnabledEventHandler([this](const std::string&) { Update(); });
            },
            &VorControl::IControlInstance::RemoveEnabledEventHandler,
            "A handler of started services can't be removed.");
    }
    Update();
}

void StartRetry::Update() {
    const bool wasWaiting = !waiting.empty();
    for (const std::string& id : services->List()) {
        VorControl::IControlInstance& instance = services->GetInstance(id);
        if (!MayStartLater(instance)) {
            waiting.erase(id);
        } else if (waiting.insert(id).second) {
            Vor::LogUser(Vor::UserWarning, "VorControl",
                         "%1$s can't start: %2$s. The sensor tries again every %3$d seconds.", instance.DisplayName(),
                         instance.LastEnableFailure()->text, static_cast<int>(Period.count()));
        }
    }
    if (waiting.empty()) {
        timer.Stop();
    } else if (!wasWaiting) {
        timer.Start(std::chrono::microseconds(Period).count(), false);
    }
}

void StartRetry::TryAgain() {
    for (const std::string& id : std::set(waiting)) {
        VorControl::IControlInstance& instance = services->GetInstance(id);
        if (!MayStartLater(instance)) {
            continue;
        }
        Vor::LogInfo("Starting service %s again.", id);
        {
            const UserLog::Silence silence(log);
            instance.Enable(true);
        }
        if (const auto failure = instance.LastEnableFailure(); !failure) {
            Vor::LogUser(Vor::UserInfo, "VorControl", "%1$s has started.", instance.DisplayName());
            started(instance);
        } else if (failure->status != yERROR_CONFLICT) {
            Vor::LogUser(Vor::UserError, "VorControl", "%1$s can't start: %2$s.", instance.DisplayName(),
                         failure->text);
        }
    }
    Update();
}

} // namespace Sensor
