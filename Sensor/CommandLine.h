#pragma once

#include "Sensor/Io/OutputDevices.h"
#include "Sensor/Jobs/JobCommand.h"
#include "Sensor/Jobs/ServiceSetting.h"
#include "Sensor/Remote/RemoteCommand.h"
#include "Sensor/Scan/ScannerAlignment.h"
#include "Sensor/Scan/TriggerMode.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Sensor {

/// The options of the user, with the defaults filled in.
struct CommandLine {
    std::filesystem::path dataFolder;
    /// The options of the user, or the program's own folder.
    std::vector<std::filesystem::path> pluginFolders;
    bool pluginFoldersGiven = false;
    /// Empty: the job for the kind of the input.
    std::string job;
    /// Empty: the generated part.
    std::filesystem::path recording;
    double frameRate = 10;
    bool once = false;
    bool scan = true;
    Scan::TriggerMode trigger = Scan::TriggerMode::Time;
    Scan::ScannerAlignment::Settings alignment = {.time = std::chrono::milliseconds(200)};
    Io::OutputDevices::Settings io = {};
    bool verbose = false;
    /// Empty: none.
    std::filesystem::path logFile;
    /// A later setting of a parameter replaces an earlier one.
    std::vector<Jobs::ServiceSetting> settings;
    /// Services to enable at the start, even if the job disables them.
    std::vector<std::string> enable;
    /// Where the resources are served.
    struct Http {
        bool on = true;
        std::string address = "127.0.0.1";
        std::uint16_t port = 8080;
        bool portGiven = false;
        std::vector<std::string> hosts; ///< further names by which clients may call this host
    };
    Http http;
    /// The command to run instead of the sensor.
    std::optional<Jobs::JobCommand> jobCommand;
    /// The command for a sensor that runs. All options but its own have their defaults.
    std::optional<Remote::RemoteCommand> remoteCommand;
    /// Text to print instead of running: the help or the version.
    std::string answer;

    /// Reads arguments and environment. Throws a StartError that names the option.
    static CommandLine Parse(int argc, const char* const* argv);
};

} // namespace Sensor
