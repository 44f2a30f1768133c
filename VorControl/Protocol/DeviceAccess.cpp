#include "VorControl/Protocol/DeviceAccess.h"

#include "Vor/Exception.h"
#include "VorControl/Control/ControlDevicePort.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/Control/IControlInstance.h"
#include "yApi/yStatus.h"

namespace VorControl::Protocol {

IControlDeviceManager& RequiredDeviceManager(const IControlInstance& instance) {
    if (!instance.HasDeviceManager()) {
        Vor::Throw(yERROR_PARAMETER);
    }
    return instance.DeviceManager();
}

std::shared_ptr<ControlDevicePort> RequiredPort(IControlDeviceManager& manager, const std::string* deviceId,
                                                const std::string& portId) {
    std::shared_ptr<ControlDevicePort> found;
    DeviceManagerLock lock(manager);
    const auto& devices = manager.SelectedDevices();
    if (const auto device = deviceId != nullptr ? devices.find(*deviceId) : devices.end(); device != devices.end()) {
        const auto port = device->second.ports.find(portId);
        found = port == device->second.ports.end() ? nullptr : port->second;
    }
    lock.Unlock();
    if (found == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    return found;
}

} // namespace VorControl::Protocol
