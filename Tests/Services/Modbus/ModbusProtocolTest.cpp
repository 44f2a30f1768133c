#include "Services/Modbus/ModbusProtocol.h"

#include "Tests/Services/Common/ServiceModule.h"
#include "Tests/Services/Modbus/ModbusServer.h"
#include "Tests/Services/Modbus/RawClient.h"
#include "Tests/Services/Modbus/Results.h"
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

#include <chrono>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Services::Modbus {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using VorCommon::PersistDomain;
using VorControl::ControlProtocol::ProtocolStatus;

constexpr const char* ConfigPath = "/controls/modbus/config.json";
json Block(const char* type, const char* source, unsigned address) {
    json block = {{"type", type}, {"outputId", address}};
    if (*source != '\0') {
        block["dataSource"] = source;
    }
    return block;
}

json Config(const json& parameters, const json& blocks, bool enabled = true) {
    return {{"version", "1"},
            {"vor:control",
             {{"enabled", enabled},
              {"parameters", parameters},
              {"parametersVersion", "1"},
              {"registerAssemblyList", {{{"properties", {{"id", AssemblyId}}}, {"blocks", blocks}}}},
              {"registerAssemblyVersionList", {{{"id", AssemblyId}, {"version", "1"}}}}}}};
}

const json TwoBlocks = {Block("Measurement", "profile/max", 0), Block("MeasurementValue", "profile/min", 3)};

/// The service as in an application: in a module, with results from the result hub, and its settings in a job.
class ModbusProtocolTest : public testing::Test {
protected:
    ModbusProtocolTest() {
        plugin.Add(Tests::TestPlugin::Info("modbus"),
                   [this](const VorControl::ControlProtocol::ControlProtocolEnviron& record) {
                       auto made = std::make_shared<ModbusProtocol>(record);
                       service = made;
                       return made;
                   });
        plugin.Publish(plugins);
        module = std::make_unique<VorControl::ControlModule>(plugins, environ.router, environ.Record());
    }

    VorControl::IControlInstance& Instance() { return module->Manager().GetInstance("modbus"); }

    void Load(const json& config) {
        store.files[ConfigPath] = config.dump();
        module->Manager().LoadPersistDomain(PersistDomain::Job, store);
    }

    json Properties() { return Tests::PropertiesOf(Instance()); }

    std::string Address() { return Properties()["address"]; }
    std::string Failure() { return Properties()["failure"]; }
    int Status() { return Properties()["status"]; }

    std::uint16_t Port() { return Tests::PortOf(Address()); }

    /// The bytes of the registers that a client reads; for an exception, the function and the exception code.
    Bytes Read(unsigned address, unsigned count) {
        RawClient client(Port());
        const Bytes reply = client.Ask(ReadRequest(1, address, count));
        return reply.size() < 9 || reply[7] != 3 ? Bytes(reply.begin() + 7, reply.end())
                                                 : Bytes(reply.begin() + 9, reply.end());
    }

    void Publish(const Results& results) { environ.hub.Publish(results.Get()); }

    bool WaitForRegisters(unsigned address, const Bytes& expected) {
        const auto count = static_cast<unsigned>(expected.size() / 2);
        return Tests::WaitUntil([&] { return Read(address, count) == expected; });
    }

    void ChangeParameters(const json& values) {
        auto& params = dynamic_cast<Vor::Params::Group&>(*Instance().BeginUpdateParameters());
        Vor::Properties::JsonSerializer::Deserialize(params, values);
        try {
            Instance().ParamsUpdate();
        } catch (...) {
            Instance().EndUpdateParameters();
            throw;
        }
        Instance().EndUpdateParameters();
    }

    Tests::ControlEnviron environ;
    VorPlugin::PluginManager plugins;
    Tests::TestPlugin plugin;
    Tests::MemoryStore store;
    std::weak_ptr<ModbusProtocol> service;
    std::unique_ptr<VorControl::ControlModule> module;
};

