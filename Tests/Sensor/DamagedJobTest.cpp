#include "Sensor/Scan/PartGenerator.h"
#include "Sensor/ServiceHost.h"
#include "Sensor/VirtualSensor.h"
#include "Tests/Sensor/Jobs/MadeDemoJobs.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorCommon/ArchiveFile.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor {
namespace {

using nlohmann::json;
using VorCommon::ArchiveFile;
using VorCommon::PersistDomain;

constexpr const char* Entry = "controls/modbus/config.json";
constexpr const char* AssemblyId = "registerAssembly-0";
constexpr std::size_t DemoBlocks = 12;

/// A sensor with the job "demo" loaded, before it loads another one.
class DamagedJob : public ::testing::Test {
protected:
    DamagedJob()
        : host({.dataFolder = folder.Path(), .job = "demo"}, sensor) {
        Write("demo", config.dump());
        host.LoadPlugins(Tests::BuiltFile("plugins"));
        host.CreateServices();
        host.Persistence().Load();
        ExpectRunning();
        log.Clear();
    }

    static json DemoConfig() {
        json demo = Jobs::DemoConfig(Jobs::MadeDemoJobs(), "modbus");
        demo["vor:control"]["parameters"]["port"] = 0;
        return demo;
    }

    void Write(const std::string& job, const std::string& text) const {
        ArchiveFile(folder.File("jobs/" + job + ".vrjob"))
            .Write({{Entry, std::make_shared<const std::vector<unsigned char>>(text.begin(), text.end())}});
    }

    json& Section() { return config["vor:control"]; }
    json& Assemblies() { return Section()["registerAssemblyList"]; }
    json& Versions() { return Section()["registerAssemblyVersionList"]; }
    json& Blocks() { return Assemblies()[0]["blocks"]; }

    /// Loads a job with `config`. `modified` is whether it counts as modified then.
    void Load(bool modified) {
        Write("other", config.dump());
        host.Persistence().LoadJob("other");
        EXPECT_EQ(host.Persistence().LoadedJob(), "other.vrjob");
        EXPECT_EQ(host.Persistence().IsModified(PersistDomain::Job), modified);
    }

    VorControl::IControlInstance& Modbus() { return host.Services().GetInstance("modbus"); }
    std::size_t BlockCount() { return Modbus().RegisterAssembly(AssemblyId)->AddedRegisterBlocksCount(); }

    void ExpectRunning() {
        EXPECT_EQ(Modbus().GetProtocolStatus(), VorControl::ControlProtocol::ProtocolStatus::Running);
    }

    /// Expects that the service runs, that the job can be saved, and that the demo job can be loaded again.
    void ExpectTheSensorRunsOn() {
        ExpectRunning();
        EXPECT_EQ(host.Persistence().Save(PersistDomain::Job).get().status, yOK);
        host.Persistence().LoadJob("demo");
        ExpectRunning();
        EXPECT_EQ(BlockCount(), DemoBlocks);
    }

    std::size_t CountWith(const std::string& part) const {
        std::size_t count = 0;
        for (const Vor::LogRecord& record : log.Records()) {
            count += record.text.find(part) != std::string::npos ? 1 : 0;
        }
        return count;
    }

