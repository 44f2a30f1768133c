#pragma once

#include "VorControl/Protocol/ControlResourceBase.h"
#include "VorControl/Protocol/ServiceSubscriptions.h"

namespace VorControl::Protocol {

/// The register assemblies of a service: their list, and of each its properties, its block types and its blocks.
class ControlRegisterAssemblyResource : public ControlResourceBase {
public:
    explicit ControlRegisterAssemblyResource(IControlManager& manager);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    /// Fails with yERROR_READ_ONLY: an assembly is changed by its commands.
    void UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) override;

protected:
    void RequireDocument(const VorApi::RequestInfoEx& request) override;

private:
    static void ReadOne(const IControlInstance& instance, const std::string& assemblyId,
                        const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                        VorApi::VorDataTree& data);

    ServiceSubscriptions<IControlInstance::RegisterAssemblyUpdatedEvent::CallbackId> assemblyUpdates;
};

} // namespace VorControl::Protocol
