#include "Sensor/Jobs/JobCommand.h"

#include <CLI/CLI.hpp>

namespace Sensor::Jobs {

namespace {

CLI::App& Add(CLI::App& jobs, const char* name, const char* description, JobCommand& command,
              JobCommand::Action action) {
    CLI::App& added = *jobs.add_subcommand(name, description);
    added.fallthrough();
    added.callback([&command, action] { command.action = action; });
    return added;
}

void AddForce(CLI::App& app, JobCommand& command) {
    app.add_flag("--force", command.force, "Replace what exists already (default: refuse)");
}

} // namespace

CLI::App& JobCommand::Define(CLI::App& app, JobCommand& command) {
    CLI::App& jobs = *app.add_subcommand("jobs", "Work on the jobs in the folder of --data, also while no sensor runs");
    jobs.fallthrough();
    jobs.require_subcommand(1);
    Add(jobs, "list", "Name, size and time of each job", command, Action::List);

    CLI::App& show = Add(jobs, "show", "What a job holds", command, Action::Show);
    show.add_option("NAME", command.name, "The job")->required()->type_name("");
    show.add_flag("--json", command.json, "Print JSON (default: text)");

    CLI::App& copy = Add(jobs, "copy", "Make a job of another one", command, Action::Copy);
    copy.add_option("FROM", command.name, "The job")->required()->type_name("");
    copy.add_option("TO", command.copyName, "The name of the copy")->required()->type_name("");
    AddForce(copy, command);

    CLI::App& exported = Add(jobs, "export", "Copy a job to a file anywhere", command, Action::Export);
    exported.add_option("NAME", command.name, "The job")->required()->type_name("");
    exported.add_option("FILE", command.file, "The file to make")->required()->type_name("");
    AddForce(exported, command);

    CLI::App& imported = Add(jobs, "import", "Make a job of a file that holds one", command, Action::Import);
    imported.add_option("FILE", command.file, "The file")->required()->type_name("");
    imported.add_option("NAME", command.name, "The name of the job (default: that of the file)")->type_name("");
    AddForce(imported, command);
    return jobs;
}

std::string JobCommand::Text() const {
    switch (action) {
    case Action::List:
        return "jobs list";
    case Action::Show:
        return "jobs show " + name;
    case Action::Copy:
        return "jobs copy " + name + " " + copyName;
    case Action::Export:
        return "jobs export " + name + " " + file;
    case Action::Import:
        break;
    }
    return "jobs import " + file + (name.empty() ? "" : " " + name);
}

} // namespace Sensor::Jobs