TEST_F(ModbusProtocolTest, IsStoppedUntilItIsEnabled) {
    EXPECT_EQ(Status(), 1);
    EXPECT_EQ(Address(), "");
    EXPECT_EQ(Failure(), "");
    Load(Config({{"port", 0}}, TwoBlocks, false));
    EXPECT_EQ(Status(), 1);
    EXPECT_EQ(Address(), "");
}

TEST_F(ModbusProtocolTest, ServesTheRegistersOfItsJob) {
    Load(Config({{"port", 0}}, TwoBlocks));
    EXPECT_EQ(Status(), 0);
    EXPECT_EQ(Address(), "tcp://127.0.0.1:" + std::to_string(Port()));
    EXPECT_NE(Port(), 0);
    EXPECT_EQ(Failure(), "");
    EXPECT_EQ(Read(0, 5), Words({0x8000, 0, 2, 0x8000, 0}));
    Publish(Results().Measurement("profile/max", 1.5, 1).Measurement("profile/min", -0.002));
    EXPECT_TRUE(WaitForRegisters(0, Words({0, 1500, 1, 0xFFFF, 0xFFFE})));
    EXPECT_EQ(Read(5, 1), (Bytes{0x83, 2}));
}

TEST_F(ModbusProtocolTest, CountsWhatItsClientsDoAndWhatTheScanBrings) {
    Load(Config({{"port", 0}, {"maxConnections", 1}}, TwoBlocks));
    RawClient client(Port());
    const Bytes good = ReadRequest(1, 0, 5);
    const Bytes bad = ReadRequest(1, 500, 1);
    std::size_t received = 0;
    for (int i = 0; i < 5; ++i) {
        received += client.Ask(good).size();
    }
    for (int i = 0; i < 3; ++i) {
        received += client.Ask(bad).size();
    }
    EXPECT_EQ(received, 5U * 19 + 3U * 9);
    RawClient refused(Port());
    EXPECT_TRUE(refused.WaitForClose());
    for (int i = 1; i <= 4; ++i) {
        Publish(Results().Measurement("profile/max", i));
    }

    const json expected = {{"dropCount", 0},      {"connected", 1},     {"refused", 1},         {"requests", 8},
                           {"exceptions", 3},     {"bytesIn", 8 * 12},  {"bytesOut", received}, {"resultsReceived", 4},
                           {"resultsApplied", 4}, {"resultsDropped", 0}};
    const auto running = service.lock();
    EXPECT_TRUE(Tests::WaitUntil([&] { return Tests::CountsOf(*running) == expected; })) << Tests::CountsOf(*running);
    const json properties = Properties();
    for (const auto& [name, value] : expected.items()) {
        EXPECT_EQ(properties.at(name), value) << name;
    }
}

TEST_F(ModbusProtocolTest, ReadsFollowTheByteOrderAtOnce) {
    Load(Config({{"port", 0}, {"byteOrder", 1}}, TwoBlocks));
    Publish(Results().Measurement("profile/max", 70000, 1));
    EXPECT_TRUE(WaitForRegisters(0, Words({70000000 & 0xFFFF, 70000000 >> 16, 1})));
    const std::uint16_t port = Port();
    ChangeParameters({{"byteOrder", 0}});
    EXPECT_EQ(Read(0, 3), Words({70000000 >> 16, 70000000 & 0xFFFF, 1})) << "also without a further frame";
    EXPECT_EQ(Port(), port);
}

TEST_F(ModbusProtocolTest, ShowsOneFrameWholeToEachRequest) {
    json blocks;
    for (unsigned i = 0; i < 50; ++i) {
        blocks.push_back(Block("MeasurementValue", ("values/" + std::to_string(i)).c_str(), 2 * i));
    }
    Load(Config({{"port", 0}}, blocks));
    std::vector<Results> frames;
    for (int frame = 1; frame <= 200; ++frame) {
        Results results;
        for (unsigned i = 0; i < 50; ++i) {
            results.Measurement("values/" + std::to_string(i), frame / 1000.0);
        }
        frames.push_back(results);
    }
    RawClient client(Port());
    for (int turn = 0; turn < 10; ++turn) {
        for (const Results& frame : frames) {
            Publish(frame);
            const Bytes reply = client.Ask(ReadRequest(1, 0, 100));
            ASSERT_EQ(reply.size(), 209u);
            for (std::size_t i = 9; i < reply.size(); ++i) {
                ASSERT_EQ(reply[i], reply[9 + (i - 9) % 4]);
            }
        }
    }
    EXPECT_TRUE(WaitForRegisters(0, Words({0, 200})));
}

