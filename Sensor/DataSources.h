#pragma once

#include "VorPipe/PipeOutput.h"

#include <vector>

namespace Sensor {

namespace Scan {
struct Recording;
}

/// The data sources of a recording with their display names, in the order of the items of a result set.
std::vector<VorPipe::PipeOutput> DataSourcesOf(const Scan::Recording& recording);

} // namespace Sensor
