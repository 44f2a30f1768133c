#include "Tests/Support/Translations.h"
#include "Tests/VorControl/Control/DeviceManagerFixture.h"
#include "Tests/VorControl/ControlProtocol/TestBlocks.h"
#include "Vor/JsonSerializer.h"
#include "VorControl/Control/ControlDeviceManagerPersistenceProp.h"

#include <nlohmann/json.hpp>

using nlohmann::json;
using Tests::Texts;

namespace {

constexpr const char* SomeSkipped =
    "Service: One or more active device configurations were skipped due to errors. Current configuration has been "
    "marked as having changed from the job file.";
constexpr const char* NoList = "Missing selected devices list field in the Digital Output configuration job file";
constexpr const char* LoadingFailed =
    "Service: Error loading connection map. Connection map may require manual configuration.";
constexpr const char* FillingFailed =
    "Service: Error filling connection map. Connection map may require manual configuration.";

template <class... Items>
json Array(const Items&... items) {
    json array = json::array();
    (array.push_back(items), ...);
    return array;
}

json Section(const json& devices) {
    return {{"selectedDevicesVersion", "1.2"}, {"selectedDevicesList", devices}};
}

json Device(const std::string& providerId, const json& ports = json::array()) {
    return {{"deviceModel", "modelA"},
            {"engineId", "engine"},
            {"providerId", providerId},
            {"portsListVersion", "1.2"},
            {"portsList", ports}};
}

json Assembly(const std::vector<std::string>& sources) {
    json blocks = json::array();
    for (const std::string& source : sources) {
        blocks.push_back({{"type", "Measurement"}, {"dataSource", source}});
    }
    return {{"blocks", blocks}};
}

class ControlDeviceManagerPersistenceTest : public Tests::DeviceManagerFixture {
protected:
    ControlDeviceManagerPersistenceTest() {
        for (unsigned long long port : {0, 1}) {
            first->params[port] = std::make_shared<Tests::PortParams>();
        }
        Make();
    }

    json Saved() {
        json section;
        manager->Save(section);
        return section;
    }

    /// Selects the device, with a type of blocks of its first port that calls this and makes none.
    void SetFactory(const std::string& type, const std::function<void()>& action) {
        class Factory : public Tests::IProtocolRegisterBlockFactory {
        public:
            explicit Factory(std::function<void()> action)
                : action(std::move(action)) {}
            std::shared_ptr<Tests::ProtocolRegisterBlock> Create(const Tests::RegisterBlockParams&,
                                                                 Tests::ProtocolRegisterBlockInfo&) override {
                action();
                Vor::Throw(yERROR_STATE);
            }

        private:
            const std::function<void()> action;
        };
        manager->CreateSelectedDevice("engine", "1001");
        auto params = Tests::TypeParams(type);
        params.factory = std::make_shared<Factory>(action);
        const auto assembly = Port("device-0", "port-0")->RegisterAssembly();
        dynamic_cast<Tests::ProtocolRegisterAssemblyBase&>(*assembly).AddSupportedBlockType(
            std::make_unique<Tests::ProtocolRegisterBlockInfo>(std::move(params)));
    }

    void LoadBlock(const std::string& type) {
        json assembly;
        assembly["blocks"] = Array(json{{"type", type}});
        manager->Load(
            Section(Array(Device("p0", Array(json{{"id", "port-0"}, {"registerAssemblyList", Array(assembly)}})))));
    }

    std::size_t UserEntries(const std::string& text) const {
        std::size_t count = 0;
        for (const auto& record : log.Records()) {
            count += (record.level & Vor::LevelUserFlag) != 0 && record.text == text ? 1 : 0;
        }
        return count;
    }
};

} // namespace

TEST_F(ControlDeviceManagerPersistenceTest, WithoutDevicesTheSectionHasAnEmptyList) {
    EXPECT_EQ(Saved(), Section(json::array()));
}

