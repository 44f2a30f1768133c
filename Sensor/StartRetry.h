#pragma once

#include "Sensor/UserLog.h"
#include "Vor/AsyncTimer.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Protocol/ServiceSubscriptions.h"

#include <chrono>
#include <functional>
#include <optional>
#include <set>
#include <string>

namespace Sensor {

/// Starts services again that couldn't get their port or address: each Period, every enabled service whose last start
/// failed with yERROR_CONFLICT. The user's log has an entry when a service first fails and one when it has started.
/// For the main loop's thread.
class StartRetry {
public:
    static constexpr std::chrono::seconds Period{5};

    /// `started` is called with each service that was started by this. The log must outlive this.
    StartRetry(const UserLog& log, std::function<void(VorControl::IControlInstance& instance)> started);

    /// To be called after the services of the manager were started or loaded. From then on services that a client
    /// starts are watched, too. The manager must outlive this.
    void Watch(VorControl::IControlManager& manager);

private:
    /// Finds the services that wait for a port or an address, and reports new ones to the user.
    void Update();
    void TryAgain();

    const UserLog& log;
    const std::function<void(VorControl::IControlInstance& instance)> started;
    VorControl::IControlManager* services = nullptr;
    /// For services that are started or stopped by others.
    std::optional<VorControl::Protocol::ServiceSubscriptions<VorControl::IControlInstance::EnabledEvent::CallbackId>>
        enabled;
    std::set<std::string> waiting; ///< by id
    Vor::AsyncTimer timer;
};

} // namespace Sensor
