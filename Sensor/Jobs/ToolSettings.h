#pragma once

#include <map>
#include <string>

#include <nlohmann/json.hpp>

namespace VorCommon {
class IPersistStore;
}

namespace Sensor::Jobs {

/// Limits of tools from the command line, each as "tool.TOOL.LIMIT=VALUE".
class ToolSettings {
public:
    /// `command` begins the texts of errors.
    explicit ToolSettings(std::string command);

    /// Whether a setting is one of a tool, not of a service.
    static bool Has(const std::string& text);

    /// Adds a setting, which replaces an earlier one of the same limit. Throws a StartError that names the setting.
    void Add(const std::string& text);
    /// Changes the limits in the store of a job, all or none. Throws a StartError that names the tool, and a
    /// Vor::Exception when the job's limits can't be read.
    void Apply(VorCommon::IPersistStore& store) const;

private:
    const std::string command;
    std::map<std::string, nlohmann::json> changes; ///< by tool: its limits that change
};

} // namespace Sensor::Jobs
