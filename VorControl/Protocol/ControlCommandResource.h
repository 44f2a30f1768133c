#pragma once

#include "VorApi/ICallableResource.h"
#include "VorControl/Protocol/ControlResourceBase.h"

namespace VorControl::Protocol {

/// The commands of a service.
class ControlCommandResource : public ControlResourceBase, public VorApi::ICallableResource {
public:
    using ControlResourceBase::ControlResourceBase;

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    /// Fails with yERROR_READ_ONLY.
    void UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) override;
    using ICallableResource::Invoke;
    VorApi::VorDataTree Invoke(const VorApi::RequestInfoEx& request, const VorApi::VorDataTree& data) override;

private:
    /// Fails with yERROR_UNIMPLEMENTED for a service without commands.
    VorCommon::ICommandTarget& Target(const VorApi::RequestInfo& request) const;
};

} // namespace VorControl::Protocol
