#pragma once

#include "Sensor/Scan/Recording.h"
#include "VorCommon/ArchiveFile.h"

#include <filesystem>
#include <map>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace VorCommon {
class IPersistStore;
}
namespace VorPlugin {
class PluginManager;
}

namespace Sensor::Jobs {

class OfflineServices;

/// The jobs that the sensor makes itself, so that clients can read values from the first start on. What a service has
/// in them is in a file beside its plug-in, NAME.demo.json, which may be missing:
///
///   {"SERVICE": {"JOB": {"enabled": true, "parameters": {"NAME": VALUE},
///                        "commands": [{"command": "add", "document": {"blocks": []}, "outputs": false}]}}}
///
/// The commands are those of `vorsensor jobs edit`, for the service's assembly or, with "outputs", its output map. In a
/// document, an object of a list that has the key "forEachValue" is repeated for each of the recording's values, at
/// most as often as the key's number; "{value}" in its texts is the name of the value.
class DemoJobs {
public:
    /// For recordings of profiles, and for the generated part.
    static constexpr const char* Demo = "demo";
    /// For recordings of named values.
    static constexpr const char* DemoValues = "demo-values";

    /// Whether there is a demo job of this name. `job` may have the extension.
    static bool Has(const std::string& job);
    /// The job for a recording.
    static std::string JobFor(const Scan::Recording& recording);

    /// Makes the jobs with the services of the plug-ins. No other service of theirs may exist meanwhile. Throws a
    /// StartError that names the file and the reason. For the main loop's thread.
    DemoJobs(VorPlugin::PluginManager& plugins, const Scan::Recording& recording);

    /// Writes a job's file, which must not exist. Throws a StartError when the job isn't for this kind of recording, or
    /// the file can't be written.
    void Write(const std::string& job, const std::string& filePath) const;
    /// Writes a job's content into its empty store. Throws a StartError when the job isn't for this kind of recording.
    void Fill(const std::string& job, VorCommon::IPersistStore& store) const;

private:
    void Add(OfflineServices& services, const std::filesystem::path& file, const Scan::Recording& recording);
    void Add(OfflineServices& services, const std::string& serviceId, const nlohmann::json& content,
             const std::string& job);

    std::map<std::string, VorCommon::ArchiveFile::Entries> jobs; ///< by name
};

} // namespace Sensor::Jobs
