#include "PersistControlFixture.h"
#include "Tests/Support/Failure.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"
#include "VorControl/Persistence/PersistControl.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Tests::FakeControlInstance;
using VorCommon::PersistDomain;
using VorControl::ControlProtocol::AddBlockParams;
using VorControl::ControlProtocol::ProtocolRegisterAssemblyBase;
using VorControl::Persistence::PersistLoadResult;

namespace {

using Calls = std::vector<std::string>;

constexpr const char* MapId = "registerAssembly-0";

/// A real assembly that records its calls, and fails in those for which a test sets a function.
class WatchedAssembly : public ProtocolRegisterAssemblyBase {
public:
    WatchedAssembly(const char* id, Calls& calls)
        : ProtocolRegisterAssemblyBase(true, 100, 199, id, "Map")
        , calls(calls) {
        AddSupportedBlockType(
            std::make_unique<VorControl::ControlProtocol::DefaultMeasurementValueRegisterBlockInfo>());
        AddSupportedBlockType(std::make_unique<VorControl::ControlProtocol::DefaultStampRegisterBlockInfo>());
    }

    std::uint32_t Add(Vor::Params::Group& group) override {
        calls.push_back("Add");
        auto& params = dynamic_cast<AddBlockParams&>(group);
        requested.clear();
        for (unsigned long i = 0; i < params.blocks.Count(); ++i) {
            requested.push_back(params.blocks.At(i).type.Get() + "@" +
                                std::to_string(params.blocks.At(i).outputId.Get()));
        }
        if (onAdd) {
            return onAdd();
        }
        return ProtocolRegisterAssemblyBase::Add(group);
    }

    void ResetRegisterAssembly() override {
        calls.push_back("ResetRegisterAssembly");
        if (onReset) {
            onReset();
        }
        ProtocolRegisterAssemblyBase::ResetRegisterAssembly();
    }

    std::function<std::uint32_t()> onAdd;
    std::function<void()> onReset;
    Calls requested;

private:
    Calls& calls;
};

json Block(const std::string& type, unsigned id) {
    return {{"type", type}, {"dataSource", "profile/max"}, {"displayName", "D"}, {"outputId", id}};
}

json EntryWith(const std::string& id, const json& blocks) {
    return {{"attributes", json::object()}, {"properties", {{"id", id}}}, {"blocks", blocks}};
}

json Entry(const std::string& id, const std::vector<json>& blocks) {
    return EntryWith(id, json(blocks));
}

class PersistControlRegisterAssemblyTest : public Tests::PersistControlFixture {
protected:
    PersistControlRegisterAssemblyTest() {
        instance.options = FakeControlInstance::Options::RegisterAssemblies;
        assembly = std::make_shared<WatchedAssembly>(MapId, instance.calls);
        instance.assemblies[MapId] = assembly;
    }

    void Load(const std::vector<json>& entries) { LoadList(json(entries)); }

    void LoadList(const json& list) {
        instance.calls.clear();
        const json doc = {{"version", "1"}, {"vor:control", {{"enabled", true}, {"registerAssemblyList", list}}}};
        store.files[FakeControlInstance::Path] = doc.dump();
        control.Load(instance, PersistDomain::Job, store);
    }

    json Saved() {
        control.Save(instance, PersistDomain::Job, store);
        return json::parse(store.files.at(FakeControlInstance::Path)).at("vor:control");
    }

    std::size_t Place(std::uint64_t level, const std::string& text) const {
        const auto records = log.Records();
        std::size_t place = 0;
        while (place < records.size() && (records[place].level != level || records[place].text != text)) {
            ++place;
        }
        EXPECT_LT(place, records.size()) << text;
        return place;
    }

    void ExpectFilledOnly(std::size_t count) {
        EXPECT_EQ(assembly->AddedRegisterBlocksCount(), count);
        EXPECT_EQ(instance.gateDepth, 0);
    }

    std::shared_ptr<WatchedAssembly> assembly;
};

} // namespace

