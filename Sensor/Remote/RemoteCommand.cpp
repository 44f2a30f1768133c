#include "Sensor/Remote/RemoteCommand.h"

#include <CLI/CLI.hpp>

namespace Sensor::Remote {

namespace {

constexpr const char* Statuses =
    "Exit status: 0 done; 1 nothing answers there, or the sensor couldn't do it; 2 the command line is wrong, or the "
    "sensor refused it, such as for a path that doesn't exist";

CLI::App& Add(CLI::App& app, const char* name, const char* description, RemoteCommand& command,
              RemoteCommand::Action action) {
    CLI::App& added = *app.add_subcommand(name, description);
    added.fallthrough();
    added.callback([&command, action] { command.action = action; });
    added.add_option("--url", command.url, "Where the sensor serves HTTP (default: http://127.0.0.1:8080)")
        ->type_name("URL");
    return added;
}

void AddPath(CLI::App& app, RemoteCommand& command) {
    app.add_option("PATH", command.path, "The resource, such as /controls/modbus")->required()->type_name("");
}

} // namespace

std::vector<const CLI::App*> RemoteCommand::Define(CLI::App& app, RemoteCommand& command) {
    CLI::App& status = Add(app, "status", "Print what a running sensor does", command, Action::Status);
    status.add_flag("--json", command.json, "Print the document /sensor instead of a table");
    status.footer(std::string(Statuses) + "\n\nExamples:\n"
                                          "  vorsensor status\n"
                                          "  vorsensor status --json --url http://127.0.0.1:8081");

    CLI::App& get = Add(app, "get", "Print a resource of a running sensor, as JSON", command, Action::Get);
    AddPath(get, command);
    get.add_flag("--links", command.withLinks, "Print the links, too (default: leave _links out)");
    get.footer(std::string(Statuses) + "\n\nExamples:\n"
                                       "  vorsensor get /controls/modbus\n"
                                       "  vorsensor get '/sensor/scan?points=0'\n"
                                       "  vorsensor get / --links");

    CLI::App& set = Add(app, "set", "Change members of a resource of a running sensor", command, Action::Set);
    AddPath(set, command);
    set.add_option("SETTING", command.settings,
                   "MEMBER=VALUE, such as enabled=true, with dots for a member of a member; one or more")
        ->required()
        ->type_name("");
    set.footer("A VALUE is a number, true or false, a name or number of an enumeration, or a text, as the resource's "
               "schema says; lists and objects are JSON, and a text may be in quotation marks as in JSON. All members "
               "are set, or none. Nothing is set when somebody else changes the resource meanwhile. The changes are "
               "in the job's file once that is saved.\n\n" +
               std::string(Statuses) +
               "\n\nExamples:\n"
               "  vorsensor set /controls/modbus parameters.idleTimeout=30 parameters.byteOrder=1\n"
               "  vorsensor set /controls/ascii enabled=false\n"
               "  vorsensor set /controls/ascii 'parameters.terminator=\"\\n\"' 'parameters.decimalSeparator=Comma'");
    return {&status, &get, &set};
}

} // namespace Sensor::Remote
