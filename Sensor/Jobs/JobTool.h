#pragma once

#include "Sensor/Jobs/JobCommand.h"
#include "Sensor/Jobs/JobContent.h"

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace Sensor::Jobs {

/// Lists, prints, copies, renames, deletes, exports and imports the jobs of a data folder, whether a sensor uses it or
/// not. When a command fails, no incomplete job is left.
class JobTool {
public:
    /// Messages for the user are printed to `out`, which must outlive this.
    JobTool(const std::filesystem::path& dataFolder, std::ostream& out);

    /// Throws a StartError that names the command, the file and the reason.
    void Run(const JobCommand& command);

private:
    void List(const JobCommand& command);
    void Show(const JobCommand& command);
    void Copy(const JobCommand& command);
    void Rename(const JobCommand& command);
    void Delete(const JobCommand& command);
    void Export(const JobCommand& command);
    void Import(const JobCommand& command);

    /// The path of a job, whether it exists or not.
    std::string PathOf(const std::string& name) const;
    /// The path of a job whose name may be one that PathOf refuses.
    std::string FileOf(const std::string& name) const;
    void PrintList(const std::vector<std::string>& names);
    void PrintJsonList(const std::vector<std::string>& names);
    void PrintText(const JobContent& content);
    void PrintJson(const nlohmann::json& document);
    void PrintLine(const std::string& text);

    const std::filesystem::path folder;
    std::ostream& out;
};

} // namespace Sensor::Jobs