TEST_F(PersistControlRegisterAssemblyTest, StoredBlocksReplaceThoseThatAreThere) {
    Load({Entry(MapId, {Block("MeasurementValue", 110), Block("MeasurementValue", 120)})});
    EXPECT_EQ(instance.calls,
              (Calls{"ResetInstance true 4", "BeginUpdateRegisterAssembly", "RegisterAssembly registerAssembly-0",
                     "ResetRegisterAssembly", "Add", "RegisterAssemblyUpdate registerAssembly-0",
                     "EndUpdateRegisterAssembly registerAssembly-0", "Enable true", "OnPersistDomainLoaded job"}));
    ExpectFilledOnly(2);
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::None);
    Load({Entry(MapId, {Block("MeasurementValue", 130)})});
    ExpectFilledOnly(1);
}

TEST_F(PersistControlRegisterAssemblyTest, AStoredMapWithoutBlocksIsEmptied) {
    Load({Entry(MapId, {Block("MeasurementValue", 110)})});
    Load({Entry(MapId, {})});
    ExpectFilledOnly(0);
}

TEST_F(PersistControlRegisterAssemblyTest, WhatIsSavedIsLoadedAgain) {
    Load({Entry(MapId, {Block("MeasurementValue", 110), Block("Stamp", 130)})});
    instance.calls.clear();
    const json section = Saved();
    EXPECT_EQ(instance.calls,
              (Calls{"RegisterAssemblyList", "RegisterAssemblyBeginLock registerAssembly-0",
                     "RegisterAssembly registerAssembly-0", "RegisterAssemblyEndLock registerAssembly-0"}));
    ASSERT_EQ(section.at("registerAssemblyList").size(), 1U);
    const json& entry = section.at("registerAssemblyList").at(0);
    EXPECT_EQ(entry.at("attributes").at("outputIdMin"), 100);
    EXPECT_EQ(entry.at("attributes").at("outputIdMax"), 199);
    EXPECT_EQ(entry.at("properties").at("id"), MapId);
    EXPECT_EQ(entry.at("properties").at("displayName"), "Map");
    ASSERT_EQ(entry.at("blocks").size(), 2U);
    EXPECT_EQ(entry.at("blocks").at(0).at("type"), "MeasurementValue");
    EXPECT_EQ(entry.at("blocks").at(0).at("outputId"), 110);
    EXPECT_EQ(entry.at("blocks").at(0).at("dataSource"), "profile/max");
    EXPECT_EQ(entry.at("blocks").at(1).at("outputId"), 130);

    assembly->ResetRegisterAssembly();
    control.Load(instance, PersistDomain::Job, store);
    ExpectFilledOnly(2);
    EXPECT_EQ(Saved(), json::parse(store.files.at(FakeControlInstance::Path)).at("vor:control"));
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::None);
}

TEST_F(PersistControlRegisterAssemblyTest, EveryMapIsSavedUnderItsOwnLock) {
    instance.assemblies["second"] = std::make_shared<WatchedAssembly>("second", instance.calls);
    const json section = Saved();
    EXPECT_EQ(section.at("registerAssemblyList").size(), 2U);
    EXPECT_EQ(section.at("registerAssemblyList").at(1).at("properties").at("id"), "second");
    EXPECT_EQ(section.at("registerAssemblyList").at(1).at("blocks"), json::array());
    EXPECT_EQ(instance.calls,
              (Calls{"RegisterAssemblyList", "RegisterAssemblyBeginLock registerAssembly-0",
                     "RegisterAssembly registerAssembly-0", "RegisterAssemblyEndLock registerAssembly-0",
                     "RegisterAssemblyBeginLock second", "RegisterAssembly second", "RegisterAssemblyEndLock second"}));
}

TEST_F(PersistControlRegisterAssemblyTest, AServiceWithoutMapsSavesAndLoadsNone) {
    instance.hasGroup = false;
    EXPECT_FALSE(Saved().contains("registerAssemblyList"));
    Load({Entry(MapId, {Block("MeasurementValue", 110)})});
    ExpectFilledOnly(0);
}