TEST_F(ModbusProtocolTest, FollowsAnEditOfItsMap) {
    Load(Config({{"port", 0}}, TwoBlocks));
    Publish(Results().Measurement("profile/max", 1));
    EXPECT_TRUE(WaitForRegisters(0, Words({0, 1000, 1})));
    Instance().BeginUpdateRegisterAssembly();
    AddBlocks(*Instance().RegisterAssembly(AssemblyId), {{"MeasurementValue", "profile/mean", 100}});
    Instance().RegisterAssemblyUpdate(AssemblyId);
    Instance().EndUpdateRegisterAssembly(AssemblyId);
    EXPECT_EQ(Read(100, 2), Words({0x8000, 0}));
    EXPECT_EQ(Read(0, 3), Words({0, 1000, 1})) << "the other blocks keep their values";
    Publish(Results().Measurement("profile/mean", 0.5));
    EXPECT_TRUE(WaitForRegisters(100, Words({0, 500})));
}

TEST_F(ModbusProtocolTest, StartsWithoutValuesWhenItIsEnabledAgain) {
    Load(Config({{"port", 0}}, TwoBlocks));
    Publish(Results().Measurement("profile/max", 1));
    EXPECT_TRUE(WaitForRegisters(0, Words({0, 1000, 1})));
    Instance().Enable(false);
    EXPECT_EQ(Status(), 1);
    EXPECT_EQ(Address(), "");
    Instance().Enable(true);
    EXPECT_EQ(Status(), 0);
    EXPECT_EQ(Read(0, 3), Words({0x8000, 0, 2}));
    Publish(Results().Measurement("profile/max", 2));
    EXPECT_TRUE(WaitForRegisters(0, Words({0, 2000, 1})));
}

TEST_F(ModbusProtocolTest, SaysWhyItCannotStartAndTriesAgainAtTheNextLoad) {
    AddressRegisters none;
    Common::ServiceCounters counters;
    auto other = std::make_unique<ModbusServer>(none, counters);
    const json config = Config({{"port", other->Port()}}, TwoBlocks);
    const std::string failure = "port " + std::to_string(other->Port()) + " on 127.0.0.1 is in use";
    Vor::LogCapture log;
    Load(config);
    EXPECT_EQ(Status(), 4);
    EXPECT_EQ(Failure(), failure);
    EXPECT_EQ(Address(), "");
    EXPECT_TRUE(Instance().IsEnabled());
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Protocol (modbus) failed to start (" + failure + ")."), 1u);
    other.reset();
    Load(config);
    EXPECT_EQ(Status(), 0) << Failure();
    EXPECT_EQ(Failure(), "");
}

TEST_F(ModbusProtocolTest, StaysRunningAcrossALoadOfTheSameJob) {
    Load(Config({{"port", 0}}, TwoBlocks));
    RawClient client(Port());
    EXPECT_EQ(client.Ask(ReadRequest(1, 0, 1)).size(), 11u);
    Load(Config({{"port", 0}, {"unitId", 7}}, TwoBlocks));
    EXPECT_EQ(Status(), 0);
    EXPECT_EQ(client.Ask(ReadRequest(1, 0, 1, 7)).size(), 11u) << "the connection is the same";
    EXPECT_EQ(client.Ask(ReadRequest(1, 0, 1, 1)), (Bytes{0, 1, 0, 0, 0, 3, 1, 0x83, 11}));
}

