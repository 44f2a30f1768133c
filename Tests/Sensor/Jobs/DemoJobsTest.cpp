#include "Sensor/Jobs/DemoJobs.h"

#include "Sensor/Scan/RecordingParser.h"
#include "Sensor/StartError.h"
#include "Tests/Sensor/Jobs/MadeDemoJobs.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/MainLoop.h"
#include "VorCommon/ArchiveFile.h"

#include <array>
#include <cstdio>
#include <filesystem>
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
                                                "Scanner 1300-10", "Diagnostics 1400-12"};

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

class DemoJobsTest : public ::testing::Test {
protected:
    static json Modbus(const Scan::Recording& recording = Scan::GeneratePart(),
                       const std::string& job = DemoJobs::Demo) {
        return DemoConfig(MadeDemoJobs(recording), "modbus", job);
    }

    /// What is refused of a plug-in folder with this file for the Modbus service.
    std::string Refusal(const std::string& demo) const {
        try {
            Made(demo);
        } catch (const StartError& error) {
            return error.what();
        }
        return "(done)";
    }
    DemoJobs Made(const std::string& demo, const Scan::Recording& recording = Scan::GeneratePart()) const {
        Tests::WriteWholeFile(folder.File("modbus.demo.json"), demo);
        std::filesystem::copy_file(Tests::BuiltFile("plugins/modbus.so"), folder.File("modbus.so"),
                                   std::filesystem::copy_options::skip_existing);
        VorPlugin::PluginManager plugins;
        plugins.LoadFolder(folder.Path());
        return DemoJobs(plugins, recording);
    }

    Tests::TempFolder folder;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
};

TEST_F(DemoJobsTest, TheDemoMapHasItsBlocksAtTheirAddresses) {
    EXPECT_EQ(Layout(Modbus()), WithControlBlocks({"Measurement profile/max 0-3", "Measurement profile/min 3-3",
                                                   "Measurement profile/mean 6-3", "Measurement profile/width 9-3",
                                                   "Measurement profile/points 12-3", "Stamp profile/stamp 16-18",
                                                   "String profile/text 40-16"}));
}

TEST_F(DemoJobsTest, TheValuesMapFollowsTheRecording) {
    EXPECT_EQ(Layout(Modbus(Values("ba"), "demo-values")),
              WithControlBlocks({"Measurement values/b 0-3", "Measurement values/a 3-3", "Stamp values/stamp 16-18"}));
}

TEST_F(DemoJobsTest, TheValuesMapHoldsTheFirstFiveNames) {
    EXPECT_EQ(Layout(Modbus(Values("zyxwvut"), "demo-values")),
              WithControlBlocks({"Measurement values/z 0-3", "Measurement values/y 3-3", "Measurement values/x 6-3",
                                 "Measurement values/w 9-3", "Measurement values/v 12-3", "Stamp values/stamp 16-18"}));
}

TEST_F(DemoJobsTest, TheServicesAreEnabledAtPortsThatNeedNoPrivilege) {
    const DemoJobs jobs = MadeDemoJobs(Values("a"));
    for (const char* job : {"demo", "demo-values"}) {
        const json modbus = DemoConfig(jobs, "modbus", job).at("vor:control");
        EXPECT_EQ(modbus.at("enabled"), true);
        EXPECT_EQ(modbus.at("parameters").at("port"), 1502);
        EXPECT_EQ(modbus.at("parameters").at("address"), "127.0.0.1");
        const json ascii = DemoConfig(jobs, "ascii", job).at("vor:control");
        EXPECT_EQ(ascii.at("enabled"), true);
        EXPECT_EQ(ascii.at("parameters").at("port"), 8190);
    }
}

TEST_F(DemoJobsTest, TheRecordingChoosesTheJob) {
    EXPECT_EQ(DemoJobs::JobFor(Scan::GeneratePart()), "demo");
    EXPECT_EQ(DemoJobs::JobFor(Values("a")), "demo-values");
}

TEST_F(DemoJobsTest, KnowsItsJobsWithAndWithoutExtension) {
    EXPECT_TRUE(DemoJobs::Has("demo"));
    EXPECT_TRUE(DemoJobs::Has("demo.vrjob"));
    EXPECT_TRUE(DemoJobs::Has("demo-values"));
    EXPECT_FALSE(DemoJobs::Has("other"));
    EXPECT_FALSE(DemoJobs::Has("demo2"));
}

