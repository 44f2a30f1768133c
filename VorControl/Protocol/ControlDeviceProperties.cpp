#include "VorControl/Protocol/ControlDeviceProperties.h"

#include "VorControl/Control/ControlAvailableDeviceProp.h"
#include "VorControl/Control/ControlSelectedDeviceProp.h"
#include "VorControl/Control/ControlText.h"
#include "VorControl/Protocol/DocumentMembers.h"

namespace VorControl::Protocol {

using VorCommon::IDeviceProvider;

namespace {

void RegisterStatus(Vor::Params::Group& group, Vor::Params::Enum<IDeviceProvider::DeviceStatus>& status) {
    RegisterReadOnly(group, "deviceStatus", status);
    status.AddOption(IDeviceProvider::DeviceStatus::Connected, ControlText("Connected"));
    status.AddOption(IDeviceProvider::DeviceStatus::NotConnected, ControlText("Not Connected"));
}

} // namespace

AvailableDeviceProperty::AvailableDeviceProperty() {
    RegisterStatus(*this, deviceStatus);
    RegisterReadOnly(*this, "engineId", engineId);
    RegisterReadOnly(*this, "serialNumber", serialNumber);
}

void AvailableDeviceProperty::Populate(const ControlAvailableDeviceProp& device) {
    deviceStatus = device.deviceStatus;
    engineId = device.engineId;
    serialNumber = device.serialNumber;
}

AvailableDeviceArrayProperty::AvailableDeviceArrayProperty() {
    Register("devices", devices);
}

ControlDeviceProperties::ControlDeviceProperties() {
    RegisterReadOnly(*this, "id", id);
    RegisterReadOnly(*this, "displayName", displayName, ControlText("Display Name"));
    RegisterReadOnly(*this, "engineId", engineId);
    RegisterReadOnly(*this, "serialNumber", serialNumber);
    RegisterStatus(*this, deviceStatus);
}

void ControlDeviceProperties::Populate(const ControlSelectedDeviceProp& device) {
    id = device.id;
    displayName = device.displayName;
    engineId = device.engineId;
    serialNumber = device.serialNumber;
    deviceStatus = device.deviceStatus;
}

ControlDeviceCreationParam::ControlDeviceCreationParam()
    : Group("") {
    Register("engineId", engineId);
    Register("serialNumber", serialNumber);
}

ControlDeviceListProperties::ControlDeviceListProperties() {
    RegisterReadOnly(*this, "creationParams", creationParams);
    RegisterReadOnly(*this, "maxDeviceCount", maxDeviceCount, ControlText("Max Device Count"));
}

ControlDevicePortProperties::ControlDevicePortProperties() {
    RegisterReadOnly(*this, "displayName", displayName);
    RegisterReadOnly(*this, "portNumber", portNumber);
    RegisterReadOnly(*this, "id", id);
}

} // namespace VorControl::Protocol
