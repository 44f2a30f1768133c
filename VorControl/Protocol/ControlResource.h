#pragma once

#include "VorControl/Protocol/ControlResourceBase.h"
#include "VorControl/Protocol/ServiceSubscriptions.h"

namespace VorControl::Protocol {

/// The services: their list, and of each its state, its parameters and what else it has.
class ControlResource : public ControlResourceBase {
public:
    explicit ControlResource(IControlManager& manager);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    /// "enabled" and "parameters". A document that is refused changes nothing.
    void UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) override;
    bool IsUpdatable() const override { return true; }

protected:
    void RequireDocument(const VorApi::RequestInfoEx& request) override;
    /// At the end of a load everybody is notified to read the services again.
    void OnPersistenceLoadEvent(IControlManager::PersistenceLoadOpState state) override;

private:
    void ReadAll(VorApi::ResponseInfoEx& response) const;
    void ReadOne(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response, VorApi::VorDataTree& data,
                 const std::string& id) const;
    static void EmbedParts(const IControlInstance& instance, VorApi::ResponseInfoEx& response);
    static void ApplyUpdate(IControlInstance& instance, const nlohmann::json& json);

    ServiceSubscriptions<IControlInstance::ParamsUpdatedEvent::CallbackId> paramUpdates;
};

} // namespace VorControl::Protocol
