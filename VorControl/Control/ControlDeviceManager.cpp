#include "VorControl/Control/ControlDeviceManager.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/Control/ControlDevicePort.h"
#include "VorControl/Control/ControlText.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace VorControl {

using VorCommon::IDeviceProvider;

ControlDeviceManager::ControlDeviceManager(const ControlDeviceManagerCtorArgs& args)
    : serviceId(args.serviceId)
    , serviceName(args.serviceName)
    , scanEngineInterface(args.scanEngineInterface)
    , deviceOperations(args.deviceOperations)
    , link(std::make_shared<Link>())
    , autoSelectDefaultDevice(args.autoSelectDefaultDevice)
    , defaultSerialNumber(std::to_string(args.defaultSerialNumber)) {
    Vor::ThrowIfFailed(yLock_Construct(link->lock.Out()));
    link->manager = this;
    try {
        Subscribe();
    } catch (...) {
        Unsubscribe();
        throw;
    }
    commandTarget.GetTriggerDigitalOutputEvent().Add(
        [this](const std::string& deviceId, const std::string& portId, long long target, bool value) {
            OnTriggerDigitalOutput(deviceId, portId, target, value);
        });
}

ControlDeviceManager::~ControlDeviceManager() {
    Unsubscribe();
}

ControlAvailableDeviceProp* ControlDeviceManager::FindAvailableDevicePropSerialNumber(const std::string& engineId,
                                                                                      const std::string& serialNumber) {
    const auto found = std::ranges::find_if(availableDevices, [&](const auto& entry) {
        return entry.second.engineId == engineId && entry.second.serialNumber == serialNumber;
    });
    return found == availableDevices.end() ? nullptr : &found->second;
}

ControlAvailableDeviceProp* ControlDeviceManager::FindAvailableDevicePropProviderId(const std::string& engineId,
                                                                                    const std::string& providerId) {
    const auto found = availableDevices.find(std::pair(engineId, providerId));
    return found == availableDevices.end() ? nullptr : &found->second;
}

bool ControlDeviceManager::AutoSelectDefaultDevice() {
    CheckSelectedDeviceCount();
    const auto found = std::ranges::find_if(
        availableDevices, [this](const auto& entry) { return IsSelectedDefaultDevice(entry.second.serialNumber); });
    if (found == availableDevices.end()) {
        return false;
    }
    const std::string id = EnterSelectedDevice(found->second);
    ++nextSelectedDeviceNumber;
    deviceAdded.Raise(ControlSelectedDeviceProp(selectedDevices.at(id)), id); // handlers may change the map
    return true;
}

void ControlDeviceManager::CheckSelectedDeviceCount() const {
    if (selectedDevices.size() == maxSelectableDeviceCount) {
        Vor::Throw(yERROR_FULL);
    }
}

std::string ControlDeviceManager::GetNextSelectedDeviceId() const {
    return "device-" + std::to_string(nextSelectedDeviceNumber);
}

std::string ControlDeviceManager::EnterSelectedDevice(const ControlAvailableDeviceProp& available) {
    ControlSelectedDeviceProp selected;
    selected.id = GetNextSelectedDeviceId();
    selected.displayName = selected.id;
    UpdateSelectedDeviceProp(available, selected);
    std::string id = selected.id;
    selectedDevices.emplace(id, std::move(selected));
    return id;
}

std::string ControlDeviceManager::AddSelectedDeviceEntry(const ControlAvailableDeviceProp& available) {
    CheckSelectedDeviceCount();
    std::string id = EnterSelectedDevice(available);
    try {
        AddSelectedDeviceHandlers(selectedDevices.at(id));
        ++nextSelectedDeviceNumber;
        deviceAdded.Raise(ControlSelectedDeviceProp(selectedDevices.at(id)), id); // handlers may change the map
    } catch (...) {
        if (const auto entry = selectedDevices.find(id); entry != selectedDevices.end()) {
            RemoveSelectedDeviceHandlers(entry->second);
            selectedDevices.erase(entry);
        }
        throw;
    }
    return id;
}

