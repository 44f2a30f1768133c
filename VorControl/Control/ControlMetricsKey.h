#pragma once

#include <compare>
#include <string>
#include <utility>

namespace VorControl {

/// Names what figures are about: a service or, with a device and a port, one port of a device of the service.
class ControlMetricsKey {
public:
    explicit ControlMetricsKey(std::string protocolName, std::string deviceId = std::string(),
                               std::string portId = std::string())
        : protocolName(std::move(protocolName))
        , deviceId(std::move(deviceId))
        , portId(std::move(portId)) {}

    const std::string& ProtocolName() const { return protocolName; }
    const std::string& DeviceId() const { return deviceId; }
    const std::string& PortId() const { return portId; }

    /// By protocol, then device, then port.
    auto operator<=>(const ControlMetricsKey&) const = default;

private:
    std::string protocolName;
    std::string deviceId;
    std::string portId;
};

} // namespace VorControl
