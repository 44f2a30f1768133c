#pragma once

#include "VorCommon/IDigitalOutputProvider.h"

#include <map>
#include <memory>
#include <string>

namespace VorControl {

class ControlDevicePort;

/// One device with digital outputs that a service uses.
struct ControlSelectedDeviceProp {
    std::weak_ptr<VorCommon::IDigitalOutputProvider> device;
    std::string engineId;
    std::string deviceModel;
    std::string serialNumber;
    std::string providerId; ///< of the engine
    VorCommon::IDeviceProvider::DeviceStatus deviceStatus = VorCommon::IDeviceProvider::DeviceStatus::NotConnected;
    std::string id; ///< such as "device-0"
    std::string displayName;
    std::map<std::string, std::shared_ptr<ControlDevicePort>> ports; ///< by "port-" and the number of the port
    VorCommon::IDigitalOutputProvider::ParamsChangedEvent::CallbackId paramsChangedHandle{};
};

} // namespace VorControl
