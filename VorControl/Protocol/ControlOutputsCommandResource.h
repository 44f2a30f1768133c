#pragma once

#include "VorApi/ICallableResource.h"
#include "VorControl/Protocol/ControlResourceBase.h"
#include "VorControl/Protocol/ServiceSubscriptions.h"

namespace VorControl::Protocol {

/// The commands that change the output map of a service. Notifies of changes of the map, whoever makes them.
class ControlOutputsCommandResource : public ControlResourceBase, public VorApi::ICallableResource {
public:
    explicit ControlOutputsCommandResource(IControlManager& manager);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    using ICallableResource::Invoke;
    /// Returns a null tree for a service without output map.
    VorApi::VorDataTree Invoke(const VorApi::RequestInfoEx& request, const VorApi::VorDataTree& data) override;

private:
    ServiceSubscriptions<IControlInstance::OutputsUpdatedEvent::CallbackId> outputsUpdates;
};

} // namespace VorControl::Protocol
