#include "VorControl/ControlProtocol/StandardProtocolOutputMap.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestOutputs.h"

#include <gtest/gtest.h>

using namespace Tests;
using namespace VorControl::ControlProtocol;

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

void FillSources(StandardOutputsArgs& args, const Texts& sources) {
    for (const auto& source : sources) {
        args.map.Emplace().source = source;
    }
}

std::optional<Failure> AddSources(NumericOutputs& map, const Texts& sources) {
    StandardOutputsArgs args;
    FillSources(args, sources);
    return FailureOf([&] { map.AddAll(args); });
}

Texts UnableToAdd(const std::string& source) {
    const std::string text = "Unable to add data source " + source +
                             ". The specified address would cause the selected source to overlap addresses used by an "
                             "existing data source.";
    return {"user error VorControl: " + text, "error: " + text};
}

std::string UnableToUpdate(const std::string& source) {
    return "Unable to update output id for data source " + source +
           ". The specified address would cause the selected source to overlap addresses used by an existing data "
           "source.";
}

} // namespace

TEST(StandardProtocolOutputMap, RangeIsInItsDocumentOnly) {
    NumericOutputs map(3, 10, 65534);
    map.BeginLock();
    EXPECT_EQ(map.OutputMap().attributes.outputIdMin.Get(), 10);
    EXPECT_EQ(map.OutputMap().attributes.outputIdMax.Get(), 65534);
    map.EndLock();
    map.AddEach({{5, "below"}, {10, "at"}});
    EXPECT_EQ(map.List(), (Entries{{5, "below"}, {10, "at"}}));
}

TEST(StandardProtocolOutputMap, RangeMayBeOneId) {
    EXPECT_NO_THROW(NumericOutputs(1, 7, 7));
}

TEST(StandardProtocolOutputMap, BadRangeIsRefused) {
    EXPECT_FAILURE(NumericOutputs(1, 8, 7), yERROR_PARAMETER,
                   "Minimum output id value 8 and/or maximum output id value 7 are invalid.");
    EXPECT_FAILURE(NumericOutputs(1, 0, 65535), yERROR_PARAMETER,
                   "Minimum output id value 0 and/or maximum output id value 65535 are invalid.");
}

TEST(StandardProtocolOutputMap, TextOfABadRangeIsTranslated) {
    const Translation translation(
        "beApp.ctrl", "Minimum output id value %1$u and/or maximum output id value %2$u are invalid.", "%2$u vor %1$u");
    EXPECT_FAILURE(NumericOutputs(1, 8, 7), yERROR_PARAMETER, "7 vor 8");
}

TEST(StandardProtocolOutputMap, ShiftMovesTheUnbrokenRunOnly) {
    Filled map({{5, "a"}, {6, "b"}, {7, "c"}, {10, "d"}});
    map.AddOne(6, "new", true);
    EXPECT_EQ(map.List(), (Entries{{5, "a"}, {6, "new"}, {7, "b"}, {8, "c"}, {10, "d"}}));
}

TEST(StandardProtocolOutputMap, ShiftFillsTheFirstGap) {
    Filled map({{5, "a"}, {7, "b"}});
    map.AddOne(5, "new", true);
    EXPECT_EQ(map.List(), (Entries{{5, "new"}, {6, "a"}, {7, "b"}}));
}

TEST(StandardProtocolOutputMap, ShiftOfTheLastEntry) {
    Filled map({{5, "a"}});
    map.AddOne(5, "new", true);
    EXPECT_EQ(map.List(), (Entries{{5, "new"}, {6, "a"}}));
}

TEST(StandardProtocolOutputMap, AddToATakenIdWithoutShiftChangesNothing) {
    Filled map({{5, "a"}, {7, "b"}});
    const Vor::LogCapture log;
    EXPECT_TEXTLESS_FAILURE(map.AddOne(5, "new"), yERROR_PARAMETER);
    EXPECT_EQ(Lines(log), UnableToAdd("new"));
    EXPECT_EQ(map.List(), (Entries{{5, "a"}, {7, "b"}}));
}