TEST_F(ModbusProtocolTest, KeepsClientsAndTheirCommandAcrossALoadOfAnotherMap) {
    Load(Config({{"port", 0}}, {Block("ControlInput", "", 1000), Block("ControlOutput", "", 1100),
                                Block("System", "", 1200), Block("Scanner", "", 1300)}));
    RawClient client(Port());
    const Bytes command = {0, 1, 0, 0, 0, 13, 1, 16, 0x03, 0xE8, 0, 3, 6, 0, 9, 0, 7, 0xAB, 0xCD};
    EXPECT_EQ(client.Ask(command), (Bytes{0, 1, 0, 0, 0, 6, 1, 16, 0x03, 0xE8, 0, 3}));
    EXPECT_EQ(Read(1100, 3), Words({9, 3, 0})) << "7 is no command";

    const json moved = {Block("MeasurementValue", "profile/max", 0), Block("ControlInput", "", 10),
                        Block("ControlOutput", "", 80)};
    Load(Config({{"port", 0}}, moved));
    EXPECT_EQ(client.Ask(ReadRequest(1, 10, 3)), Bytes({0, 1, 0, 0, 0, 9, 1, 3, 6}) + Words({9, 7, 0xABCD}))
        << "the connection is the same, and so is what the client wrote";
    EXPECT_EQ(Read(80, 3), Words({9, 3, 0}));
    EXPECT_EQ(Read(1000, 65), (Bytes{0x83, 2}));
    EXPECT_EQ(client.Ask({0, 1, 0, 0, 0, 6, 1, 6, 0, 10, 0, 9}).size(), 12u);
    EXPECT_EQ(Read(80, 3), Words({9, 3, 0})) << "the same request word runs nothing";

    Load(Config({{"port", 0}}, TwoBlocks));
    EXPECT_EQ(client.Ask({0, 1, 0, 0, 0, 6, 1, 6, 0, 10, 0, 9}), (Bytes{0, 1, 0, 0, 0, 3, 1, 0x86, 2}))
        << "a map without a command block takes no commands";
    EXPECT_EQ(client.Ask(ReadRequest(1, 0, 1)).size(), 11u);
    Load(Config({{"port", 0}}, moved));
    EXPECT_EQ(client.Ask(ReadRequest(1, 10, 3)), Bytes({0, 1, 0, 0, 0, 9, 1, 3, 6}) + Words({9, 7, 0xABCD}));
}

TEST_F(ModbusProtocolTest, MovesToAnotherPortAndKeepsItsValues) {
    Load(Config({{"port", 0}}, TwoBlocks));
    Publish(Results().Measurement("profile/max", 1));
    EXPECT_TRUE(WaitForRegisters(0, Words({0, 1000, 1})));
    const std::uint16_t former = Port();
    AddressRegisters none;
    Common::ServiceCounters counters;
    auto other = std::make_unique<ModbusServer>(none, counters);
    const std::uint16_t taken = other->Port();
    EXPECT_THROW(ChangeParameters({{"port", taken}}), Vor::Exception);
    EXPECT_EQ(Port(), former) << "it goes on where it was";
    EXPECT_EQ(Status(), 0);
    EXPECT_EQ(Failure(), "port " + std::to_string(taken) + " on 127.0.0.1 is in use");
    EXPECT_EQ(Read(0, 3), Words({0, 1000, 1}));
    other.reset();
    ChangeParameters({{"port", taken}});
    EXPECT_EQ(Port(), taken);
    EXPECT_EQ(Failure(), "");
    EXPECT_EQ(Read(0, 3), Words({0, 1000, 1}));
    EXPECT_FALSE(RawClient(former).Connected());
}

TEST_F(ModbusProtocolTest, RefusesParametersOutsideTheirLimitsAndChangesNothing) {
    Load(Config({{"port", 0}}, TwoBlocks));
    const std::uint16_t port = Port();
    for (const json& values : {json{{"unitId", 256}}, json{{"maxConnections", 0}}, json{{"maxConnections", 257}},
                               json{{"idleTimeout", 86401}}, json{{"byteOrder", 2}}, json{{"firstRequest", "never"}},
                               json{{"triggerTimeout", 60001}}, json{{"address", "nowhere"}}}) {
        const json before = Vor::Properties::JsonSerializer::Serialize(*Instance().Params());
        EXPECT_THROW(ChangeParameters(values), Vor::Exception) << values;
        EXPECT_EQ(Read(0, 3), Words({0x8000, 0, 2}));
        EXPECT_EQ(Port(), port);
        Vor::Properties::JsonSerializer::Deserialize(*Instance().Params(), before);
    }
}

