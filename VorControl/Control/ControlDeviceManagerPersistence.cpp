#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorControl/Control/ControlDeviceManager.h"
#include "VorControl/Control/ControlDeviceManagerPersistenceProp.h"
#include "VorControl/Control/ControlDevicePort.h"
#include "VorControl/Control/ControlText.h"
#include "VorControl/Control/RunCaught.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "VorControl/Persistence/PersistLog.h"
#include "VorControl/Persistence/RegisterAssemblyDocument.h"
#include "VorControl/Persistence/RunUpdate.h"
#include "VorControl/Persistence/StoredText.h"
#include "yApi/yStatus.h"

#include <exception>
#include <optional>
#include <stdexcept>
#include <utility>

#include <nlohmann/json.hpp>

namespace VorControl {

using nlohmann::json;
using Persistence::LogForUser;
using Persistence::StoredText;
using Vor::Properties::JsonSerializer;

namespace {

constexpr const char* SelectedDevicesListKey = "selectedDevicesList";
constexpr const char* PortsListKey = "portsList";
constexpr const char* PortConfigKey = "config";
constexpr const char* PortIdKey = "id";
constexpr const char* PortNumberKey = "portNumber";
constexpr const char* AssemblyListKey = "registerAssemblyList";
constexpr const char* BlocksKey = "blocks";

/// Null when the document isn't an object, or has no array there.
const json* StoredArray(const json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_array() ? &*found : nullptr;
}

std::string TextOf(const json& object, const char* key) {
    return StoredText(object, key).value_or("");
}

} // namespace

void ControlDeviceManager::Save(json& out) {
    DeviceManagerLock lock(*this);
    out = JsonSerializer::Serialize(ControlDeviceManagerPersistenceProp());
    for (const auto& device : selectedDevices) {
        const ControlSelectedDeviceProp& selected = device.second;
        const auto provider = selected.device.lock();
        if (provider == nullptr) {
            Vor::Throw(yERROR_NOT_FOUND, ControlText("Device interface for %1$s is missing."), selected.serialNumber);
        }
        ControlDeviceManagerSelectedDevicePersistenceItem item;
        item.deviceModel = selected.deviceModel;
        item.engineId = selected.engineId;
        item.providerId = selected.providerId;
        json itemJson = JsonSerializer::Serialize(item);
        for (const auto& [key, port] : selected.ports) {
            ControlDeviceManagerSelectedDevicePortPersistenceItem portItem;
            portItem.id = key;
            portItem.portNumber = port->PortNumber();
            json portJson = JsonSerializer::Serialize(portItem);
            if (const auto params = provider->PortParams(port->PortNumber())) {
                portJson[PortConfigKey] = JsonSerializer::Serialize(*params);
            }
            SaveRegisterAssemblyList(*port, portJson);
            itemJson[PortsListKey].push_back(std::move(portJson));
        }
        out[SelectedDevicesListKey].push_back(std::move(itemJson));
    }
    lock.Unlock();
}

void ControlDeviceManager::SaveRegisterAssemblyList(IControlDevicePort& port, json& portJson) const {
    json& list = portJson[AssemblyListKey] = json::array();
    const auto save = [&] {
        const auto assembly = port.RegisterAssembly();
        ControlProtocol::AssemblyLock lock(*assembly);
        list.push_back(Persistence::SerializeRegisterAssembly(*assembly));
        lock.Unlock();
    };
    RunCaught(save, [&](const std::exception& e) {
        LogForUser(Vor::UserError, "%s: Error saving connection map. Please check the connection map.", serviceName);
        Vor::LogThrown(e, "%s: Error saving connection map. Please check the connection map", serviceName);
    });
}

void ControlDeviceManager::Load(const json& in) {
    const json* const list = StoredArray(in, SelectedDevicesListKey);
    if (list == nullptr) {
        Vor::Throw(yERROR_FORMAT, "Missing selected devices list field in the Digital Output configuration job file");
    }
    ControlDeviceManagerPersistenceProp section;
    JsonSerializer::Deserialize(section, in);
    const std::string& version = section.selectedDevicesVersion.Get();
    if (!version.empty() && version != PersistenceDataVersion()) {
        Vor::Throw(yERROR_VERSION, ControlText("%1$s: unsupported configuration data version %2$s."), serviceName,
                   version);
    }
    if (list->size() != section.selectedDevicesList.Count()) {
        Vor::Throw(yERROR_CONFLICT);
    }
    DeviceManagerLock lock(*this);
    if (!list->empty() && availableDevices.empty()) {
        LogForUser(Vor::UserWarning,
                   "%s: No available devices to configure as a selected device. Selected device configuration is "
                   "ignored. Please add some devices to the sensor group.",
                   serviceName);
        Vor::Throw(yERROR_PARTIAL,
                   "%s: No available devices to configure as an active device. Active device configuration is "
                   "ignored. Please add some devices to the sensor group.",
                   serviceName);
    }
    bool skippedAny = false;
    for (unsigned long i = 0; i < section.selectedDevicesList.Count(); ++i) {
        const auto& item = section.selectedDevicesList.At(i);
        skippedAny |= LoadDevice(list->at(i), item.engineId.Get(), item.providerId.Get());
    }
    if (skippedAny) {
        Vor::Throw(yERROR_PARTIAL,
                   "%s: One or more active device configurations were skipped due to errors. Current configuration "
                   "has been marked as having changed from the job file.",
                   serviceName);
    }
    lock.Unlock();
}

bool ControlDeviceManager::LoadDevice(const json& itemJson, const std::string& engineId,
                                      const std::string& providerId) {
    if (providerId.empty()) {
        LogForUser(Vor::UserWarning,
                   "%s: The active device configuration in the job file does not identify an I/O device. This active "
                   "device configuration will not be applied.",
                   serviceName);
        Vor::LogWarning("The active device configuration in the job file does not have a provider id. This active "
                        "device configuration will not be applied.");
        return true;
    }
    const ControlAvailableDeviceProp* const available = FindAvailableDevicePropProviderId(engineId, providerId);
    const auto provider = available != nullptr ? available->device.lock() : nullptr;
    if (provider == nullptr) {
        LogForUser(Vor::UserWarning,
                   "%s: Active device not found. This active device configuration will not be applied.", serviceName);
        Vor::LogWarning("An active device from scan engine '%s' with provider id '%s' not found.", engineId,
                        providerId);
        return true;
    }
    std::string id = DeviceIdOfSelectedDevice(engineId, providerId);
    if (id.empty()) {
        id = AddSelectedDeviceEntry(*available);
    }
    // A handler of the event may have deleted it.
    const auto found = selectedDevices.find(id);
    if (found == selectedDevices.end()) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    ControlSelectedDeviceProp selected = found->second; // handlers may change the map
    return LoadPortConfigurations(selected, itemJson);
}

bool ControlDeviceManager::LoadPortConfigurations(ControlSelectedDeviceProp& selected, const json& itemJson) {
    const json* const list = StoredArray(itemJson, PortsListKey);
    if (list == nullptr || list->empty()) {
        return false;
    }
    const auto provider = selected.device.lock();
    if (provider == nullptr) {
        return true;
    }
    for (const json& portJson : *list) {
        LoadPortConfiguration(selected, *provider, portJson);
    }
    return false;
}

// An element without a number is for the port that has its id.
void ControlDeviceManager::LoadPortConfiguration(ControlSelectedDeviceProp& selected, Provider& provider,
                                                 const json& portJson) {
    std::optional<unsigned long long> number;
    if (portJson.contains(PortNumberKey)) {
        number = portJson.at(PortNumberKey).get<unsigned long long>();
    }
    std::string key = TextOf(portJson, PortIdKey);
    if (!portJson.contains(PortIdKey) && number) {
        key = ControlDevicePort::Key(*number);
    }
    const auto port = selected.ports.find(key);
    if (!number && port != selected.ports.end()) {
        number = port->second->PortNumber();
    }
    if (const auto config = portJson.find(PortConfigKey); config != portJson.end() && number) {
        const auto params = provider.BeginUpdatePortParams(*number);
        Persistence::RunUpdate(
            [&] {
                if (params != nullptr) {
                    JsonSerializer::Deserialize(*params, *config);
                }
            },
            [&] { provider.EndUpdatePortParams(*number); });
    }
    const json* const assemblies = StoredArray(portJson, AssemblyListKey);
    if (assemblies != nullptr && port != selected.ports.end()) {
        LoadRegisterAssemblyList(*port->second, *assemblies);
    }
}

void ControlDeviceManager::LoadRegisterAssemblyList(IControlDevicePort& port, const json& list) const {
    if (list.size() > 1) {
        LogForUser(Vor::UserWarning, "%s: More than one register assembly detected but only one is supported.",
                   serviceName);
    }
    if (!list.empty()) {
        LoadRegisterAssemblyEntry(port, list.at(0));
    }
}

void ControlDeviceManager::LoadRegisterAssemblyEntry(IControlDevicePort& port, const json& entry) const {
    if (!entry.is_object() || !entry.contains(BlocksKey)) {
        return;
    }
    static constexpr const char* Filling =
        "%s: Error filling connection map. Connection map may require manual configuration.";
    static constexpr const char* Loading =
        "%s: Error loading connection map. Connection map may require manual configuration.";
    const auto fail = [this](const std::exception& e) {
        LogForUser(Vor::UserError, Loading, serviceName);
        Vor::LogThrown(e, "EXCEPTION THROWN: ");
        Vor::ThrowNested(Vor::Exception::StatusOf(e), ControlText(Loading), serviceName);
    };
    try {
        LoadRegisterAssemblyBlocks(port, entry);
    } catch (const std::exception& e) {
        LogForUser(Vor::UserError, Filling, serviceName);
        Vor::LogThrown(e, Filling, serviceName);
        fail(e);
    } catch (...) {
        Vor::LogError("%s: Error filling connection map.", serviceName);
        fail(std::runtime_error(UnknownException));
    }
}

void ControlDeviceManager::LoadRegisterAssemblyBlocks(IControlDevicePort& port, const json& entry) const {
    const auto assembly = port.RegisterAssembly();
    try {
        VorCommon::ICommandTarget& target = port.RegisterAssemblyCmdTarget();
        const auto params = target.GetCommandParams("add");
        JsonSerializer::Deserialize(*params, entry);
        ControlProtocol::AssemblyLock lock(*assembly);
        assembly->ResetRegisterAssembly();
        target.InvokeCommand("add", *params);
        lock.Unlock();
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "%s: Loading register assembly '%s' blocks ", serviceName, assembly->Id());
        Vor::ThrowNested(Vor::Exception::StatusOf(e), "Loading register assembly blocks");
    }
}

} // namespace VorControl