TEST(StandardProtocolOutputMap, FreeIdBetweenEntriesNeedsNoShift) {
    Filled map({{5, "a"}, {7, "b"}});
    map.AddOne(6, "new");
    map.AddOne(0, "first");
    map.AddOne(65534, "last", true);
    EXPECT_EQ(map.List(), (Entries{{0, "first"}, {5, "a"}, {6, "new"}, {7, "b"}, {65534, "last"}}));
}

TEST(StandardProtocolOutputMap, ShiftInAFullMapIsRefusedAndChangesNothing) {
    Filled map({{5, "a"}, {6, "b"}}, 2);
    EXPECT_TEXTLESS_FAILURE(map.AddOne(5, "new", true), yERROR_FULL);
    EXPECT_EQ(map.List(), (Entries{{5, "a"}, {6, "b"}}));
}

TEST(StandardProtocolOutputMap, ShiftMayPassTheEndOfTheRange) {
    NumericOutputs map(10, 0, 6);
    map.AddEach({{5, "a"}, {6, "b"}});
    map.AddOne(5, "new", true);
    EXPECT_EQ(map.List(), (Entries{{5, "new"}, {6, "a"}, {7, "b"}}));
}

TEST(StandardProtocolOutputMap, ShiftBeyondTheLastNumberWraps) {
    Filled map({{65534, "a"}});
    map.AddOne(65534, "b", true);
    EXPECT_EQ(map.List(), (Entries{{65534, "b"}, {65535, "a"}}));
    map.AddOne(65534, "c", true);
    EXPECT_EQ(map.List(), (Entries{{65534, "c"}, {65535, "b"}, {0, "a"}}));
}

TEST(StandardProtocolOutputMap, AddAllNumbersAnEmptyMapFromZero) {
    NumericOutputs map(10, 5, 9);
    StandardOutputsArgs args;
    NumericOutputs::Fill(args, {{7, "b"}, {7, "a"}, {65535, "c"}});
    map.AddAll(args);
    EXPECT_EQ(map.List(), (Entries{{0, "b"}, {1, "a"}, {2, "c"}}));
    EXPECT_EQ(args.map.At(0).outputId.Get(), 0);
    EXPECT_EQ(args.map.At(1).outputId.Get(), 1);
    EXPECT_EQ(args.map.At(2).outputId.Get(), 2);
}

TEST(StandardProtocolOutputMap, AddAllNumbersBehindTheLastEntry) {
    Filled map({{3, "a"}, {8, "b"}});
    EXPECT_FALSE(AddSources(map, {"c", "d"}).has_value());
    EXPECT_EQ(map.List(), (Entries{{3, "a"}, {8, "b"}, {9, "c"}, {10, "d"}}));
}

TEST(StandardProtocolOutputMap, AddAllCanBeToldWhereToBegin) {
    NumericOutputs map(10, 0, 100);
    StandardOutputsArgs args;
    FillSources(args, {"a", "b"});
    map.AddAll(args, 40);
    EXPECT_EQ(map.List(), (Entries{{40, "a"}, {41, "b"}}));
    StandardOutputsArgs more;
    FillSources(more, {"c"});
    map.AddAll(more, 90);
    EXPECT_EQ(map.List(), (Entries{{40, "a"}, {41, "b"}, {42, "c"}}));
}

TEST(StandardProtocolOutputMap, AddAllOfNothingDoesNothing) {
    Filled map({{3, "a"}}, 1);
    EXPECT_FALSE(AddSources(map, {}).has_value());
    EXPECT_EQ(map.Count(), 1U);
}

TEST(StandardProtocolOutputMap, AddAllWantsItsRequest) {
    NumericOutputs map(10, 0, 100);
    StandardOutputs other;
    EXPECT_THROW(map.AddAll(other), std::bad_cast);
}

