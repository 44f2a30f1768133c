#pragma once

#include "Sensor/Jobs/JobService.h"

#include <ostream>
#include <string>

#include <nlohmann/json.hpp>

namespace Sensor::Jobs {

/// The maps of a service for people and programs.
class MapText {
public:
    /// Reads the maps that are meant. Throws a Vor::Exception as JobService does.
    MapText(JobService& service, const JobService::Selection& selection);

    /// A heading and a table for each map.
    void PrintTable(std::ostream& out) const;
    /// As RFC 4180 has it, with a line of column names. Of a service with assemblies and an output map the latter is
    /// there only when it is selected.
    void PrintCsv(std::ostream& out) const;
    void PrintJson(std::ostream& out) const;

private:
    std::string serviceId;
    nlohmann::json assemblies = nlohmann::json::array();
    nlohmann::json outputs; ///< null: they aren't meant
};

} // namespace Sensor::Jobs
