#pragma once

#include "VorControl/Protocol/ControlMetricsResourceBase.h"

namespace VorControl::Protocol {

/// The figures of a service.
class ControlMetricsResource : public ControlMetricsResourceBase {
public:
    using ControlMetricsResourceBase::ControlMetricsResourceBase;

protected:
    ControlMetricsKey PopulateMetricsKey(const VorApi::RequestInfoEx& request) const override;
    ControlMetricsKey PopulateMetricsKey(const VorApi::RequestInfo& request) const override;
};

} // namespace VorControl::Protocol
