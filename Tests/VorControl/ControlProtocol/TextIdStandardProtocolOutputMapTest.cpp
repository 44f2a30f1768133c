#include "VorControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include "Tests/Support/Failure.h"
#include "Tests/VorControl/ControlProtocol/RandomRequests.h"
#include "Tests/VorControl/ControlProtocol/TestOutputs.h"

#include <stdexcept>

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

using namespace Tests;
using namespace VorControl::ControlProtocol;

namespace {

using TextEntries = TextOutputs::Entries;
using Texts = std::vector<std::string>;

/// A map of these entries.
struct FilledTextMap : TextOutputs {
    explicit FilledTextMap(const TextEntries& entries, unsigned short maxCount = 100)
        : TextOutputs(maxCount) {
        AddEach(entries);
    }
};

std::optional<Failure> AddEntries(TextOutputs& map, const TextEntries& entries) {
    TextIdStandardOutputsArgs args;
    TextOutputs::Fill(args, entries);
    return FailureOf([&] { map.AddAll(args); });
}

/// Texts of the entries that begin a failure.
Texts ErrorsOfAdding(const Vor::LogCapture& log) {
    Texts texts;
    for (const auto& line : Lines(log)) {
        if (line.starts_with("error: Error adding")) {
            texts.push_back(line);
        }
    }
    return texts;
}

} // namespace

TEST(TextIdStandardProtocolOutputMap, IdsAreInByteOrder) {
    const FilledTextMap map({{"b", "1"}, {"B", "2"}, {"ba", "3"}, {"\xC3\xA4", "4"}, {"10", "5"}, {"9", "6"}});
    EXPECT_EQ(map.List(),
              (TextEntries{{"10", "5"}, {"9", "6"}, {"B", "2"}, {"b", "1"}, {"ba", "3"}, {"\xC3\xA4", "4"}}));
}

TEST(TextIdStandardProtocolOutputMap, TakenIdIsRefusedWhateverTheRequestSaysOfShifting) {
    FilledTextMap map({{"x", "a"}, {"y", "b"}});
    for (const bool autoShift : {false, true}) {
        const Vor::LogCapture log;
        EXPECT_FAILURE(map.AddOne("x", "new", autoShift), yERROR_UNIMPLEMENTED, "Overlap of output id not supported");
        EXPECT_EQ(Lines(log), Texts());
    }
    EXPECT_EQ(map.List(), (TextEntries{{"x", "a"}, {"y", "b"}}));
    EXPECT_FALSE(map.IsDataShiftSupported());
}

TEST(TextIdStandardProtocolOutputMap, SameIdAndSourceExistAlready) {
    FilledTextMap map(TextEntries{{"x", "a"}});
    const Vor::LogCapture log;
    EXPECT_TEXTLESS_FAILURE(map.AddOne("x", "a"), yERROR_ALREADY_EXISTS);
    EXPECT_EQ(Lines(log),
              (Texts{"user warning VorControl: Output id already exists", "warning: Output id already exists"}));
}

