#include "VorControl/Control/ControlDeviceManagerPersistenceProp.h"

#include "VorControl/Control/ControlText.h"

namespace VorControl {

namespace {

constexpr const char* DeviceSectionVersion = "1.2";

void RegisterVersion(Vor::Params::Group& group, const char* key, Vor::Params::Value<std::string>& version,
                     const char* title) {
    group.Register(key, version, ControlText(title));
    version.EnableReadOnly();
    version.SetReadOnly(true);
}

} // namespace

ControlDeviceManagerSelectedDevicePortPersistenceItem::ControlDeviceManagerSelectedDevicePortPersistenceItem()
    : configVersion(DeviceSectionVersion) {
    Register("id", id, ControlText("Port Identifier"));
    Register("portNumber", portNumber);
    RegisterVersion(*this, "configVersion", configVersion, "Configuration Version");
    Register("config", config, ControlText("Port Configuration"));
}

ControlDeviceManagerSelectedDevicePersistenceItem::ControlDeviceManagerSelectedDevicePersistenceItem()
    : portsListVersion(DeviceSectionVersion) {
    Register("deviceModel", deviceModel, ControlText("Device Model"));
    Register("engineId", engineId, ControlText("Engine Identifier"));
    Register("providerId", providerId, ControlText("Provider Identifier"));
    RegisterVersion(*this, "portsListVersion", portsListVersion, "Ports List Version");
    Register("portsList", portsList, ControlText("Ports List"));
}

ControlDeviceManagerPersistenceProp::ControlDeviceManagerPersistenceProp()
    : selectedDevicesVersion(DeviceSectionVersion) {
    RegisterVersion(*this, "selectedDevicesVersion", selectedDevicesVersion, "Selected Devices Version");
    Register("selectedDevicesList", selectedDevicesList, ControlText("Selected Devices List"));
}

} // namespace VorControl