TEST_F(PersistControlRegisterAssemblyTest, AServiceThatDoesNotPersistMapsSavesAndLoadsNone) {
    instance.options = FakeControlInstance::Options::Params;
    EXPECT_FALSE(Saved().contains("registerAssemblyList"));
    Load({Entry(MapId, {Block("MeasurementValue", 110)})});
    ExpectFilledOnly(0);
}

TEST_F(PersistControlRegisterAssemblyTest, AListThatIsNoArrayIsIgnored) {
    for (const json& list : {json(), json::object(), json("x"), json(1)}) {
        LoadList(list);
        EXPECT_EQ(instance.calls, (Calls{"ResetInstance true 4", "Enable true", "OnPersistDomainLoaded job"}));
        instance.enabled = false;
    }
}

TEST_F(PersistControlRegisterAssemblyTest, TheIdOfTheFirstReleaseIsFoundAmongTheAttributes) {
    json entry = Entry("unused", {Block("MeasurementValue", 110)});
    entry.erase("properties");
    entry["attributes"]["id"] = MapId;
    Load({entry});
    ExpectFilledOnly(1);
    entry["properties"] = {{"version", "1.0"}};
    Load({entry});
    ExpectFilledOnly(1);
}

TEST_F(PersistControlRegisterAssemblyTest, TheIdOfThePropertiesGoesFirst) {
    json entry = Entry(MapId, {Block("MeasurementValue", 110)});
    entry["attributes"]["id"] = "unknown";
    Load({entry});
    ExpectFilledOnly(1);
}

TEST_F(PersistControlRegisterAssemblyTest, AnEntryWithoutIdOrBlocksIsSkipped) {
    json withoutBlocks = Entry(MapId, {});
    withoutBlocks.erase("blocks");
    json withoutId = Entry("", {Block("MeasurementValue", 110)});
    json withoutGroups = {{"blocks", json::array()}};
    json withOtherId = withoutGroups;
    withOtherId["properties"] = {{"id", 7}};
    json withOtherGroups = withoutGroups;
    withOtherGroups["properties"] = "id";
    withOtherGroups["attributes"] = {"id"};
    for (const json& entry : {withoutBlocks, withoutId, withoutGroups, withOtherId, withOtherGroups, json(), json(7),
                              json("id"), json::array({"blocks"})}) {
        log.Clear();
        Load({entry, Entry(MapId, {Block("MeasurementValue", 110)})});
        ExpectFilledOnly(1);
        ExpectForUser(Vor::UserWarning,
                      "Missing connection map identifier for service 'Fake Service'. Connection map may require manual "
                      "configuration.",
                      "Missing connection map identifier for service '%s'. Connection map may require manual "
                      "configuration.");
        EXPECT_LT(Place(Vor::LevelWarning, "Missing connection map identifier for service 'Fake Service'"),
                  Place(Vor::UserWarning, "Missing connection map identifier for service 'Fake Service'. Connection "
                                          "map may require manual configuration."));
    }
}

TEST_F(PersistControlRegisterAssemblyTest, AnUnknownMapIsSkipped) {
    Load({Entry("other", {Block("MeasurementValue", 110)}), Entry(MapId, {Block("MeasurementValue", 110)})});
    ExpectFilledOnly(1);
    ExpectForUser(Vor::UserWarning,
                  "Missing connection map identifier 'other' for service 'Fake Service'. Connection map may require "
                  "manual configuration.",
                  "Missing connection map identifier '%1$s' for service '%2$s'. Connection map may require manual "
                  "configuration.");
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Missing connection map identifier 'other' for service 'Fake Service'"), 1U);
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::None);
}

TEST_F(PersistControlRegisterAssemblyTest, AMapThatTakesItsBlocksOtherwiseThanAskedIsReported) {
    assembly->onAdd = [] { return 2U; };
    Load({Entry(MapId, {Block("MeasurementValue", 110)})});
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::AssemblyInPart);
    assembly->onAdd = nullptr;
    Load({Entry(MapId, {Block("MeasurementValue", 110)})});
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::None);
}

