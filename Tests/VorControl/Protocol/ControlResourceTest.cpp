#include "VorControl/Protocol/ControlResource.h"

#include "Tests/Support/MemoryStore.h"
#include "Tests/VorControl/Protocol/ResourceFixture.h"
#include "Vor/DocumentErrors.h"
#include "VorControl/Control/IControlManager.h"

#include <algorithm>

namespace {

using Json = nlohmann::json;
using VorCommon::PersistDomain;

class ControlResourceTest : public Tests::ResourceFixture {
protected:
    ControlResourceTest() { Listen("/controls"); }

    /// Whether the properties of the service are unlocked: only then nobody may use them.
    bool PropertiesUnlocked() {
        return Tests::StatusOf([&] { Instance().Properties(); }) == yERROR_STATE;
    }
};

TEST_F(ControlResourceTest, TheCollectionEmbedsEachService) {
    EXPECT_EQ(Read("/controls").Dump(false), "{}");
    EXPECT_EQ(RelationsOf("/controls"), (Texts{"embed item[] /controls/bare", "embed item[] /controls/full"}));
}

TEST_F(ControlResourceTest, AServiceNamesWhatItHas) {
    EXPECT_EQ(RelationsOf("/controls/full"), (Texts{"embed vor:datasources /controls/full/outputs",
                                                    "embed vor:registerAssembly[] /controls/full/registerAssemblies/a1",
                                                    "link vor:command[] /controls/full/commands/greet",
                                                    "link vor:command[] /controls/full/commands/quiet",
                                                    "link vor:command[] /controls/full/commands/fail"}));
    EXPECT_EQ(RelationsOf("/controls/bare"), Texts{});
}

TEST_F(ControlResourceTest, TheDocumentHasThePropertiesThenTheServiceThenItsParameters) {
    const VorApi::VorDataTree document = Read("/controls/full");
    EXPECT_EQ(document.Names(), (Texts{"status", "enabled", "id", "typeName", "displayName", "parameters"}));
    EXPECT_EQ(document.ToJson(), Json::parse(R"({"status":1,"enabled":false,"id":"full","typeName":"full",
        "displayName":"full service","parameters":{"port":502,"name":""}})"));
    EXPECT_TRUE(PropertiesUnlocked());
    EXPECT_EQ(Read("/controls/bare").Names(), (Texts{"status", "enabled", "id", "typeName", "displayName"}));
}

TEST_F(ControlResourceTest, TheSchemaCoversAllMembers) {
    const VorApi::VorDataTree schema = ReadWithSchema("/controls/full")["_schema"];
    const VorApi::VorDataTree properties = schema["properties"];
    EXPECT_EQ(properties.Names(), (Texts{"enabled", "id", "typeName", "displayName", "parameters", "status"}));
    EXPECT_EQ(properties["enabled"]["title"].AsText(), "Enabled");
    EXPECT_FALSE(properties["enabled"].Contains("readOnly"));
    const std::vector<std::pair<std::string, std::string>> titles{
        {"id", "Internal Service Id"}, {"typeName", "Service Type"}, {"displayName", "Display Name"}};
    for (const auto& [name, title] : titles) {
        EXPECT_EQ(properties[name]["title"].AsText(), title);
        EXPECT_TRUE(properties[name]["readOnly"].AsBool()) << name;
    }
    EXPECT_EQ(properties["parameters"]["title"].AsText(), "parameters");
    EXPECT_EQ(properties["parameters"]["sortOrder"].AsUInt64(), 400U);
    EXPECT_EQ(properties["parameters"]["properties"]["port"]["type"].AsText(), "integer");
    EXPECT_TRUE(properties["status"]["readOnly"].AsBool());
}

TEST_F(ControlResourceTest, AFailureWhileReadingUnlocksTheProperties) {
    struct Broken : Vor::Params::Value<std::string> {
        void WriteValue(Vor::Properties::IValueWriter&) const override { Vor::Throw(yERROR_STATE, "broken"); }
    } broken;
    service->params->Register("broken", broken);
    EXPECT_FAILURE(Read("/controls/full"), yERROR_STATE, "broken");
    EXPECT_TRUE(PropertiesUnlocked());
    service->params->Deregister("broken");
}

TEST_F(ControlResourceTest, AnUnknownServiceIsNotFound) {
    EXPECT_FAILURE(Read("/controls/x"), yERROR_NOT_FOUND, "Control protocol type not recognized: 'x'.");
    EXPECT_EQ(Tests::StatusOf([&] { Update("/controls/x", Json::object()); }), yERROR_NOT_FOUND);
}

TEST_F(ControlResourceTest, AnUpdateChangesParametersInTheBracketAndNotifies) {
    service->onParamsUpdate = [this] {
        EXPECT_EQ(environ.gate.Depth(), 1);
        EXPECT_EQ(service->params->port.Get(), 1502);
    };
    Update("/controls/full", {{"parameters", {{"port", 1502}}}, {"unknown", 1}});
    EXPECT_EQ(service->Changes(), (Texts{"BeginUpdateParams job 2", "ParamsUpdate", "EndUpdateParams job 2"}));
    EXPECT_EQ(environ.gate.Depth(), 0);
    EXPECT_FALSE(Instance().IsEnabled());
    EXPECT_EQ(NewNotifications(), Texts{"2 /controls/full"});
}

TEST_F(ControlResourceTest, AnUpdateEnablesAfterTheParametersWereSet) {
    Update("/controls/full", {{"enabled", true}, {"parameters", {{"port", 1502}}}});
    EXPECT_EQ(service->Changes(), (Texts{"BeginUpdateParams job 2", "ParamsUpdate", "Start", "EndUpdateParams job 2"}));
    EXPECT_TRUE(Instance().IsEnabled());
    Update("/controls/full", {{"enabled", false}});
    EXPECT_FALSE(Instance().IsEnabled());
}

TEST_F(ControlResourceTest, AnEmptyUpdateChangesNothingAndStillCallsTheBracket) {
    Update("/controls/full", Json::object());
    Update("/controls/full", nullptr);
    EXPECT_EQ(service->Changes(), (Texts{"BeginUpdateParams job 2", "EndUpdateParams job 2", "BeginUpdateParams job 2",
                                         "EndUpdateParams job 2"}));
    EXPECT_EQ(environ.gate.Depth(), 0);
}

TEST_F(ControlResourceTest, ParametersThatAreRefusedLeaveTheEnabledStateAsItWas) {
    EXPECT_EQ(Tests::StatusOf([&] {
                  Update("/controls/full", {{"enabled", true}, {"parameters", {{"port", "x"}}}});
              }),
              yERROR_PARAMETER);
    EXPECT_FALSE(Instance().IsEnabled());
    EXPECT_EQ(service->params->port.Get(), 502);
    EXPECT_EQ(service->Changes(), (Texts{"BeginUpdateParams job 2", "EndUpdateParams job 2"}));
    EXPECT_EQ(environ.gate.Depth(), 0);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "EXCEPTION THROWN: "));
}

