#pragma once

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace Sensor::Jobs {

/// The content of a job's file.
struct JobContent {
    struct Entry {
        std::string name;
        std::size_t size; ///< bytes
    };

    /// A service's configuration. What its file doesn't contain has no value.
    struct Service {
        std::string id;
        std::optional<bool> enabled;
        nlohmann::json parameters; ///< null: none are stored
        std::size_t blocks = 0;    ///< of all its register assemblies
    };

    std::string name; ///< without its extension
    std::string path;
    std::size_t size = 0; ///< bytes of the file
    std::string modified; ///< see ModificationTime
    std::vector<Entry> entries;
    std::vector<Service> services;
    nlohmann::json tools; ///< the limits of each tool that has some; null: none are stored

    /// Reads a job's file as a sensor does. Throws a Vor::Exception that names file, entry and reason.
    static JobContent Read(const std::string& path);

    nlohmann::json ToJson() const;
};

/// When the file was changed, in local time with its distance from UTC, as "2026-01-31T23:59:59+01:00" (ISO 8601);
/// empty when the file can't be read.
std::string ModificationTime(const std::string& path);

} // namespace Sensor::Jobs
