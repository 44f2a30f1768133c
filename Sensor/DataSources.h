#pragma once

#include "VorPipe/PipeOutput.h"

#include <vector>

namespace Sensor {

namespace Scan {
struct Recording;
}

/// The data sources of a recording, in the order in which a result set holds them, with names for users.
std::vector<VorPipe::PipeOutput> DataSourcesOf(const Scan::Recording& recording);

} // namespace Sensor
