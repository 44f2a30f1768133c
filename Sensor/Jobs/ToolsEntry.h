#pragma once

#include "Sensor/ToolLimits.h"

#include <string>

#include <nlohmann/json.hpp>

namespace VorCommon {
class IPersistStore;
}

namespace Sensor::Jobs {

/// The entry of a job with the limits of its tools:
///
///   {"version": "1", "tools": {"profile-max": {"low": 9.5, "high": 10}}}
///
/// What isn't there has its default, so a job without limits has no entry.
class ToolsEntry {
public:
    static constexpr const char* Name = "sensor/tools.json";  ///< in the archive
    static constexpr const char* Path = "/sensor/tools.json"; ///< in the store of a job
    static constexpr const char* ToolsKey = "tools";

    /// Without tools.
    ToolsEntry();
    /// That of a job. Throws a Vor::Exception that names the entry, the place in it and what was expected there; the
    /// limits aren't checked yet.
    static ToolsEntry Read(const VorCommon::IPersistStore& store);

    /// The tools that have limits, by id.
    const nlohmann::json& Tools() const;
    /// Throws as Read.
    ToolLimits LimitsOf(const std::string& tool) const;
    /// Replaces limits that differ, also some that LimitsOf refuses; leaves everything else as it is.
    void SetLimits(const std::string& tool, const ToolLimits& limits);
    /// A job that has no entry gets none for no tools.
    void Write(VorCommon::IPersistStore& store) const;

private:
    nlohmann::json document;
};

} // namespace Sensor::Jobs
