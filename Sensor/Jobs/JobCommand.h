#pragma once

#include <string>

namespace CLI {
class App;
}

namespace Sensor::Jobs {

/// What a user wants done with the jobs of a data folder.
struct JobCommand {
    enum class Action { List, Show, Copy, Export, Import, Map, Edit };

    Action action = Action::List;
    /// Of the job that is shown, copied, exported, edited or made. Empty for an import: that of the file.
    std::string name = {};
    std::string copyName = {};
    /// Where to or from a job is exported or imported.
    std::string file = {};
    bool force = false;
    bool json = false;

    /// Whose map is shown or edited.
    std::string serviceId = {};
    /// "table", "csv" or "json".
    std::string format = "table";
    /// Of several; empty when none was named.
    std::string assembly = {};
    /// The output map, and no assembly.
    bool outputs = false;
    /// The command of an edit, and what it is given in JSON.
    std::string edit = {};
    std::string document = "{}";

    /// Adds "jobs" with its own commands to the command line. `command` is set when one of them is there, and must live
    /// as long as the command line.
    static CLI::App& Define(CLI::App& app, JobCommand& command);

    /// As the user wrote it, without options, for errors.
    std::string Text() const;
};

} // namespace Sensor::Jobs
