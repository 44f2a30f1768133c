#pragma once

#include "Sensor/Jobs/JobCommand.h"
#include "Sensor/Jobs/ServiceSetting.h"
#include "Sensor/Scan/ScannerAlignment.h"
#include "Sensor/Scan/TriggerMode.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Sensor {

/// What the user asked for, with the defaults filled in.
struct CommandLine {
    std::filesystem::path dataFolder;
    std::filesystem::path pluginFolder;
    /// Whether the user named the folder.
    bool pluginFolderGiven = false;
    /// Empty: the one that suits the input.
    std::string job;
    /// Empty: the generated part.
    std::filesystem::path recording;
    double frameRate = 10;
    bool once = false;
    bool scan = true;
    Scan::TriggerMode trigger = Scan::TriggerMode::Time;
    Scan::ScannerAlignment::Settings alignment = {.time = std::chrono::milliseconds(200)};
    bool verbose = false;
    /// In the order in which they hold: a later one wins.
    std::vector<Jobs::ServiceSetting> settings;
    /// Services to start at first although the job leaves them disabled.
    std::vector<std::string> enable;
    /// To be run instead of the sensor.
    std::optional<Jobs::JobCommand> jobCommand;
    /// Text to print instead of running: the help or the version.
    std::string answer;

    /// Reads arguments and environment. Throws a StartError that names the option.
    static CommandLine Parse(int argc, const char* const* argv);
};

} // namespace Sensor
