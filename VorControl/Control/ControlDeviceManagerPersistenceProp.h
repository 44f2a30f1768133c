#pragma once

#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>

/// The section of a job with the devices of a service.
namespace VorControl {

/// A port of a device. The list of its register assemblies is beside these members.
class ControlDeviceManagerSelectedDevicePortPersistenceItem : public Vor::Params::Group {
public:
    ControlDeviceManagerSelectedDevicePortPersistenceItem();

    Vor::Params::Value<std::string> id; ///< the port's key
    Vor::Params::Value<unsigned long long> portNumber;
    Vor::Params::Value<std::string> configVersion;
    Vor::Params::Group config; ///< in the device's own form, so it has no members here
};

/// A device. The serial number isn't stored: the engine's and the provider's ids identify the device.
class ControlDeviceManagerSelectedDevicePersistenceItem : public Vor::Params::Group {
public:
    ControlDeviceManagerSelectedDevicePersistenceItem();

    Vor::Params::Value<std::string> deviceModel;
    Vor::Params::Value<std::string> engineId;
    Vor::Params::Value<std::string> providerId;
    Vor::Params::Value<std::string> portsListVersion;
    Vor::Params::Array<ControlDeviceManagerSelectedDevicePortPersistenceItem> portsList;
};

class ControlDeviceManagerPersistenceProp : public Vor::Params::Group {
public:
    ControlDeviceManagerPersistenceProp();

    Vor::Params::Value<std::string> selectedDevicesVersion;
    Vor::Params::Array<ControlDeviceManagerSelectedDevicePersistenceItem> selectedDevicesList;
};

} // namespace VorControl