TEST_F(ControlDeviceManagerPersistenceTest, ASectionHasDevicesPortsParametersAndBlocks) {
    manager->CreateSelectedDevice("engine", "1001");
    first->params[1]->name = "reject";
    first->params[1]->delay = 40;
    first->params.erase(0);
    AddSource("device-0", "port-1", "profile/max");
    const json section = Saved();
    json port = section.at("selectedDevicesList").at(0).at("portsList").at(1);
    const json assemblies = port.at("registerAssemblyList");
    port.erase("registerAssemblyList");
    EXPECT_EQ(port, (json{{"id", "port-1"},
                          {"portNumber", 1},
                          {"configVersion", "1.2"},
                          {"config", {{"name", "reject"}, {"delay", 40}}}}));
    ASSERT_EQ(assemblies.size(), 1U);
    EXPECT_EQ(assemblies.at(0).at("properties").at("id"), "registerAssembly-0");
    EXPECT_EQ(assemblies.at(0).at("attributes").at("outputIdMax"), 65534);
    ASSERT_EQ(assemblies.at(0).at("blocks").size(), 1U);
    EXPECT_EQ(assemblies.at(0).at("blocks").at(0).at("dataSource"), "profile/max");
    EXPECT_EQ(section.at("selectedDevicesList").at(0).at("portsList").at(0).at("config"), json::object());
    json device = section.at("selectedDevicesList").at(0);
    device.erase("portsList");
    EXPECT_EQ(
        device,
        (json{{"deviceModel", "modelA"}, {"engineId", "engine"}, {"providerId", "p0"}, {"portsListVersion", "1.2"}}));
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, RecordsHaveTitlesInTheUsersLanguage) {
    VorGetText::GetInstance().ForgetCalls();
    const auto title = [](const Vor::Params::Group& record, const char* key) {
        return Vor::Properties::JsonSerializer::SerializeSchema(record).at("properties").at(key).at("title");
    };
    const VorControl::ControlDeviceManagerPersistenceProp section;
    EXPECT_EQ(title(section, "selectedDevicesVersion"), "Selected Devices Version");
    EXPECT_EQ(title(section, "selectedDevicesList"), "Selected Devices List");
    const VorControl::ControlDeviceManagerSelectedDevicePersistenceItem device;
    EXPECT_EQ(title(device, "deviceModel"), "Device Model");
    EXPECT_EQ(title(device, "engineId"), "Engine Identifier");
    EXPECT_EQ(title(device, "providerId"), "Provider Identifier");
    EXPECT_EQ(title(device, "portsListVersion"), "Ports List Version");
    EXPECT_EQ(title(device, "portsList"), "Ports List");
    const VorControl::ControlDeviceManagerSelectedDevicePortPersistenceItem port;
    EXPECT_EQ(title(port, "id"), "Port Identifier");
    EXPECT_EQ(title(port, "portNumber"), "portNumber");
    EXPECT_EQ(title(port, "configVersion"), "Configuration Version");
    EXPECT_EQ(title(port, "config"), "Port Configuration");
    EXPECT_EQ(port.portNumber.GetMinimum(), 0U);
    EXPECT_TRUE(port.configVersion.GetReadOnly());
    EXPECT_TRUE(Tests::WasTranslated("beApp.ctrl", "Port Configuration"));
}

TEST_F(ControlDeviceManagerPersistenceTest, ADeviceThatHasGoneCantBeSaved) {
    manager->CreateSelectedDevice("engine", "1001");
    first.reset();
    EXPECT_FAILURE(Saved(), yERROR_NOT_FOUND, "Device interface for 1001 is missing.");
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, AnAssemblyThatCantBeSavedIsLoggedAndTheRestIsSaved) {
    manager->CreateSelectedDevice("engine", "1001");
    AddSource("device-0", "port-0", "a");
    AddSource("device-0", "port-1", "b");
    faults.SetHere("yLock_Enter", -31, 1); // after the manager's lock
    const json ports = Saved().at("selectedDevicesList").at(0).at("portsList");
    ASSERT_EQ(ports.size(), 2U);
    EXPECT_EQ(ports.at(0).at("registerAssemblyList"), json::array());
    EXPECT_EQ(ports.at(1).at("registerAssemblyList").size(), 1U);
    EXPECT_EQ(UserEntries("Service: Error saving connection map. Please check the connection map."), 1U);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Service: Error saving connection map. Please check the connection map"));
}

