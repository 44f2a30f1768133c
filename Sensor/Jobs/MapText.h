#pragma once

#include "Sensor/Jobs/JobService.h"

#include <ostream>
#include <string>

#include <nlohmann/json.hpp>

namespace Sensor::Jobs {

/// Prints the maps of a service as a table, CSV or JSON.
class MapText {
public:
    /// Reads the selected maps. Throws a Vor::Exception as JobService does.
    MapText(JobService& service, const JobService::Selection& selection);

    /// A heading and a table for each map.
    void PrintTable(std::ostream& out) const;
    /// In the format of RFC 4180, with a line of column names. For a service with assemblies and an output map, the
    /// latter is printed only when it is selected.
    void PrintCsv(std::ostream& out) const;
    void PrintJson(std::ostream& out) const;

private:
    std::string serviceId;
    nlohmann::json assemblies = nlohmann::json::array();
    nlohmann::json outputs; ///< null: not selected
};

} // namespace Sensor::Jobs
