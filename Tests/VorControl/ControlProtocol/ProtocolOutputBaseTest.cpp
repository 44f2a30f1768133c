#include "VorControl/ControlProtocol/ProtocolOutputBase.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Faults.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestOutputs.h"
#include "Vor/JsonSerializer.h"

#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace Tests;
using namespace VorControl::ControlProtocol;
using nlohmann::json;
using Vor::Properties::JsonSerializer;

namespace {

using Entries = NumericOutputs::Entries;
using Texts = std::vector<std::string>;

/// A map of these entries.
struct Filled : NumericOutputs {
    explicit Filled(const Entries& entries, unsigned short maxCount = 100)
        : NumericOutputs(maxCount, 0, 65534) {
        AddEach(entries);
    }
};

/// Reads a document into the map without the map's operations, as a load of a job does.
void Load(IProtocolOutput& map, const json& document) {
    map.BeginLock();
    JsonSerializer::Deserialize(map.OutputMap(), document);
    map.EndLock();
}

json EntryDocument(const json& id, const std::string& source) {
    return {{"outputId", id}, {"source", source}};
}

} // namespace

TEST(ProtocolOutputBase, DocumentNeedsTheLock) {
    Filled map({{1, "a"}});
    EXPECT_TEXTLESS_FAILURE(map.OutputMap(), yERROR_STATE);
    map.BeginLock();
    EXPECT_EQ(map.OutputMap().map.Count(), 1U);
    map.EndLock();
    EXPECT_TEXTLESS_FAILURE(map.OutputMap(), yERROR_STATE);
}

TEST(ProtocolOutputBase, InnerEndLockEndsTheUse) {
    Filled map({});
    map.BeginLock();
    map.BeginLock();
    map.EndLock();
    EXPECT_TEXTLESS_FAILURE(map.OutputMap(), yERROR_STATE);
    map.EndLock();
}

TEST(ProtocolOutputBase, LockThatFailsGivesItsStatus) {
    Faults faults;
    faults.SetHere("yLock_Construct", -71);
    EXPECT_TEXTLESS_FAILURE(TextOutputs(1), -71);
    Filled map({});
    faults.SetHere("yLock_Enter", -72);
    EXPECT_TEXTLESS_FAILURE(map.BeginLock(), -72);
    EXPECT_TEXTLESS_FAILURE(map.OutputMap(), yERROR_STATE);
    faults.SetHere("yLock_Enter", -73);
    EXPECT_TEXTLESS_FAILURE(map.Count(), -73);
    map.BeginLock();
    faults.SetHere("yLock_Exit", -74);
    EXPECT_TEXTLESS_FAILURE(map.EndLock(), -74);
    EXPECT_TEXTLESS_FAILURE(map.OutputMap(), yERROR_STATE);
}

TEST(ProtocolOutputBase, ChangesWaitForTheReaderOfTheDocument) {
    Filled map({{1, "a"}});
    map.BeginLock();
    const auto& list = map.OutputMap().map;
    std::thread writer([&] {
        map.AddOne(2, "b");
        map.RemoveOne(1);
    });
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(list.Count(), 1U);
        ASSERT_EQ(list.At(0).source.Get(), "a");
    }
    map.EndLock();
    writer.join();
    EXPECT_EQ(map.List(), (Entries{{2, "b"}}));
}

TEST(ProtocolOutputBase, AddOfAnEntryThatIsThereTellsOfItsId) {
    Filled map({{1, "a"}, {2, "b"}});
    const Vor::LogCapture log;
    EXPECT_TEXTLESS_FAILURE(map.AddOne(1, "a", true), yERROR_ALREADY_EXISTS);
    EXPECT_EQ(Lines(log),
              (Texts{"user warning VorControl: Output id already exists", "warning: Output id already exists"}));
}

TEST(ProtocolOutputBase, SourceStandsInTheMapOnce) {
    Filled map({{1, "a"}, {2, "b"}});
    for (const unsigned short id : {2, 3}) {
        const Vor::LogCapture log;
        EXPECT_TEXTLESS_FAILURE(map.AddOne(id, "a", true), yERROR_ALREADY_EXISTS);
        EXPECT_EQ(Lines(log), (Texts{"user warning VorControl: Data source a already exists",
                                     "warning: Data source a already exists"}));
    }
    EXPECT_EQ(map.List(), (Entries{{1, "a"}, {2, "b"}}));
}