TEST_F(ControlDeviceManagerPersistenceTest, WhatWasSavedIsLoadedAgain) {
    manager->CreateSelectedDevice("engine", "1001");
    first->params[1]->name = "reject";
    AddSource("device-0", "port-0", "a");
    AddSource("device-0", "port-1", "b");
    AddSource("device-0", "port-1", "c");
    const json saved = Saved();
    manager->Reset();
    first->params[1]->name = "other";
    first->NewCalls();
    NewEvents();
    manager->Load(saved);
    EXPECT_EQ(NewEvents(), Texts{"added device-0 1001"});
    EXPECT_EQ(first->NewCalls(), (Texts{"BeginUpdate 0", "EndUpdate 0", "BeginUpdate 1", "EndUpdate 1"}));
    EXPECT_EQ(first->params[1]->name.Get(), "reject");
    EXPECT_EQ(manager->DataSourceList(), (Texts{"a", "b", "c"}));
    EXPECT_EQ(Saved(), saved);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, PropertiesAndAttributesOfAnAssemblyArentLoaded) {
    json assembly = Assembly({"a"});
    assembly["properties"] = {{"id", "other"}, {"displayName", "other"}};
    assembly["attributes"] = {{"outputIdMax", 3}};
    manager->Load(
        Section(Array(Device("p0", Array(json{{"id", "port-0"}, {"registerAssemblyList", Array(assembly)}})))));
    const auto loaded = Port("device-0", "port-0")->RegisterAssembly();
    EXPECT_STREQ(loaded->Id(), "registerAssembly-0");
    EXPECT_STREQ(loaded->DisplayName(), "Register Assembly 0");
    EXPECT_EQ(loaded->Attributes().outputIdMax.Get(), 65534);
    EXPECT_EQ(manager->DataSourceList(), Texts{"a"});
}

TEST_F(ControlDeviceManagerPersistenceTest, ASectionWithoutAListIsRefused) {
    for (const json& section : {json(), json(5), json::array(), json::object(),
                                json{{"selectedDevicesList", json::object()}}, json{{"selectedDevicesList", 5}}}) {
        EXPECT_FAILURE(manager->Load(section), yERROR_FORMAT, NoList);
    }
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, AnotherVersionIsRefusedAndNoneIsAccepted) {
    json section = Section(Array(Device("p0")));
    section["selectedDevicesVersion"] = "1.1";
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(manager->Load(section), yERROR_VERSION, "Service: unsupported configuration data version 1.1.");
    EXPECT_TRUE(Tests::WasTranslated("beApp.ctrl", "%1$s: unsupported configuration data version %2$s."));
    EXPECT_EQ(SelectedIds(), Texts{});
    section["selectedDevicesVersion"] = "";
    manager->Load(section);
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
    section.erase("selectedDevicesVersion");
    manager->Load(section);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, AValueOfAWrongKindIsRefusedAndChangesNothing) {
    for (const json& device : {json(5), json{{"providerId", 5}}, json{{"portsList", Array(json{{"portNumber", "x"}})}},
                               json{{"portsList", Array(json{{"portNumber", -1}})}}, json{{"portsList", 5}}}) {
        EXPECT_EQ(Tests::StatusOf([&] { manager->Load(Section(Array(device))); }), yERROR_PARAMETER) << device;
    }
    EXPECT_EQ(SelectedIds(), Texts{});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, WithoutAvailableDevicesOnlyAnEmptyListIsLoaded) {
    devices->Erase("p0");
    devices->Erase("p1");
    UpdateList();
    manager->Load(Section(json::array()));
    EXPECT_FAILURE(manager->Load(Section(Array(Device("p0")))), yERROR_PARTIAL,
                   "Service: No available devices to configure as an active device. Active device configuration is "
                   "ignored. Please add some devices to the sensor group.");
    EXPECT_EQ(UserEntries("Service: No available devices to configure as a selected device. Selected device "
                          "configuration is ignored. Please add some devices to the sensor group."),
              1U);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, ADeviceThatIsntThereIsSkippedAndTheOthersAreLoaded) {
    EXPECT_FAILURE(manager->Load(Section(Array(Device("p7"), Device("p0")))), yERROR_PARTIAL, SomeSkipped);
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
    EXPECT_EQ(UserEntries("Service: Active device not found. This active device configuration will not be applied."),
              1U);
    EXPECT_TRUE(log.Contains("An active device from scan engine 'engine' with provider id 'p7' not found."));
    EXPECT_EQ(Saved().at("selectedDevicesList").size(), 1U);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, ADeviceWithoutAProviderIdIsSkipped) {
    EXPECT_FAILURE(manager->Load(Section(Array(Device("")))), yERROR_PARTIAL, SomeSkipped);
    EXPECT_EQ(UserEntries("Service: The active device configuration in the job file does not identify an I/O device. "
                          "This active device configuration will not be applied."),
              1U);
    EXPECT_TRUE(log.Contains("The active device configuration in the job file does not have a provider id. This "
                             "active device configuration will not be applied."));
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, ADeviceThatHasGoneSinceTheLastListIsSkipped) {
    manager->CreateSelectedDevice("engine", "1001");
    first.reset();
    EXPECT_FAILURE(manager->Load(Section(Array(Device("p0", Array(json{{"id", "port-0"}}))))), yERROR_PARTIAL,
                   SomeSkipped);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, ADeviceThatHasGoneBeforeItIsSelectedIsSkippedAndTheOthersAreLoaded) {
    first.reset();
    EXPECT_FAILURE(manager->Load(Section(Array(Device("p0"), Device("p1")))), yERROR_PARTIAL, SomeSkipped);
    EXPECT_EQ(manager->SelectedDeviceProperties("device-0").providerId, "p1");
    EXPECT_EQ(UserEntries("Service: Active device not found. This active device configuration will not be applied."),
              1U);
    EXPECT_TRUE(log.Contains("An active device from scan engine 'engine' with provider id 'p0' not found."));
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, ASecondDeviceFails) {
    EXPECT_TEXTLESS_FAILURE(manager->Load(Section(Array(Device("p0"), Device("p1")))), yERROR_FULL);
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, ADeviceThatAHandlerDeletesIsNotFound) {
    onEvent = [this](const std::string& event) {
        if (event == "added") {
            manager->DeleteSelectedDevice("device-0", true);
        }
    };
    EXPECT_TEXTLESS_FAILURE(manager->Load(Section(Array(Device("p0")))), yERROR_NOT_FOUND);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, ASelectedDeviceStaysAndItsPortsAreSetUp) {
    manager->CreateSelectedDevice("engine", "1001");
    AddSource("device-0", "port-0", "a");
    AddSource("device-0", "port-1", "b");
    NewEvents();
    manager->Load(Section(
        Array(Device("p0", Array(json{{"id", "port-1"}, {"registerAssemblyList", Array(Assembly({"c", "d"}))}})))));
    EXPECT_EQ(NewEvents(), Texts{});
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
    EXPECT_EQ(manager->DataSourceList(), (Texts{"a", "c", "d"}));
    manager->Load(Section(json::array()));
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
}

