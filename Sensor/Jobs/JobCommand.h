#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace Sensor::Jobs {

/// A command of the user for the jobs of a data folder.
struct JobCommand {
    enum class Action { List, Show, Copy, Rename, Delete, Export, Import, Map, Edit, Set, Enable, Disable };

    Action action = Action::List;
    /// The job. May be empty for an import: then the job has the name of the file.
    std::string name = {};
    std::string newName = {}; ///< of a copied or renamed job
    /// The file of an export or import.
    std::string file = {};
    bool force = false;

    /// The service of a map or edit, or which is enabled or disabled.
    std::string serviceId = {};
    /// Of what is printed: "table", "json" or, for a map, "csv".
    std::string format = "table";
    /// Which assembly of a service with several; may be empty.
    std::string assembly = {};
    /// The output map instead of an assembly.
    bool outputs = false;
    /// The command of an edit, and its parameters in JSON.
    std::string edit = {};
    std::string document = "{}";
    /// What is set: "SERVICE.PARAMETER=VALUE" or "tool.TOOL.LIMIT=VALUE".
    std::vector<std::string> settings = {};

    /// Adds "jobs" with its own commands to the command line. Parsing one of them sets `command`, which must outlive
    /// `app`.
    static CLI::App& Define(CLI::App& app, JobCommand& command);

    /// The files of the jobs that the command changes, without their folder.
    std::vector<std::string> ChangedJobs() const;

    /// The name of the job that an import makes.
    std::string NameOfImport() const;

    /// The command without its options, for errors.
    std::string Text() const;
};

} // namespace Sensor::Jobs
