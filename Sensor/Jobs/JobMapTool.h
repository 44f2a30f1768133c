#pragma once

#include "Sensor/Jobs/JobCommand.h"

#include <filesystem>
#include <ostream>
#include <vector>

namespace Sensor::Jobs {

/// Prints and edits the maps of services in the jobs of a data folder. It uses the services of the plug-ins, and works
/// whether a sensor runs or not. When an edit fails, the job isn't changed.
class JobMapTool {
public:
    /// Results are printed to `out`, and notes about the load of the job to `notes`. Both must outlive this.
    JobMapTool(const std::filesystem::path& dataFolder, std::vector<std::filesystem::path> pluginFolders,
               std::ostream& out, std::ostream& notes);

    /// Whether the command is for this class, not for JobTool.
    static bool IsFor(const JobCommand& command);

    /// Throws a StartError that names the command and the reason.
    void Run(const JobCommand& command);

private:
    const std::filesystem::path folder;
    const std::vector<std::filesystem::path> pluginFolders;
    std::ostream& out;
    std::ostream& notes;
};

} // namespace Sensor::Jobs
