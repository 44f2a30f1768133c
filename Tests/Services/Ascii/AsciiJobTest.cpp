// What the service saves in the job. It runs in a module and gets results from the result hub.

#include "Services/Ascii/AsciiProtocol.h"
#include "Tests/Services/Ascii/TextClient.h"
#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/MainLoopThread.h"
#include "Tests/Support/MemoryStore.h"
#include "Tests/Support/ServiceProperties.h"
#include "Tests/Support/TestService.h"
#include "Tests/Support/Threads.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"
#include "VorControl/Control/ControlModule.h"
#include "VorControl/Control/IControlInstance.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Services::Ascii {
namespace {

using nlohmann::json;
using VorCommon::PersistDomain;
using VorControl::ControlProtocol::ProtocolStatus;

constexpr const char* ConfigPath = "/controls/ascii/config.json";

json Config(const json& parameters, const json& blocks, const json& map, bool enabled = true) {
    return {{"version", "1"},
            {"vor:control",
             {{"enabled", enabled},
              {"parameters", parameters},
              {"parametersVersion", "1"},
              {"outputs", {{"map", map}}},
              {"registerAssemblyList", {{{"properties", {{"id", "registerAssembly-0"}}}, {"blocks", blocks}}}},
              {"registerAssemblyVersionList", {{{"id", "registerAssembly-0"}, {"version", "1"}}}}}}};
}

const json Blocks = {{{"type", "MeasurementValue"}, {"dataSource", "a"}, {"outputId", 0}},
                     {{"type", "Stamp"}, {"dataSource", "s"}, {"outputId", 7}}};
const json Map = {{{"outputId", "depth"}, {"source", "b"}}, {{"outputId", "height"}, {"source", "a"}}};
const std::string List = "OK,0,\"a\",7,\"s\",\"depth\",\"b\",\"height\",\"a\"";

class AsciiJobTest : public testing::Test {
protected:
    AsciiJobTest() {
        plugin.Add(Tests::TestPlugin::Info("ascii"),
                   [](const VorControl::ControlProtocol::ControlProtocolEnviron& record) {
                       return std::make_shared<AsciiProtocol>(record);
                   });
        plugin.Publish(plugins);
        module = std::make_unique<VorControl::ControlModule>(plugins, environ.router, environ.Record());
    }

    VorControl::IControlInstance& Instance() { return module->Manager().GetInstance("ascii"); }

    void Load(const json& config) { LoadText(config.dump()); }
    void LoadText(const std::string& text) {
        store.files[ConfigPath] = text;
        module->Manager().LoadPersistDomain(PersistDomain::Job, store);
    }
    /// Loads a job that has nothing for the service.
    void LoadWithoutSection() {
        store.files.clear();
        module->Manager().LoadPersistDomain(PersistDomain::Job, store);
    }
    json Save() {
        store.files.clear();
        module->Manager().SavePersistDomain(PersistDomain::Job, store);
        return json::parse(store.files.at(ConfigPath));
    }

    std::uint16_t Port() { return Tests::PortOf(Tests::PropertiesOf(Instance())["address"]); }

    bool WaitForOutputs(TextClient& client, const std::string& expected) {
        return Tests::WaitUntil([&] { return client.Ask("OUTPUTS") == expected; });
    }

