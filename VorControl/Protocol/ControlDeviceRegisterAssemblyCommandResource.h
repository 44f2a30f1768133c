#pragma once

#include "VorApi/ICallableResource.h"
#include "VorControl/Protocol/ControlResourceBase.h"

namespace VorControl {
class ControlDevicePort;
}

namespace VorControl::Protocol {

/// The commands that change the data sources of a port of a device.
class ControlDeviceRegisterAssemblyCommandResource : public ControlResourceBase, public VorApi::ICallableResource {
public:
    using ControlResourceBase::ControlResourceBase;

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    using ICallableResource::Invoke;
    VorApi::VorDataTree Invoke(const VorApi::RequestInfoEx& request, const VorApi::VorDataTree& data) override;

private:
    struct Tokens {
        const std::string& service;
        const std::string* device;
        const std::string& port;
        const std::string& assembly;
    };

    static Tokens ParseTokensFromPath(const VorApi::RequestInfo& request);
    /// The port with that assembly. Fails with yERROR_NOT_FOUND.
    std::shared_ptr<ControlDevicePort> Port(const Tokens& tokens) const;
    /// Notifies the service of the change. A service that isn't interested needs no notice.
    static void NotifyService(IControlInstance& instance, const std::string& assemblyId);
};

} // namespace VorControl::Protocol