TEST_F(PersistControlRegisterAssemblyTest, BlocksThatCannotBeAddedResetTheMapAndFailTheLoad) {
    assembly->onAdd = []() -> std::uint32_t { Vor::Throw(yERROR, "No data sources were added."); };
    EXPECT_TEXTLESS_FAILURE(Load({Entry(MapId, {Block("MeasurementValue", 110)})}), yERROR);
    EXPECT_EQ(instance.calls,
              (Calls{"ResetInstance true 4", "BeginUpdateRegisterAssembly", "RegisterAssembly registerAssembly-0",
                     "ResetRegisterAssembly", "Add", "ResetInstance true 2",
                     "EndUpdateRegisterAssembly registerAssembly-0", "Enable true"}));
    EXPECT_EQ(instance.gateDepth, 0);
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::PartMissing);
    const std::vector<std::size_t> places = {
        Place(Vor::LevelWarning,
              "Encountered a problem loading Fake Service register assembly: No data sources were added."),
        Place(Vor::LevelError, "Loading register assembly registerAssembly-0 blocks for service Fake Service"),
        Place(Vor::UserError, "Error filling connection map 'registerAssembly-0' for service 'Fake Service'. "
                              "Connection map may require manual configuration."),
        Place(Vor::LevelError, "Error filling connection map 'registerAssembly-0' for service 'Fake Service'"),
        Place(Vor::UserError, "Error loading connection map 'registerAssembly-0' for service 'Fake Service'. "
                              "Connection map may require manual configuration."),
        Place(Vor::LevelError, "EXCEPTION THROWN: "),
    };
    EXPECT_TRUE(std::is_sorted(places.begin(), places.end()));
    for (const char* format : {"Error filling connection map '%1$s' for service '%2$s'. Connection map may require "
                               "manual configuration.",
                               "Error loading connection map '%1$s' for service '%2$s'. Connection map may require "
                               "manual configuration."}) {
        EXPECT_TRUE(Tests::WasTranslated("beApp.ctrl", format));
    }
}

TEST_F(PersistControlRegisterAssemblyTest, AFailingEntryEndsTheList) {
    assembly->onAdd = []() -> std::uint32_t { Vor::Throw(yERROR); };
    const auto second = std::make_shared<WatchedAssembly>("second", instance.calls);
    instance.assemblies["second"] = second;
    EXPECT_TEXTLESS_FAILURE(
        Load({Entry(MapId, {Block("MeasurementValue", 110)}), Entry("second", {Block("MeasurementValue", 110)})}),
        yERROR);
    EXPECT_EQ(second->AddedRegisterBlocksCount(), 0U);
}

TEST_F(PersistControlRegisterAssemblyTest, BlocksThatCannotBeReadResetTheMapAndFailTheLoad) {
    for (const json& blocks : {json("x"), json(7), json::array({7}), json::array({{{"outputId", "x"}}}),
                               json::array({{{"outputId", 65536}}})}) {
        instance.enabled = false;
        EXPECT_TEXTLESS_FAILURE(Load({EntryWith(MapId, blocks)}), yERROR);
        EXPECT_EQ(instance.calls,
                  (Calls{"ResetInstance true 4", "BeginUpdateRegisterAssembly", "RegisterAssembly registerAssembly-0",
                         "ResetInstance true 2", "EndUpdateRegisterAssembly registerAssembly-0", "Enable true"}));
        EXPECT_EQ(instance.gateDepth, 0);
    }
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::None);
}

TEST_F(PersistControlRegisterAssemblyTest, AServiceThatRefusesTheMapFailsTheLoad) {
    instance.actions["RegisterAssemblyUpdate registerAssembly-0"] = [] { Vor::Throw(yERROR_UNIMPLEMENTED); };
    EXPECT_TEXTLESS_FAILURE(Load({Entry(MapId, {Block("MeasurementValue", 110)})}), yERROR);
    EXPECT_EQ(
        log.Count(Vor::LevelError, "Loading register assembly registerAssembly-0 blocks for service Fake Service"), 0U);
    EXPECT_EQ(
        log.Count(Vor::LevelError, "Error filling connection map 'registerAssembly-0' for service 'Fake Service'"), 1U);
    ExpectFilledOnly(1);
}