TEST(TextIdStandardProtocolOutputMap, EmptyIdIsNone) {
    FilledTextMap map({});
    EXPECT_TEXTLESS_FAILURE(map.AddOne("", "a"), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(map.RemoveOne(""), yERROR_PARAMETER);
    EXPECT_FAILURE(map.Update("", "x"), yERROR_PARAMETER, "Output id is invalid.");
    EXPECT_FAILURE(map.Update("x", ""), yERROR_PARAMETER, "Output id is invalid.");
}

TEST(TextIdStandardProtocolOutputMap, AddAllNamesSourcesByThemselves) {
    TextOutputs map(10);
    TextIdStandardOutputsArgs args;
    TextOutputs::Fill(args, {{"", "b"}, {"", "a"}});
    map.AddAll(args);
    EXPECT_EQ(map.List(), (TextEntries{{"a", "a"}, {"b", "b"}}));
    EXPECT_EQ(args.map.At(0).outputId.Get(), "b");
    EXPECT_EQ(args.map.At(1).outputId.Get(), "a");
}

TEST(TextIdStandardProtocolOutputMap, AddAllKeepsIdsThatAreGiven) {
    TextOutputs map(10);
    EXPECT_FALSE(AddEntries(map, {{"z", "a"}, {"", "c"}, {"b", "d"}}).has_value());
    EXPECT_EQ(map.List(), (TextEntries{{"b", "d"}, {"c", "c"}, {"z", "a"}}));
}

TEST(TextIdStandardProtocolOutputMap, AddAllOfNothingDoesNothing) {
    TextOutputs map(0);
    EXPECT_FALSE(AddEntries(map, {}).has_value());
}

TEST(TextIdStandardProtocolOutputMap, AddAllWantsItsRequest) {
    TextOutputs map(10);
    TextIdStandardOutputs other;
    EXPECT_THROW(map.AddAll(other), std::bad_cast);
}

TEST(TextIdStandardProtocolOutputMap, AddAllThrowsTheFirstFailureAndAddsTheRest) {
    FilledTextMap map(TextEntries{{"x", "a"}});
    const Vor::LogCapture log;
    const auto failure = AddEntries(map, {{"x", "b"}, {"y", "a"}, {"", ""}, {"w", "c"}});
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_UNIMPLEMENTED);
    EXPECT_EQ(failure->text, NotAllAdded);
    EXPECT_EQ(map.List(), (TextEntries{{"w", "c"}, {"x", "a"}}));
    EXPECT_EQ(ErrorsOfAdding(log), (Texts{"error: Error adding data source <b>", "error: Error adding data source <a>",
                                          "error: Error adding data source <>"}));
}

TEST(TextIdStandardProtocolOutputMap, AddAllLogsWhyAndTheBackTrace) {
    FilledTextMap map(TextEntries{{"x", "a"}});
    const Vor::LogCapture log;
    AddEntries(map, {{"x", "b"}});
    const auto lines = Lines(log);
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(lines[0], "error: Error adding data source <b>");
    EXPECT_NE(lines[1].find("Overlap of output id not supported"), std::string::npos) << lines[1];
    EXPECT_EQ(log.CountLevel(Vor::LevelError), lines.size());
}

TEST(TextIdStandardProtocolOutputMap, AddAllFindsASourceTwiceInItsRequest) {
    TextOutputs map(10);
    const auto failure = AddEntries(map, {{"1", "a"}, {"2", "a"}, {"3", "b"}});
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_ALREADY_EXISTS);
    EXPECT_EQ(map.List(), (TextEntries{{"1", "a"}, {"3", "b"}}));
}

TEST(TextIdStandardProtocolOutputMap, AddAllTellsAnEntryThatIsThereByItsIdFirst) {
    FilledTextMap map(TextEntries{{"1", "a"}});
    const Vor::LogCapture log;
    AddEntries(map, {{"1", "a"}, {"2", "a"}});
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Output id already exists"), 1U);
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Data source a already exists"), 1U);
}

TEST(TextIdStandardProtocolOutputMap, AddAllOverfillingFailsEntryByEntry) {
    TextOutputs map(2);
    const Vor::LogCapture log;
    const auto failure = AddEntries(map, {{"", "c"}, {"", "b"}, {"", "a"}, {"", "d"}});
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_FULL);
    EXPECT_EQ(map.List(), (TextEntries{{"b", "b"}, {"c", "c"}}));
    EXPECT_EQ(ErrorsOfAdding(log),
              (Texts{"error: Error adding data source <a>", "error: Error adding data source <d>"}));
}

TEST(TextIdStandardProtocolOutputMap, AddAllTakesAnotherExceptionForABadParameter) {
    TextOutputs map(10);
    map.BeginLock();
    map.OutputMap().map.AddItemAddedHandler([](auto&, auto&) { throw std::runtime_error("not today"); });
    map.EndLock();
    const Vor::LogCapture log;
    const auto failure = AddEntries(map, {{"x", "a"}});
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_PARAMETER);
    EXPECT_EQ(failure->text, NotAllAdded);
    EXPECT_EQ(ErrorsOfAdding(log), (Texts{"error: Error adding data source <a>"}));
}

