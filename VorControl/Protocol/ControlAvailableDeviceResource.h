#pragma once

#include "VorApi/Threads/CallGuard.h"
#include "VorControl/Protocol/ControlResourceBase.h"
#include "VorControl/Protocol/ServiceSubscriptions.h"

namespace VorControl::Protocol {

/// The devices with digital outputs that a service may use.
class ControlAvailableDeviceResource : public ControlResourceBase {
public:
    explicit ControlAvailableDeviceResource(IControlManager& manager);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    /// Fails with yERROR_READ_ONLY.
    void UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) override;

private:
    void OnAvailableDeviceListUpdatedHandler(const std::string& serviceId);

    Vor::CallGuard handlers;
    ServiceSubscriptions<IControlInstance::AvailableDeviceListUpdatedEvent::CallbackId> listUpdates;
};

} // namespace VorControl::Protocol
