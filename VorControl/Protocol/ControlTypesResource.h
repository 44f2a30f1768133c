#pragma once

#include "VorControl/Protocol/ControlResourceBase.h"

namespace VorControl::Protocol {

/// The types of service that the plug-ins offer.
class ControlTypesResource : public ControlResourceBase {
public:
    using ControlResourceBase::ControlResourceBase;

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

protected:
    void RequireDocument(const VorApi::RequestInfoEx&) override {}
};

} // namespace VorControl::Protocol
