#pragma once

#include <string>

namespace VorControl {
class IControlInstance;
}

namespace Sensor {

/// What a user reads of a service. For the main loop.
struct ServiceState {
    std::string status;  ///< such as "Running"
    std::string address; ///< where its clients connect; may be empty
    /// Why it doesn't run: its property `failure`, or else that of its last start. May be empty.
    std::string failure;

    /// Throws what the service throws.
    static ServiceState Of(VorControl::IControlInstance& instance);
};

} // namespace Sensor