TEST_F(ModbusProtocolTest, ClosesOneClientTooMany) {
    Load(Config({{"port", 0}, {"maxConnections", 1}}, TwoBlocks));
    RawClient first(Port());
    EXPECT_EQ(first.Ask(ReadRequest(1, 0, 1)).size(), 11u);
    EXPECT_TRUE(RawClient(Port()).WaitForClose());
}

TEST_F(ModbusProtocolTest, SavesItsParametersAndItsMapInTheJob) {
    Load(Config({{"port", 0}, {"unitId", 1}}, TwoBlocks));
    AddBlocks(*Instance().RegisterAssembly(AssemblyId), {{"String", "profile/text", 20, 8}});
    module->Manager().SavePersistDomain(PersistDomain::Job, store);
    const json section = json::parse(store.files[ConfigPath])["vor:control"];
    EXPECT_EQ(section["enabled"], true);
    EXPECT_EQ(section["parametersVersion"], "1");
    EXPECT_EQ(section["parameters"], (json{{"address", "127.0.0.1"},
                                           {"port", 0},
                                           {"unitId", 1},
                                           {"byteOrder", 0},
                                           {"maxConnections", 32},
                                           {"maxConnectionsPerAddress", 16},
                                           {"idleTimeout", 60},
                                           {"firstRequest", "run"},
                                           {"readNetworks", {"0.0.0.0/0", "::/0"}},
                                           {"writeNetworks", {"127.0.0.0/8", "::1/128"}},
                                           {"triggerTimeout", 1000}}));
    EXPECT_EQ(section["registerAssemblyVersionList"], (json{{{"id", AssemblyId}, {"version", "1"}}}));
    const json& assembly = section["registerAssemblyList"].at(0);
    EXPECT_EQ(assembly["properties"]["id"], AssemblyId);
    ASSERT_EQ(assembly["blocks"].size(), 3u);
    EXPECT_EQ(assembly["blocks"][2]["type"], "String");
    EXPECT_EQ(assembly["blocks"][2]["dataSource"], "profile/text");
    EXPECT_EQ(assembly["blocks"][2]["outputId"], 20);
    EXPECT_EQ(assembly["blocks"][2]["registerCount"], 8);

    Load(Config({{"port", 0}}, json::array()));
    EXPECT_EQ(Read(0, 3), (Bytes{0x83, 2}));
    Load({{"version", "1"}, {"vor:control", section}});
    EXPECT_EQ(Read(20, 8), Bytes(16, 0));
}

TEST_F(ModbusProtocolTest, ItsMapIsEditedByCommands) {
    Load(Config({{"port", 0}}, TwoBlocks));
    RawClient client(Port());
    auto& commands = Instance().RegisterAssemblyCommandTarget(AssemblyId);
    EXPECT_NE(Instance().BeginUpdateRegisterAssembly(AssemblyId), nullptr);
    const auto params = commands.GetCommandParams("update");
    Vor::Properties::JsonSerializer::Deserialize(*params, {{"outputId", 0}, {"newParams", {{"outputId", 50}}}});
    commands.InvokeCommand("update", *params);
    Instance().EndUpdateRegisterAssembly(AssemblyId);
    EXPECT_EQ(client.Ask(ReadRequest(1, 50, 3)), Bytes({0, 1, 0, 0, 0, 9, 1, 3, 6}) + Words({0x8000, 0, 2}))
        << "the connection is the same";
    EXPECT_EQ(Read(0, 3), (Bytes{0x83, 2}));
    Publish(Results().Measurement("profile/max", 2));
    EXPECT_TRUE(WaitForRegisters(50, Words({0, 2000, 1})));
}

TEST_F(ModbusProtocolTest, KeepsItsSettingsWhenAJobHoldsNoneOfIt) {
    Load(Config({{"port", 0}, {"unitId", 7}}, TwoBlocks));
    const std::uint16_t port = Port();
    store.files.clear();
    module->Manager().LoadPersistDomain(PersistDomain::Job, store);
    EXPECT_EQ(Port(), port);
    EXPECT_EQ(Vor::Properties::JsonSerializer::Serialize(*Instance().Params())["unitId"], 7);
    EXPECT_EQ(RawClient(port).Ask(ReadRequest(1, 0, 3, 7)).size(), 15u);
}

