#pragma once

#include "Sensor/UserLog.h"
#include "Vor/AsyncTimer.h"

#include <chrono>
#include <functional>
#include <set>
#include <string>

namespace VorControl {
class IControlInstance;
class IControlManager;
} // namespace VorControl

namespace Sensor {

/// Starts services again that couldn't get their port or address: each Period, every enabled service whose last start
/// failed with yERROR_CONFLICT. The user's log has an entry when a service first fails and one when it has started.
/// For the main loop's thread.
class StartRetry {
public:
    static constexpr std::chrono::seconds Period{5};

    /// `started` is called with each service that was started by this. The log must outlive this.
    StartRetry(const UserLog& log, std::function<void(VorControl::IControlInstance& instance)> started);

    /// To be called after the services of the manager were started or loaded. The manager must live as long as the main
    /// loop runs.
    void Watch(VorControl::IControlManager& manager);

private:
    /// Finds the services that wait for a port or an address, and reports new ones to the user.
    void Update();
    void TryAgain();

    const UserLog& log;
    const std::function<void(VorControl::IControlInstance& instance)> started;
    VorControl::IControlManager* services = nullptr;
    std::set<std::string> waiting; ///< by id
    Vor::AsyncTimer timer;
};

} // namespace Sensor
