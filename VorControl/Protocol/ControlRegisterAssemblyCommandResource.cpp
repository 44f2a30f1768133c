#include "VorControl/Protocol/ControlRegisterAssemblyCommandResource.h"

#include "VorApi/AtScopeEnd.h"
#include "VorCommon/ICommandTarget.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "yApi/yStatus.h"

namespace VorControl::Protocol {

ControlRegisterAssemblyCommandResource::Tokens
ControlRegisterAssemblyCommandResource::ParseTokensFromPath(const VorApi::RequestInfo& request) {
    return {RequiredKey(request, "protocol", "Request is missing service name"),
            RequiredKey(request, "registerAssembly", "Request is missing assembly id")};
}

VorCommon::ICommandTarget& ControlRegisterAssemblyCommandResource::CommandTarget(const IControlInstance& instance,
                                                                                 const std::string& assemblyId) {
    if (!instance.HasRegisterAssemblyCommandTarget()) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    return instance.RegisterAssemblyCommandTarget(assemblyId.c_str());
}

void ControlRegisterAssemblyCommandResource::Document(const VorApi::RequestInfoEx& request,
                                                      VorApi::ResponseInfoEx& response, VorApi::VorDataTree& data) {
    const Tokens tokens = ParseTokensFromPath(request);
    const VorCommon::ICommandTarget& target = CommandTarget(ResolveToInstance(tokens.service), tokens.assembly);
    if (const std::string* const command = request.FindKey("command")) {
        DescribeCommand(target, *command, request, data);
    } else {
        EmbedCommands(target, "/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command",
                      {tokens.service, tokens.assembly}, response);
    }
}

VorApi::VorDataTree ControlRegisterAssemblyCommandResource::Invoke(const VorApi::RequestInfoEx& request,
                                                                   const VorApi::VorDataTree& data) {
    const Tokens tokens = ParseTokensFromPath(request);
    const std::string& command = RequiredKey(request, "command", "Request is missing command");
    IControlInstance& instance = ResolveToInstance(tokens.service);
    const char* const assemblyId = tokens.assembly.c_str();
    return RunWrapped(
        [&] {
            instance.BeginUpdateRegisterAssembly(assemblyId);
            Vor::AtScopeEnd updateEnd([&] { instance.EndUpdateRegisterAssembly(assemblyId); });
            const auto result = InvokeCommand(CommandTarget(instance, tokens.assembly), command, data);
            instance.RegisterAssemblyUpdate(assemblyId);
            updateEnd.End();
            return ResultDocument(result, request);
        },
        [](const char* cause) { return std::string(cause); });
}

} // namespace VorControl::Protocol
