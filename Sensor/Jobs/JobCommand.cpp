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

/// The arguments that map and edit have in common.
void AddMap(CLI::App& app, JobCommand& command) {
    app.add_option("NAME", command.name, "The job")->required()->type_name("");
    app.add_option("SERVICE", command.serviceId, "The service, such as modbus")->required()->type_name("");
    CLI::Option* assembly =
        app.add_option("--assembly", command.assembly, "Which assembly of a service that has several")->type_name("ID");
    app.add_flag("--outputs", command.outputs, "The service's output map instead of its assemblies")
        ->excludes(assembly);
}

void DefineMap(CLI::App& jobs, JobCommand& command) {
    CLI::App& map = Add(jobs, "map", "What a service's clients read where", command, JobCommand::Action::Map);
    AddMap(map, command);
    map.add_option("--format", command.format, "table, csv or json (default: table)")
        ->check(CLI::IsMember({"table", "csv", "json"}))
        ->type_name("FORMAT");

    CLI::App& edit = Add(jobs, "edit", "Edit a service's map in a job's file", command, JobCommand::Action::Edit);
    AddMap(edit, command);
    edit.add_option("COMMAND", command.edit,
                    "add, remove, removeAll, compact or update; of an output map add, addAll, remove, removeAll, "
                    "compactId or updateId")
        ->required()
        ->type_name("");
    edit.add_option("JSON", command.document,
                    "What the command is given, such as '{\"blocks\":[{\"type\":\"Measurement\",\"dataSource\":"
                    "\"profile/max\"}]}' (default: {})")
        ->type_name("");
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
    DefineMap(jobs, command);
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
    case Action::Map:
        return "jobs map " + name + " " + serviceId;
    case Action::Edit:
        return "jobs edit " + name + " " + serviceId + " " + edit;
    case Action::Import:
        break;
    }
    return "jobs import " + file + (name.empty() ? "" : " " + name);
}

} // namespace Sensor::Jobs
