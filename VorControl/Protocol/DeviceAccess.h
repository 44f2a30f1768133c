#pragma once

#include <memory>
#include <string>

namespace VorControl {
class ControlDevicePort;
class IControlDeviceManager;
class IControlInstance;
} // namespace VorControl

namespace VorControl::Protocol {

/// The devices of a service. Fails with yERROR_PARAMETER for a service that uses none.
IControlDeviceManager& RequiredDeviceManager(const IControlInstance& instance);

/// A port of a device that a service uses, which the caller then shares. Fails with yERROR_NOT_FOUND when there is no
/// such device, which may be null, or no such port.
std::shared_ptr<ControlDevicePort> RequiredPort(IControlDeviceManager& manager, const std::string* deviceId,
                                                const std::string& portId);

} // namespace VorControl::Protocol