TEST(TextIdStandardProtocolOutputMap, UpdateMovesAnEntryToItsPlace) {
    FilledTextMap map({{"a", "1"}, {"b", "2"}, {"c", "3"}});
    TextIdStandardOutputsArgs args;
    TextOutputs::Fill(args, {{"a", ""}, {"bb", ""}});
    map.UpdateId(args);
    EXPECT_EQ(map.List(), (TextEntries{{"b", "2"}, {"bb", "1"}, {"c", "3"}}));
    EXPECT_EQ(args.map.At(1).source.Get(), "1");
}

TEST(TextIdStandardProtocolOutputMap, UpdateToATakenIdChangesNothing) {
    FilledTextMap map({{"x", "a"}, {"y", "b"}});
    const Vor::LogCapture log;
    EXPECT_TEXTLESS_FAILURE(map.Update("x", "y"), yERROR_CONFLICT);
    EXPECT_TEXTLESS_FAILURE(map.Update("unknown", "y"), yERROR_CONFLICT);
    EXPECT_TEXTLESS_FAILURE(map.Update("unknown", "z"), yERROR_NOT_FOUND);
    EXPECT_EQ(Lines(log), Texts());
    EXPECT_EQ(map.List(), (TextEntries{{"x", "a"}, {"y", "b"}}));
}

TEST(TextIdStandardProtocolOutputMap, UpdateOfEqualIdsDoesNothing) {
    FilledTextMap map(TextEntries{{"x", "a"}});
    EXPECT_NO_THROW(map.Update("unknown", "unknown"));
    EXPECT_NO_THROW(map.Update("x", "x"));
    EXPECT_EQ(map.List(), (TextEntries{{"x", "a"}}));
}

TEST(TextIdStandardProtocolOutputMap, CompactIdLeavesTheMapAsItIs) {
    FilledTextMap map({{"x", "a"}, {"z", "b"}});
    map.CompactId();
    EXPECT_EQ(map.List(), (TextEntries{{"x", "a"}, {"z", "b"}}));
}

TEST(TextIdStandardProtocolOutputMap, ItemTypeStaysAtItsPlaceWhenEntriesMakeRoom) {
    FilledTextMap map(TextEntries{{"m", "a"}});
    map.BeginLock();
    map.OutputMap().map.At(0).itemType = "first";
    map.EndLock();
    map.AddOne("b", "b");
    EXPECT_EQ(map.At(0).itemType.Get(), "first");
    EXPECT_EQ(map.At(1).itemType.Get(), "");
}

TEST(TextIdStandardProtocolOutputMap, RemovesByListOfTexts) {
    FilledTextMap map({{"a", "1"}, {"b", "2"}, {"c", "3"}});
    map.RemoveMany({"c", "a"});
    EXPECT_EQ(map.List(), (TextEntries{{"b", "2"}}));
}

namespace {

/// What is seen of an entry.
struct SeenEntry {
    std::string id;
    std::string source;
    std::string itemType;
    bool idChanged;
    bool sourceChanged;
    bool operator==(const SeenEntry&) const = default;
};

std::vector<SeenEntry> SeenEntries(const TextIdStandardProtocolOutputMap& map) {
    std::vector<SeenEntry> entries;
    for (unsigned long i = 0; i < map.Count(); ++i) {
        const auto& item = map.At(i);
        entries.push_back({item.outputId.Get(), item.source.Get(), item.itemType.Get(), item.outputId.IsChanged(),
                           item.source.IsChanged()});
    }
    return entries;
}

/// As the service that owns the map does.
void NameTypesAndForgetChanges(TextIdStandardProtocolOutputMap& map, const std::string& type) {
    map.BeginLock();
    auto& outputs = map.OutputMap();
    for (unsigned long i = 0; i < outputs.map.Count(); ++i) {
        outputs.map.At(i).itemType = type + std::to_string(i);
    }
    outputs.ResetChangedParameters();
    map.EndLock();
}

} // namespace

