#include "ProviderTest.h"
#include "Vor/Exception.h"
#include "VorControl/ControlProtocol/StandardOutputs.h"
#include "VorControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "yApi/yFault.h"
#include "yApi/yStatus.h"

#include <stdexcept>

namespace {

using VorControl::ControlProtocol::StandardOutputItem;
using VorControl::ControlProtocol::StandardProtocolOutputMap;

/// A map whose locking fails with the statuses that a test sets.
class StuckMap : public StandardProtocolOutputMap {
public:
    StuckMap()
        : StandardProtocolOutputMap(4, 0, 100) {}

    void BeginLock() override {
        Vor::ThrowIfFailed(beginStatus);
        StandardProtocolOutputMap::BeginLock();
    }
    void EndLock() override {
        StandardProtocolOutputMap::EndLock();
        Vor::ThrowIfFailed(endStatus);
    }

    yStatus beginStatus = yOK;
    yStatus endStatus = yOK;
};

/// A service that keeps an output map of at most four entries with the job.
class ProviderOutputsMapTest : public Tests::ProviderTest {
protected:
    ProviderOutputsMapTest() { provider.RegisterOutputsMap(Domain::Job); }

    std::string Entries() const {
        std::string entries;
        for (unsigned long i = 0; i < service.outputs->Count(); ++i) {
            const auto& item = dynamic_cast<const StandardOutputItem&>(service.outputs->At(i));
            entries += std::to_string(item.outputId.Get()) + "=" + item.source.Get() + " ";
        }
        return entries;
    }

    const std::string loading = "Display encountered an error while loading outputs map for domain job";
    const std::string updating = "Display encountered error updating outputs map for domain job";
};

} // namespace

TEST_F(ProviderOutputsMapTest, TheMapIsSavedWithoutAVersion) {
    service.AddOutput(7, "b");
    service.AddOutput(3, "a");
    const Json section = Save();
    EXPECT_EQ(section.size(), 1U);
    EXPECT_EQ(section.at("outputs").at("map"),
              Json::parse(R"([{"outputId":3,"source":"a"},{"outputId":7,"source":"b"}])"));
    EXPECT_EQ(section.at("outputs").at("attributes"), Json::parse(R"({"outputIdMin":0,"outputIdMax":100})"));
    EXPECT_TEXTLESS_FAILURE(service.outputs->OutputMap(), yERROR_STATE); // the lock isn't held any more
}

TEST_F(ProviderOutputsMapTest, AMissingMapFailsTheSave) {
    service.outputs = nullptr;
    Json section;
    EXPECT_TEXTLESS_FAILURE(provider.Save(Domain::Job, section), yERROR_NOT_FOUND);
}

TEST_F(ProviderOutputsMapTest, ALockThatFailsFailsTheSave) {
    const std::string text =
        "Display encountered an error locking/unlocking outputs map for persisting into domain job";
    const auto map = std::make_shared<StuckMap>();
    service.outputs = map;
    Json section;
    map->beginStatus = yERROR_BUSY;
    EXPECT_TEXTLESS_FAILURE(provider.Save(Domain::Job, section), yERROR_BUSY);
    EXPECT_EQ(log.Count(Vor::LevelError, text), 1U);
    map->beginStatus = yOK;
    map->endStatus = yERROR_TIMEOUT;
    EXPECT_TEXTLESS_FAILURE(provider.Save(Domain::Job, section), yERROR_TIMEOUT);
    EXPECT_EQ(log.Count(Vor::LevelError, text), 2U);
    EXPECT_EQ(log.Count(Vor::LevelError, "Display encountered an error while persisting outputs map for domain job"),
              0U);
}

TEST_F(ProviderOutputsMapTest, ASectionThatCannotTakeTheMapFailsTheSaveAndLeavesTheLock) {
    Json section = Json::array();
    EXPECT_THROW(provider.Save(Domain::Job, section), Json::exception);
    EXPECT_EQ(log.Count(Vor::LevelError, "Display encountered an error while persisting outputs map for domain job"),
              1U);
    EXPECT_TEXTLESS_FAILURE(service.outputs->OutputMap(), yERROR_STATE);
}

TEST_F(ProviderOutputsMapTest, ASectionWithoutAMapChangesNothing) {
    service.AddOutput(3, "a");
    for (const char* section :
         {"{}", "null", "7", "[\"outputs\"]", R"({"outputs":null})", R"({"outputs":{}})", R"({"outputs":[]})"}) {
        log.Clear();
        EXPECT_EQ(Load(section), Result::None) << section;
        EXPECT_EQ(
            log.Count(Vor::LevelInfo, "Display has no outputs map section in persistence file to load for domain job"),
            1U);
    }
    EXPECT_EQ(Entries(), "3=a ");
    EXPECT_TRUE(service.calls.size() == 0);
}