void ControlDeviceManager::UpdateSelectedDeviceProp(const ControlAvailableDeviceProp& available,
                                                    ControlSelectedDeviceProp& selected) {
    selected.device = available.device;
    selected.engineId = available.engineId;
    selected.deviceModel = available.deviceModel;
    selected.serialNumber = available.serialNumber;
    selected.providerId = available.providerId;
    selected.deviceStatus = available.deviceStatus;
    const auto provider = selected.device.lock();
    if (provider == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "Selected device %s is unavailable.", selected.serialNumber);
    }
    selected.deviceStatus = provider->Device().Status();
    const std::vector<unsigned long long> numbers = provider->Ports();
    if (numbers.empty() || numbers.size() == selected.ports.size()) {
        return;
    }
    for (const unsigned long long number : numbers) {
        const std::string portId = ControlDevicePort::Key(number);
        if (!selected.ports.contains(portId)) {
            selected.ports.emplace(portId, std::make_shared<ControlDevicePort>(number));
        }
    }
}

std::string ControlDeviceManager::CreateSelectedDevice(const std::string& engineId, const std::string& serialNumber) {
    DeviceManagerLock lock(*this);
    const ControlAvailableDeviceProp* const available = FindAvailableDevicePropSerialNumber(engineId, serialNumber);
    if (available == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "No device with serial number %s found.", serialNumber);
    }
    std::string id = AddSelectedDeviceEntry(*available);
    lock.Unlock();
    return id;
}

void ControlDeviceManager::DeleteSelectedDevice(const std::string& id, bool force) {
    DeviceManagerLock lock(*this);
    const auto found = selectedDevices.find(id);
    if (found == selectedDevices.end()) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    const std::string& serialNumber = found->second.serialNumber;
    if (!force && IsSelectedDefaultDevice(serialNumber)) {
        const char* const text =
            ControlText("%1$s: Default active device serial number %2$s is not allowed to be deleted.");
        Vor::LogError(text, serviceName, serialNumber);
        Vor::Throw(yERROR_READ_ONLY, text, serviceName, serialNumber);
    }
    DeleteSelectedDeviceImpl(found->second);
    lock.Unlock();
}

void ControlDeviceManager::DeleteSelectedDeviceImpl(ControlSelectedDeviceProp& selected) {
    ControlSelectedDeviceProp removed = selected;
    const std::string& id = removed.id;
    deviceRemoved.Raise(removed, id, true);
    if (!selectedDevices.contains(id)) {
        return; // a handler has deleted it
    }
    RemoveSelectedDeviceHandlers(removed);
    if (const auto provider = removed.device.lock()) {
        provider->OnDeselected();
    }
    selectedDevices.erase(id);
    if (selectedDevices.empty()) {
        nextSelectedDeviceNumber = 0;
    }
}

void ControlDeviceManager::Reset() {
    DeviceManagerLock lock(*this);
    SelectedDeviceMap devices = selectedDevices; // handlers may change the map
    for (auto& [id, device] : devices) {
        deviceRemoved.Raise(device, id, true);
        RemoveSelectedDeviceHandlers(device);
        if (const auto provider = device.device.lock()) {
            provider->OnDeselected();
        }
    }
    selectedDevices.clear();
    nextSelectedDeviceNumber = 0;
    if (autoSelectDefaultDevice && !AutoSelectDefaultDevice()) {
        Vor::LogWarning("Failed to auto-select active device for serial number %s)", defaultSerialNumber);
    }
    lock.Unlock();
}

std::string ControlDeviceManager::DeviceIdOfSelectedDevice(const std::string& engineId,
                                                           const std::string& providerId) const {
    const auto found = std::ranges::find_if(selectedDevices, [&](const auto& entry) {
        return entry.second.engineId == engineId && entry.second.providerId == providerId;
    });
    return found == selectedDevices.end() ? std::string() : found->first;
}

void ControlDeviceManager::OnTriggerDigitalOutput(const std::string& deviceId, const std::string& portId,
                                                  long long target, bool value) {
    DeviceManagerLock lock(*this);
    if (!selectedDevices.contains(deviceId)) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    const ControlSelectedDeviceProp& selected = SelectedDeviceProperties(deviceId);
    if (selected.deviceStatus != IDeviceProvider::DeviceStatus::Connected) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    const auto port = selected.ports.find(portId);
    if (port == selected.ports.end()) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    const unsigned long long number = port->second->PortNumber();
    const auto provider = selected.device.lock();
    if (provider == nullptr) {
        Vor::Throw(yERROR_STATE, ControlText("Device interface for serial number '%1$s' is missing."),
                   selected.serialNumber);
    }
    if (provider->BehaviourType(number) != Provider::SoftwareEvents) {
        Vor::Throw(yERROR_STATE,
                   ControlText("Digital output device with serial number '%1$s' is not configured for software events "
                               "on port %2$u."),
                   selected.serialNumber, number);
    }
    deviceOperations.SetDigitalOutputState(serviceId, provider, number, false, value, target);
    lock.Unlock();
}

