#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Threads/Locker.h"
#include "VorControl/Control/ControlDeviceManager.h"
#include "VorControl/Control/ControlText.h"
#include "VorControl/Control/IControlScanEngineInterface.h"
#include "yApi/yStatus.h"

#include <exception>
#include <utility>

namespace VorControl {

using VorCommon::IDeviceProvider;

void ControlDeviceManager::Subscribe() {
    if (!scanEngineInterface.IsScanEngineManagerValid()) {
        return;
    }
    opEndHandle = deviceOperations.AddOpEndEventHandler(
        serviceId, [this](const ControlDeviceOperationsResults& results) { OpEndEventHandler(results); });
    SetupScanEngineEvents();
    UpdateAvailableDevicesFromScannerWithoutDeviceOperations();
}

// Waits for handlers that run on other threads. A removal from the devices doesn't, but those handlers hold the lock.
void ControlDeviceManager::Unsubscribe() {
    Vor::CleanUp([this] {
        if (opEndHandle.IsSet()) {
            deviceOperations.RemoveOpEndEventHandler(serviceId, opEndHandle);
        }
    });
    Vor::CleanUp([this] {
        const Vor::Locker locker(link->lock.Get());
        link->manager = nullptr;
        RemoveScanEngineEvents();
        ClearAvailableDevices();
        for (auto& entry : selectedDevices) {
            RemoveSelectedDeviceHandlers(entry.second);
        }
    });
}

template <class Function>
auto ControlDeviceManager::Guarded(Function function) {
    return [link = link, function = std::move(function)](const auto&... arguments) {
        const Vor::Locker locker(link->lock.Get());
        if (link->manager != nullptr) {
            function(*link->manager, arguments...);
        }
    };
}

void ControlDeviceManager::SetupScanEngineEvents() {
    for (const std::string& engineId : scanEngineInterface.GetScanEngineList()) {
        const auto providers = scanEngineInterface.GetDigitalOutputProviderManager(engineId);
        if (providers == nullptr || engineSubscriptions.contains(engineId)) {
            continue;
        }
        EngineSubscription& subscription = engineSubscriptions[engineId];
        subscription.providers = providers;
        subscription.added = providers->AddProviderAddedHandler(
            Guarded([](ControlDeviceManager& manager, const std::string& engine, const std::string& providerId,
                       const std::shared_ptr<Provider>& provider) {
                manager.OnDigitalOutputProviderAddedEventHandler(engine, providerId, provider);
            }));
        subscription.removed = providers->AddProviderRemovedHandler(
            Guarded([](ControlDeviceManager& manager, const std::string& engine, const std::string& providerId) {
                manager.OnDigitalOutputProviderRemovedEventHandler(engine, providerId);
            }));
    }
}

void ControlDeviceManager::RemoveScanEngineEvents() {
    for (auto& [engineId, subscription] : engineSubscriptions) {
        if (const auto providers = subscription.providers.lock()) {
            providers->RemoveProviderAddedHandler(subscription.added);
            providers->RemoveProviderRemovedHandler(subscription.removed);
        }
    }
    engineSubscriptions.clear();
}

void ControlDeviceManager::UpdateAvailableDevicesFromScannerWithoutDeviceOperations() {
    OnAvailableDeviceListUpdatedEventOpResult(scanEngineInterface.FindAvailableSensors());
}

void ControlDeviceManager::OpEndEventHandler(const ControlDeviceOperationsResults& results) {
    if (results.status == yOK && results.actionId == ControlDeviceActionId::FindAvailableSensors) {
        OnAvailableDeviceListUpdatedEventOpResult(*results.devices);
    }
}

void ControlDeviceManager::OnAvailableDeviceListUpdatedEventOpResult(const DeviceList& list) {
    {
        DeviceManagerLock lock(*this);
        EnterAvailableDevices(list);
        if (selectedDevices.empty() && autoSelectDefaultDevice) {
            if (!AutoSelectDefaultDevice()) {
                Vor::LogWarning("Failed to auto-select sensor (%s)", defaultSerialNumber);
            }
        } else {
            UpdateSelectedDevicesPropAndConfig();
        }
        lock.Unlock();
    }
    availableListUpdated.Raise(serviceId);
}

// In default-device mode only the first device counts.
void ControlDeviceManager::EnterAvailableDevices(const DeviceList& list) {
    ClearAvailableDevices();
    for (const ControlAvailableDeviceProp& device : list) {
        const auto [entry, isNew] = availableDevices.emplace(std::pair(device.engineId, device.providerId), device);
        const auto provider = device.device.lock();
        if (isNew && provider != nullptr) {
            AddAvailableDeviceHandlers(entry->second);
        }
        if (autoSelectDefaultDevice) {
            return;
        }
    }
}

void ControlDeviceManager::ClearAvailableDevices() {
    for (auto& entry : availableDevices) {
        RemoveAvailableDeviceHandlers(entry.second);
    }
    availableDevices.clear();
}

void ControlDeviceManager::AddAvailableDeviceHandlers(ControlAvailableDeviceProp& available) {
    const auto provider = available.device.lock();
    if (provider == nullptr) {
        Vor::Throw(yERROR_STATE, ControlText("Device interface for %1$s is missing."), available.serialNumber);
    }
    available.deviceChangedHandle = provider->Device().AddChangedHandler(
        Guarded([engineId = available.engineId, providerId = available.providerId](ControlDeviceManager& manager) {
            manager.OnDeviceChanged(engineId, providerId);
        }));
}

void ControlDeviceManager::RemoveAvailableDeviceHandlers(ControlAvailableDeviceProp& available) {
    if (const auto provider = available.device.lock()) {
        provider->Device().RemoveChangedHandler(available.deviceChangedHandle);
    }
}

// For devices that went without an event of their provider.
void ControlDeviceManager::UpdateSelectedDevicesPropAndConfig() {
    try {
        for (const auto& [id, selected] : SelectedDeviceMap(selectedDevices)) {
            if (!selected.device.expired()) {
                continue;
            }
            Vor::LogUser(Vor::UserWarning, "VorControl",
                         ControlText("The active %1$s device with serial number %2$s no longer appears to be available "
                                     "in the system. To reuse it, please add it back to the sensor group on the Design "
                                     "page."),
                         selected.deviceModel, selected.serialNumber);
            deviceRemoved.Raise(selected, id, true);
            selectedDevices.erase(id);
        }
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "Exception updating active device properties: %s", e.what());
        throw;
    }
}