TEST(StandardProtocolOutputMap, AddAllGoesOnBehindASourceThatIsThere) {
    Filled map({{3, "a"}});
    const Vor::LogCapture log;
    const auto failure = AddSources(map, {"a", "b"});
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_ALREADY_EXISTS);
    EXPECT_EQ(failure->text, NotAllAdded);
    EXPECT_EQ(Lines(log), (Texts{"user warning VorControl: Data source a already exists.",
                                 "warning: Data source a already exists"}));
    EXPECT_EQ(map.List(), (Entries{{3, "a"}, {4, "b"}}));
}

TEST(StandardProtocolOutputMap, AddAllFindsASourceTwiceInItsRequest) {
    NumericOutputs map(10, 0, 100);
    const auto failure = AddSources(map, {"a", "a", "b"});
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_ALREADY_EXISTS);
    EXPECT_EQ(map.List(), (Entries{{0, "a"}, {1, "b"}}));
}

TEST(StandardProtocolOutputMap, AddAllRefusesAnEmptySource) {
    NumericOutputs map(10, 0, 100);
    StandardOutputsArgs args;
    FillSources(args, {"a", "", "b"});
    const Vor::LogCapture log;
    EXPECT_FAILURE(map.AddAll(args), yERROR_PARAMETER, NotAllAdded);
    const std::string text =
        "Data source  in the list of sources to add is invalid. Please correct the data source and try again.";
    EXPECT_EQ(Lines(log), (Texts{"user error VorControl: " + text, "error: " + text}));
    EXPECT_EQ(map.List(), (Entries{{0, "a"}, {1, "b"}}));
    EXPECT_EQ(args.map.At(1).outputId.Get(), 1);
}

TEST(StandardProtocolOutputMap, AddAllThrowsTheLastFailure) {
    Filled map({{3, "a"}});
    auto failure = AddSources(map, {"", "a"});
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_ALREADY_EXISTS);
    failure = AddSources(map, {"a", "", "b"});
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_PARAMETER);
    EXPECT_EQ(map.List(), (Entries{{3, "a"}, {4, "b"}}));
}

TEST(StandardProtocolOutputMap, AddAllRunsOutOfIds) {
    Filled map({{65533, "a"}});
    const Vor::LogCapture log;
    const auto failure = AddSources(map, {"b", "c", "d"});
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_PARAMETER);
    EXPECT_EQ(map.List(), (Entries{{65533, "a"}, {65534, "b"}}));
    const auto text = [](const std::string& source) {
        return "Data source " + source +
               " in the list of sources to add has invalid output identifier (65535). Please correct the output id and "
               "try again.";
    };
    EXPECT_EQ(Lines(log), (Texts{"user error VorControl: " + text("c"), "error: " + text("c"),
                                 "user error VorControl: " + text("d"), "error: " + text("d")}));
}

TEST(StandardProtocolOutputMap, AddAllAsksForTheSourceBeforeTheId) {
    Filled map({{65534, "a"}});
    const Vor::LogCapture log;
    EXPECT_TRUE(AddSources(map, {""}).has_value());
    const std::string text =
        "Data source  in the list of sources to add is invalid. Please correct the data source and try again.";
    EXPECT_EQ(Lines(log), (Texts{"user error VorControl: " + text, "error: " + text}));
}

TEST(StandardProtocolOutputMap, AddAllAsksForTheIdBeforeTheSourcesThatAreThere) {
    Filled map({{65534, "a"}});
    const auto failure = AddSources(map, {"a"});
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_PARAMETER);
}

TEST(StandardProtocolOutputMap, AddAllBehindTheNoneIdWraps) {
    Filled map({{65534, "a"}});
    map.AddOne(65534, "b", true);
    EXPECT_FALSE(AddSources(map, {"c"}).has_value());
    EXPECT_EQ(map.List(), (Entries{{65534, "b"}, {65535, "a"}, {0, "c"}}));
}

