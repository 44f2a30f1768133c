#include "VorControl/Protocol/ControlOutputsCommandResource.h"

#include "Vor/Logging.h"
#include "VorApi/AtScopeEnd.h"
#include "VorApi/Path.h"
#include "VorCommon/ICommandTarget.h"
#include "VorControl/ControlProtocol/IProtocolOutput.h"
#include "VorControl/Protocol/OutputsText.h"

namespace VorControl::Protocol {

ControlOutputsCommandResource::ControlOutputsCommandResource(IControlManager& manager)
    : ControlResourceBase(manager)
    , outputsUpdates(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddOutputsUpdatedEventHandler([this](const std::string& id, bool) {
                  ResourceEventHandler(VorApi::Path::Format("/controls/:protocol/outputs", {id}));
              });
          },
          &IControlInstance::RemoveOutputsUpdatedEventHandler,
          "Exception thrown while removing outputs map update event handlers") {}

void ControlOutputsCommandResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                             VorApi::VorDataTree& data) {
    const std::string& id = RequiredKey(request, "protocol");
    const VorCommon::ICommandTarget& target = ResolveToInstance(id).OutputsCommandTarget();
    if (const std::string* const command = request.FindKey("command")) {
        DescribeCommand(target, *command, request, data);
    } else {
        EmbedCommands(target, "/controls/:protocol/outputs/commands/:command", {id}, response);
    }
}

VorApi::VorDataTree ControlOutputsCommandResource::Invoke(const VorApi::RequestInfoEx& request,
                                                          const VorApi::VorDataTree& data) {
    const std::string& id = RequiredKey(request, "protocol", OutputsText("Request is missing service name"));
    const std::string& command = RequiredKey(request, "command", OutputsText("Request is missing command"));
    IControlInstance& instance = ResolveToInstance(id);
    const auto map = instance.BeginUpdateOutputsMap();
    Vor::AtScopeEnd updateEnd([&] { instance.EndUpdateOutputsMap(); });
    if (map == nullptr) {
        Vor::LogInfo(OutputsText("Protocol %s does not have an outputs map"), id);
        updateEnd.End();
        return {};
    }
    const auto result = RunWrapped([&] { return InvokeCommand(map->CommandTarget(), command, data); },
                                   [](const char*) { return OutputsText("Output connection map command error"); });
    RunWrapped([&] { updateEnd.End(); },
               [](const char*) { return OutputsText("Failed to send output map update notification"); });
    return ResultDocument(result, request);
}

} // namespace VorControl::Protocol
