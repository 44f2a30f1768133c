#include "Sensor/CommandLine.h"

#include "Net/Network.h"
#include "Sensor/StartError.h"
#include "Vor/Exception.h"
#include "Vor/Utf8.h"
#include "VorCommon/PersistManager.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <pwd.h>
#include <system_error>
#include <unistd.h>

#include <CLI/CLI.hpp>

namespace Sensor {

namespace {

constexpr double MaxFrameRate = 100000;
constexpr int MaxPort = 65535;
constexpr unsigned MaxAlignTime = 3'600'000;
constexpr unsigned MaxIoLatency = 60'000;

/// The folder in an environment variable; empty when the variable isn't set or isn't an absolute path.
std::filesystem::path FolderOf(const char* variable) {
    const char* value = std::getenv(variable);
    const std::filesystem::path folder = value == nullptr ? "" : value;
    return folder.is_absolute() ? folder : std::filesystem::path();
}

std::filesystem::path HomeFolder() {
    std::filesystem::path home = FolderOf("HOME");
    if (home.empty()) {
        if (const passwd* user = getpwuid(getuid())) {
            home = user->pw_dir;
        }
    }
    return home;
}

/// As the XDG base directory specification defines it.
std::filesystem::path DefaultDataFolder() {
    const std::filesystem::path data = FolderOf("XDG_DATA_HOME");
    if (!data.empty()) {
        return data / "vorsensor";
    }
    const std::filesystem::path home = HomeFolder();
    if (home.empty()) {
        throw StartError("--data: there is no home folder, name a folder for jobs and workspace.");
    }
    return home / ".local" / "share" / "vorsensor";
}

/// The folder beside a program that was built, the one of the libraries when it was installed.
std::filesystem::path DefaultPluginFolder() {
    std::error_code error;
    const std::filesystem::path place = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    const std::filesystem::path installed = (place / VOR_PLUGIN_PLACE).lexically_normal();
    return std::filesystem::is_directory(installed, error) ? installed : place / "plugins";
}

void CheckJob(const std::string& job) {
    if (job.empty()) {
        return;
    }
    if (!Vor::IsUtf8(job)) {
        throw StartError("--job: the name isn't text in UTF-8.");
    }
    try {
        VorCommon::PersistManager::JobFileName(job);
    } catch (const Vor::Exception& e) {
        throw StartError("--job " + job + ": " + e.what());
    }
}

Scan::AlignOutcome OutcomeOf(const std::string& word) {
    if (word == "fail") {
        return Scan::AlignOutcome::Fail;
    }
    return word == "never" ? Scan::AlignOutcome::Never : Scan::AlignOutcome::Succeed;
}

/// The options as the user gave them.
struct Options {
    std::string data;
    std::vector<std::string> plugins;
    std::string job;
    std::string recording;
    double frameRate = 10;
    bool once = false;
    bool noScan = false;
    std::string trigger = "time";
    std::string align = "succeed";
    unsigned alignTime = 200;
    std::size_t ioDevices = 1;
    unsigned ioLatency = 0;
    bool verbose = false;
    std::string logFile;
    std::vector<std::string> settings;
    std::vector<std::string> enable;
    int modbusPort = -1;
    bool noHttp = false;
    CommandLine::Http http = {};
};

void Define(CLI::App& app, Options& options) {
    app.get_formatter()->column_width(32);
    app.set_version_flag("--version", "vorsensor " VOR_VERSION, "Print the version and exit");
    app.get_help_ptr()->description("Print this help and exit");
    app.add_option("--data", options.data,
                   "Folder of jobs/NAME.vrjob and workspace.vrdata (default: $XDG_DATA_HOME/vorsensor, or "
                   "~/.local/share/vorsensor)")
        ->type_name("DIR");
    app.add_option("--plugins", options.plugins,
                   "Folder of services, instead of the program's own; may be repeated (default: the services that came "
                   "with the program)")
        ->type_name("DIR")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    app.add_option("--job", options.job, "Job to load (default: demo, or demo-values for a recording of named values)")
        ->type_name("NAME");
    app.add_option("--recording", options.recording,
                   "CSV file to replay, frame,x,z or frame,name,value (default: a generated part)")
        ->type_name("FILE");
    app.add_option("--frame-rate", options.frameRate, "Frames a second (default: 10)")->type_name("HZ");
    app.add_flag("--once", options.once, "Stand still behind the last frame (default: begin again)");
    app.add_flag("--no-scan", options.noScan, "Don't scan (default: scan as soon as the services have started)");
    app.add_option("--trigger", options.trigger,
                   "What makes a frame while the sensor scans: the time, or a trigger of a client (default: time)")
        ->type_name("time|software")
        ->check(CLI::IsMember({"time", "software"}).description(""));
    app.add_option("--align", options.align, "How an alignment ends (default: succeed)")
        ->type_name("succeed|fail|never")
        ->check(CLI::IsMember({"succeed", "fail", "never"}).description(""));
    app.add_option("--align-time", options.alignTime, "Milliseconds that an alignment takes (default: 200)")
        ->type_name("MS")
        ->check(CLI::Range(0U, MaxAlignTime).description(""));
    app.add_option("--io-devices", options.ioDevices, "Devices with digital outputs, 0 to 8 (default: 1)")
        ->type_name("N")
        ->check(CLI::Range(std::size_t{0}, Io::OutputDevices::MaxCount).description(""));
    app.add_option("--io-latency", options.ioLatency,
                   "Milliseconds that each call of a device takes which switches an output (default: 0)")
        ->type_name("MS")
        ->check(CLI::Range(0U, MaxIoLatency).description(""));
    app.add_option("--set", options.settings,
                   "Let a parameter of a service have a value in this run, without changing the job; may be repeated "
                   "(default: what the job says)")
        ->type_name("SERVICE.PARAMETER=VALUE")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    app.add_option(
           "--enable", options.enable,
           "Start a service that the job leaves disabled, such as ascii; may be repeated (default: what the job "
           "says)")
        ->type_name("SERVICE")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    app.add_option("--modbus-port", options.modbusPort,
                   "Short for --set modbus.port=N, 0 takes any free port (default: what the job says)")
        ->type_name("N")
        ->check(CLI::Range(0, MaxPort).description(""));
    app.add_option(
           "--http-port", options.http.port,
           "Port on which HTTP is served, 0 takes any free port (default: 8080, and if that is taken the sensor "
           "tries again every 5 seconds)")
        ->type_name("N")
        ->check(CLI::Range(0, MaxPort).description(""));
    app.add_option("--http-address", options.http.address,
                   "Address on which HTTP is served, one of the machine itself (default: 127.0.0.1)")
        ->type_name("ADDRESS");
    app.add_option("--http-host", options.http.hosts,
                   "Further name by which HTTP clients may call this machine; may be repeated (default: localhost and "
                   "the addresses of the machine itself)")
        ->type_name("NAME")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    app.add_flag("--no-http", options.noHttp, "Don't serve HTTP (default: serve it)");
    app.add_option("--log-file", options.logFile,
                   "Append all that happens to a file, which SIGHUP opens anew (default: no file)")
        ->type_name("FILE");
    app.add_flag("--verbose", options.verbose,
                 "Print all that happens, with developers' details (default: warnings, errors and user messages)");
}

void RequireValue(const CLI::App& app, const char* name, const std::string& value) {
    if (app.count(name) > 0 && value.empty()) {
        throw StartError(std::string(name) + ": the value is empty.");
    }
}

CommandLine::Http MakeHttp(const CLI::App& app, const Options& options) {
    RequireValue(app, "--http-address", options.http.address);
    for (const std::string& name : options.http.hosts) {
        RequireValue(app, "--http-host", name);
    }
    const auto address = Net::ParseAddress(options.http.address);
    if (!address || !Net::IsLoopback(*address)) {
        throw StartError("--http-address " + options.http.address +
                         ": must be an address of the machine itself, such as 127.0.0.1 or ::1, since every client of "
                         "HTTP may change the sensor.");
    }
    CommandLine::Http http = options.http;
    http.on = !options.noHttp;
    http.portGiven = app.count("--http-port") > 0;
    return http;
}

/// Throws a StartError with the reason for an option of the sensor beside a command that has only the `own` ones.
void RefuseSensorOptions(const CLI::App& app, const std::vector<std::string>& own, const std::string& reason) {
    for (const CLI::Option* option : app.get_options()) {
        const bool isOwn = std::ranges::any_of(own, [&](const std::string& name) { return option->check_lname(name); });
        if (option->count() > 0 && !isOwn) {
            throw StartError(option->get_name() + ": " + reason);
        }
    }
}

CommandLine MakeCommandLine(const CLI::App& app, const Options& options) {
    RequireValue(app, "--data", options.data);
    for (const std::string& folder : options.plugins) {
        RequireValue(app, "--plugins", folder);
    }
    RequireValue(app, "--job", options.job);
    RequireValue(app, "--recording", options.recording);
    RequireValue(app, "--log-file", options.logFile);
    if (!(options.frameRate > 0 && options.frameRate <= MaxFrameRate)) {
        throw StartError("--frame-rate: must be above 0 and at most 100000.");
    }
    CheckJob(options.job);
    CommandLine result;
    result.dataFolder = options.data.empty() ? DefaultDataFolder() : std::filesystem::path(options.data);
    result.pluginFoldersGiven = !options.plugins.empty();
    result.pluginFolders.assign(options.plugins.begin(), options.plugins.end());
    if (!result.pluginFoldersGiven) {
        result.pluginFolders = {DefaultPluginFolder()};
    }
    result.job = options.job;
    result.recording = options.recording;
    result.frameRate = options.frameRate;
    result.once = options.once;
    result.scan = !options.noScan;
    result.trigger = options.trigger == "software" ? Scan::TriggerMode::Software : Scan::TriggerMode::Time;
    result.alignment = {.time = std::chrono::milliseconds(options.alignTime), .outcome = OutcomeOf(options.align)};
    result.io = {.count = options.ioDevices, .latency = std::chrono::milliseconds(options.ioLatency)};
    result.verbose = options.verbose;
    result.logFile = options.logFile;
    result.enable = options.enable;
    result.http = MakeHttp(app, options);
    for (const std::string& setting : options.settings) {
        result.settings.push_back(Jobs::ServiceSetting::Parse(setting, "--set"));
    }
    if (options.modbusPort >= 0) {
        const std::string port = std::to_string(options.modbusPort);
        result.settings.push_back({"--modbus-port " + port, "modbus", "port", port});
    }
    return result;
}

} // namespace

CommandLine CommandLine::Parse(int argc, const char* const* argv) {
    CLI::App app("A virtual 3D scanning sensor: replays or generates scans, measures, and lets control services report "
                 "the results to a machine controller.",
                 "vorsensor");
    Options options;
    Define(app, options);
    Jobs::JobCommand jobCommand;
    const CLI::App& jobs = Jobs::JobCommand::Define(app, jobCommand);
    Remote::RemoteCommand remoteCommand;
    const std::vector<const CLI::App*> remotes = Remote::RemoteCommand::Define(app, remoteCommand);
    app.require_subcommand(0, 1);
    CommandLine result;
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        result.answer = app.help();
        return result;
    } catch (const CLI::CallForVersion& version) {
        result.answer = std::string(version.what()) + "\n";
        return result;
    } catch (const CLI::ParseError& error) {
        throw StartError(std::string(error.what()) + "; --help lists the options.");
    }
    for (const CLI::App* remote : remotes) {
        if (remote->parsed()) {
            RefuseSensorOptions(app, {}, "is for starting a sensor, not for one that runs.");
            result.remoteCommand = remoteCommand;
            return result;
        }
    }
    result = MakeCommandLine(app, options);
    if (jobs.parsed()) {
        RefuseSensorOptions(app, {"data", "plugins", "verbose"}, "is for the sensor, not for its jobs.");
        result.jobCommand = jobCommand;
    }
    return result;
}

} // namespace Sensor