    Tests::MainLoopThread mainLoop;
    Tests::ControlEnviron environ;
    VorPlugin::PluginManager plugins;
    Tests::TestPlugin plugin;
    Tests::MemoryStore store;
    std::unique_ptr<VorControl::ControlModule> module;
};

TEST_F(AsciiJobTest, IsDisabledUntilAJobEnablesIt) {
    EXPECT_FALSE(Instance().IsEnabled());
    EXPECT_EQ(Instance().DisplayName(), "ascii service");
    Load({{"version", "1"},
          {"vor:control", {{"enabled", true}, {"parameters", {{"port", 0}}}, {"parametersVersion", "1"}}}});
    EXPECT_EQ(Instance().GetProtocolStatus(), ProtocolStatus::Running);
    TextClient client(Port());
    EXPECT_EQ(client.Ask("OUTPUTS"), "OK") << "a job without outputs";
    Load(Config({}, Blocks, Map, false));
    EXPECT_EQ(Instance().GetProtocolStatus(), ProtocolStatus::Stopped);
    EXPECT_TRUE(client.WaitForClose());
}

TEST_F(AsciiJobTest, ServesTheOutputsOfItsJob) {
    Load(Config({{"port", 0}, {"delimiter", ";"}}, Blocks, Map));
    TextClient client(Port());
    EXPECT_EQ(client.Ask("OUTPUTS"), "OK;0;\"a\";7;\"s\";\"depth\";\"b\";\"height\";\"a\"");
    EXPECT_EQ(client.Ask("RESULT"), "OK;INVALID;INVALID;INVALID;INVALID;INVALID;INVALID");
}

TEST_F(AsciiJobTest, SavesWhatItLoaded) {
    Load(Config({{"port", 0}, {"terminator", "\n"}, {"invalidText", "-"}}, Blocks, Map));
    const json saved = Save();
    const json& section = saved["vor:control"];
    EXPECT_EQ(section["enabled"], true);
    EXPECT_EQ(section["parameters"]["terminator"], "\n");
    EXPECT_EQ(section["parameters"]["invalidText"], "-");
    EXPECT_EQ(section["parametersVersion"], "1");
    ASSERT_EQ(section["outputs"]["map"].size(), 2u);
    EXPECT_EQ(section["outputs"]["map"][0]["outputId"], "depth");
    EXPECT_EQ(section["outputs"]["map"][0]["source"], "b");
    ASSERT_EQ(section["registerAssemblyList"].size(), 1u);
    EXPECT_EQ(section["registerAssemblyList"][0]["blocks"][1]["outputId"], 7);
    EXPECT_EQ(section["registerAssemblyList"][0]["attributes"]["isGlobalAddressSpaceUsed"], false);
    EXPECT_EQ(section["registerAssemblyVersionList"], json({{{"id", "registerAssembly-0"}, {"version", "1"}}}));
    Load(saved);
    EXPECT_EQ(Save(), saved) << "loaded and saved again it is the same";
}

TEST_F(AsciiJobTest, GivesClientsTheOutputsOfAnotherJobWhileTheyStay) {
    Load(Config({{"port", 0}}, Blocks, Map));
    TextClient client(Port());
    EXPECT_TRUE(WaitForOutputs(client, List));
    Load(Config({{"port", 0}}, json::array({Blocks[0]}), json::array({Map[1]})));
    EXPECT_TRUE(WaitForOutputs(client, "OK,0,\"a\",\"height\",\"a\""));
    Load({{"version", "1"}, {"vor:control", {{"enabled", true}}}});
    EXPECT_EQ(client.Ask("OUTPUTS"), "OK,0,\"a\",\"height\",\"a\"")
        << "a job that says nothing of them changes nothing";
}

TEST_F(AsciiJobTest, KeepsItsSettingsWhenAJobHoldsNoneOfIt) {
    Load(Config({{"port", 0}, {"delimiter", ";"}}, Blocks, Map));
    const std::uint16_t port = Port();
    TextClient client(port);
    const std::string outputs = client.Ask("OUTPUTS");
    EXPECT_EQ(outputs, "OK;0;\"a\";7;\"s\";\"depth\";\"b\";\"height\";\"a\"");
    LoadWithoutSection();
    EXPECT_EQ(Instance().GetProtocolStatus(), ProtocolStatus::Running);
    EXPECT_EQ(Port(), port);
    EXPECT_EQ(client.Ask("OUTPUTS"), outputs) << "the connection is the same, too";
}

TEST_F(AsciiJobTest, HasNoOutputsWhenTheFirstJobHoldsNoneOfIt) {
    LoadWithoutSection();
    EXPECT_FALSE(Instance().IsEnabled());
    const auto params = Instance().BeginUpdateParameters();
    Vor::Properties::JsonSerializer::Deserialize(*params, {{"port", 0}});
    Instance().ParamsUpdate();
    Instance().EndUpdateParameters();
    Instance().Enable(true);
    TextClient client(Port());
    EXPECT_EQ(client.Ask("OUTPUTS"), "OK");
    const json section = Save()["vor:control"];
    EXPECT_EQ(section["outputs"]["map"], json::array());
    EXPECT_EQ(section["registerAssemblyList"][0]["blocks"], json::array());
}

TEST_F(AsciiJobTest, HasItsDefaultsWithADamagedJob) {
    Load(Config({{"port", 0}}, Blocks, Map));
    const Vor::LogCapture log;
    json config = Config({{"port", 0}}, Blocks, Map);
    config["vor:control"]["outputs"]["map"] = {{{"outputId", 7}}};
    Load(config);
    TextClient client(Port());
    EXPECT_TRUE(WaitForOutputs(client, "OK,0,\"a\",7,\"s\"")) << "a map that can't be read is empty";
    LoadText("{");
    EXPECT_EQ(client.Ask("RESULT 0"), "OK,INVALID") << "the service runs on";
}

TEST_F(AsciiJobTest, GoesOnWithParametersThatDoNotGoTogether) {
    Load(Config({{"port", 0}}, Blocks, Map));
    TextClient client(Port());
    const Vor::LogCapture log;
    Load(Config({{"port", 0}, {"decimalSeparator", 1}}, Blocks, json::array({Map[0]})));
    EXPECT_TRUE(WaitForOutputs(client, "OK,0,\"a\",7,\"s\",\"depth\",\"b\"")) << "the rest of the job is there";
    EXPECT_EQ(Save()["vor:control"]["parameters"]["decimalSeparator"], 1)
        << "and the parameters are kept to be put right";
}

TEST_F(AsciiJobTest, KeepsNothingInTheWorkspace) {
    module->Manager().SavePersistDomain(PersistDomain::Workspace, store);
    EXPECT_TRUE(store.files.empty());
    EXPECT_EQ(Instance().PersistenceProvider()->Load(PersistDomain::Workspace, json::object()),
              VorControl::Persistence::PersistLoadResult::None);
}

TEST_F(AsciiJobTest, GoesBackToItsDefaults) {
    Load(Config({{"port", 0}, {"delimiter", ";"}}, Blocks, Map));
    module->Manager().InitPersistDomain(PersistDomain::Job, store);
    EXPECT_FALSE(Instance().IsEnabled());
    const json section = Save()["vor:control"];
    EXPECT_EQ(section["parameters"]["delimiter"], ",");
    EXPECT_EQ(section["parameters"]["port"], 8190);
    EXPECT_EQ(section["outputs"]["map"], json::array());
    EXPECT_EQ(section["registerAssemblyList"][0]["blocks"], json::array());
}

} // namespace
} // namespace Services::Ascii
