#pragma once

#include "VorApi/IParentResource.h"
#include "VorApi/Threads/CallGuard.h"
#include "VorControl/Protocol/ControlResourceBase.h"
#include "VorControl/Protocol/ServiceSubscriptions.h"

namespace VorControl::Protocol {

/// The devices with digital outputs that a service uses: their list, and each of them. A creation selects a device for
/// the service, a deletion gives it up. Changes are notified also while a load lasts.
class ControlDeviceResource : public ControlResourceBase, public VorApi::IParentResource {
public:
    explicit ControlDeviceResource(IControlManager& manager);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    Created Create(const VorApi::RequestInfo& request, const nlohmann::json& json) override;
    using IParentResource::Delete;
    void Delete(const VorApi::RequestInfo& request) override;

private:
    void ReadAll(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                 const VorApi::VorDataTree& data) const;
    void ReadOne(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                 const VorApi::VorDataTree& data) const;
    void SelectedDeviceRemovedEventHandler(const std::string& serviceId, const std::string& deviceId);
    /// Without a device id, the list has changed.
    void SelectedDeviceUpdatedEventHandler(const std::string& serviceId, const std::string& deviceId);

    Vor::CallGuard handlers;
    ServiceSubscriptions<IControlInstance::DeviceRemovedEvent::CallbackId> removals;
    ServiceSubscriptions<IControlInstance::DeviceUpdatedEvent::CallbackId> updates;
};

} // namespace VorControl::Protocol