void ControlDeviceManager::AddSelectedDeviceHandlers(ControlSelectedDeviceProp& selected) {
    const auto provider = selected.device.lock();
    if (provider == nullptr) {
        Vor::Throw(yERROR_STATE, ControlText("Device interface for %1$s is missing."), selected.serialNumber);
    }
    selected.paramsChangedHandle = provider->AddParamsChangedHandler(
        Guarded([id = selected.id](ControlDeviceManager& manager, unsigned long long port) {
            manager.OnDeviceParamsChanged(id, port);
        }));
}

void ControlDeviceManager::RemoveSelectedDeviceHandlers(ControlSelectedDeviceProp& selected) {
    if (const auto provider = selected.device.lock()) {
        provider->RemoveParamsChangedHandler(selected.paramsChangedHandle);
    }
}

void ControlDeviceManager::OnDigitalOutputProviderAddedEventHandler(const std::string& engineId,
                                                                    const std::string& providerId,
                                                                    const std::shared_ptr<Provider>& provider) {
    if (autoSelectDefaultDevice) {
        return;
    }
    const auto [entry, isNew] = availableDevices.try_emplace(std::pair(engineId, providerId));
    ControlAvailableDeviceProp& available = entry->second;
    if (!isNew) {
        Vor::LogWarning("ControlDeviceManager: Scan engine %s notified of an added provider (%s), but it already "
                        "exists.",
                        engineId, providerId);
        RemoveAvailableDeviceHandlers(available);
    }
    const IDeviceProvider& device = provider->Device();
    available.device = provider;
    available.engineId = engineId;
    available.deviceModel = device.Model();
    available.serialNumber = device.SerialNumber();
    available.providerId = providerId;
    available.deviceStatus = device.Status();
    AddAvailableDeviceHandlers(available);
    availableListUpdated.Raise(serviceId);
}

void ControlDeviceManager::OnDigitalOutputProviderRemovedEventHandler(const std::string& engineId,
                                                                      const std::string& providerId) {
    DeleteRemovedDevice(engineId, providerId);
    const auto found = availableDevices.find(std::pair(engineId, providerId));
    if (found == availableDevices.end()) {
        Vor::LogWarning("ControlDeviceManager: Scan engine %s notified of a removed provider (%s), but the device "
                        "manager wasn't aware of it.",
                        engineId, providerId);
    } else {
        RemoveAvailableDeviceHandlers(found->second);
        availableDevices.erase(found);
    }
    availableListUpdated.Raise(serviceId);
}

void ControlDeviceManager::DeleteRemovedDevice(const std::string& engineId, const std::string& providerId) {
    const std::string id = DeviceIdOfSelectedDevice(engineId, providerId);
    if (id.empty()) {
        return;
    }
    Vor::LogUser(Vor::UserInfo, "control",
                 ControlText("Removed the active device '%1$s' for %2$s because the sensor was removed."),
                 selectedDevices.at(id).displayName, serviceName);
    try {
        DeleteSelectedDevice(id, false);
    } catch (const Vor::Exception& e) {
        // The default device stays selected until the next list of devices.
        if (e.Status() != yERROR_READ_ONLY) {
            throw;
        }
        Vor::LogThrown(e, "EXCEPTION THROWN: ");
    }
}

void ControlDeviceManager::OnDeviceChanged(const std::string& engineId, const std::string& providerId) {
    ControlAvailableDeviceProp* const available = FindAvailableDevicePropProviderId(engineId, providerId);
    const auto provider = available != nullptr ? available->device.lock() : nullptr;
    if (provider == nullptr) {
        return;
    }
    const IDeviceProvider& device = provider->Device();
    available->deviceStatus = device.Status();
    std::string serialNumber = device.SerialNumber();
    std::string deviceModel = device.Model();
    const bool identityChanged = serialNumber != available->serialNumber || deviceModel != available->deviceModel;
    available->serialNumber = std::move(serialNumber);
    available->deviceModel = std::move(deviceModel);
    const std::string id = DeviceIdOfSelectedDevice(engineId, providerId);
    if (!id.empty()) {
        ControlSelectedDeviceProp& selected = selectedDevices.at(id);
        if (identityChanged) {
            selected.ports.clear();
        }
        UpdateSelectedDeviceProp(*available, selected);
        deviceUpdated.Raise(ControlSelectedDeviceProp(selected), id); // handlers may change the map
    }
    availableListUpdated.Raise(serviceId);
}

void ControlDeviceManager::OnDeviceParamsChanged(const std::string& id, unsigned long long port) {
    const auto found = selectedDevices.find(id);
    if (found != selectedDevices.end()) {
        deviceParamsChanged.Raise(ControlSelectedDeviceProp(found->second), port); // handlers may change the map
    }
}

} // namespace VorControl