    Tests::TempFolder folder;
    Vor::LogCapture log;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    const Scan::Recording recording = Scan::GeneratePart();
    VirtualSensor sensor{recording, {}};
    ServiceHost host;
    json config = DemoConfig();
};

TEST_F(DamagedJob, WithoutVersionsOfItsMapsIsLoadedAndTold) {
    Section().erase("registerAssemblyVersionList");
    Blocks().erase(0);
    Load(true);
    EXPECT_EQ(BlockCount(), DemoBlocks - 1);
    EXPECT_GT(CountWith("connection map registerAssembly-0 configuration does not have version information"), 0U);
    ExpectTheSensorRunsOn();
}

TEST_F(DamagedJob, OfAnotherVersionIsLoadedAndTold) {
    Versions()[0]["version"] = "0";
    Section()["parametersVersion"] = "9";
    Blocks().erase(0);
    Load(true);
    EXPECT_EQ(BlockCount(), DemoBlocks - 1);
    EXPECT_EQ(log.Count(Vor::UserWarning,
                        "Modbus TCP connection map Register Assembly 0 was upgraded from version \"0\" to \"1\". This "
                        "upgrade path is not supported. Please review the connection map details."),
              1U);
    EXPECT_EQ(log.Count(Vor::UserWarning,
                        "Modbus TCP parameters was upgraded from version \"9\" to \"1\". This upgrade path is not "
                        "supported. Please review the parameter details."),
              1U);
    ExpectTheSensorRunsOn();
}

TEST_F(DamagedJob, WithAnUnknownMapIsLoadedWithoutIt) {
    json unknown = Assemblies()[0];
    unknown["properties"]["id"] = "registerAssembly-9";
    Assemblies().insert(Assemblies().begin(), unknown);
    Versions().insert(Versions().begin(), json{{"id", "registerAssembly-9"}, {"version", "1"}});
    Load(true);
    EXPECT_EQ(BlockCount(), DemoBlocks);
    EXPECT_EQ(CountWith("because the connection map is no longer supported by the service."), 1U);
    ExpectTheSensorRunsOn();
}

TEST_F(DamagedJob, WithoutTheMapLeavesTheFormerOne) {
    Assemblies()[0]["properties"]["id"] = "registerAssembly-9";
    Versions()[0]["id"] = "registerAssembly-9";
    Blocks() = json::array();
    Load(true);
    EXPECT_EQ(BlockCount(), DemoBlocks);
    EXPECT_EQ(CountWith("Modbus TCP expected information for connection map Register Assembly 0 but not found"), 1U);
    ExpectTheSensorRunsOn();
}

TEST_F(DamagedJob, WithoutAnyMapsLeavesTheFormerOne) {
    Section().erase("registerAssemblyList");
    Load(false);
    EXPECT_EQ(BlockCount(), DemoBlocks);
    EXPECT_EQ(CountWith("Modbus TCP expected information for connection maps but none are found"), 1U);
    ExpectTheSensorRunsOn();
}

TEST_F(DamagedJob, WithListsOfDifferentLengthsLoadsNoMap) {
    Versions().push_back(Versions()[0]);
    Blocks() = json::array();
    Load(true);
    EXPECT_EQ(BlockCount(), DemoBlocks);
    EXPECT_EQ(CountWith("configuration size (1) and the version list size (2) are not the same."), 1U);
    ExpectTheSensorRunsOn();
}

TEST_F(DamagedJob, WithAMapTwiceTakesTheLast) {
    json second = Assemblies()[0];
    second["blocks"].erase(0);
    Assemblies().push_back(second);
    Versions().push_back(Versions()[0]);
    Load(false);
    EXPECT_EQ(BlockCount(), DemoBlocks - 1);
    ExpectTheSensorRunsOn();
}

TEST_F(DamagedJob, WithTwoBlocksAtOneAddressLeavesAnEmptyMap) {
    Blocks().push_back(Blocks()[0]);
    Load(true);
    EXPECT_EQ(BlockCount(), 0U);
    EXPECT_EQ(CountWith("encountered an error while updating connection map registerAssembly-0."), 1U);
    ExpectTheSensorRunsOn();
}

TEST_F(DamagedJob, WithBlocksAndParametersOfTheWrongKindLeavesDefaults) {
    Blocks() = {7, nullptr, {{"type", 7}}};
    Section()["parameters"]["unitId"] = "one";
    Load(true);
    EXPECT_EQ(BlockCount(), 0U);
    ExpectTheSensorRunsOn();
}

TEST_F(DamagedJob, ThatIsNoJsonOrNoUtf8IsRefusedAndTheRunningOneStays) {
    const std::string text = config.dump();
    std::string foreign = text;
    foreign[text.find("Maximum")] = '\xFC';
    for (const std::string& damaged : {text.substr(0, text.size() / 2), foreign, std::string(1, '\0'), std::string()}) {
        Write("other", damaged);
        EXPECT_THROW(host.Persistence().LoadJob("other"), Vor::Exception);
        EXPECT_EQ(host.Persistence().LoadedJob(), "demo.vrjob");
        EXPECT_EQ(BlockCount(), DemoBlocks);
        ExpectRunning();
    }
    EXPECT_EQ(CountWith("entry 'controls/modbus/config.json' is no JSON"), 4U);
    ExpectTheSensorRunsOn();
}

TEST_F(DamagedJob, OrOneWithAFullMapIsWhole) {
    Blocks() =
        json::array({{{"type", "String"}, {"dataSource", "profile/text"}, {"outputId", 0}, {"registerCount", 1}}});
    for (int address = 1; address < 65535; ++address) {
        Blocks().push_back({{"type", "MeasurementDecision"}, {"dataSource", "profile/max"}, {"outputId", address}});
    }
    Load(false);
    EXPECT_EQ(BlockCount(), 65535U);
    ExpectTheSensorRunsOn();
}

} // namespace
} // namespace Sensor
