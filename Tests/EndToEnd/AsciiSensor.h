#pragma once

#include "Tests/EndToEnd/Program.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Support/TempFolder.h"
#include "VorCommon/ArchiveStore.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {

/// A block of the service's assembly. Blocks are numbered from 0 on.
struct AsciiBlock {
    const char* type;
    const char* dataSource;
};

/// The virtual sensor with a job "line" that enables the ASCII service, on a free port.
class AsciiSensor {
public:
    using Names = std::vector<std::pair<std::string, std::string>>; ///< id and data source

    /// Starts the sensor; the service has the outputs of the demo job.
    explicit AsciiSensor(const nlohmann::json& parameters = nlohmann::json::object(),
                         std::vector<std::string> arguments = {}) {
        WriteJob("line", Config(parameters,
                                {{"Measurement", "profile/max"},
                                 {"Measurement", "profile/min"},
                                 {"Measurement", "profile/mean"},
                                 {"Measurement", "profile/width"},
                                 {"Measurement", "profile/points"},
                                 {"Stamp", "profile/stamp"},
                                 {"String", "profile/text"}},
                                {{"height", "profile/max"},
                                 {"lowest", "profile/min"},
                                 {"mean", "profile/mean"},
                                 {"points", "profile/points"},
                                 {"stamp", "profile/stamp"},
                                 {"text", "profile/text"},
                                 {"width", "profile/width"}}));
        arguments.insert(arguments.begin(), {"--job", "line"});
        program.emplace(VirtualSensor::Command(data.Path().string(), std::move(arguments)));
    }

    /// A service with its own outputs.
    static nlohmann::json Config(nlohmann::json parameters, const std::vector<AsciiBlock>& blocks, const Names& names) {
        parameters.emplace("port", 0);
        nlohmann::json config = {
            {"version", "1"},
            {"vor:control", {{"enabled", true}, {"parameters", std::move(parameters)}, {"parametersVersion", "1"}}}};
        nlohmann::json& section = config["vor:control"];
        nlohmann::json list = nlohmann::json::array();
        for (const AsciiBlock& block : blocks) {
            list.push_back({{"type", block.type}, {"dataSource", block.dataSource}, {"outputId", list.size()}});
        }
        section["registerAssemblyList"] = {{{"properties", {{"id", "registerAssembly-0"}}}, {"blocks", list}}};
        section["registerAssemblyVersionList"] = {{{"id", "registerAssembly-0"}, {"version", "1"}}};
        nlohmann::json map = nlohmann::json::array();
        for (const auto& [id, source] : names) {
            map.push_back({{"outputId", id}, {"source", source}});
        }
        section["outputs"] = {{"map", map}};
        return config;
    }

    void WriteJob(const std::string& name, const nlohmann::json& config) const {
        std::filesystem::create_directories(data.Path() / "jobs");
        VorCommon::ArchiveStore store(data.File("jobs/" + name + ".vrjob"));
        const std::string text = config.dump();
        store.Write("/controls/ascii/config.json", text.data(), text.size());
        store.Commit();
    }

    std::string ServiceLine() { return program->WaitForLine("Service ascii (e-ascii):").value_or("none"); }

    /// Waits until the service runs and returns its port; 0 when it doesn't run.
    std::uint16_t WaitForPort() { return VirtualSensor::PortOf(ServiceLine(), *program); }

    Program& Process() { return *program; }

private:
    TempFolder data;
    std::optional<Program> program;
};

} // namespace Tests