TEST(StandardProtocolOutputMap, AddAllStopsWhenTheMapIsFull) {
    Filled map({{3, "a"}}, 2);
    StandardOutputsArgs args;
    NumericOutputs::Fill(args, {{50, ""}, {50, "b"}, {50, "c"}, {50, "d"}});
    EXPECT_FAILURE(map.AddAll(args), yERROR_FULL, "Connection map is full. All data source(s) from c are not added.");
    EXPECT_EQ(map.List(), (Entries{{3, "a"}, {4, "b"}}));
    EXPECT_EQ(args.map.At(1).outputId.Get(), 4);
    EXPECT_EQ(args.map.At(2).outputId.Get(), 50);
}

TEST(StandardProtocolOutputMap, AddAllToAFullMapStopsAtOnceEvenForASourceThatIsThere) {
    Filled map({{3, "a"}}, 1);
    const auto failure = AddSources(map, {"a"});
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_FULL);
    EXPECT_EQ(failure->text, "Connection map is full. All data source(s) from a are not added.");
}

TEST(StandardProtocolOutputMap, CompactIdClosesAllGaps) {
    Filled map({{3, "a"}, {9, "b"}, {20, "c"}});
    map.CompactId();
    EXPECT_EQ(map.List(), (Entries{{0, "a"}, {1, "b"}, {2, "c"}}));
}

TEST(StandardProtocolOutputMap, CompactIdOfAnEmptyMap) {
    Filled map({});
    map.CompactId();
    EXPECT_EQ(map.Count(), 0U);
}

TEST(StandardProtocolOutputMap, UpdateToAFreeId) {
    Filled map({{3, "a"}, {9, "b"}, {20, "c"}});
    StandardOutputsArgs args;
    NumericOutputs::Fill(args, {{3, "ignored"}, {15, "ignored"}});
    map.UpdateId(args);
    EXPECT_EQ(map.List(), (Entries{{9, "b"}, {15, "a"}, {20, "c"}}));
    EXPECT_EQ(args.map.At(1).source.Get(), "a");
    EXPECT_EQ(args.map.At(1).outputId.Get(), 15);
}

TEST(StandardProtocolOutputMap, UpdateToATakenIdRemovesFirstAndThenShifts) {
    Filled map({{5, "a"}, {6, "b"}, {7, "c"}, {8, "d"}});
    map.Update(7, 5, true);
    EXPECT_EQ(map.List(), (Entries{{5, "c"}, {6, "a"}, {7, "b"}, {8, "d"}}));
    map.Update(5, 7, true);
    EXPECT_EQ(map.List(), (Entries{{6, "a"}, {7, "c"}, {8, "b"}, {9, "d"}}));
}

TEST(StandardProtocolOutputMap, UpdateInAFullMapHasRoom) {
    Filled map({{5, "a"}, {6, "b"}}, 2);
    map.Update(6, 5, true);
    EXPECT_EQ(map.List(), (Entries{{5, "b"}, {6, "a"}}));
}

TEST(StandardProtocolOutputMap, UpdateToATakenIdWithoutShiftChangesNothing) {
    Filled map({{5, "a"}, {6, "b"}});
    const Vor::LogCapture log;
    EXPECT_FAILURE(map.Update(5, 6), yERROR_PARAMETER, UnableToUpdate("[a]"));
    EXPECT_EQ(Lines(log), (Texts{"user error VorControl: " + UnableToUpdate("a"), "error: " + UnableToUpdate("[a]")}));
    EXPECT_EQ(map.List(), (Entries{{5, "a"}, {6, "b"}}));
}

