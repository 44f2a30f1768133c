#include "Sensor/CommandLine.h"

#include "Sensor/StartError.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

using Folders = std::vector<std::filesystem::path>;

CommandLine Parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "vorsensor");
    return CommandLine::Parse(static_cast<int>(arguments.size()), arguments.data());
}

std::string Refusal(const std::vector<const char*>& arguments) {
    try {
        Parse(arguments);
    } catch (const StartError& error) {
        return error.what();
    }
    return "";
}

/// Sets or unsets an environment variable for a test.
class Variable {
public:
    Variable(const char* name, const char* value)
        : name(name) {
        if (const char* before = std::getenv(name)) {
            former = before;
        }
        Set(value);
    }
    ~Variable() { Set(former ? former->c_str() : nullptr); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void Set(const char* value) {
        if (value == nullptr) {
            unsetenv(name);
        } else {
            setenv(name, value, 1);
        }
    }

    const char* name;
    std::optional<std::string> former;
};

TEST(CommandLine, HasDefaultsForAll) {
    const Variable data("XDG_DATA_HOME", "/data");
    const CommandLine line = Parse({});
    EXPECT_EQ(line.dataFolder, "/data/vorsensor");
    EXPECT_EQ(line.pluginFolders, Folders{std::filesystem::read_symlink("/proc/self/exe").parent_path() / "plugins"});
    EXPECT_FALSE(line.pluginFoldersGiven);
    EXPECT_EQ(line.job, "");
    EXPECT_EQ(line.recording, "");
    EXPECT_EQ(line.frameRate, 10.0);
    EXPECT_FALSE(line.once);
    EXPECT_TRUE(line.scan);
    EXPECT_EQ(line.trigger, Scan::TriggerMode::Time);
    EXPECT_EQ(line.alignment.outcome, Scan::AlignOutcome::Succeed);
    EXPECT_EQ(line.alignment.time, std::chrono::milliseconds(200));
    EXPECT_EQ(line.io.count, 1U);
    EXPECT_EQ(line.io.latency, std::chrono::milliseconds(0));
    EXPECT_FALSE(line.verbose);
    EXPECT_TRUE(line.settings.empty());
    EXPECT_TRUE(line.http.on);
    EXPECT_EQ(line.http.address, "127.0.0.1");
    EXPECT_EQ(line.http.port, 8080);
    EXPECT_FALSE(line.http.portGiven);
    EXPECT_TRUE(line.http.hosts.empty());
    EXPECT_EQ(line.answer, "");
}

TEST(CommandLine, TheDataFolderIsInTheHomeFolderWithoutTheVariable) {
    const Variable home("HOME", "/home/someone");
    {
        const Variable data("XDG_DATA_HOME", nullptr);
        EXPECT_EQ(Parse({}).dataFolder, "/home/someone/.local/share/vorsensor");
    }
    {
        const Variable data("XDG_DATA_HOME", "");
        EXPECT_EQ(Parse({}).dataFolder, "/home/someone/.local/share/vorsensor");
    }
    const Variable data("XDG_DATA_HOME", "not/absolute");
    EXPECT_EQ(Parse({}).dataFolder, "/home/someone/.local/share/vorsensor");
}

TEST(CommandLine, TakesEachOption) {
    const CommandLine line = Parse({"--data", "d", "--plugins", "p", "--job", "j", "--recording", "r.csv",
                                    "--frame-rate", "250.5", "--once", "--no-scan", "--verbose"});
    EXPECT_EQ(line.dataFolder, "d");
    EXPECT_EQ(line.pluginFolders, Folders{"p"});
    EXPECT_TRUE(line.pluginFoldersGiven);
    EXPECT_EQ(line.job, "j");
    EXPECT_EQ(line.recording, "r.csv");
    EXPECT_EQ(line.frameRate, 250.5);
    EXPECT_TRUE(line.once);
    EXPECT_FALSE(line.scan);
    EXPECT_TRUE(line.verbose);
}

TEST(CommandLine, TakesHowTheSensorTriggersAndAligns) {
    const CommandLine line = Parse({"--trigger", "software", "--align", "fail", "--align-time", "0"});
    EXPECT_EQ(line.trigger, Scan::TriggerMode::Software);
    EXPECT_EQ(line.alignment.outcome, Scan::AlignOutcome::Fail);
    EXPECT_EQ(line.alignment.time, std::chrono::milliseconds(0));
    EXPECT_EQ(Parse({"--trigger", "time"}).trigger, Scan::TriggerMode::Time);
    EXPECT_EQ(Parse({"--align", "succeed"}).alignment.outcome, Scan::AlignOutcome::Succeed);
    EXPECT_EQ(Parse({"--align", "never"}).alignment.outcome, Scan::AlignOutcome::Never);
    EXPECT_EQ(Parse({"--align-time", "3600000"}).alignment.time, std::chrono::hours(1));
}

TEST(CommandLine, TakesDevicesAndTheirLatency) {
    const CommandLine line = Parse({"--io-devices", "8", "--io-latency", "60000"});
    EXPECT_EQ(line.io.count, 8U);
    EXPECT_EQ(line.io.latency, std::chrono::minutes(1));
    EXPECT_EQ(Parse({"--io-devices", "0"}).io.count, 0U);
    for (const std::vector<const char*>& arguments : {std::vector<const char*>{"--io-devices", "9"},
                                                      {"--io-devices", "-1"},
                                                      {"--io-devices", "x"},
                                                      {"--io-latency", "-1"},
                                                      {"--io-latency", "1.5"},
                                                      {"--io-latency", "60001"}}) {
        EXPECT_NE(Refusal(arguments).find(std::string(arguments[0]) + ":"), std::string::npos) << Refusal(arguments);
    }
    EXPECT_EQ(Refusal({"--io-devices", "2", "jobs", "list"}), "--io-devices: is for the sensor, not for its jobs.");
}

TEST(CommandLine, SetMayBeRepeated) {
    const CommandLine line = Parse({"--set", "modbus.port=1", "--once", "--set", "other.name=a b"});
    ASSERT_EQ(line.settings.size(), 2U);
    EXPECT_EQ(line.settings[0].parameter, "port");
    EXPECT_EQ(line.settings[1].serviceId, "other");
    EXPECT_EQ(line.settings[1].value, "a b");
    EXPECT_TRUE(line.once);
}

TEST(CommandLine, ModbusPortIsASetting) {
    const CommandLine line = Parse({"--modbus-port", "0", "--set", "modbus.unitId=3"});
    ASSERT_EQ(line.settings.size(), 2U);
    EXPECT_EQ(line.settings[1].serviceId, "modbus");
    EXPECT_EQ(line.settings[1].parameter, "port");
    EXPECT_EQ(line.settings[1].value, "0");
    EXPECT_EQ(line.settings[1].option, "--modbus-port 0");
}

TEST(CommandLine, TakesWhereHttpIsServed) {
    const CommandLine::Http http =
        Parse({"--http-port", "8080", "--http-address", "::1", "--http-host", "sensor", "--http-host", "sensor.local"})
            .http;
    EXPECT_EQ(http.port, 8080);
    EXPECT_TRUE(http.portGiven);
    EXPECT_EQ(http.address, "::1");
    EXPECT_EQ(http.hosts, (std::vector<std::string>{"sensor", "sensor.local"}));
    EXPECT_EQ(Parse({"--http-port", "0"}).http.port, 0);
    for (const char* address : {"127.8.9.10", "::ffff:127.0.0.1"}) {
        EXPECT_EQ(Parse({"--http-address", address}).http.address, address);
    }
    EXPECT_FALSE(Parse({"--no-http"}).http.on);
}

TEST(CommandLine, HttpIsServedOnTheMachineItselfOnly) {
    for (const char* address : {"0.0.0.0", "192.168.1.10", "::", "fd00::1", "::ffff:10.0.0.1", "localhost", "127.1"}) {
        EXPECT_EQ(Refusal({"--http-address", address}),
                  std::string("--http-address ") + address +
                      ": must be an address of the machine itself, such as 127.0.0.1 or ::1, since every client of "
                      "HTTP may change the sensor.");
    }
}

TEST(CommandLine, NamesTheServicesToStart) {
    EXPECT_EQ(Parse({}).enable, std::vector<std::string>());
    EXPECT_EQ(Parse({"--enable", "ascii", "--enable", "modbus"}).enable, (std::vector<std::string>{"ascii", "modbus"}));
}

TEST(CommandLine, AnErrorNamesTheOption) {
    for (const std::vector<const char*>& arguments :
         {std::vector<const char*>{"--modbus-port", "65536"}, {"--modbus-port", "-1"}, {"--modbus-port", "x"}}) {
        EXPECT_NE(Refusal(arguments).find("--modbus-port"), std::string::npos) << Refusal(arguments);
    }
    for (const char* port : {"65536", "-1", "x", ""}) {
        EXPECT_NE(Refusal({"--http-port", port}).find("--http-port"), std::string::npos) << port;
    }
    for (const std::vector<const char*>& arguments : {std::vector<const char*>{"--trigger", "encoder"},
                                                      {"--trigger", ""},
                                                      {"--align", "maybe"},
                                                      {"--align", "SUCCEED"},
                                                      {"--align-time", "-1"},
                                                      {"--align-time", "x"},
                                                      {"--align-time", "1.5"},
                                                      {"--align-time", "3600001"}}) {
        EXPECT_NE(Refusal(arguments).find(std::string(arguments[0]) + ":"), std::string::npos) << Refusal(arguments);
    }
    for (const char* rate : {"0", "-1", "nan", "inf", "x", "100001", ""}) {
        EXPECT_NE(Refusal({"--frame-rate", rate}).find("--frame-rate"), std::string::npos) << rate;
    }
    EXPECT_NE(Refusal({"--nonsense"}).find("--nonsense"), std::string::npos);
    EXPECT_NE(Refusal({"word"}).find("word"), std::string::npos);
    EXPECT_NE(Refusal({"--recording"}).find("--recording"), std::string::npos);
    EXPECT_EQ(Refusal({"--set", "modbus"}), "--set modbus: expected SERVICE.PARAMETER=VALUE.");
    for (const char* name :
         {"--data", "--plugins", "--job", "--recording", "--log-file", "--http-address", "--http-host"}) {
        EXPECT_EQ(Refusal({name, ""}), std::string(name) + ": the value is empty.");
    }
}

TEST(CommandLine, TakesSeveralPluginFoldersInTheirOrder) {
    EXPECT_EQ(Parse({"--plugins", "b", "--plugins", "a"}).pluginFolders, (Folders{"b", "a"}));
    EXPECT_EQ(Refusal({"--plugins", "a", "--plugins", ""}), "--plugins: the value is empty.");
}

TEST(CommandLine, AJobIsOneFileName) {
    for (const char* job : {"a/b", ".hidden", "..", "/abs", "\xFF"}) {
        EXPECT_EQ(Refusal({"--job", job}).find("--job"), 0U) << job;
    }
    EXPECT_EQ(Refusal({"--job", "my job.vrjob"}), "");
}

TEST(CommandLine, HelpTellsEachOptionWithItsDefault) {
    const std::string help = Parse({"--help"}).answer;
    for (const char* option :
         {"--data",        "--plugins",   "--job",          "--recording",  "--frame-rate", "--once",
          "--no-scan",     "--trigger",   "--align",        "--align-time", "--set",        "--enable",
          "--modbus-port", "--http-port", "--http-address", "--http-host",  "--no-http",    "--log-file",
          "--verbose",     "--version",   "--help",         "--io-devices", "--io-latency"}) {
        EXPECT_NE(help.find(option), std::string::npos) << option;
    }
    for (const char* text : {"$XDG_DATA_HOME/vorsensor", "default: 10", "demo-values", "generated part", "(default:"}) {
        EXPECT_NE(help.find(text), std::string::npos) << text;
    }
}

TEST(CommandLine, TakesWhatShallBeDoneWithJobs) {
    EXPECT_FALSE(Parse({}).jobCommand);
    const CommandLine list = Parse({"jobs", "list", "--data", "d"});
    EXPECT_EQ(list.jobCommand->action, Jobs::JobCommand::Action::List);
    EXPECT_EQ(list.dataFolder, "d");
    const CommandLine show = Parse({"--data", "d", "jobs", "show", "part", "--json"});
    EXPECT_EQ(show.jobCommand->action, Jobs::JobCommand::Action::Show);
    EXPECT_EQ(show.jobCommand->name, "part");
    EXPECT_EQ(show.jobCommand->format, "json");
    for (const std::vector<const char*>& command :
         {std::vector<const char*>{"jobs", "list"}, {"jobs", "show", "part"}, {"jobs", "map", "part", "modbus"}}) {
        const auto formatWith = [&](std::vector<const char*> options) {
            options.insert(options.begin(), command.begin(), command.end());
            return Parse(options).jobCommand->format;
        };
        EXPECT_EQ(formatWith({}), "table");
        EXPECT_EQ(formatWith({"--json"}), "json");
        EXPECT_EQ(formatWith({"--format", "json"}), "json");
    }
    EXPECT_EQ(show.dataFolder, "d");
    const CommandLine copy = Parse({"jobs", "copy", "part", "other", "--force"});
    EXPECT_EQ(copy.jobCommand->action, Jobs::JobCommand::Action::Copy);
    EXPECT_EQ(copy.jobCommand->newName, "other");
    EXPECT_TRUE(copy.jobCommand->force);
    const CommandLine exported = Parse({"jobs", "export", "part", "file"});
    EXPECT_EQ(exported.jobCommand->action, Jobs::JobCommand::Action::Export);
    EXPECT_EQ(exported.jobCommand->name, "part");
    EXPECT_EQ(exported.jobCommand->file, "file");
    EXPECT_FALSE(exported.jobCommand->force);
    const CommandLine imported = Parse({"jobs", "import", "file", "part"});
    EXPECT_EQ(imported.jobCommand->action, Jobs::JobCommand::Action::Import);
    EXPECT_EQ(imported.jobCommand->name, "part");
    EXPECT_EQ(Parse({"jobs", "import", "file"}).jobCommand->name, "");
    const CommandLine map = Parse({"--plugins", "p", "jobs", "map", "part", "modbus", "--format", "csv", "--outputs"});
    EXPECT_EQ(map.jobCommand->action, Jobs::JobCommand::Action::Map);
    EXPECT_EQ(map.jobCommand->name, "part");
    EXPECT_EQ(map.jobCommand->serviceId, "modbus");
    EXPECT_EQ(map.jobCommand->format, "csv");
    EXPECT_TRUE(map.jobCommand->outputs);
    EXPECT_EQ(map.pluginFolders, Folders{"p"});
    const CommandLine edit = Parse({"jobs", "edit", "part", "modbus", "add", R"({"a":[1]})", "--assembly", "a"});
    EXPECT_EQ(edit.jobCommand->action, Jobs::JobCommand::Action::Edit);
    EXPECT_EQ(edit.jobCommand->edit, "add");
    EXPECT_EQ(edit.jobCommand->document, R"({"a":[1]})");
    EXPECT_EQ(edit.jobCommand->assembly, "a");
    EXPECT_EQ(Parse({"jobs", "edit", "part", "modbus", "removeAll"}).jobCommand->document, "{}");
    EXPECT_EQ(Parse({"jobs", "map", "part", "modbus"}).jobCommand->format, "table");
    EXPECT_EQ(Parse({"jobs", "--plugins", "p", "list"}).pluginFolders, Folders{"p"});
    const CommandLine set = Parse({"jobs", "set", "part", "modbus.port=1", "ascii.delimiter=="});
    EXPECT_EQ(set.jobCommand->action, Jobs::JobCommand::Action::Set);
    EXPECT_EQ(set.jobCommand->name, "part");
    EXPECT_EQ(set.jobCommand->settings, (std::vector<std::string>{"modbus.port=1", "ascii.delimiter=="}));
    const CommandLine enable = Parse({"jobs", "enable", "part", "modbus"});
    EXPECT_EQ(enable.jobCommand->action, Jobs::JobCommand::Action::Enable);
    EXPECT_EQ(enable.jobCommand->serviceId, "modbus");
    EXPECT_EQ(Parse({"jobs", "disable", "part", "modbus"}).jobCommand->action, Jobs::JobCommand::Action::Disable);
    const CommandLine renamed = Parse({"jobs", "rename", "part", "other", "--force"});
    EXPECT_EQ(renamed.jobCommand->action, Jobs::JobCommand::Action::Rename);
    EXPECT_EQ(renamed.jobCommand->newName, "other");
    EXPECT_TRUE(renamed.jobCommand->force);
    EXPECT_EQ(Parse({"jobs", "delete", "part"}).jobCommand->action, Jobs::JobCommand::Action::Delete);
}

TEST(CommandLine, RefusesWhatIsNothingForJobs) {
    EXPECT_NE(Refusal({"jobs"}), "");
    EXPECT_NE(Refusal({"jobs", "burn"}), "");
    EXPECT_NE(Refusal({"jobs", "list", "extra"}), "");
    EXPECT_NE(Refusal({"jobs", "list", "--force"}).find("--force"), std::string::npos);
    EXPECT_NE(Refusal({"jobs", "show"}).find("NAME"), std::string::npos);
    EXPECT_NE(Refusal({"jobs", "copy", "part"}).find("TO"), std::string::npos);
    EXPECT_NE(Refusal({"jobs", "export", "part"}).find("FILE"), std::string::npos);
    EXPECT_NE(Refusal({"jobs", "map", "part"}).find("SERVICE"), std::string::npos);
    EXPECT_NE(Refusal({"jobs", "set", "part"}).find("SETTING"), std::string::npos);
    EXPECT_NE(Refusal({"jobs", "enable", "part"}).find("SERVICE"), std::string::npos);
    EXPECT_NE(Refusal({"jobs", "rename", "part"}).find("NEW"), std::string::npos);
    EXPECT_NE(Refusal({"jobs", "delete"}).find("NAME"), std::string::npos);
    EXPECT_NE(Refusal({"jobs", "edit", "part", "modbus"}).find("COMMAND"), std::string::npos);
    EXPECT_NE(Refusal({"jobs", "map", "part", "modbus", "--format", "xml"}).find("--format"), std::string::npos);
    EXPECT_NE(Refusal({"jobs", "list", "--format", "csv"}).find("--format"), std::string::npos);
    EXPECT_NE(Refusal({"jobs", "show", "part", "--json", "--format", "table"}).find("--json"), std::string::npos);
    EXPECT_NE(Refusal({"jobs", "map", "part", "modbus", "--assembly", "a", "--outputs"}).find("--outputs"),
              std::string::npos);
    EXPECT_EQ(Refusal({"jobs", "list", "--frame-rate", "5"}), "--frame-rate: is for the sensor, not for its jobs.");
    EXPECT_EQ(Refusal({"--once", "jobs", "list"}), "--once: is for the sensor, not for its jobs.");
    EXPECT_EQ(Refusal({"jobs", "list", "--data", ""}), "--data: the value is empty.");
}

TEST(CommandLine, HelpTellsOfTheJobsCommands) {
    EXPECT_NE(Parse({"--help"}).answer.find("jobs"), std::string::npos);
    const std::string help = Parse({"jobs", "--help"}).answer;
    for (const char* command : {"list", "show", "copy", "rename", "delete", "export", "import", "set", "enable",
                                "disable", "map", "edit", "--plugins"}) {
        EXPECT_NE(help.find(command), std::string::npos) << command;
    }
    EXPECT_NE(Parse({"jobs", "copy", "--help"}).answer.find("--force"), std::string::npos);
}

TEST(CommandLine, TakesCommandsForARunningSensor) {
    EXPECT_FALSE(Parse({}).remoteCommand);
    EXPECT_FALSE(Parse({"jobs", "list"}).remoteCommand);
    using Action = Remote::RemoteCommand::Action;
    const CommandLine status = Parse({"status"});
    EXPECT_FALSE(status.jobCommand);
    EXPECT_EQ(status.remoteCommand->action, Action::Status);
    EXPECT_EQ(status.remoteCommand->url, "http://127.0.0.1:8080");
    EXPECT_FALSE(status.remoteCommand->json);
    EXPECT_TRUE(Parse({"status", "--json"}).remoteCommand->json);
    const CommandLine get = Parse({"get", "/controls", "--links", "--url", "http://[::1]:1"});
    EXPECT_EQ(get.remoteCommand->action, Action::Get);
    EXPECT_EQ(get.remoteCommand->path, "/controls");
    EXPECT_EQ(get.remoteCommand->url, "http://[::1]:1");
    EXPECT_TRUE(get.remoteCommand->withLinks);
    EXPECT_FALSE(Parse({"get", "/"}).remoteCommand->withLinks);
    const CommandLine set = Parse(
        {"set", "/controls/ascii", "enabled=true", "parameters.readNetworks=[\"a\", \"b\"]", "parameters.delimiter=="});
    EXPECT_EQ(set.remoteCommand->action, Action::Set);
    EXPECT_EQ(set.remoteCommand->path, "/controls/ascii");
    EXPECT_EQ(
        set.remoteCommand->settings,
        (std::vector<std::string>{"enabled=true", "parameters.readNetworks=[\"a\", \"b\"]", "parameters.delimiter=="}));
    const Variable home("HOME", nullptr);
    const Variable data("XDG_DATA_HOME", nullptr);
    EXPECT_TRUE(Parse({"status"}).remoteCommand) << "it needs no folder";
}

TEST(CommandLine, RefusesWhatIsNothingForARunningSensor) {
    EXPECT_NE(Refusal({"get"}).find("PATH"), std::string::npos);
    EXPECT_NE(Refusal({"set", "/"}).find("SETTING"), std::string::npos);
    EXPECT_NE(Refusal({"status", "/"}), "");
    EXPECT_NE(Refusal({"get", "/", "/controls"}), "");
    EXPECT_NE(Refusal({"status", "--links"}), "");
    EXPECT_NE(Refusal({"status", "jobs", "list"}), "");
    EXPECT_EQ(Refusal({"status", "--data", "d"}), "--data: is for starting a sensor, not for one that runs.");
    EXPECT_EQ(Refusal({"--once", "get", "/"}), "--once: is for starting a sensor, not for one that runs.");
}

TEST(CommandLine, AJobMayHaveTheNameOfACommand) {
    for (const char* name : {"status", "get", "set", "jobs", "list"}) {
        EXPECT_EQ(Parse({"jobs", "show", name}).jobCommand->name, name);
    }
    EXPECT_EQ(Parse({"jobs", "set", "set", "modbus.port=1"}).jobCommand->name, "set");
}

TEST(CommandLine, HelpTellsOfTheCommandsForARunningSensor) {
    const std::string help = Parse({"--help"}).answer;
    for (const char* command : {"status", "get", "set"}) {
        EXPECT_NE(help.find(std::string("\n  ") + command), std::string::npos) << command;
        const std::string own = Parse({command, "--help"}).answer;
        for (const char* text : {"--url", "Exit status: 0", "Examples:", "vorsensor "}) {
            EXPECT_NE(own.find(text), std::string::npos) << command << ' ' << text;
        }
    }
}

TEST(CommandLine, VersionIsTold) {
    EXPECT_EQ(Parse({"--version"}).answer, "vorsensor " VOR_VERSION "\n");
}

} // namespace
} // namespace Sensor
