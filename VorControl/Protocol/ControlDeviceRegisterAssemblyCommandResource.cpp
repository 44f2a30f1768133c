#include "VorControl/Protocol/ControlDeviceRegisterAssemblyCommandResource.h"

#include "VorApi/AtScopeEnd.h"
#include "VorCommon/ICommandTarget.h"
#include "VorControl/Control/ControlDevicePort.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/Protocol/DeviceAccess.h"
#include "yApi/yStatus.h"

namespace VorControl::Protocol {

ControlDeviceRegisterAssemblyCommandResource::Tokens
ControlDeviceRegisterAssemblyCommandResource::ParseTokensFromPath(const VorApi::RequestInfo& request) {
    return {RequiredKey(request, "protocol", "Request is missing service name"), request.FindKey("device"),
            RequiredKey(request, "port", "Request is missing port id"),
            RequiredKey(request, "registerAssembly", "Request is missing assembly id")};
}

std::shared_ptr<ControlDevicePort> ControlDeviceRegisterAssemblyCommandResource::Port(const Tokens& tokens) const {
    auto port = RequiredPort(ResolveToInstance(tokens.service).DeviceManager(), tokens.device, tokens.port);
    if (tokens.assembly != port->RegisterAssembly()->Id()) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    return port;
}

void ControlDeviceRegisterAssemblyCommandResource::Document(const VorApi::RequestInfoEx& request,
                                                            VorApi::ResponseInfoEx& response,
                                                            VorApi::VorDataTree& data) {
    const Tokens tokens = ParseTokensFromPath(request);
    const auto port = Port(tokens);
    if (const std::string* const command = request.FindKey("command")) {
        DescribeCommand(port->RegisterAssemblyCmdTarget(), *command, request, data);
    } else {
        EmbedCommands(port->RegisterAssemblyCmdTarget(),
                      "/controls/:protocol/devices/:device/ports/:port/registerAssemblies/:registerAssembly/commands/"
                      ":command",
                      {tokens.service, *tokens.device, tokens.port, tokens.assembly}, response);
    }
}

VorApi::VorDataTree ControlDeviceRegisterAssemblyCommandResource::Invoke(const VorApi::RequestInfoEx& request,
                                                                         const VorApi::VorDataTree& data) {
    const Tokens tokens = ParseTokensFromPath(request);
    const std::string& command = RequiredKey(request, "command", "Request is missing command");
    const auto port = Port(tokens);
    IControlInstance& instance = ResolveToInstance(tokens.service);
    return RunWrapped(
        [&] {
            instance.BeginUpdateDeviceRegisterAssembly();
            Vor::AtScopeEnd updateEnd(
                [&] { instance.EndUpdateDeviceRegisterAssembly(*tokens.device, tokens.port, tokens.assembly); });
            const auto result = InvokeCommand(port->RegisterAssemblyCmdTarget(), command, data);
            NotifyService(instance, tokens.assembly);
            updateEnd.End();
            return ResultDocument(result, request);
        },
        [&](const char*) { return command; });
}

void ControlDeviceRegisterAssemblyCommandResource::NotifyService(IControlInstance& instance,
                                                                 const std::string& assemblyId) {
    try {
        instance.RegisterAssemblyUpdate(assemblyId.c_str());
    } catch (const Vor::Exception& e) {
        if (e.Status() != yERROR_UNIMPLEMENTED) {
            throw;
        }
    }
}

} // namespace VorControl::Protocol