TEST_F(ControlDeviceManagerPersistenceTest, APortWithoutAnIdIsFoundByItsNumber) {
    manager->Load(Section(Array(Device("p0", Array(json{{"portNumber", 1},
                                                        {"config", {{"name", "x"}}},
                                                        {"registerAssemblyList", Array(Assembly({"a"}))}})))));
    EXPECT_EQ(first->params[1]->name.Get(), "x");
    EXPECT_EQ(Port("device-0", "port-1")->RegisterAssembly()->DataSourceList(), Texts{"a"});
}

TEST_F(ControlDeviceManagerPersistenceTest, APortWithoutANumberIsFoundByItsId) {
    manager->Load(Section(Array(
        Device("p0", Array(json{{"id", "port-1"}, {"config", {{"name", "x"}}}},
                           json{{"id", "port-9"}, {"config", {{"name", "y"}}}}, json{{"config", {{"name", "z"}}}})))));
    EXPECT_EQ(first->NewCalls(), (Texts{"BeginUpdate 1", "EndUpdate 1"}));
    EXPECT_EQ(first->params[1]->name.Get(), "x");
    EXPECT_EQ(first->params[0]->name.Get(), "");
}

TEST_F(ControlDeviceManagerPersistenceTest, APortThatTheDeviceDoesntHaveIsLeftOut) {
    manager->Load(Section(Array(Device("p0", Array(json{{"id", "port-9"},
                                                        {"portNumber", 9},
                                                        {"config", {{"name", "x"}}},
                                                        {"registerAssemblyList", Array(Assembly({"a"}))}})))));
    EXPECT_EQ(first->NewCalls(), (Texts{"BeginUpdate 9", "EndUpdate 9"}));
    EXPECT_EQ(manager->DataSourceList(), Texts{});
}

TEST_F(ControlDeviceManagerPersistenceTest, AnUpdateOfParametersEndsWhenItFails) {
    EXPECT_EQ(
        Tests::StatusOf([&] {
            manager->Load(Section(Array(Device("p0", Array(json{{"id", "port-0"}, {"config", {{"delay", "long"}}}})))));
        }),
        yERROR_PARAMETER);
    EXPECT_EQ(first->NewCalls(), (Texts{"BeginUpdate 0", "EndUpdate 0"}));
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, OfSeveralAssembliesTheFirstIsLoaded) {
    manager->Load(Section(Array(Device(
        "p0", Array(json{{"id", "port-0"}, {"registerAssemblyList", Array(Assembly({"a"}), Assembly({"b"}))}})))));
    EXPECT_EQ(manager->DataSourceList(), Texts{"a"});
    EXPECT_EQ(UserEntries("Service: More than one register assembly detected but only one is supported."), 1U);
}

