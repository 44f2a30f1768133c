#include "Sensor/Jobs/JobCommand.h"

#include "VorCommon/PersistManager.h"

#include <filesystem>
#include <set>

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

void AddFormat(CLI::App& app, JobCommand& command, const std::set<std::string>& formats) {
    std::string list;
    for (const std::string& format : formats) {
        list += (list.empty() ? "" : "|") + format;
    }
    CLI::Option* format = app.add_option("--format", command.format, "How to print it (default: table)")
                              ->check(CLI::IsMember(std::set<std::string>(formats)).description(""))
                              ->type_name(list);
    app.add_flag_callback(
           "--json", [&command] { command.format = "json"; }, "Short for --format json")
        ->excludes(format);
}

void AddName(CLI::App& app, JobCommand& command) {
    app.add_option("NAME", command.name, "The job")->required()->type_name("");
}

void AddService(CLI::App& app, JobCommand& command) {
    app.add_option("SERVICE", command.serviceId, "The service, such as modbus")->required()->type_name("");
}

/// The arguments that map and edit have in common.
void AddMap(CLI::App& app, JobCommand& command) {
    AddName(app, command);
    AddService(app, command);
    CLI::Option* assembly =
        app.add_option("--assembly", command.assembly, "Which assembly of a service that has several")->type_name("ID");
    app.add_flag("--outputs", command.outputs, "The service's output map instead of its assemblies")
        ->excludes(assembly);
}

void DefineSettings(CLI::App& jobs, JobCommand& command) {
    CLI::App& set = Add(jobs, "set", "Change parameters of services and limits of tools in a job's file", command,
                        JobCommand::Action::Set);
    AddName(set, command);
    set.add_option("SETTING", command.settings,
                   "SERVICE.PARAMETER=VALUE, such as modbus.port=502, or tool.TOOL.LIMIT=VALUE, such as "
                   "tool.profile-max.high=9.9; one or more")
        ->required()
        ->type_name("");
    CLI::App& enable = Add(jobs, "enable", "Let a job start a service", command, JobCommand::Action::Enable);
    AddName(enable, command);
    AddService(enable, command);
    CLI::App& disable = Add(jobs, "disable", "Let a job not start a service", command, JobCommand::Action::Disable);
    AddName(disable, command);
    AddService(disable, command);
}

void DefineMap(CLI::App& jobs, JobCommand& command) {
    CLI::App& map = Add(jobs, "map", "Print what a service's clients read where", command, JobCommand::Action::Map);
    AddMap(map, command);
    AddFormat(map, command, {"csv", "json", "table"});

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
    AddFormat(Add(jobs, "list", "List name, time and size of each job", command, Action::List), command,
              {"json", "table"});

    CLI::App& show = Add(jobs, "show", "Print the content of a job", command, Action::Show);
    AddName(show, command);
    AddFormat(show, command, {"json", "table"});

    CLI::App& copy = Add(jobs, "copy", "Make a job of another one", command, Action::Copy);
    copy.add_option("FROM", command.name, "The job")->required()->type_name("");
    copy.add_option("TO", command.newName, "The name of the copy")->required()->type_name("");
    AddForce(copy, command);

    CLI::App& renamed = Add(jobs, "rename", "Give a job another name", command, Action::Rename);
    AddName(renamed, command);
    renamed.add_option("NEW", command.newName, "The new name")->required()->type_name("");
    AddForce(renamed, command);

    CLI::App& deleted = Add(jobs, "delete", "Delete a job's file", command, Action::Delete);
    AddName(deleted, command);

    CLI::App& exported = Add(jobs, "export", "Copy a job to a file anywhere", command, Action::Export);
    AddName(exported, command);
    exported.add_option("FILE", command.file, "The file to make")->required()->type_name("");
    AddForce(exported, command);

    CLI::App& imported = Add(jobs, "import", "Make a job of the file of one", command, Action::Import);
    imported.add_option("FILE", command.file, "The file")->required()->type_name("");
    imported.add_option("NAME", command.name, "The name of the job (default: that of the file)")->type_name("");
    AddForce(imported, command);
    DefineSettings(jobs, command);
    DefineMap(jobs, command);
    jobs.footer("With these options of the sensor:\n"
                "  --data DIR      Folder of jobs/NAME.vrjob\n"
                "  --plugins DIR   Folder of services, for set, enable, disable, map and edit; may be repeated\n"
                "  --verbose       Log all that happens");
    return jobs;
}

std::vector<std::string> JobCommand::ChangedJobs() const {
    const auto fileOf = VorCommon::PersistManager::JobFileName;
    switch (action) {
    case Action::Copy:
        return {fileOf(newName)};
    case Action::Rename:
        return {fileOf(name), fileOf(newName)};
    case Action::Import:
        return {fileOf(NameOfImport())};
    case Action::Delete:
    case Action::Edit:
    case Action::Set:
    case Action::Enable:
    case Action::Disable:
        return {fileOf(name)};
    case Action::List:
    case Action::Show:
    case Action::Export:
    case Action::Map:
        break;
    }
    return {};
}

std::string JobCommand::NameOfImport() const {
    return name.empty() ? std::filesystem::path(file).filename().string() : name;
}

std::string JobCommand::Text() const {
    switch (action) {
    case Action::List:
        return "jobs list";
    case Action::Show:
        return "jobs show " + name;
    case Action::Copy:
        return "jobs copy " + name + " " + newName;
    case Action::Rename:
        return "jobs rename " + name + " " + newName;
    case Action::Delete:
        return "jobs delete " + name;
    case Action::Set:
        return "jobs set " + name;
    case Action::Enable:
        return "jobs enable " + name + " " + serviceId;
    case Action::Disable:
        return "jobs disable " + name + " " + serviceId;
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
