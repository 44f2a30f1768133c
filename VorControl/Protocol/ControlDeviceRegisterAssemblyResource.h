#pragma once

#include "VorControl/Protocol/ControlResourceBase.h"
#include "VorControl/Protocol/ServiceSubscriptions.h"

namespace VorControl::Protocol {

/// The data sources of a port of a device: the list of its one register assembly, and that.
class ControlDeviceRegisterAssemblyResource : public ControlResourceBase {
public:
    explicit ControlDeviceRegisterAssemblyResource(IControlManager& manager);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    /// Fails with yERROR_READ_ONLY: an assembly is changed by its commands.
    void UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) override;

private:
    struct Tokens {
        const std::string& service;
        const std::string* device;
        const std::string& port;
        const std::string* assembly;
    };

    static Tokens ParseTokensFromPath(const VorApi::RequestInfo& request);
    void ReadAll(const Tokens& tokens, VorApi::ResponseInfoEx& response) const;
    void ReadOne(const Tokens& tokens, const VorApi::RequestInfoEx& request, VorApi::VorDataTree& data) const;

    ServiceSubscriptions<IControlInstance::DeviceRegisterAssemblyUpdatedEvent::CallbackId> assemblyUpdates;
};

} // namespace VorControl::Protocol
