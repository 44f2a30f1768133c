#include "Sensor/ServiceState.h"

#include "Vor/JsonSerializer.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/InstanceLocks.h"

#include <optional>

#include <nlohmann/json.hpp>

namespace Sensor {

namespace {

using VorControl::IControlInstance;
using VorControl::ControlProtocol::ProtocolStatus;

const char* TextOf(ProtocolStatus status) {
    switch (status) {
    case ProtocolStatus::Running:
        return "Running";
    case ProtocolStatus::Stopped:
        return "Stopped";
    case ProtocolStatus::Starting:
        return "Starting";
    case ProtocolStatus::Stopping:
        return "Stopping";
    case ProtocolStatus::FailedToStart:
        return "Failed To Start";
    case ProtocolStatus::FailedToStop:
        return "Failed To Stop";
    }
    return "Unknown";
}

nlohmann::json PropertiesOf(IControlInstance& instance) {
    const VorControl::InstancePropertiesLock lock(instance);
    return Vor::Properties::JsonSerializer::Serialize(instance.Properties());
}

/// The text of a property, empty when the service has none of this name.
std::string TextAt(const nlohmann::json& properties, const char* name) {
    const auto found = properties.find(name);
    return found != properties.end() && found->is_string() ? found->get<std::string>() : std::string();
}

} // namespace

ServiceState ServiceState::Of(IControlInstance& instance) {
    const nlohmann::json properties = PropertiesOf(instance);
    // A service whose start was interrupted may still have another status.
    const ProtocolStatus status = instance.GetProtocolStatus();
    const auto startFailure = instance.IsEnabled() ? instance.LastEnableFailure() : std::nullopt;
    const bool failed = startFailure && status != ProtocolStatus::Running;
    ServiceState state{.status = TextOf(failed ? ProtocolStatus::FailedToStart : status),
                       .address = TextAt(properties, "address"),
                       .failure = TextAt(properties, "failure")};
    if (state.failure.empty() && failed) {
        state.failure = startFailure->text;
    }
    return state;
}

} // namespace Sensor
