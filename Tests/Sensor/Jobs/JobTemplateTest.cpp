#include "Sensor/Jobs/JobTemplate.h"

#include "Sensor/Scan/PartGenerator.h"
#include "Sensor/Scan/RecordingParser.h"
#include "Sensor/StartError.h"
#include "Tests/Support/MemoryStore.h"
#include "Tests/Support/TempFolder.h"
#include "VorCommon/ArchiveFile.h"

#include <array>
#include <cstdio>
#include <memory>
#include <sys/wait.h>

#include <gtest/gtest.h>

namespace Sensor::Jobs {
namespace {

using nlohmann::json;

Scan::Recording Values(const std::string& names) {
    std::string text = "frame,name,value\n";
    for (const char name : names) {
        text += std::string("0,") + name + ",1\n";
    }
    return Scan::RecordingParser::Parse(text, "values.csv");
}

json Blocks(const json& config) {
    return config.at("vor:control").at("registerAssemblyList").at(0).at("blocks");
}

/// The blocks by which a client controls the sensor; they are the last ones of each map.
const std::vector<std::string> ControlBlocks = {"ControlInput 1000-65", "ControlOutput 1100-3", "System 1200-40",
                                                "Scanner 1300-10"};

std::vector<std::string> WithControlBlocks(std::vector<std::string> layout) {
    layout.insert(layout.end(), ControlBlocks.begin(), ControlBlocks.end());
    return layout;
}

/// "TYPE SOURCE FIRST-COUNT" of each block.
std::vector<std::string> Layout(const json& config) {
    std::vector<std::string> layout;
    for (const json& block : Blocks(config)) {
        const std::string source = block.contains("dataSource") ? block["dataSource"].get<std::string>() + " " : "";
        layout.push_back(block.at("type").get<std::string>() + " " + source +
                         std::to_string(block.at("outputId").get<int>()) + "-" +
                         std::to_string(block.at("registerCount").get<int>()));
    }
    return layout;
}

std::string OutputOf(const std::string& command, int& status) {
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    std::array<char, 256> part{};
    while (pipe != nullptr && fgets(part.data(), part.size(), pipe) != nullptr) {
        output += part.data();
    }
    status = pipe == nullptr ? -1 : WEXITSTATUS(pclose(pipe));
    return output;
}

TEST(JobTemplate, TheDemoMapHasItsBlocksAtTheirAddresses) {
    EXPECT_EQ(
        Layout(JobTemplate::ModbusConfig("demo", Scan::GeneratePart())),
        WithControlBlocks({"Measurement profile/max 0-3", "Measurement profile/min 3-3", "Measurement profile/mean 6-3",
                           "Measurement profile/width 9-3", "Measurement profile/points 12-3",
                           "Stamp profile/stamp 16-18", "String profile/text 40-16"}));
}

TEST(JobTemplate, TheValuesMapFollowsTheRecording) {
    EXPECT_EQ(Layout(JobTemplate::ModbusConfig("demo-values", Values("ba"))),
              WithControlBlocks({"Measurement values/b 0-3", "Measurement values/a 3-3", "Stamp values/stamp 16-18"}));
}

TEST(JobTemplate, TheValuesMapHoldsTheFirstFiveNames) {
    EXPECT_EQ(Layout(JobTemplate::ModbusConfig("demo-values", Values("zyxwvut"))),
              WithControlBlocks({"Measurement values/z 0-3", "Measurement values/y 3-3", "Measurement values/x 6-3",
                                 "Measurement values/w 9-3", "Measurement values/v 12-3", "Stamp values/stamp 16-18"}));
}

TEST(JobTemplate, AConfigurationIsAsTheServiceSavesIt) {
    const json config = JobTemplate::ModbusConfig("demo", Scan::GeneratePart());
    EXPECT_EQ(config.at("version"), "1");
    const json& section = config.at("vor:control");
    EXPECT_EQ(section.at("enabled"), true);
    EXPECT_EQ(section.at("parametersVersion"), "1");
    EXPECT_EQ(section.at("parameters"),
              json::parse(R"({"address":"127.0.0.1","byteOrder":0,"idleTimeout":60,"maxConnections":32,)"
                          R"("port":1502,"readNetworks":["0.0.0.0/0","::/0"],"unitId":0,)"
                          R"("writeNetworks":["127.0.0.0/8","::1/128"]})"));
    ASSERT_EQ(section.at("registerAssemblyList").size(), 1U);
    const json& assembly = section.at("registerAssemblyList").at(0);
    EXPECT_EQ(assembly.at("attributes"), json::parse(R"({"isGlobalAddressSpaceUsed":true,"outputIdMax":65534,)"
                                                     R"("outputIdMin":0,"outputIdReadOnly":false})"));
    EXPECT_EQ(assembly.at("properties"),
              json::parse(R"({"displayName":"Register Assembly 0","id":"registerAssembly-0","version":"1.2"})"));
    EXPECT_EQ(section.at("registerAssemblyVersionList"), json::parse(R"([{"id":"registerAssembly-0","version":"1"}])"));
    EXPECT_EQ(Blocks(config).at(0),
              json::parse(R"({"dataSource":"profile/max","displayName":"Maximum Height","outputId":0,)"
                          R"("registerCount":3,"type":"Measurement","version":"1.2"})"));
    EXPECT_EQ(Blocks(config).at(7), json::parse(R"({"displayName":"Command Input","outputId":1000,)"
                                                R"("registerCount":65,"type":"ControlInput","version":"1.2"})"));
}

TEST(JobTemplate, TheRecordingChoosesTheJob) {
    EXPECT_EQ(JobTemplate::JobFor(Scan::GeneratePart()), "demo");
    EXPECT_EQ(JobTemplate::JobFor(Values("a")), "demo-values");
}

TEST(JobTemplate, KnowsItsJobsWithAndWithoutExtension) {
    EXPECT_TRUE(JobTemplate::Has("demo"));
    EXPECT_TRUE(JobTemplate::Has("demo.vrjob"));
    EXPECT_TRUE(JobTemplate::Has("demo-values"));
    EXPECT_FALSE(JobTemplate::Has("other"));
    EXPECT_FALSE(JobTemplate::Has("demo2"));
}

TEST(JobTemplate, TheValuesJobNeedsARecordingOfNamedValues) {
    const Tests::TempFolder folder;
    const std::string file = folder.File("demo-values.vrjob");
    EXPECT_THROW(JobTemplate::Write("demo-values", Scan::GeneratePart(), file), StartError);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(JobTemplate, TheAsciiServiceHasTheSameMeasurementsByNumberAndByName) {
    const json demo = JobTemplate::AsciiConfig("demo", Scan::GeneratePart()).at("vor:control");
    EXPECT_EQ(demo.at("enabled"), true);
    EXPECT_EQ(demo.at("parameters").at("port"), 8190);
    std::vector<std::string> blocks;
    for (const json& block : demo.at("registerAssemblyList").at(0).at("blocks")) {
        blocks.push_back(block.at("outputId").dump() + " " + block.at("dataSource").get<std::string>());
    }
    EXPECT_EQ(blocks, (std::vector<std::string>{"0 profile/max", "1 profile/min", "2 profile/mean", "3 profile/width",
                                                "4 profile/points", "5 profile/stamp", "6 profile/text"}));
    std::vector<std::string> names;
    for (const json& entry : demo.at("outputs").at("map")) {
        names.push_back(entry.at("outputId").get<std::string>() + " " + entry.at("source").get<std::string>());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"height profile/max", "lowest profile/min", "mean profile/mean",
                                               "points profile/points", "stamp profile/stamp", "text profile/text",
                                               "width profile/width"}));