// A map of a derived class adds the entries one by one.
RC_GTEST_PROP(TextIdStandardProtocolOutputMap, AddAllDoesAsOneByOne, ()) {
    const SilentLog silentLog;
    TextIdStandardProtocolOutputMap merging(12);
    TextOutputs oneByOne(12);
    const auto text = rc::gen::container<std::string>(rc::gen::resize(2, rc::gen::element('a', 'b', 'c', 'd')));
    const auto entries = rc::gen::container<std::vector<std::pair<std::string, std::string>>>(
        rc::gen::pair(rc::gen::oneOf(rc::gen::just(std::string()), text), text));
    const int requests = *rc::gen::inRange(1, 5);
    for (int i = 0; i < requests; ++i) {
        const auto request = *rc::gen::resize(8, entries);
        TextIdStandardOutputsArgs merged;
        TextIdStandardOutputsArgs added;
        TextOutputs::Fill(merged, request);
        TextOutputs::Fill(added, request);
        const auto failure = FailureOf([&] { merging.AddAll(merged); });
        const auto expected = FailureOf([&] { oneByOne.AddAll(added); });
        RC_ASSERT(failure.has_value() == expected.has_value());
        RC_ASSERT((!failure.has_value() || failure->status == expected->status));
        for (std::size_t k = 0; k < request.size(); ++k) {
            RC_ASSERT(merged.map.At(k).outputId.Get() == added.map.At(k).outputId.Get());
        }
        RC_ASSERT(SeenEntries(merging) == SeenEntries(oneByOne));
        NameTypesAndForgetChanges(merging, std::to_string(i));
        NameTypesAndForgetChanges(oneByOne, std::to_string(i));
    }
}

// With an "actual", an entry that makes room for others passes on what it shows.
TEST(TextIdStandardProtocolOutputMap, AddAllDoesAsOneByOneWithActuals) {
    for (const bool ofSource : {false, true}) {
        TextIdStandardProtocolOutputMap merging(12);
        TextOutputs oneByOne(12);
        for (TextIdStandardProtocolOutputMap* map :
             std::initializer_list<TextIdStandardProtocolOutputMap*>{&merging, &oneByOne}) {
            TextIdStandardOutputsArgs first;
            TextOutputs::Fill(first, {{"m", "1"}, {"n", "2"}});
            map->AddAll(first);
            map->BeginLock();
            auto& item = map->OutputMap().map.At(0);
            auto& value = ofSource ? item.source : item.outputId;
            value.EnableActual(true);
            value.SetActual("mm");
            map->EndLock();
            TextIdStandardOutputsArgs more;
            TextOutputs::Fill(more, {{"b", "3"}, {"a", "4"}});
            map->AddAll(more);
        }
        EXPECT_EQ(SeenEntries(merging), SeenEntries(oneByOne)) << ofSource;
    }
}

TEST(TextIdStandardProtocolOutputMap, HandlersSeeEachEntryOfAddAll) {
    TextIdStandardProtocolOutputMap map(100);
    std::vector<unsigned long> counts;
    map.BeginLock();
    map.OutputMap().map.AddItemAddedHandler([&](auto& array, auto&) { counts.push_back(array.Count()); });
    map.EndLock();
    const auto add = [&](const TextEntries& entries) {
        TextIdStandardOutputsArgs args;
        TextOutputs::Fill(args, entries);
        map.AddAll(args);
    };
    add({{"b", "1"}, {"a", "2"}});
    EXPECT_EQ(counts, (std::vector<unsigned long>{1, 2}));

    TextIdStandardProtocolOutputMap plain(100);
    TextIdStandardOutputsArgs first;
    TextOutputs::Fill(first, {{"b", "1"}});
    plain.AddAll(first);
    Texts seen;
    plain.BeginLock();
    plain.OutputMap().map.At(0).outputId.AddChangeHandler(
        [&](Vor::Properties::Node&) { seen.push_back(plain.At(plain.Count() - 1).outputId.Get()); });
    plain.EndLock();
    TextIdStandardOutputsArgs more;
    TextOutputs::Fill(more, {{"a", "2"}, {"0", "3"}});
    plain.AddAll(more);
    EXPECT_EQ(seen, (Texts{"b", "b"}));
}
