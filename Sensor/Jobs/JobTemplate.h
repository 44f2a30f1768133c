#pragma once

#include "Sensor/Scan/Recording.h"

#include <string>

#include <nlohmann/json.hpp>

namespace VorCommon {
class IPersistStore;
}

namespace Sensor::Jobs {

/// The jobs that the sensor makes itself, so that a user has something to read from the first start on.
class JobTemplate {
public:
    /// For recordings of profiles, and for the generated part.
    static constexpr const char* Demo = "demo";
    /// For recordings of named values: its map holds the first five names.
    static constexpr const char* DemoValues = "demo-values";

    /// Whether the sensor has a template of a job. `job` may bear its extension.
    static bool Has(const std::string& job);
    /// The job that suits a recording.
    static std::string JobFor(const Scan::Recording& recording);

    /// Writes the job's file, which must not exist. Throws a StartError when the template needs another recording or
    /// the file can't be written.
    static void Write(const std::string& job, const Scan::Recording& recording, const std::string& filePath);

    /// Writes the job's content into its empty store. Throws a StartError when the template needs another recording.
    static void Fill(const std::string& job, const Scan::Recording& recording, VorCommon::IPersistStore& store);

    /// The content of "/controls/modbus/config.json" of a job. Throws as Fill does.
    static nlohmann::json ModbusConfig(const std::string& job, const Scan::Recording& recording);
    /// The same of "/controls/ascii/config.json".
    static nlohmann::json AsciiConfig(const std::string& job, const Scan::Recording& recording);
};

} // namespace Sensor::Jobs
