#include "VorControl/Protocol/ControlOutputsResource.h"

#include "Vor/Format.h"
#include "VorControl/Control/InstanceLocks.h"
#include "VorControl/Protocol/OutputsText.h"
#include "yApi/yStatus.h"

namespace VorControl::Protocol {

void ControlOutputsResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                      VorApi::VorDataTree& data) {
    const std::string& id = RequiredKey(request, "protocol");
    RunWrapped([&] { ReadMap(id, request, response, data); },
               [&](const char*) { return Vor::Format(OutputsText("Failed to convert %s output map"), id); });
}

void ControlOutputsResource::RequireDocument(const VorApi::RequestInfoEx& request) {
    IControlInstance& instance = RequiredInstance(request);
    const InstanceOutputsMapLock lock(instance);
    instance.OutputsMap();
}

void ControlOutputsResource::ReadMap(const std::string& id, const VorApi::RequestInfoEx& request,
                                     VorApi::ResponseInfoEx& response, const VorApi::VorDataTree& data) const {
    IControlInstance& instance = ResolveToInstance(id);
    InstanceOutputsMapLock lock(instance);
    NodeToVorDataTree(instance.OutputsMap(), request, data, true);
    lock.Unlock();
    if (instance.HasOutputsCommandTarget()) {
        LinkCommands(instance.OutputsCommandTarget(), "/controls/:protocol/outputs/commands/:command", {id}, response);
    }
}

void ControlOutputsResource::UpdateDocument(const VorApi::RequestInfo&, const nlohmann::json&) {
    Vor::Throw(yERROR_READ_ONLY);
}

} // namespace VorControl::Protocol