TEST_F(ProviderOutputsMapTest, TheMapIsReplacedInsideAnUpdate) {
    service.AddOutput(3, "a");
    EXPECT_EQ(Load(R"({"outputs":{"map":[{"outputId":1,"source":"b"},{"outputId":9,"source":"c"}]}})"), Result::None);
    EXPECT_EQ(service.Changes(), (Calls{"BeginUpdateOutputsMap job ", "OutputsReset job", "EndUpdateOutputsMap job "}));
    EXPECT_EQ(Entries(), "1=b 9=c ");
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ProviderOutputsMapTest, EntriesOutOfOrderArePutInOrder) {
    EXPECT_EQ(Load(R"({"outputs":{"map":[{"outputId":9,"source":"c"},{"outputId":1,"source":"b"}]}})"), Result::None);
    EXPECT_EQ(Entries(), "1=b 9=c ");
    service.AddOutput(5, "d");
    EXPECT_EQ(Entries(), "1=b 5=d 9=c ");
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ProviderOutputsMapTest, ADuplicateIsDroppedAndTold) {
    for (const char* map : {R"([{"outputId":1,"source":"b"},{"outputId":1,"source":"c"}])",
                            R"([{"outputId":1,"source":"b"},{"outputId":2,"source":"b"}])"}) {
        log.Clear();
        EXPECT_EQ(Load(std::string(R"({"outputs":{"map":)") + map + "}}"), Result::Failed);
        EXPECT_EQ(Entries(), "1=b ");
        ExpectThrown(updating, "");
        EXPECT_EQ(service.calls.back(), "RegisterAssemblyGroup") << "the filter follows the end of the update";
        EXPECT_EQ(service.Changes().back(), "EndUpdateOutputsMap job ");
    }
}

TEST_F(ProviderOutputsMapTest, ASurplusEntryIsDroppedAndTold) {
    Json section;
    for (int id = 6; id > 0; --id) {
        section["outputs"]["map"].push_back({{"outputId", id}, {"source", "s" + std::to_string(id)}});
    }
    EXPECT_EQ(provider.Load(Domain::Job, section), Result::Failed);
    EXPECT_EQ(service.outputs->Count(), 4U);
    ExpectThrown(updating, "");
}

TEST_F(ProviderOutputsMapTest, ANamedMapIsCheckedToo) {
    const auto map = std::make_shared<VorControl::ControlProtocol::TextIdStandardProtocolOutputMap>(4);
    service.outputs = map;
    EXPECT_EQ(Load(R"({"outputs":{"map":[{"outputId":"b","source":"2"},{"outputId":"a","source":"1"},
                       {"outputId":"b","source":"3"}]}})"),
              Result::Failed);
    EXPECT_EQ(map->DataSourceList(), (Calls{"1", "2"}));
}

TEST_F(ProviderOutputsMapTest, AMapThatCannotBeAppliedIsToldAndTheUpdateEnds) {
    for (const char* outputs :
         {"7", "[1]", "\"text\"", R"({"map":7})", R"({"map":[{"outputId":"x"}]})", R"({"map":[{"outputId":65536}]})"}) {
        log.Clear();
        service.calls.clear();
        service.outputs->Clear();
        service.AddOutput(3, "a");
        EXPECT_EQ(Load(std::string(R"({"outputs":)") + outputs + "}"), Result::Failed) << outputs;
        EXPECT_EQ(Entries(), "");
        ExpectThrown(updating, "");
        EXPECT_EQ(service.Changes().back(), "EndUpdateOutputsMap job ");
        EXPECT_TEXTLESS_FAILURE(service.outputs->OutputMap(), yERROR_STATE);
    }
}

TEST_F(ProviderOutputsMapTest, AResetThatFailsIsAFailedUpdate) {
    service.actions["OutputsReset job"] = [] { Vor::Throw(yERROR_CONFLICT, "no reset"); };
    EXPECT_EQ(Load(R"({"outputs":{"map":[{"outputId":1,"source":"b"}]}})"), Result::Failed);
    EXPECT_EQ(service.Changes(), (Calls{"BeginUpdateOutputsMap job ", "OutputsReset job", "EndUpdateOutputsMap job "}));
    ExpectThrown(updating, "no reset");
}

TEST_F(ProviderOutputsMapTest, AServiceThatGivesNothingToChangeHasTheDefaults) {
    service.refusesUpdates = true;
    service.AddOutput(3, "a");
    EXPECT_EQ(Load(R"({"outputs":{"map":[{"outputId":1,"source":"b"}]}})"), Result::Failed);
    EXPECT_EQ(service.Changes(), (Calls{"BeginUpdateOutputsMap job ", "OutputsReset job"}));
    EXPECT_EQ(Entries(), "");
    EXPECT_EQ(log.Count(Vor::LevelError, loading), 1U);
}

TEST_F(ProviderOutputsMapTest, AnUpdateThatCannotBeginOrEndLeavesTheDefaults) {
    for (const char* call : {"BeginUpdateOutputsMap job ", "EndUpdateOutputsMap job "}) {
        log.Clear();
        service.actions.clear();
        service.actions[call] = [] { Vor::Throw(yERROR_CONFLICT, "not now"); };
        EXPECT_EQ(Load(R"({"outputs":{"map":[{"outputId":1,"source":"b"}]}})"), Result::Failed);
        EXPECT_EQ(service.Changes().back(), "OutputsReset job");
        EXPECT_EQ(Entries(), "");
        ExpectThrown(loading, "not now");
    }
}

TEST_F(ProviderOutputsMapTest, DefaultsThatCannotBeRestoredAreLogged) {
    service.refusesUpdates = true;
    service.actions["OutputsReset job"] = [] { Vor::Throw(yERROR_CONFLICT, "no defaults"); };
    EXPECT_EQ(Load(R"({"outputs":{"map":[{"outputId":1,"source":"b"}]}})"), Result::Failed);
    EXPECT_EQ(log.Count(Vor::LevelError, "Display encountered an error while initializing outputs map for domain job"),
              1U);
    ExpectThrown("EXCEPTION THROWN: ", "no defaults");
}

TEST_F(ProviderOutputsMapTest, WhatIsSavedIsLoadedAndSavedTheSame) {
    service.AddOutput(7, "b");
    service.AddOutput(3, "a");
    const std::string saved = Save().dump();
    service.outputs->Clear();
    EXPECT_EQ(Load(saved), Result::None);
    EXPECT_EQ(Save().dump(), saved);
}
