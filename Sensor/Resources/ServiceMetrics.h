#pragma once

#include "Sensor/Resources/PrometheusText.h"

#include <string>

namespace Vor::Properties {
class Structure;
}

namespace Sensor::Resources {

/// Adds the figures of a service, with its id as the label. The keywords of a figure say how it is named:
/// `latencyMax` with the units "us" is vor_service_latency_max_seconds. "extendedType" is "counter", "gauge" or, of a
/// structure whose members are named by the bounds of buckets, "histogram"; a figure without it has no type.
void AddServiceMetrics(PrometheusText& text, const std::string& service, const Vor::Properties::Structure& figures);

} // namespace Sensor::Resources
