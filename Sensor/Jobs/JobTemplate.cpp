#include "Sensor/Jobs/JobTemplate.h"

#include "Sensor/StartError.h"
#include "Vor/Exception.h"
#include "VorCommon/ArchiveStore.h"

#include <algorithm>
#include <string_view>

namespace Sensor::Jobs {

namespace {

using nlohmann::json;

constexpr std::string_view Extension = ".vrjob";
constexpr const char* BlockVersion = "1.2";
constexpr unsigned MeasurementRegisters = 3;
constexpr unsigned StampRegisters = 18;
constexpr unsigned StampAddress = 16;
constexpr unsigned TextRegisters = 16;
constexpr unsigned TextAddress = 40;
constexpr std::size_t MaxValues = 5;

/// One block of the demo maps.
json Block(const char* type, const std::string& displayName, unsigned registerCount, unsigned address,
           const std::string& dataSource) {
    return {{"version", BlockVersion},        {"type", type},        {"displayName", displayName},
            {"registerCount", registerCount}, {"outputId", address}, {"dataSource", dataSource}};
}

/// One of the blocks by which a client drives the sensor.
json Block(const char* type, const char* displayName, unsigned registerCount, unsigned address) {
    return {{"version", BlockVersion},
            {"type", type},
            {"displayName", displayName},
            {"registerCount", registerCount},
            {"outputId", address}};
}

void AppendControlBlocks(json& blocks) {
    blocks.push_back(Block("ControlInput", "Command Input", 65, 1000));
    blocks.push_back(Block("ControlOutput", "Command Output", 3, 1100));
    blocks.push_back(Block("System", "System State", 40, 1200));
    blocks.push_back(Block("Scanner", "Sensor Group State", 10, 1300));
}

json DemoBlocks() {
    return json::array({Block("Measurement", "Maximum Height", MeasurementRegisters, 0, "profile/max"),
                        Block("Measurement", "Minimum Height", MeasurementRegisters, 3, "profile/min"),
                        Block("Measurement", "Mean Height", MeasurementRegisters, 6, "profile/mean"),
                        Block("Measurement", "Width", MeasurementRegisters, 9, "profile/width"),
                        Block("Measurement", "Number of Points", MeasurementRegisters, 12, "profile/points"),
                        Block("Stamp", "Stamp", StampRegisters, StampAddress, "profile/stamp"),
                        Block("String", "Text", TextRegisters, TextAddress, "profile/text")});
}

json DemoValuesBlocks(const Scan::Recording& recording) {
    json blocks = json::array();
    const std::size_t count = std::min(recording.names.size(), MaxValues);
    for (std::size_t index = 0; index < count; ++index) {
        const std::string& name = recording.names[index];
        blocks.push_back(Block("Measurement", name, MeasurementRegisters,
                               static_cast<unsigned>(index) * MeasurementRegisters, "values/" + name));
    }
    blocks.push_back(Block("Stamp", "Stamp", StampRegisters, StampAddress, "values/stamp"));
    return blocks;
}

std::string BareName(const std::string& job) {
    return job.ends_with(Extension) ? job.substr(0, job.size() - Extension.size()) : job;
}

/// The port is one that needs no privilege; values of several registers have their high word first.
json Parameters() {
    return {{"address", "127.0.0.1"},
            {"port", 1502},
            {"unitId", 0},
            {"byteOrder", 0},
            {"maxConnections", 32},
            {"idleTimeout", 60},
            {"readNetworks", json::array({"0.0.0.0/0", "::/0"})},
            {"writeNetworks", json::array({"127.0.0.0/8", "::1/128"})}};
}

json Config(json blocks) {
    constexpr const char* assemblyId = "registerAssembly-0";
    AppendControlBlocks(blocks);
    json assembly = {
        {"attributes",
         {{"isGlobalAddressSpaceUsed", true}, {"outputIdMin", 0}, {"outputIdMax", 65534}, {"outputIdReadOnly", false}}},
        {"properties", {{"version", "1.2"}, {"displayName", "Register Assembly 0"}, {"id", assemblyId}}},
        {"blocks", std::move(blocks)}};
    return {{"version", "1"},
            {"vor:control",
             {{"enabled", true},
              {"parameters", Parameters()},
              {"parametersVersion", "1"},
              {"registerAssemblyList", json::array({std::move(assembly)})},
              {"registerAssemblyVersionList", json::array({{{"id", assemblyId}, {"version", "1"}}})}}}};
}

} // namespace

bool JobTemplate::Has(const std::string& job) {
    return BareName(job) == Demo || BareName(job) == DemoValues;
}

std::string JobTemplate::JobFor(const Scan::Recording& recording) {
    return recording.kind == Scan::RecordingKind::Values ? DemoValues : Demo;
}

nlohmann::json JobTemplate::ModbusConfig(const std::string& job, const Scan::Recording& recording) {
    if (BareName(job) == Demo) {
        return Config(DemoBlocks());
    }
    if (recording.kind != Scan::RecordingKind::Values) {
        throw StartError(
            "--job " + job +
            ": doesn't exist yet and is made from a recording of named values; give one with --recording FILE.");
    }
    return Config(DemoValuesBlocks(recording));
}

void JobTemplate::Fill(const std::string& job, const Scan::Recording& recording, VorCommon::IPersistStore& store) {
    const std::string text = ModbusConfig(job, recording).dump(-1, ' ');
    store.Write("/controls/modbus/config.json", text.data(), text.size());
}

void JobTemplate::Write(const std::string& job, const Scan::Recording& recording, const std::string& filePath) {
    try {
        VorCommon::ArchiveStore store(filePath);
        Fill(job, recording, store);
        store.Commit();
    } catch (const Vor::Exception& e) {
        throw StartError(filePath + ": the job can't be written (" + e.what() + ").");
    }
}

} // namespace Sensor::Jobs
