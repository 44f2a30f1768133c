#pragma once

#include "VorCommon/IDigitalOutputProvider.h"

#include <memory>
#include <string>

namespace VorControl {

/// One device with digital outputs that a scan engine offers.
struct ControlAvailableDeviceProp {
    std::weak_ptr<VorCommon::IDigitalOutputProvider> device;
    std::string engineId;
    std::string deviceModel;
    std::string serialNumber;
    std::string providerId; ///< of the engine
    VorCommon::IDeviceProvider::DeviceStatus deviceStatus = VorCommon::IDeviceProvider::DeviceStatus::NotConnected;
    VorCommon::IDeviceProvider::ChangedEvent::CallbackId deviceChangedHandle{}; ///< of a device manager
};

} // namespace VorControl