TEST(ProtocolOutputBase, EntryWithoutIdOrSourceIsInvalid) {
    Filled map({});
    const Vor::LogCapture log;
    EXPECT_TEXTLESS_FAILURE(map.AddOne(65535, "a", true), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(map.AddOne(1, "", true), yERROR_PARAMETER);
    EXPECT_EQ(Lines(log), (Texts{"user error VorControl: Data source a is invalid", "error: Data source a is invalid",
                                 "user error VorControl: Data source  is invalid", "error: Data source  is invalid"}));
    EXPECT_EQ(map.Count(), 0U);
}

TEST(ProtocolOutputBase, FullMapTakesNoMore) {
    Filled map({{1, "a"}, {2, "b"}}, 2);
    EXPECT_TEXTLESS_FAILURE(map.AddOne(3, "c"), yERROR_FULL);
    EXPECT_TEXTLESS_FAILURE(map.AddOne(3, "a"), yERROR_ALREADY_EXISTS);
    EXPECT_TEXTLESS_FAILURE(map.AddOne(2, "c"), yERROR_PARAMETER);
    EXPECT_EQ(map.Count(), 2U);
}

TEST(ProtocolOutputBase, RequestsMustBeOfTheMapsClasses) {
    Filled map({{1, "a"}});
    StandardOutputItem item;
    item.outputId = 1;
    EXPECT_THROW(map.Add(item), std::bad_cast);
    EXPECT_THROW(map.Remove(item), std::bad_cast);
    EXPECT_THROW(map.UpdateId(item), std::bad_cast);
    EXPECT_TRUE(map.GetOverlappingState(item));
    Vor::Params::Group group;
    EXPECT_THROW(map.GetOverlappingState(group), std::bad_cast);
}

TEST(ProtocolOutputBase, OverlapIsASharedId) {
    Filled map({{1, "a"}, {5, "b"}});
    StandardOutputItem item;
    for (const unsigned short id : {0, 2, 4, 6, 65535}) {
        item.outputId = id;
        EXPECT_FALSE(map.GetOverlappingState(item)) << id;
    }
    for (const unsigned short id : {1, 5}) {
        item.outputId = id;
        EXPECT_TRUE(map.GetOverlappingState(item)) << id;
    }
}

TEST(ProtocolOutputBase, EachIdOfALongMapIsFound) {
    for (int count = 0; count < 20; ++count) {
        Filled map({});
        for (int i = 0; i < count; ++i) {
            map.AddOne(static_cast<unsigned short>(2 * i + 1), std::to_string(i));
        }
        StandardOutputItem item;
        for (int id = 0; id <= 2 * count + 1; ++id) {
            item.outputId = static_cast<unsigned short>(id);
            EXPECT_EQ(map.GetOverlappingState(item), id % 2 == 1 && id < 2 * count) << id << " of " << count;
        }
    }
}

TEST(ProtocolOutputBase, RemoveTakesAnIdOrAList) {
    Filled map({{1, "a"}});
    StandardOutputRemoveArgs args;
    EXPECT_TEXTLESS_FAILURE(map.Remove(args), yERROR_PARAMETER);
    args.outputId = 1;
    args.outputIdList = std::vector<unsigned short>{1};
    EXPECT_TEXTLESS_FAILURE(map.Remove(args), yERROR_PARAMETER);
    EXPECT_EQ(map.Count(), 1U);
}

TEST(ProtocolOutputBase, RemoveOfAnUnknownIdIsNotFound) {
    Filled map({{1, "a"}, {3, "b"}});
    for (const unsigned short id : {0, 2, 4}) {
        EXPECT_TEXTLESS_FAILURE(map.RemoveOne(id), yERROR_NOT_FOUND);
    }
    map.RemoveOne(1);
    EXPECT_EQ(map.List(), (Entries{{3, "b"}}));
}

TEST(ProtocolOutputBase, RemovedListStopsAtTheFirstUnknownId) {
    Filled map({{1, "a"}, {2, "b"}, {3, "c"}, {4, "d"}});
    EXPECT_TEXTLESS_FAILURE(map.RemoveMany({4, 1, 9, 2}), yERROR_NOT_FOUND);
    EXPECT_EQ(map.List(), (Entries{{2, "b"}, {3, "c"}}));
    EXPECT_TEXTLESS_FAILURE(map.RemoveMany({3, 3, 2}), yERROR_NOT_FOUND);
    EXPECT_EQ(map.List(), (Entries{{2, "b"}}));
    EXPECT_TEXTLESS_FAILURE(map.RemoveMany({65535}), yERROR_NOT_FOUND);
}

TEST(ProtocolOutputBase, RemovalIsToldEntryByEntryWhileTheEntryIsThere) {
    Filled map({{1, "a"}, {2, "b"}, {3, "c"}});
    Texts told;
    map.BeginLock();
    map.OutputMap().map.AddItemRemovedHandler([&](auto& array, StandardOutputItem& item) {
        told.push_back(item.source.Get() + " of " + std::to_string(array.Count()));
    });
    map.EndLock();
    EXPECT_TEXTLESS_FAILURE(map.RemoveMany({3, 1, 1}), yERROR_NOT_FOUND);
    EXPECT_EQ(told, (Texts{"c of 3", "a of 2"}));
    map.RemoveOne(2);
    EXPECT_EQ(told.back(), "b of 1");
}

TEST(ProtocolOutputBase, ClearTellsOfEachEntry) {
    Filled map({{1, "a"}, {2, "b"}});
    Texts told;
    map.BeginLock();
    map.OutputMap().map.AddItemRemovedHandler(
        [&](auto&, StandardOutputItem& item) { told.push_back(item.source.Get()); });
    map.EndLock();
    map.Clear();
    EXPECT_EQ(told, (Texts{"a", "b"}));
    EXPECT_EQ(map.Count(), 0U);
    EXPECT_NO_THROW(map.Clear());
}

TEST(ProtocolOutputBase, ShiftRunsTheChangeHandlersOfTheValues) {
    Filled map({{1, "a"}, {3, "c"}});
    Texts before;
    map.BeginLock();
    map.OutputMap().map.At(1).source.AddChangeHandler([&](Vor::Properties::Node& node) {
        before.push_back(dynamic_cast<Vor::Params::Value<std::string>&>(node).Get());
    });
    map.EndLock();
    map.AddOne(2, "b");
    EXPECT_EQ(before, (Texts{"c"}));
    EXPECT_EQ(map.List(), (Entries{{1, "a"}, {2, "b"}, {3, "c"}}));
}

TEST(ProtocolOutputBase, AtTellsThePlaceBehindTheLastFromThoseBeyond) {
    Filled map({{1, "a"}, {2, "b"}});
    EXPECT_EQ(map.At(1).source.Get(), "b");
    EXPECT_TEXTLESS_FAILURE(map.At(2), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(map.At(3), yERROR_PARAMETER);
    const IProtocolOutput& asSeenByOthers = map;
    EXPECT_EQ(JsonSerializer::Serialize(asSeenByOthers.At(0)), EntryDocument(1, "a"));
}

TEST(ProtocolOutputBase, DataSourcesAreInListOrder) {
    const Filled map({{9, "a"}, {2, "b"}, {5, "c"}});
    EXPECT_EQ(map.DataSourceList(), (Texts{"b", "c", "a"}));
    EXPECT_EQ(Filled({}).DataSourceList(), Texts());
}

TEST(ProtocolOutputBase, UpdateNeedsExactlyTwoEntries) {
    Filled map({{1, "a"}});
    for (const int count : {0, 1, 3}) {
        StandardOutputsArgs args;
        args.map.Resize(static_cast<unsigned long>(count));
        EXPECT_FAILURE(map.UpdateId(args), yERROR_PARAMETER,
                       "There should be exactly 2 output id entries but there are " + std::to_string(count) +
                           ". The first output id should contain the original id to change from and the second output "
                           "id should contain the new id to change to.");
    }
}

TEST(ProtocolOutputBase, UpdateOfEqualIdsDoesNothingEvenForAnUnknownOne) {
    Filled map({{1, "a"}});
    EXPECT_NO_THROW(map.Update(4, 4));
    EXPECT_NO_THROW(map.Update(1, 1));
    EXPECT_EQ(map.List(), (Entries{{1, "a"}}));
}

TEST(ProtocolOutputBase, LoadedMapInOrderStaysAsItIs) {
    Filled map({}, 3);
    const json list = {EntryDocument(1, "a"), EntryDocument(2, ""), EntryDocument(65535, "c")};
    Load(map, {{"map", list}});
    EXPECT_NO_THROW(map.CheckLoaded());
    EXPECT_EQ(map.List(), (Entries{{1, "a"}, {2, ""}, {65535, "c"}}));
    EXPECT_NO_THROW(Filled({}).CheckLoaded());
}

TEST(ProtocolOutputBase, LoadedMapIsPutInOrder) {
    Filled map({});
    Load(map, {{"map", {EntryDocument(5, "a"), EntryDocument(2, "b"), EntryDocument(9, "c"), EntryDocument(0, "d")}}});
    EXPECT_NO_THROW(map.CheckLoaded());
    EXPECT_EQ(map.List(), (Entries{{0, "d"}, {2, "b"}, {5, "a"}, {9, "c"}}));
    map.RemoveOne(5);
}

TEST(ProtocolOutputBase, LoadedTextMapKeepsItemTypesWithTheirEntries) {
    TextOutputs map(10);
    auto first = EntryDocument("b", "1");
    first["itemType"] = "one";
    auto second = EntryDocument("a", "2");
    second["itemType"] = "two";
    Load(map, {{"map", {first, second}}});
    map.CheckLoaded();
    EXPECT_EQ(map.At(0).itemType.Get(), "two");
    EXPECT_EQ(map.At(1).itemType.Get(), "one");
    EXPECT_EQ(map.List(), (TextOutputs::Entries{{"a", "2"}, {"b", "1"}}));
}

TEST(ProtocolOutputBase, LoadedDuplicatesAreDropped) {
    Filled map({});
    Load(map, {{"map",
                {EntryDocument(5, "a"), EntryDocument(5, "b"), EntryDocument(2, "a"), EntryDocument(3, "b"),
                 EntryDocument(5, "a")}}});
    EXPECT_FAILURE(map.CheckLoaded(), yERROR_ALREADY_EXISTS,
                   "Entries of the output map that repeat an id or a source are dropped: 3");
    EXPECT_EQ(map.List(), (Entries{{3, "b"}, {5, "a"}}));
    EXPECT_NO_THROW(map.CheckLoaded());
}

TEST(ProtocolOutputBase, LoadedSurplusIsDropped) {
    Filled map({}, 2);
    Load(map, {{"map", {EntryDocument(5, "a"), EntryDocument(4, "b"), EntryDocument(3, "c"), EntryDocument(2, "d")}}});
    EXPECT_FAILURE(map.CheckLoaded(), yERROR_FULL,
                   "Entries of the output map beyond its greatest number are dropped: 2");
    EXPECT_EQ(map.List(), (Entries{{4, "b"}, {5, "a"}}));
    Load(map, {{"map", {EntryDocument(5, "a"), EntryDocument(5, "b"), EntryDocument(3, "c"), EntryDocument(2, "d")}}});
    EXPECT_FAILURE(map.CheckLoaded(), yERROR_ALREADY_EXISTS,
                   "Entries of the output map that repeat an id or a source are dropped: 1");
    EXPECT_EQ(map.List(), (Entries{{3, "c"}, {5, "a"}}));
}

TEST(ProtocolOutputBase, TextsForTheUserAreTranslated) {
    VorGetText::GetInstance().ForgetCalls();
    TextOutputs map(10);
    map.AddOne("a", "1");
    FailureOf([&] { map.AddOne("a", "2"); });
    FailureOf([&] { map.AddOne("a", "1"); });
    FailureOf([&] { map.AddOne("b", "1"); });
    FailureOf([&] { map.AddOne("", "1"); });
    FailureOf([&] { map.Update("", "a"); });
    TextIdStandardOutputsArgs args;
    FailureOf([&] { map.UpdateId(args); });
    for (const char* const text :
         {"Overlap of output id not supported", "Output id already exists", "Data source %1$s already exists",
          "Data source %1$s is invalid", "Output id is invalid.",
          "There should be exactly 2 output id entries but there are %1$d. The first output id should contain the "
          "original id to change from and the second output id should contain the new id to change to."}) {
        EXPECT_TRUE(WasTranslated("beApp.ctrl", text)) << text;
    }
}
