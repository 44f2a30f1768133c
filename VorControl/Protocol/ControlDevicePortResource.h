#pragma once

#include "VorApi/IParentResource.h"
#include "VorControl/Protocol/ControlResourceBase.h"

#include <memory>
#include <string>

namespace VorCommon {
class IDigitalOutputProvider;
}

namespace VorControl {
struct ControlSelectedDeviceProp;
}

namespace VorControl::Protocol {

/// The ports of a device that a service uses: their list, and of each its parameters, which the device has.
class ControlDevicePortResource : public ControlResourceBase, public VorApi::IParentResource {
public:
    explicit ControlDevicePortResource(IControlManager& manager);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    /// "parameters". A document that is refused changes nothing.
    void UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) override;
    bool IsUpdatable() const override { return true; }

    /// This and Delete fail with yERROR_UNIMPLEMENTED: a device has the ports that it has.
    Created Create(const VorApi::RequestInfo& request, const nlohmann::json& json) override;
    using IParentResource::Delete;
    void Delete(const VorApi::RequestInfo& request) override;
    bool Creates() const override { return false; }
    bool Deletes() const override { return false; }

private:
    void ReadAll(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response) const;
    void ReadOne(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                 const VorApi::VorDataTree& data) const;
    /// The number of a port. Fails with the status when there is no such port.
    static unsigned long long PortNumber(const ControlSelectedDeviceProp& device, const std::string& portId,
                                         yStatus failure);
    /// Fails with yERROR_NOT_FOUND when the device has gone.
    std::shared_ptr<VorCommon::IDigitalOutputProvider> RequiredProvider(const ControlSelectedDeviceProp& device) const;

    const char* const deviceGone;
    const char* const parametersMissing;
    const char* const defaultName; ///< the number of the port follows
};

} // namespace VorControl::Protocol
