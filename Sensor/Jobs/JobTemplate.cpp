#include "Sensor/Jobs/JobTemplate.h"

#include "Sensor/Jobs/JobFormat.h"
#include "Sensor/StartError.h"
#include "Vor/Exception.h"
#include "VorCommon/ArchiveStore.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace Sensor::Jobs {

namespace {

using nlohmann::json;

constexpr const char* BlockVersion = "1.2";
constexpr unsigned MeasurementRegisters = 3;
constexpr unsigned StampRegisters = 18;
constexpr unsigned StampAddress = 16;
constexpr unsigned TextRegisters = 16;
constexpr unsigned TextAddress = 40;
constexpr std::size_t MaxValues = 5;
constexpr unsigned AsciiPort = 8190;
constexpr const char* OutputMapVersion = "1.2";

/// One block of the demo maps.
json Block(const char* type, const std::string& displayName, unsigned registerCount, unsigned address,
           const std::string& dataSource) {
    return {{"version", BlockVersion},        {"type", type},        {"displayName", displayName},
            {"registerCount", registerCount}, {"outputId", address}, {"dataSource", dataSource}};
}

/// One of the blocks by which a client controls the sensor.
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

/// Pairs of an id and a data source, by id.
using Names = std::vector<std::pair<std::string, std::string>>;

Names DemoNames() {
    return {{"height", "profile/max"},    {"lowest", "profile/min"},  {"mean", "profile/mean"},
            {"points", "profile/points"}, {"stamp", "profile/stamp"}, {"text", "profile/text"},
            {"width", "profile/width"}};
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

/// An enabled service with one assembly, of registers at addresses or of numbered blocks.
json Section(json parameters, json blocks, bool isGlobalAddressSpaceUsed) {
    constexpr const char* AssemblyId = "registerAssembly-0";
    json assembly = {{"attributes",
                      {{"isGlobalAddressSpaceUsed", isGlobalAddressSpaceUsed},
                       {"outputIdMin", 0},
                       {"outputIdMax", 65534},
                       {"outputIdReadOnly", false}}},
                     {"properties", {{"version", "1.2"}, {"displayName", "Register Assembly 0"}, {"id", AssemblyId}}},
                     {"blocks", std::move(blocks)}};
    return {{"enabled", true},
            {"parameters", std::move(parameters)},
            {"parametersVersion", "1"},
            {"registerAssemblyList", json::array({std::move(assembly)})},
            {"registerAssemblyVersionList", json::array({{{"id", AssemblyId}, {"version", "1"}}})}};
}

/// The port needs no privilege; values of several registers have their high word first.
json ModbusParameters() {
    return {{"address", "127.0.0.1"},
            {"port", 1502},
            {"unitId", 0},
            {"byteOrder", 0},
            {"maxConnections", 32},
            {"idleTimeout", 60},
            {"readNetworks", json::array({"0.0.0.0/0", "::/0"})},
            {"writeNetworks", json::array({"127.0.0.0/8", "::1/128"})}};
}

json ModbusSection(json blocks) {
    AppendControlBlocks(blocks);
    return Section(ModbusParameters(), std::move(blocks), true);
}

/// Numbers the blocks from 0 on; each has the size of its type.
json AsciiSection(json blocks, const Names& names) {
    std::size_t number = 0;
    for (json& block : blocks) {
        block["outputId"] = number++;
        block.erase("registerCount");
    }
    json section = Section({{"address", "127.0.0.1"}, {"port", AsciiPort}}, std::move(blocks), false);
    json map = json::array();
    for (const auto& [id, source] : names) {
        map.push_back({{"outputId", id}, {"source", source}});
    }
    section["outputs"] = {{"version", OutputMapVersion}, {"map", std::move(map)}};
    return section;
}

json BlocksOf(const std::string& job, const Scan::Recording& recording) {
    if (JobFormat::JobNameOf(job) == JobTemplate::Demo) {
        return DemoBlocks();
    }
    if (recording.kind != Scan::RecordingKind::Values) {
        throw StartError(
            "--job " + job +
            ": doesn't exist yet and is made from a recording of named values; give one with --recording FILE.");
    }
    return DemoValuesBlocks(recording);
}

} // namespace

bool JobTemplate::Has(const std::string& job) {
    return JobFormat::JobNameOf(job) == Demo || JobFormat::JobNameOf(job) == DemoValues;
}

std::string JobTemplate::JobFor(const Scan::Recording& recording) {
    return recording.kind == Scan::RecordingKind::Values ? DemoValues : Demo;
}

nlohmann::json JobTemplate::ModbusConfig(const std::string& job, const Scan::Recording& recording) {
    return JobFormat::Document(ModbusSection(BlocksOf(job, recording)));
}

nlohmann::json JobTemplate::AsciiConfig(const std::string& job, const Scan::Recording& recording) {
    const bool isDemo = JobFormat::JobNameOf(job) == Demo;
    return JobFormat::Document(AsciiSection(BlocksOf(job, recording), isDemo ? DemoNames() : Names()));
}

void JobTemplate::Fill(const std::string& job, const Scan::Recording& recording, VorCommon::IPersistStore& store) {
    JobFormat::Write(store, JobFormat::PathOf("modbus"), ModbusConfig(job, recording));
    JobFormat::Write(store, JobFormat::PathOf("ascii"), AsciiConfig(job, recording));
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
