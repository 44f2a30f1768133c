#include "VorControl/Protocol/ControlRegisterAssemblyResource.h"

#include "VorApi/Path.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "yApi/yStatus.h"

namespace VorControl::Protocol {

using VorApi::VorDataTree;

namespace {

constexpr const char* AssemblyPath = "/controls/:protocol/registerAssemblies/:registerAssembly";

} // namespace

ControlRegisterAssemblyResource::ControlRegisterAssemblyResource(IControlManager& manager)
    : ControlResourceBase(manager)
    , assemblyUpdates(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddRegisterAssemblyUpdatedEventHandler(
                  [this](const std::string& id, const std::string& assemblyId) {
                      ResourceEventHandler(VorApi::Path::Format(AssemblyPath, {id, assemblyId}));
                  });
          },
          &IControlInstance::RemoveRegisterAssemblyUpdatedEventHandler,
          "Exception thrown while removing register assembly update event handlers") {}

void ControlRegisterAssemblyResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                               VorDataTree& data) {
    RequireDocument(request);
    const IControlInstance& instance = RequiredInstance(request);
    if (const std::string* const assemblyId = request.FindKey("registerAssembly")) {
        ReadOne(instance, *assemblyId, request, response, data);
    } else {
        MakeRegisterAssemblyList(AssemblyPath, "item", instance.Id(), instance.RegisterAssemblyList(), response);
    }
}

void ControlRegisterAssemblyResource::RequireDocument(const VorApi::RequestInfoEx& request) {
    const IControlInstance& instance = RequiredInstance(request);
    const std::string* const assemblyId = request.FindKey("registerAssembly");
    if (!instance.HasRegisterAssemblyGroup() ||
        (assemblyId != nullptr && !instance.HasRegisterAssembly(assemblyId->c_str()))) {
        Vor::Throw(yERROR_UNIMPLEMENTED);
    }
}

void ControlRegisterAssemblyResource::ReadOne(const IControlInstance& instance, const std::string& assemblyId,
                                              const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                              VorDataTree& data) {
    WriteAssembly(*instance.RegisterAssembly(assemblyId.c_str()), request, data);
    LinkCommands(instance.RegisterAssemblyCommandTarget(assemblyId.c_str()),
                 "/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command",
                 {instance.Id(), assemblyId}, response);
}

void ControlRegisterAssemblyResource::UpdateDocument(const VorApi::RequestInfo&, const nlohmann::json&) {
    Vor::Throw(yERROR_READ_ONLY);
}

} // namespace VorControl::Protocol
