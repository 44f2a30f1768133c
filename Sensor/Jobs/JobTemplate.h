#pragma once

#include "Sensor/Scan/Recording.h"

#include <string>

#include <nlohmann/json.hpp>

namespace VorCommon {
class IPersistStore;
}

namespace Sensor::Jobs {

/// The jobs that the sensor creates itself, so that clients can read values from the first start on.
class JobTemplate {
public:
    /// For recordings of profiles, and for the generated part.
    static constexpr const char* Demo = "demo";
    /// For recordings of named values: its map contains the first five names.
    static constexpr const char* DemoValues = "demo-values";

    /// Whether there is a template for a job. `job` may have the extension.
    static bool Has(const std::string& job);
    /// The job for a recording.
    static std::string JobFor(const Scan::Recording& recording);

    /// Writes the job's file, which must not exist. Throws a StartError when the template isn't for this kind of
    /// recording or the file can't be written.
    static void Write(const std::string& job, const Scan::Recording& recording, const std::string& filePath);

    /// Writes the job's content into its empty store. Throws a StartError when the template isn't for this kind of
    /// recording.
    static void Fill(const std::string& job, const Scan::Recording& recording, VorCommon::IPersistStore& store);

    /// The content of "/controls/modbus/config.json" of a job. Throws what Fill throws.
    static nlohmann::json ModbusConfig(const std::string& job, const Scan::Recording& recording);
    /// The same of "/controls/ascii/config.json".
    static nlohmann::json AsciiConfig(const std::string& job, const Scan::Recording& recording);
};

} // namespace Sensor::Jobs
