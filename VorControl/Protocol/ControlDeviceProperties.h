#pragma once

#include "VorApi/Params/Array.h"
#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorCommon/IDeviceProvider.h"

#include <string>

namespace VorControl {
struct ControlAvailableDeviceProp;
struct ControlSelectedDeviceProp;
} // namespace VorControl

namespace VorControl::Protocol {

/// One device that a service may use.
class AvailableDeviceProperty : public Vor::Params::Group {
public:
    AvailableDeviceProperty();

    void Populate(const ControlAvailableDeviceProp& device);

    Vor::Params::Enum<VorCommon::IDeviceProvider::DeviceStatus> deviceStatus;
    Vor::Params::Value<std::string> engineId;
    Vor::Params::Value<std::string> serialNumber;
};

/// The devices that a service may use.
class AvailableDeviceArrayProperty : public Vor::Params::Group {
public:
    AvailableDeviceArrayProperty();

    Vor::Params::Array<AvailableDeviceProperty> devices;
};

/// One device that a service uses.
class ControlDeviceProperties : public Vor::Params::Group {
public:
    ControlDeviceProperties();

    void Populate(const ControlSelectedDeviceProp& device);

    Vor::Params::Value<std::string> id;
    Vor::Params::Value<std::string> displayName;
    Vor::Params::Value<std::string> engineId;
    Vor::Params::Value<std::string> serialNumber;
    Vor::Params::Enum<VorCommon::IDeviceProvider::DeviceStatus> deviceStatus;
};

/// By what a client selects a device for a service to use.
class ControlDeviceCreationParam : public Vor::Params::Group {
public:
    ControlDeviceCreationParam();

    Vor::Params::Value<std::string> engineId;
    Vor::Params::Value<std::string> serialNumber;
};

/// The list of the devices that a service uses.
class ControlDeviceListProperties : public Vor::Params::Group {
public:
    ControlDeviceListProperties();

    ControlDeviceCreationParam creationParams; ///< what a creation takes
    Vor::Params::Value<unsigned long long> maxDeviceCount;
};

/// A port of a device. Who writes the document adds the device's parameters of the port under "parameters".
class ControlDevicePortProperties : public Vor::Params::Group {
public:
    ControlDevicePortProperties();

    Vor::Params::Value<std::string> displayName;
    Vor::Params::Value<unsigned long long> portNumber;
    Vor::Params::Value<std::string> id;
};

} // namespace VorControl::Protocol
