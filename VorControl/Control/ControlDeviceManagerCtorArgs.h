#pragma once

#include <cstdint>
#include <string>

namespace VorControl {

class IControlDeviceOperations;
class IControlScanEngineInterface;

/// What a device manager is made from. The objects outlive it.
struct ControlDeviceManagerCtorArgs {
    std::string serviceId;   ///< also the client id of the manager's device operations
    std::string serviceName; ///< for messages
    IControlScanEngineInterface& scanEngineInterface;
    IControlDeviceOperations& deviceOperations;
    /// The device with the default serial number is selected by itself and can't be deleted.
    bool autoSelectDefaultDevice = false;
    std::uint32_t defaultSerialNumber = 0;
};

} // namespace VorControl
