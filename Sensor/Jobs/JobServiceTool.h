#pragma once

#include "Sensor/Jobs/JobCommand.h"

#include <filesystem>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace VorCommon {
class ArchiveStore;
}

namespace Sensor::Jobs {

class JobService;
class OfflineServices;

/// Prints and changes the settings of services, and the limits of tools, in the jobs of a data folder. It uses the
/// services of the plug-ins, and works whether a sensor runs or not. When a change fails, the job isn't changed.
class JobServiceTool {
public:
    /// Results are printed to `out`, and notes about the load of the job to `notes`. Both must outlive this.
    JobServiceTool(const std::filesystem::path& dataFolder, std::vector<std::filesystem::path> pluginFolders,
                   std::ostream& out, std::ostream& notes);

    /// Whether the command is for this class, not for JobTool.
    static bool IsFor(const JobCommand& command);

    /// Returns whether a job was changed. Throws a StartError that names the command and the reason.
    bool Run(const JobCommand& command);

private:
    void PrintMap(OfflineServices& services, VorCommon::ArchiveStore& store, const JobCommand& command);
    /// Returns what was done; empty: nothing.
    std::string Change(OfflineServices& services, VorCommon::ArchiveStore& store, const JobCommand& command);
    void Set(OfflineServices& services, VorCommon::ArchiveStore& store, const JobCommand& command);
    /// Prints a note for each new data source that no input has.
    void WarnOfNewSources(const std::set<std::string>& before, const std::set<std::string>& after);
    /// Loads the settings and prints the notes about that.
    void Load(JobService& service);

    const std::filesystem::path folder;
    const std::vector<std::filesystem::path> pluginFolders;
    std::ostream& out;
    std::ostream& notes;
};

} // namespace Sensor::Jobs