TEST_F(ControlResourceTest, AnEnabledStateThatIsRefusedLeavesTheParametersAsTheyWere) {
    EXPECT_EQ(Tests::StatusOf([&] {
                  Update("/controls/full", {{"enabled", 1}, {"parameters", {{"port", 1502}}}});
              }),
              yERROR_PARAMETER);
    EXPECT_EQ(service->params->port.Get(), 502);
    EXPECT_EQ(environ.gate.Depth(), 0);
}

TEST_F(ControlResourceTest, AllThatIsRefusedInAnUpdateIsNamed) {
    try {
        Update("/controls/full", {{"enabled", 1}, {"parameters", {{"port", "x"}, {"name", 2}}}});
        FAIL() << "nothing was thrown";
    } catch (const Vor::DocumentException& e) {
        Texts places;
        for (const Vor::DocumentError& error : e.Errors()) {
            places.push_back(error.pointer);
        }
        EXPECT_EQ(places, (Texts{"/enabled", "/parameters/port", "/parameters/name"}));
    }
}

TEST_F(ControlResourceTest, AFailureOfTheEndIsThrownAndTheGateIsLeft) {
    service->actions["EndUpdateParams job 2"] = [] { Vor::Throw(yERROR_STATE, "no end"); };
    EXPECT_FAILURE(Update("/controls/full", Json::object()), yERROR_STATE, "no end");
    EXPECT_EQ(environ.gate.Depth(), 0);
    service->onParamsUpdate = [] { Vor::Throw(yERROR_CONFLICT, "no update"); };
    EXPECT_FAILURE(Update("/controls/full", {{"parameters", {{"port", 1502}}}}), yERROR_CONFLICT, "no update");
    EXPECT_EQ(environ.gate.Depth(), 0);
}

TEST_F(ControlResourceTest, AServiceWithoutParametersCanBeEnabled) {
    Update("/controls/bare", {{"enabled", true}, {"parameters", {{"port", 1}}}});
    EXPECT_TRUE(Instance("bare").IsEnabled());
    EXPECT_EQ(environ.gate.Depth(), 0);
}

TEST_F(ControlResourceTest, AnUpdateOfTheCollectionNamesNoService) {
    EXPECT_FAILURE(Update("/controls", Json::object()), yERROR_PARAMETER, "Request is missing service name");
}

TEST_F(ControlResourceTest, ChangesDuringALoadAreOneNoticeAtItsEnd) {
    int changes = 0;
    for (const std::string& id : manager->List()) {
        Instance(id).AddParamsUpdatedEventHandler([&](const std::string&, bool) { ++changes; });
    }
    manager->AddPersistenceLoadEventHandler([this](VorControl::IControlManager::PersistenceLoadOpState state) {
        if (state == VorControl::IControlManager::PersistenceLoadOpState::Begin) {
            service->NotifyParamsInternalUpdateEventHandler(false);
            service->NotifyParamsInternalUpdateEventHandler(true);
            EXPECT_EQ(NewNotifications(), Texts{});
        }
    });
    Tests::MemoryStore store;
    manager->LoadPersistDomain(PersistDomain::Job, store);
    EXPECT_GE(changes, 2);
    EXPECT_EQ(NewNotifications(), Texts{"4 /controls"});
    EXPECT_EQ(log.Count(Vor::LevelInfo, "Notifications saved in ControlResource: " + std::to_string(changes)), 1U);

    service->NotifyParamsInternalUpdateEventHandler(false);
    EXPECT_EQ(NewNotifications(), Texts{"2 /controls/full"});
}

TEST_F(ControlResourceTest, EachLoadAndTheInitOfTheJobEndWithANotice) {
    Tests::MemoryStore store;
    const auto reloads = [this] {
        const Texts all = NewNotifications();
        return std::count(all.begin(), all.end(), "4 /controls");
    };
    manager->LoadPersistDomain(PersistDomain::Workspace, store);
    EXPECT_EQ(reloads(), 1);
    manager->InitPersistDomain(PersistDomain::Job, store);
    EXPECT_EQ(reloads(), 1);
    manager->InitPersistDomain(PersistDomain::Workspace, store);
    EXPECT_EQ(reloads(), 0);
}

} // namespace