TEST_F(PersistControlRegisterAssemblyTest, AnUpdateThatCannotBeginIsNotEnded) {
    instance.actions["BeginUpdateRegisterAssembly"] = [] { Vor::Throw(yERROR_BUSY); };
    EXPECT_TEXTLESS_FAILURE(Load({Entry(MapId, {Block("MeasurementValue", 110)})}), yERROR);
    EXPECT_EQ(instance.calls, (Calls{"ResetInstance true 4", "BeginUpdateRegisterAssembly", "Enable true"}));
    EXPECT_EQ(
        log.Count(Vor::LevelError, "Error filling connection map 'registerAssembly-0' for service 'Fake Service'"), 0U);
    Place(Vor::UserError, "Error loading connection map 'registerAssembly-0' for service 'Fake Service'. Connection "
                          "map may require manual configuration.");
}

TEST_F(PersistControlRegisterAssemblyTest, AnUpdateEndsAlsoAfterAForeignException) {
    instance.actions["RegisterAssemblyUpdate registerAssembly-0"] = [] { throw 7; };
    EXPECT_THROW(Load({Entry(MapId, {Block("MeasurementValue", 110)})}), int);
    EXPECT_EQ(instance.gateDepth, 0);
}

TEST_F(PersistControlRegisterAssemblyTest, TheAsciiServiceLosesItsFirstScannerBlockOnly) {
    const std::vector<json> blocks = {Block("MeasurementValue", 110), Block("Scanner", 120), Block("Scanner", 130),
                                      Block("Stamp", 140)};
    assembly->onAdd = [] { return 0U; };
    instance.displayName = "e-ascii";
    Load({Entry(MapId, blocks)});
    EXPECT_EQ(assembly->requested, (Calls{"MeasurementValue@110", "Scanner@130", "Stamp@140"}));
    instance.displayName = "E-ASCII";
    instance.id = "e-ascii";
    instance.typeName = "fake";
    Load({Entry(MapId, blocks)});
    EXPECT_EQ(assembly->requested, (Calls{"MeasurementValue@110", "Scanner@120", "Scanner@130", "Stamp@140"}));
    instance.displayName = "e-ascii";
    Load({Entry(MapId, {Block("Stamp", 140)})});
    EXPECT_EQ(assembly->requested, Calls{"Stamp@140"});
}

TEST_F(PersistControlRegisterAssemblyTest, AMapThatCannotBeReadFailsTheSaveAndIsUnlocked) {
    instance.actions["RegisterAssembly registerAssembly-0"] = [] { Vor::Throw(yERROR_NOT_FOUND); };
    EXPECT_FAILURE(control.Save(instance, PersistDomain::Job, store), yERROR_NOT_FOUND,
                   "Error saving connection map for service 'Fake Service'");
    EXPECT_EQ(instance.calls.back(), "RegisterAssemblyEndLock registerAssembly-0");
    ExpectForUser(Vor::UserError,
                  "Error saving connection map for service 'Fake Service'. Please check the connection map.",
                  "Error saving connection map for service '%s'. Please check the connection map.");
    EXPECT_EQ(log.Count("Error locking/unlocking or getting list connection map for 'Fake Service'"), 0U);
    EXPECT_TRUE(store.files.empty());
}

TEST_F(PersistControlRegisterAssemblyTest, AFailingLockOrListFailsTheSave) {
    for (const char* call : {"RegisterAssemblyList", "RegisterAssemblyBeginLock registerAssembly-0",
                             "RegisterAssemblyEndLock registerAssembly-0"}) {
        log.Clear();
        instance.actions.clear();
        instance.actions[call] = [] { throw std::runtime_error("locked"); };
        EXPECT_FAILURE(control.Save(instance, PersistDomain::Job, store), yERROR,
                       "Error saving connection map for service 'Fake Service'");
        EXPECT_EQ(log.Count(Vor::UserError,
                            "Error saving connection map for service 'Fake Service'. Please check the connection map."),
                  1U);
        EXPECT_EQ(
            log.Count(Vor::LevelError, "Error locking/unlocking or getting list connection map for 'Fake Service'"), 1U)
            << call;
        EXPECT_TRUE(store.files.empty());
    }
}
