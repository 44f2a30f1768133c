#pragma once

#include "VorPipe/PipeOutput.h"

#include <string>
#include <vector>

namespace Sensor {

namespace Scan {
struct Recording;
}

/// The data sources of a recording with their display names, in the order of the items of a result set.
std::vector<VorPipe::PipeOutput> DataSourcesOf(const Scan::Recording& recording);

/// How the values of a data source are written for people.
struct ValueUnit {
    const char* name;  ///< empty: none
    unsigned decimals; ///< that mean something
};

/// Of a data source of any recording.
ValueUnit UnitOf(const std::string& dataSource);

/// The id of the tool whose decision the value of a data source has, such as "profile-max"; empty for a text and a
/// stamp, which have none.
std::string ToolOf(const std::string& dataSource);

} // namespace Sensor
