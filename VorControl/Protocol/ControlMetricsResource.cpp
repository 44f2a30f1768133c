#include "VorControl/Protocol/ControlMetricsResource.h"

#include "Vor/Exception.h"
#include "yApi/yStatus.h"

namespace VorControl::Protocol {

ControlMetricsKey ControlMetricsResource::PopulateMetricsKey(const VorApi::RequestInfoEx& request) const {
    return PopulateMetricsKey(static_cast<const VorApi::RequestInfo&>(request));
}

ControlMetricsKey ControlMetricsResource::PopulateMetricsKey(const VorApi::RequestInfo& request) const {
    const std::string* const protocol = request.FindKey("protocol");
    if (protocol == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "Missing control protocol name in request");
    }
    return ControlMetricsKey(*protocol);
}

} // namespace VorControl::Protocol