TEST_F(DemoJobsTest, TheValuesJobNeedsARecordingOfNamedValues) {
    const std::string file = folder.File("demo-values.vrjob");
    EXPECT_THROW(MadeDemoJobs().Write("demo-values", file), StartError);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(DemoJobsTest, TheAsciiServiceHasTheSameMeasurementsByNumberAndByName) {
    const json demo = DemoConfig(MadeDemoJobs(), "ascii").at("vor:control");
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

    const json values = DemoConfig(MadeDemoJobs(Values("ba")), "ascii", "demo-values").at("vor:control");
    EXPECT_EQ(values.at("registerAssemblyList").at(0).at("blocks").at(2).at("dataSource"), "values/stamp");
    EXPECT_EQ(values.at("outputs").at("map"), json::array());
}

TEST_F(DemoJobsTest, WritesAnArchiveWithTheServicesFiles) {
    const std::string file = folder.File("jobs/demo.vrjob");
    const DemoJobs jobs = MadeDemoJobs();
    jobs.Write("demo", file);
    const auto entries = VorCommon::ArchiveFile(file).Read();
    const auto text = [&](const std::string& entry) {
        const auto& bytes = *entries.at(entry);
        return std::string(bytes.begin(), bytes.end());
    };
    EXPECT_EQ(entries.size(), 2U);
    EXPECT_EQ(text("controls/modbus/config.json"), DemoConfig(jobs, "modbus").dump(-1, ' '));
    EXPECT_EQ(text("controls/ascii/config.json"), DemoConfig(jobs, "ascii").dump(-1, ' '));
}

TEST_F(DemoJobsTest, TheArchiveIsListedByItsCommonTool) {
    const std::string file = folder.File("demo.vrjob");
    MadeDemoJobs().Write("demo", file);
    int status = 0;
    const std::string listed = OutputOf("sqlite3 '" + file + "' -A --list 2>&1", status);
    if (status == 127) {
        GTEST_SKIP() << "sqlite3 isn't installed";
    }
    EXPECT_EQ(status, 0);
    EXPECT_NE(("\n" + listed).find("\ncontrols/modbus/config.json\n"), std::string::npos) << listed;
}

TEST_F(DemoJobsTest, NamesAFileThatCantBeWritten) {
    Tests::WriteWholeFile(folder.File("jobs"), "");
    try {
        MadeDemoJobs().Write("demo", folder.File("jobs/demo.vrjob"));
        FAIL() << "written into a file";
    } catch (const StartError& error) {
        EXPECT_NE(std::string(error.what()).find(folder.File("jobs")), std::string::npos) << error.what();
    }
}

TEST_F(DemoJobsTest, AnEntryIsRepeatedForEachValueUpToItsNumber) {
    const std::string demo = R"({"modbus": {"demo-values": {"commands": [{"command": "add", "document": {"blocks": [
        {"forEachValue": 2, "type": "MeasurementValue", "displayName": "the {value}", "dataSource": "values/{value}"},
        {"type": "MeasurementDecision", "dataSource": "values/c"}]}}]}}})";
    const json config = DemoConfig(Made(demo, Values("cab")), "modbus", "demo-values");
    EXPECT_EQ(Layout(config),
              (std::vector<std::string>{"MeasurementValue values/c 0-2", "MeasurementValue values/a 2-2",
                                        "MeasurementDecision values/c 4-1"}));
    EXPECT_EQ(Blocks(config).at(1).at("displayName"), "the a");
    EXPECT_EQ(config.at("vor:control").at("enabled"), false);
}

TEST_F(DemoJobsTest, AServiceWithoutAFileHasNoPartInTheJobs) {
    std::filesystem::copy_file(Tests::BuiltFile("plugins/modbus.so"), folder.File("modbus.so"));
    VorPlugin::PluginManager plugins;
    plugins.LoadFolder(folder.Path());
    Tests::MemoryStore store;
    DemoJobs(plugins, Scan::GeneratePart()).Fill("demo", store);
    EXPECT_TRUE(store.files.empty());
}

TEST_F(DemoJobsTest, APlugInThatIsLeftOutHasNoPartInTheJobs) {
    std::filesystem::copy_file(Tests::BuiltFile("test-plugins/FactoryThrows.so"), folder.File("FactoryThrows.so"));
    Tests::WriteWholeFile(folder.File("FactoryThrows.demo.json"), R"({"factoryThrows": {"demo": {}}})");
    EXPECT_NO_THROW(Made(R"({"modbus": {"demo": {}}})"));
}

TEST_F(DemoJobsTest, NamesTheFileWithAFault) {
    const std::string file = folder.File("modbus.demo.json") + ": ";
    EXPECT_EQ(Refusal("{").find(file + "Line 1, column 2: "), 0U) << Refusal("{");
    EXPECT_EQ(Refusal(R"({"abacus": {"demo": {}}})"), file + "there is no service 'abacus'. Expected one of: modbus.");
    EXPECT_EQ(Refusal(R"({"modbus": {"demo": {"commands": [{"command": "burn"}]}}})"),
              file + "there is no command 'burn'. Expected one of: add, remove, removeAll, compact, update.");
    EXPECT_EQ(Refusal(R"({"modbus": {"demo": {"commands": [{}]}}})").find(file), 0U);
    EXPECT_EQ(Refusal(R"({"modbus": 7})"), file + "modbus: expected an object but got number.");
    EXPECT_EQ(Refusal(R"({"modbus": {"demo": {"parameters": {"prot": 1}}}})").find(file + "prot: unknown key."), 0U);
    EXPECT_EQ(Refusal(R"({"modbus": {"demo": {"parameters": {"port": -1}}}})").find(file), 0U);
}

} // namespace
} // namespace Sensor::Jobs
