#include "VorControl/Protocol/ControlDeviceRegisterAssemblyResource.h"

#include "VorApi/Path.h"
#include "VorControl/Control/ControlDevicePort.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/Protocol/DeviceAccess.h"
#include "yApi/yStatus.h"

namespace VorControl::Protocol {

using VorApi::Path;
using VorApi::VorDataTree;

namespace {

constexpr const char* DeviceAssemblyPath =
    "/controls/:protocol/devices/:device/ports/:port/registerAssemblies/:registerAssembly";

} // namespace

ControlDeviceRegisterAssemblyResource::ControlDeviceRegisterAssemblyResource(IControlManager& manager)
    : ControlResourceBase(manager)
    , assemblyUpdates(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddDeviceRegisterAssemblyUpdatedEventHandler(
                  [this](const std::string& serviceId, const std::string& deviceId, const std::string& portId,
                         const std::string& assemblyId) {
                      ResourceEventHandler(Path::Format(DeviceAssemblyPath, {serviceId, deviceId, portId, assemblyId}));
                  });
          },
          &IControlInstance::RemoveDeviceRegisterAssemblyUpdatedEventHandler,
          "Exception thrown while removing device register assembly update event handlers") {}

ControlDeviceRegisterAssemblyResource::Tokens
ControlDeviceRegisterAssemblyResource::ParseTokensFromPath(const VorApi::RequestInfo& request) {
    return {RequiredKey(request, "protocol", "Request is missing service name"), request.FindKey("device"),
            RequiredKey(request, "port", "Request is missing port id"), request.FindKey("registerAssembly")};
}

void ControlDeviceRegisterAssemblyResource::Document(const VorApi::RequestInfoEx& request,
                                                     VorApi::ResponseInfoEx& response, VorDataTree& data) {
    const Tokens tokens = ParseTokensFromPath(request);
    if (tokens.assembly == nullptr) {
        ReadAll(tokens, response);
    } else {
        ReadOne(tokens, request, data);
    }
}

void ControlDeviceRegisterAssemblyResource::ReadAll(const Tokens& tokens, VorApi::ResponseInfoEx& response) const {
    const auto port = RequiredPort(ResolveToInstance(tokens.service).DeviceManager(), tokens.device, tokens.port);
    response.Embed(
        "item",
        Path::Format(DeviceAssemblyPath, {tokens.service, *tokens.device, tokens.port, port->RegisterAssembly()->Id()}),
        true, VorDataTree());
}

void ControlDeviceRegisterAssemblyResource::ReadOne(const Tokens& tokens, const VorApi::RequestInfoEx& request,
                                                    VorDataTree& data) const {
    IControlDeviceManager& manager = RequiredDeviceManager(ResolveToInstance(tokens.service));
    const auto assembly = RequiredPort(manager, tokens.device, tokens.port)->RegisterAssembly();
    if (*tokens.assembly != assembly->Id()) {
        Vor::Throw(yERROR_PARAMETER);
    }
    WriteAssembly(*assembly, request, data);
}

void ControlDeviceRegisterAssemblyResource::UpdateDocument(const VorApi::RequestInfo&, const nlohmann::json&) {
    Vor::Throw(yERROR_READ_ONLY);
}

} // namespace VorControl::Protocol