TEST_F(ModbusProtocolTest, TheLoadOfAJobIsNoStart) {
    const Tests::MainLoopThread mainLoop;
    const json job = Config({{"port", 0}, {"firstRequest", "base"}},
                            {Block("ControlInput", "", 1000), Block("ControlOutput", "", 1100)});
    const auto stop = [&](unsigned char requestWord) {
        const Bytes reply =
            RawClient(Port()).Ask({0, 9, 0, 0, 0, 11, 1, 16, 0x03, 0xE8, 0, 2, 4, 0, requestWord, 0, 2});
        EXPECT_EQ(reply, (Bytes{0, 9, 0, 0, 0, 6, 1, 16, 0x03, 0xE8, 0, 2}));
    };
    const auto runs = [&](unsigned requestWord) {
        return Tests::WaitUntil([&] {
            const Bytes answer = Read(1100, 2);
            return answer.size() == 4 && Word(answer.data()) == requestWord && Word(&answer[2]) >= 2;
        });
    };
    Load(job);
    stop(5);
    EXPECT_EQ(Read(1100, 2), Words({5, 0})) << "the first write is the base";
    Load(job);
    stop(6);
    EXPECT_TRUE(runs(6));
    store.files.clear();
    module->Manager().LoadPersistDomain(PersistDomain::Job, store);
    stop(7);
    EXPECT_TRUE(runs(7)) << "nor is that of a job that has nothing for it";
}

TEST_F(ModbusProtocolTest, AJobThatDisablesItLeavesItWithItsDefaults) {
    Load(Config({{"port", 0}, {"unitId", 7}}, TwoBlocks));
    Load(Config({{"port", 0}, {"unitId", 7}}, TwoBlocks, false));
    EXPECT_EQ(Status(), 1);
    EXPECT_EQ(Address(), "");
    EXPECT_EQ(Vor::Properties::JsonSerializer::Serialize(*Instance().Params())["unitId"], 0);
    EXPECT_EQ(Instance().RegisterAssembly(AssemblyId)->AddedRegisterBlocksCount(), 0u);
}

TEST_F(ModbusProtocolTest, AJobWhoseParametersItCannotUseLeavesItWhereItIsAndTellsTheUser) {
    Load(Config({{"port", 0}}, TwoBlocks));
    const std::uint16_t former = Port();
    AddressRegisters none;
    Common::ServiceCounters counters;
    const ModbusServer other(none, counters);
    const std::string failure = "port " + std::to_string(other.Port()) + " on 127.0.0.1 is in use";
    Vor::LogCapture log;
    Load(Config({{"port", other.Port()}}, json::array({Block("MeasurementValue", "profile/min", 10)})));
    EXPECT_EQ(Port(), former);
    EXPECT_EQ(Status(), 0);
    EXPECT_EQ(Failure(), failure);
    EXPECT_EQ(log.Count(Vor::UserError, Common::UnusableParams("modbus service", failure)), 1u);
    EXPECT_EQ(Vor::Properties::JsonSerializer::Serialize(*Instance().Params())["port"], other.Port())
        << "they are the job's all the same";
    EXPECT_EQ(Read(10, 2), Words({0x8000, 0})) << "and so is the map";
}

