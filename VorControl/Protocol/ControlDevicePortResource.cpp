#include "VorControl/Protocol/ControlDevicePortResource.h"

#include "Vor/DocumentErrors.h"
#include "Vor/DocumentValidation.h"
#include "Vor/VorDataTreeSerializer.h"
#include "VorApi/AtScopeEnd.h"
#include "VorApi/Path.h"
#include "VorControl/Control/ControlDevicePort.h"
#include "VorControl/Control/ControlText.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/Protocol/ControlDeviceProperties.h"

#include <nlohmann/json.hpp>

namespace VorControl::Protocol {

using Vor::Properties::VorDataTreeSerializer;
using VorApi::Path;
using VorApi::VorDataTree;

namespace {

constexpr const char* PortPath = "/controls/:protocol/devices/:device/ports/:port";

} // namespace

ControlDevicePortResource::ControlDevicePortResource(IControlManager& manager)
    : ControlResourceBase(manager)
    , deviceGone(ControlText("The active device '%1$s' is no longer available."))
    , parametersMissing(ControlText("Parameters for the active device '%1$s' could not be found."))
    , defaultName(ControlText("Digital ")) {}

void ControlDevicePortResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                         VorDataTree& data) {
    if (request.FindKey("port") == nullptr) {
        ReadAll(request, response);
    } else {
        ReadOne(request, response, data);
    }
}

void ControlDevicePortResource::ReadAll(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response) const {
    const std::string& serviceId = RequiredKey(request, "protocol");
    const std::string& deviceId = RequiredKey(request, "device");
    IControlDeviceManager& manager = ResolveToInstance(serviceId).DeviceManager();
    DeviceManagerLock lock(manager);
    for (const auto& port : manager.SelectedDeviceProperties(deviceId).ports) {
        response.Embed("item", Path::Format(PortPath, {serviceId, deviceId, port.first}), true, VorDataTree());
    }
    lock.Unlock();
}

void ControlDevicePortResource::ReadOne(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                        const VorDataTree& data) const {
    const std::string& serviceId = RequiredKey(request, "protocol");
    const std::string& deviceId = RequiredKey(request, "device");
    const std::string& portId = RequiredKey(request, "port");
    IControlDeviceManager& manager = ResolveToInstance(serviceId).DeviceManager();
    DeviceManagerLock lock(manager);
    const ControlSelectedDeviceProp& device = manager.SelectedDeviceProperties(deviceId);
    const unsigned long long number = PortNumber(device, portId, yERROR_NOT_FOUND);
    const auto provider = RequiredProvider(device);
    const auto parameters = provider->PortParams(number);
    if (parameters == nullptr) {
        Vor::Throw(yERROR_STATE, parametersMissing, deviceId);
    }
    const std::string name = provider->DisplayName(number);
    ControlDevicePortProperties document;
    document.displayName = name.empty() ? defaultName + std::to_string(number) : name;
    document.id = portId;
    document.portNumber = number;
    NodeToVorDataTree(document, request, data, true);
    VorDataTree tree = data;
    VorDataTreeSerializer::Serialize(*parameters, tree["parameters"]);
    if (request.WantsSchema()) {
        VorDataTreeSerializer::SerializeSchema(*parameters, tree["_schema"]["properties"]["parameters"]);
    }
    lock.Unlock();
    response.Embed("item",
                   Path::Format("/controls/:protocol/devices/:device/ports/:port/registerAssemblies",
                                {serviceId, deviceId, portId}),
                   true, VorDataTree());
}

unsigned long long ControlDevicePortResource::PortNumber(const ControlSelectedDeviceProp& device,
                                                         const std::string& portId, yStatus failure) {
    const auto port = device.ports.find(portId);
    if (port == device.ports.end()) {
        Vor::Throw(failure);
    }
    return port->second->PortNumber();
}

std::shared_ptr<VorCommon::IDigitalOutputProvider>
ControlDevicePortResource::RequiredProvider(const ControlSelectedDeviceProp& device) const {
    auto provider = device.device.lock();
    if (provider == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND, deviceGone, device.id);
    }
    return provider;
}

void ControlDevicePortResource::UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) {
    if (!json.contains("parameters")) {
        Vor::Throw(yERROR_PARAMETER);
    }
    const nlohmann::json& values = json["parameters"];
    const std::string& serviceId = RequiredKey(request, "protocol");
    const std::string& deviceId = RequiredKey(request, "device");
    const std::string& portId = RequiredKey(request, "port");
    IControlInstance& instance = ResolveToInstance(serviceId);
    IControlDeviceManager& manager = instance.DeviceManager();
    instance.BeginUpdateDeviceManager();
    Vor::AtScopeEnd updateEnd([&] { instance.EndUpdateDeviceManager(); });
    DeviceManagerLock lock(manager);
    const ControlSelectedDeviceProp& device = manager.SelectedDeviceProperties(deviceId);
    const unsigned long long number = PortNumber(device, portId, yERROR_PARAMETER);
    const auto provider = RequiredProvider(device);
    const auto parameters = provider->BeginUpdatePortParams(number);
    Vor::AtScopeEnd portEnd([&] { provider->EndUpdatePortParams(number); });
    if (parameters == nullptr) {
        Vor::Throw(yERROR_STATE, parametersMissing, deviceId);
    }
    Vor::DocumentErrors errors;
    Vor::Properties::ValidateDocument(*parameters, values, errors, "/parameters");
    errors.ThrowIfAny();
    NodeFromJson(*parameters, values);
    portEnd.End();
    ResourceEventHandler(Path::Format(PortPath, {serviceId, deviceId, portId}));
    lock.Unlock();
    updateEnd.End();
}

VorApi::IParentResource::Created ControlDevicePortResource::Create(const VorApi::RequestInfo&, const nlohmann::json&) {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

void ControlDevicePortResource::Delete(const VorApi::RequestInfo&) {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

} // namespace VorControl::Protocol
