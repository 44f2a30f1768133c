#pragma once

#include "VorApi/ICallableResource.h"
#include "VorControl/Protocol/ControlResourceBase.h"

namespace VorControl::Protocol {

/// The command of a port, "trigger", which switches its output. It has no document.
class ControlDeviceCommandResource : public ControlResourceBase, public VorApi::ICallableResource {
public:
    using ControlResourceBase::ControlResourceBase;

    /// Fails with yERROR_UNIMPLEMENTED.
    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    using ICallableResource::Invoke;
    /// Takes the arguments from the member "parameters" of `data`, but the port from the path. The output is switched
    /// later.
    VorApi::VorDataTree Invoke(const VorApi::RequestInfoEx& request, const VorApi::VorDataTree& data) override;
    bool IsCommand(const VorApi::RequestInfoEx& request) const override;
};

} // namespace VorControl::Protocol