TEST(StandardProtocolOutputMap, UpdateToTheLastIdNeedsItFree) {
    Filled map({{5, "a"}, {6, "b"}});
    map.Update(5, 65534, true);
    EXPECT_EQ(map.List(), (Entries{{6, "b"}, {65534, "a"}}));
    EXPECT_FAILURE(map.Update(6, 65534, true), yERROR_PARAMETER, UnableToUpdate("[b]"));
    EXPECT_EQ(map.List(), (Entries{{6, "b"}, {65534, "a"}}));
}

TEST(StandardProtocolOutputMap, UpdateToTheLastButOneIdMayShift) {
    Filled map({{5, "a"}, {65533, "b"}});
    map.Update(5, 65533, true);
    EXPECT_EQ(map.List(), (Entries{{65533, "a"}, {65534, "b"}}));
}

TEST(StandardProtocolOutputMap, UpdateFromOrToNoneIsInvalid) {
    Filled map({{5, "a"}});
    const Vor::LogCapture log;
    EXPECT_FAILURE(map.Update(5, 65535, true), yERROR_PARAMETER, "Output id is invalid.");
    EXPECT_FAILURE(map.Update(65535, 5, true), yERROR_PARAMETER, "Output id is invalid.");
    EXPECT_FAILURE(map.Update(65535, 65535), yERROR_PARAMETER, "Output id is invalid.");
    EXPECT_EQ(Lines(log), Texts(3, "user error VorControl: Output id is invalid."));
    EXPECT_EQ(map.List(), (Entries{{5, "a"}}));
}

TEST(StandardProtocolOutputMap, UpdateOfAnUnknownIdIsNotFoundEvenWhenTheNewOneIsTaken) {
    Filled map({{5, "a"}});
    StandardOutputsArgs args;
    NumericOutputs::Fill(args, {{4, ""}, {5, "kept"}});
    EXPECT_TEXTLESS_FAILURE(map.UpdateId(args), yERROR_NOT_FOUND);
    EXPECT_EQ(args.map.At(1).source.Get(), "kept");
    EXPECT_EQ(map.List(), (Entries{{5, "a"}}));
}

TEST(StandardProtocolOutputMap, EntryThatCannotBeAddedUnderItsNewIdIsGone) {
    Filled map({{6, "b"}});
    map.BeginLock();
    auto& item = map.OutputMap().map.Emplace();
    map.EndLock();
    item.outputId = 9;
    EXPECT_TEXTLESS_FAILURE(map.Update(9, 3), yERROR_PARAMETER);
    EXPECT_EQ(map.List(), (Entries{{6, "b"}}));
}

TEST(StandardProtocolOutputMap, TextsForTheUserAreTranslated) {
    VorGetText::GetInstance().ForgetCalls();
    Filled map({{5, "a"}, {65534, "z"}}, 3);
    FailureOf([&] { map.AddOne(5, "b"); });
    FailureOf([&] { map.Update(5, 65534); });
    FailureOf([&] { map.Update(5, 65535); });
    AddSources(map, {""});
    AddSources(map, {"b"});
    map.RemoveOne(65534);
    AddSources(map, {"a", "c", "d", "e"});
    for (const char* const text : {
             "Unable to add data source %1$s. The specified address would cause the selected source to overlap "
             "addresses used by an existing data source.",
             "Unable to update output id for data source %1$s. The specified address would cause the selected source "
             "to overlap addresses used by an existing data source.",
             "Unable to update output id for data source [%1$s]. The specified address would cause the selected source "
             "to overlap addresses used by an existing data source.",
             "Output id is invalid.",
             "Data source %1$s in the list of sources to add is invalid. Please correct the data source and try again.",
             "Data source %1$s in the list of sources to add has invalid output identifier (%2$u). Please correct the "
             "output id and try again.",
             "Data source %1$s already exists.",
             "Connection map is full. All data source(s) from %1$s are not added.",
             NotAllAdded,
         }) {
        EXPECT_TRUE(WasTranslated("beApp.ctrl", text)) << text;
    }
}