TEST_F(ControlDeviceManagerPersistenceTest, AnEntryWithoutAnAssemblyOrBlocksChangesNothing) {
    manager->CreateSelectedDevice("engine", "1001");
    AddSource("device-0", "port-0", "a");
    for (const json& list :
         {json::array(), json(5), json::object(), Array(5), Array(json{{"properties", json::object()}})}) {
        manager->Load(Section(Array(Device("p0", Array(json{{"id", "port-0"}, {"registerAssemblyList", list}})))));
        EXPECT_EQ(manager->DataSourceList(), Texts{"a"}) << list;
    }
}

TEST_F(ControlDeviceManagerPersistenceTest, BlocksThatCantBeAddedAreReported) {
    json assembly = Assembly({"a", "b"});
    assembly["blocks"][0]["type"] = "Unknown";
    try {
        manager->Load(
            Section(Array(Device("p0", Array(json{{"id", "port-0"}, {"registerAssemblyList", Array(assembly)}})))));
        FAIL() << "a block of an unknown type was added";
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), yERROR);
        EXPECT_STREQ(e.what(), LoadingFailed);
        try {
            std::rethrow_if_nested(e);
            FAIL() << "the cause isn't nested";
        } catch (const Vor::Exception& cause) {
            EXPECT_STREQ(cause.what(), "Loading register assembly blocks");
        }
    }
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Service: Loading register assembly 'registerAssembly-0' blocks "));
    EXPECT_EQ(UserEntries(FillingFailed), 1U);
    EXPECT_TRUE(log.Contains(Vor::LevelError, FillingFailed));
    EXPECT_EQ(UserEntries(LoadingFailed), 1U);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "EXCEPTION THROWN: "));
    EXPECT_EQ(manager->DataSourceList(), Texts{"b"});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, TheStatusOfAFailureIsThatOfItsCause) {
    json assembly;
    assembly["blocks"] = 5;
    EXPECT_FAILURE(manager->Load(Section(
                       Array(Device("p0", Array(json{{"id", "port-0"}, {"registerAssemblyList", Array(assembly)}}))))),
                   yERROR_PARAMETER, LoadingFailed);
}

TEST_F(ControlDeviceManagerPersistenceTest, AnAssemblyIsLockedUntilItsBlocksAreAdded) {
    bool locked = false;
    SetFactory("Probe", [&] {
        locked = Tests::StatusOf([&] { Port("device-0", "port-0")->RegisterAssembly()->AddedRegisterBlocks(); }) == yOK;
    });
    EXPECT_FAILURE(LoadBlock("Probe"), yERROR, LoadingFailed);
    EXPECT_TRUE(locked);
    EXPECT_EQ(Tests::StatusOf([&] { Port("device-0", "port-0")->RegisterAssembly()->AddedRegisterBlocks(); }),
              yERROR_STATE);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, AnExceptionOfNoKnownKindIsReported) {
    SetFactory("Odd", [] { throw 5; });
    EXPECT_FAILURE(LoadBlock("Odd"), yERROR, LoadingFailed);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Service: Error filling connection map."));
    EXPECT_EQ(UserEntries(FillingFailed), 0U);
    EXPECT_EQ(UserEntries(LoadingFailed), 1U);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerPersistenceTest, AHandlerMayDeleteTheDeviceWhoseParametersAreLoaded) {
    manager->CreateSelectedDevice("engine", "1001");
    first->OnCall([this](const std::string& call) {
        if (call == "EndUpdate 0") {
            first->paramsChanged.Raise(0);
        }
    });
    onEvent = [this](const std::string& event) {
        if (event == "params 0") {
            manager->DeleteSelectedDevice("device-0", false);
        }
    };
    const json list = Array(Assembly({"a"}));
    manager->Load(Section(Array(
        Device("p0", Array(json{{"id", "port-0"}, {"config", {{"name", "x"}}}, {"registerAssemblyList", list}},
                           json{{"id", "port-1"}, {"config", {{"name", "y"}}}, {"registerAssemblyList", list}})))));
    EXPECT_EQ(first->params[1]->name.Get(), "y");
    EXPECT_EQ(SelectedIds(), Texts{});
    EXPECT_TRUE(IsUnlocked());
}
