#pragma once

#include "VorControl/Protocol/ControlResourceBase.h"

namespace VorControl::Protocol {

/// The output map of a service. Its changes are notified by ControlOutputsCommandResource.
class ControlOutputsResource : public ControlResourceBase {
public:
    using ControlResourceBase::ControlResourceBase;

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    /// Fails with yERROR_READ_ONLY: the map is changed by its commands.
    void UpdateDocument(const VorApi::RequestInfo& request, const nlohmann::json& json) override;

protected:
    void RequireDocument(const VorApi::RequestInfoEx& request) override;

private:
    void ReadMap(const std::string& id, const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                 const VorApi::VorDataTree& data) const;
};

} // namespace VorControl::Protocol
