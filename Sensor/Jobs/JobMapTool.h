#pragma once

#include "Sensor/Jobs/JobCommand.h"

#include <filesystem>
#include <ostream>

namespace Sensor::Jobs {

/// Shows and edits the maps that services have in the jobs of a data folder, through the services of the plug-ins,
/// whether a sensor runs or not. An edit is done whole, or the job stays as it was.
class JobMapTool {
public:
    /// `out` gets what the user asked for, `notes` what else is to be told; both must outlive this.
    JobMapTool(const std::filesystem::path& dataFolder, std::filesystem::path pluginFolder, std::ostream& out,
               std::ostream& notes);

    /// Whether the command is one for this, and not for JobTool.
    static bool IsFor(const JobCommand& command);

    /// Throws a StartError that names the command and the reason.
    void Run(const JobCommand& command);

private:
    const std::filesystem::path folder;
    const std::filesystem::path pluginFolder;
    std::ostream& out;
    std::ostream& notes;
};

} // namespace Sensor::Jobs