TEST_F(ModbusProtocolTest, KeepsNothingInOtherDomains) {
    const auto own = service.lock();
    EXPECT_EQ(own->Params(PersistDomain::Workspace), nullptr);
    EXPECT_EQ(own->ParamsVersion(PersistDomain::Workspace), nullptr);
    EXPECT_EQ(own->RegisterAssemblyGroup(PersistDomain::Workspace), nullptr);
    EXPECT_EQ(own->RegisterAssemblyVersion(PersistDomain::Workspace, AssemblyId), nullptr);
    EXPECT_EQ(own->RegisterAssemblyVersion(PersistDomain::Job, "another"), nullptr);
    EXPECT_EQ(own->BeginUpdateRegisterAssembly(PersistDomain::Job, "another", "1"), nullptr);
    EXPECT_EQ(own->BeginUpdateRegisterAssembly(PersistDomain::Workspace, AssemblyId, "1"), nullptr);
    EXPECT_EQ(own->BeginUpdateParams(PersistDomain::Workspace, "1"), nullptr);
    Load(Config({{"port", 0}, {"unitId", 7}}, TwoBlocks));
    own->ParamsReset(PersistDomain::Workspace);
    own->RegisterAssemblyGroupReset(PersistDomain::Workspace);
    EXPECT_EQ(Vor::Properties::JsonSerializer::Serialize(*Instance().Params())["unitId"], 7);
    EXPECT_EQ(Instance().RegisterAssembly(AssemblyId)->AddedRegisterBlocksCount(), 2u);
    json section;
    own->PersistenceProvider()->Save(PersistDomain::Workspace, section);
    EXPECT_TRUE(section.is_null());
}

TEST_F(ModbusProtocolTest, OffersItsBlockTypesInRegistersOf16Bits) {
    auto& assembly = *Instance().RegisterAssembly(AssemblyId);
    assembly.BeginLock();
    std::vector<std::string> types;
    for (const auto& type : assembly.SupportedRegisterBlockTypes()) {
        types.push_back(type->Type() + " " + std::to_string(type->DefaultRegisterCount()));
        EXPECT_EQ(type->BytesPerRegister(), 2) << type->Type();
        EXPECT_EQ(type->IsRegisterCountConfigurable(), type->Type() == "String");
        EXPECT_EQ(type->MinInstanceCount(), 0) << "a map may lack it";
        EXPECT_EQ(type->MaxInstanceCount(), type->HasDataSource() ? 65534 : 1) << type->Type();
        EXPECT_EQ(type->DeserializedInputSize(), type->Type() == "ControlInput" ? 130 : 0);
    }
    assembly.EndLock();
    EXPECT_EQ(types, (std::vector<std::string>{"Measurement 3", "MeasurementValue 2", "MeasurementDecision 1",
                                               "Stamp 18", "String 4", "ControlInput 65", "ControlOutput 3",
                                               "System 40", "Scanner 10", "Diagnostics 12"}));
    EXPECT_TRUE(assembly.Attributes().isGlobalAddressSpaceUsed.Get());
    EXPECT_EQ(assembly.Attributes().outputIdMin.Get(), 0);
    EXPECT_EQ(assembly.Attributes().outputIdMax.Get(), 65534);
}

TEST_F(ModbusProtocolTest, StopsWithin200MillisecondsAndLeavesNoThread) {
    const auto hasThread = [] { return Tests::CountThreads("ModbusNet") > 0; };
    Load(Config({{"port", 0}}, TwoBlocks));
    RawClient client(Port());
    EXPECT_EQ(client.Ask(ReadRequest(1, 0, 1)).size(), 11u);
    client.Send({0, 1, 0, 0});
    EXPECT_TRUE(hasThread());
    const auto begin = std::chrono::steady_clock::now();
    service.lock()->Stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 200ms);
    EXPECT_FALSE(hasThread());
    EXPECT_TRUE(client.WaitForClose());
    service.lock()->Start();
    EXPECT_EQ(Status(), 0);
    EXPECT_TRUE(hasThread());
    module.reset();
    EXPECT_TRUE(service.expired());
    EXPECT_FALSE(hasThread());
}

TEST_F(ModbusProtocolTest, MayBeStoppedAndStartedAtWill) {
    const auto own = service.lock();
    own->Stop();
    EXPECT_EQ(Status(), 1);
    Load(Config({{"port", 0}}, TwoBlocks));
    own->Start();
    EXPECT_EQ(Status(), 0) << "starts anew";
    EXPECT_EQ(Read(0, 3), Words({0x8000, 0, 2}));
    own->Stop();
    own->Stop();
    EXPECT_EQ(Status(), 1);
}

} // namespace
} // namespace Services::Modbus
