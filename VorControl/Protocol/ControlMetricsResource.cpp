#include "VorControl/Protocol/ControlMetricsResource.h"

#include "VorControl/Protocol/RequiredKey.h"

namespace VorControl::Protocol {

ControlMetricsKey ControlMetricsResource::PopulateMetricsKey(const VorApi::RequestInfoEx& request) const {
    return PopulateMetricsKey(static_cast<const VorApi::RequestInfo&>(request));
}

ControlMetricsKey ControlMetricsResource::PopulateMetricsKey(const VorApi::RequestInfo& request) const {
    return ControlMetricsKey(RequiredKey(request, "protocol", MissingProtocol));
}

} // namespace VorControl::Protocol