    const json values = JobTemplate::AsciiConfig("demo-values", Values("ba")).at("vor:control");
    EXPECT_EQ(values.at("registerAssemblyList").at(0).at("blocks").at(2).at("dataSource"), "values/stamp");
    EXPECT_EQ(values.at("outputs").at("map"), json::array());
}

TEST(JobTemplate, FillsAStoreWithTheServicesFiles) {
    Tests::MemoryStore store;
    const Scan::Recording part = Scan::GeneratePart();
    JobTemplate::Fill("demo", part, store);
    const auto read = [&](const char* path) {
        const VorCommon::PersistBuffer buffer = store.Read(path);
        return json::parse(buffer.pointer + buffer.offset, buffer.pointer + buffer.offset + buffer.size);
    };
    EXPECT_EQ(read("/controls/modbus/config.json"), JobTemplate::ModbusConfig("demo", part));
    EXPECT_EQ(read("/controls/ascii/config.json"), JobTemplate::AsciiConfig("demo", part));
    EXPECT_THROW(JobTemplate::Fill("demo-values", part, store), StartError);
}

TEST(JobTemplate, WritesAnArchiveWithTheServicesFiles) {
    const Tests::TempFolder folder;
    const std::string file = folder.File("jobs/demo.vrjob");
    const Scan::Recording part = Scan::GeneratePart();
    JobTemplate::Write("demo", part, file);
    const auto entries = VorCommon::ArchiveFile(file).Read();
    const auto text = [&](const std::string& entry) {
        const auto& bytes = *entries.at(entry);
        return std::string(bytes.begin(), bytes.end());
    };
    EXPECT_EQ(entries.size(), 2U);
    EXPECT_EQ(text("controls/modbus/config.json"), JobTemplate::ModbusConfig("demo", part).dump(-1, ' '));
    EXPECT_EQ(text("controls/ascii/config.json"), JobTemplate::AsciiConfig("demo", part).dump(-1, ' '));
}

TEST(JobTemplate, TheArchiveIsListedByItsCommonTool) {
    const Tests::TempFolder folder;
    const std::string file = folder.File("demo.vrjob");
    JobTemplate::Write("demo", Scan::GeneratePart(), file);
    int status = 0;
    const std::string listed = OutputOf("sqlite3 '" + file + "' -A --list 2>&1", status);
    if (status == 127) {
        GTEST_SKIP() << "sqlite3 isn't installed";
    }
    EXPECT_EQ(status, 0);
    EXPECT_NE(("\n" + listed).find("\ncontrols/modbus/config.json\n"), std::string::npos) << listed;
}

TEST(JobTemplate, NamesAFileThatCantBeWritten) {
    const Tests::TempFolder folder;
    Tests::WriteWholeFile(folder.File("jobs"), "");
    try {
        JobTemplate::Write("demo", Scan::GeneratePart(), folder.File("jobs/demo.vrjob"));
        FAIL() << "written into a file";
    } catch (const StartError& error) {
        EXPECT_NE(std::string(error.what()).find(folder.File("jobs")), std::string::npos) << error.what();
    }
}

} // namespace
} // namespace Sensor::Jobs
