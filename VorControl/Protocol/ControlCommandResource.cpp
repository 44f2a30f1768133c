#include "VorControl/Protocol/ControlCommandResource.h"

#include "VorCommon/ICommandTarget.h"
#include "yApi/yStatus.h"

namespace VorControl::Protocol {

VorCommon::ICommandTarget& ControlCommandResource::Target(const VorApi::RequestInfo& request) const {
    VorCommon::ICommandTarget* const target = RequiredInstance(request).CommandTarget();
    if (target == nullptr) {
        Vor::Throw(yERROR_UNIMPLEMENTED);
    }
    return *target;
}

void ControlCommandResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                      VorApi::VorDataTree& data) {
    const VorCommon::ICommandTarget& target = Target(request);
    if (const std::string* const command = request.FindKey("command")) {
        DescribeCommand(target, *command, request, data);
    } else {
        EmbedCommands(target, "/controls/:protocol/commands/:command", {RequiredKey(request, "protocol")}, response);
    }
}

void ControlCommandResource::UpdateDocument(const VorApi::RequestInfo&, const nlohmann::json&) {
    Vor::Throw(yERROR_READ_ONLY);
}

VorApi::VorDataTree ControlCommandResource::Invoke(const VorApi::RequestInfoEx& request,
                                                   const VorApi::VorDataTree& data) {
    VorCommon::ICommandTarget& target = Target(request);
    const std::string& command = RequiredKey(request, "command");
    return ResultDocument(InvokeCommand(target, command, data), request);
}

} // namespace VorControl::Protocol