ControlDeviceManager::AvailableDeviceMap& ControlDeviceManager::AvailableDevices() {
    return availableDevices;
}

unsigned long long ControlDeviceManager::MaxSelectableDeviceCount() const {
    return maxSelectableDeviceCount;
}

const ControlDeviceManager::SelectedDeviceMap& ControlDeviceManager::SelectedDevices() const {
    return selectedDevices;
}

ControlSelectedDeviceProp& ControlDeviceManager::SelectedDeviceProperties(const std::string& id) {
    return selectedDevices.at(id);
}

void ControlDeviceManager::EnableSelectedDevices(bool enable) {
    DeviceManagerLock lock(*this);
    for (const auto& entry : selectedDevices) {
        if (const auto provider = entry.second.device.lock()) {
            provider->Enable(enable);
        }
    }
    lock.Unlock();
}

ControlDeviceManager::DeviceAddedEvent& ControlDeviceManager::SelectedDeviceAddedEvent() {
    return deviceAdded;
}

ControlDeviceManager::DeviceRemovedEvent& ControlDeviceManager::SelectedDeviceRemovedEvent() {
    return deviceRemoved;
}

ControlDeviceManager::DeviceUpdatedEvent& ControlDeviceManager::SelectedDeviceUpdatedEvent() {
    return deviceUpdated;
}

ControlDeviceManager::DeviceParamsChangedEvent& ControlDeviceManager::SelectedDeviceParamsChangedEvent() {
    return deviceParamsChanged;
}

VorCommon::ICommandTarget& ControlDeviceManager::DeviceCommandTarget() {
    return commandTarget;
}

ControlDeviceManager::AvailableListUpdatedEvent& ControlDeviceManager::AvailableDeviceListUpdatedEvent() {
    return availableListUpdated;
}

std::vector<std::string> ControlDeviceManager::DataSourceList() {
    DeviceManagerLock lock(*this);
    std::vector<std::string> sources;
    for (const auto& device : selectedDevices) {
        for (const auto& port : device.second.ports) {
            std::ranges::move(port.second->RegisterAssembly()->DataSourceList(), std::back_inserter(sources));
        }
    }
    lock.Unlock();
    return sources;
}

void ControlDeviceManager::BeginLock() {
    Vor::ThrowIfFailed(yLock_Enter(link->lock.Get()));
}

void ControlDeviceManager::EndLock() {
    Vor::ThrowIfFailed(yLock_Exit(link->lock.Get()));
}

const VorCommon::IMetricsSource& ControlDeviceManager::DevicePortMetricsSource(const std::string& deviceId,
                                                                               const std::string& portId) {
    DeviceManagerLock lock(*this);
    const auto device = selectedDevices.find(deviceId);
    if (device == selectedDevices.end()) {
        Vor::Throw(yERROR_NOT_FOUND, ControlText("%1$s: Active device with device id '%2$s' not found."), serviceName,
                   deviceId);
    }
    const auto port = device->second.ports.find(portId);
    if (port == device->second.ports.end()) {
        Vor::Throw(yERROR_NOT_FOUND, ControlText("%1$s: Port '%2$s' not found for device with device id '%3$s'."),
                   serviceName, portId, deviceId);
    }
    reportedPort = port->second;
    lock.Unlock();
    return *reportedPort;
}

void ControlDeviceManager::UpdateDevicePortMetrics() {
    DeviceManagerLock lock(*this);
    for (const auto& device : selectedDevices) {
        for (const auto& port : device.second.ports) {
            port.second->UpdateMetrics();
        }
    }
    lock.Unlock();
}

bool ControlDeviceManager::IsSelectedDefaultDevice(const std::string& serialNumber) const {
    return serialNumber == defaultSerialNumber;
}

} // namespace VorControl
