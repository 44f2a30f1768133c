#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestAssembly.h"
#include "Vor/Logging.h"
#include "yApi/yFault.h"

#include <stdexcept>

#include <gtest/gtest.h>

using namespace Tests;

namespace {

constexpr const char* NothingAdded = "No data sources were added.";

/// Adds one entry, which must fail; returns the text of the failure in the user's log.
std::string LoggedFailure(TestAssembly& assembly, const Entry& entry, bool autoShift = false) {
    const Vor::LogCapture log;
    const auto failure = FailureOf([&] { assembly.AddEntries({entry}, autoShift); });
    if (!failure.has_value()) {
        return "nothing was thrown";
    }
    EXPECT_EQ(failure->status, yERROR);
    EXPECT_EQ(failure->text, NothingAdded);
    std::string text;
    for (const auto& record : log.Records()) {
        if (record.level == 0x8000000100000001) {
            EXPECT_EQ(record.title, "VorControl");
            EXPECT_EQ(record.format, "%1$s");
            text = record.text;
        }
    }
    return text;
}

class ThrowingBlock : public OpenBlock {
public:
    ThrowingBlock(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info)
        : OpenBlock(params, info) {
        throw std::runtime_error("not built");
    }
};

} // namespace

TEST(RegisterAssemblyAdd, FirstBlockGoesToTheMinimumAndTheNextBehindTheLast) {
    TestAssembly assembly(true, 100, 199);
    EXPECT_EQ(assembly.WithTypes().AddEntries({{"four"}, {"one"}, {"four"}}), 0U);
    EXPECT_EQ(assembly.Places(),
              (std::vector<Placed>{{100, 103, "four name"}, {104, 104, "one name"}, {105, 108, "four name"}}));
}

TEST(RegisterAssemblyAdd, PlainAssemblyNumbersFromZero) {
    TestAssembly assembly(false, 100, 199);
    EXPECT_EQ(assembly.WithTypes().AddEntries({{"four"}, {"one", 7}, {"four"}}), 0U);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{0, 0, "four name"}, {7, 7, "one name"}, {8, 8, "four name"}}));
}

TEST(RegisterAssemblyAdd, BlocksAreSortedByOutputId) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"four", 20}, {"four", 0}, {"four", 10}, {"one", 30}});
    EXPECT_EQ(
        assembly.Places(),
        (std::vector<Placed>{{0, 3, "four name"}, {10, 13, "four name"}, {20, 23, "four name"}, {30, 30, "one name"}}));
}

TEST(RegisterAssemblyAdd, RequestMustBeAnAddRequest) {
    TestAssembly assembly(true);
    Vor::Params::Group group;
    EXPECT_THROW(assembly.Add(group), std::bad_cast);
}

TEST(RegisterAssemblyAdd, EmptyRequestDoesNothing) {
    TestAssembly assembly(true);
    EXPECT_EQ(assembly.WithTypes().AddEntries({}), 0U);
}

TEST(RegisterAssemblyAdd, WhatTheRequestLeavesOpenIsFilledIn) {
    TestAssembly assembly(true, 5, 99);
    assembly.WithTypes();
    AddBlockParams request;
    request.blocks.Resize(1);
    auto& params = request.blocks.At(0);
    params.type = "flexible";
    assembly.Add(request);
    EXPECT_EQ(params.displayName.Get(), "flexible name");
    EXPECT_EQ(params.registerCount.Get(), 4);
    EXPECT_EQ(params.outputId.Get(), 5);
}

TEST(RegisterAssemblyAdd, GivenNameCountAndSourceAreTaken) {
    TestAssembly assembly(true);
    EXPECT_EQ(assembly.WithTypes().AddEntries({{"flexible", 3, 7, "", "mine"}, {"scan", 20, {}, "profile/max"}}), 0U);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{3, 9, "mine"}, {20, 21, "scan name"}}));
    EXPECT_EQ(assembly.Block(1)->DataSource(), "profile/max");
}

TEST(RegisterAssemblyAdd, MissingTypeIsLogged) {
    TestAssembly assembly(true);
    assembly.WithTypes();
    VorGetText::GetInstance().ForgetCalls();
    constexpr const char* Text =
        "Data source type is missing from the add request. Please include the data source type in the request.";
    EXPECT_EQ(LoggedFailure(assembly, {""}), Text);
    EXPECT_TRUE(WasTranslated("beApp.ctrl", Text));
    EXPECT_TRUE(WasTranslated("beApp.ctrl", NothingAdded));
    EXPECT_TRUE(WasTranslated("control", "%1$s"));
}

TEST(RegisterAssemblyAdd, UnsupportedTypeIsLoggedWithTheNameOfTheEntry) {
    TestAssembly assembly(true);
    assembly.WithTypes();
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_EQ(LoggedFailure(assembly, {"five", {}, {}, "", "My Block"}),
              "Unable to add the My Block data source because it is not supported.");
    EXPECT_EQ(LoggedFailure(assembly, {"five"}), "Unable to add the  data source because it is not supported.");
    EXPECT_TRUE(WasTranslated("control", "Unable to add the %1$s data source because it is not supported."));
}

TEST(RegisterAssemblyAdd, TypeAtItsMaximumIsRefused) {
    TestAssembly assembly(true);
    auto params = TypeParams("single");
    params.maxInstanceCount = 1;
    assembly.AddType(params);
    assembly.AddEntries({{"single"}});
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_EQ(LoggedFailure(assembly, {"single"}),
              "Unable to add another single name data source because the maximum number of this source has already "
              "been added.");
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "Unable to add another %1$s data source because the maximum number of this "
                                            "source has already been added."));
}

TEST(RegisterAssemblyAdd, MissingDataSourceIsRefused) {
    TestAssembly assembly(true);
    assembly.WithTypes();
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_EQ(LoggedFailure(assembly, {"scan", {}, {}, "", "mine"}),
              "Cannot add block. A data source is required for block type scan name.");
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "Cannot add block. A data source is required for block type %1$s."));
}

TEST(RegisterAssemblyAdd, CountOfAFixedTypeIsReplacedAndLogged) {
    TestAssembly assembly(true);
    assembly.WithTypes();
    VorGetText::GetInstance().ForgetCalls();
    const Vor::LogCapture log;
    EXPECT_EQ(assembly.AddEntries({{"four", 0, 9, "", "mine"}}), 2U);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{0, 3, "mine"}}));
    ASSERT_EQ(log.Records().size(), 1U);
    EXPECT_EQ(log.Records()[0].level, 0x8000000100000001);
    EXPECT_EQ(log.Records()[0].title, "control");
    EXPECT_EQ(log.Records()[0].text,
              "Size of block mine is not configurable. The block was added with its default size of 4.");
    EXPECT_TRUE(WasTranslated("control", "Size of block %1$s is not configurable. The block was added with its default "
                                         "size of %2$u."));
    EXPECT_EQ(assembly.AddEntries({{"four", 10, 4}}), 0U);
}

TEST(RegisterAssemblyAdd, RangeOutsideOfTheAssemblyIsRefused) {
    TestAssembly assembly(true, 100, 199);
    assembly.WithTypes();
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_EQ(LoggedFailure(assembly, {"four", 197, {}, "", "mine"}),
              "Cannot add block mine because the block output id/address range [197, 200] lies outside the valid "
              "output id/address range [100, 199].");
    EXPECT_NE(LoggedFailure(assembly, {"one", 99}), "");
    EXPECT_NE(LoggedFailure(assembly, {"one", 200}), "");
    EXPECT_TRUE(WasTranslated("beApp.ctrl",
                              "Cannot add block %1$s because the block output id/address range [%2$u, %3$u] lies "
                              "outside the valid output id/address range [%4$u, %5$u]."));
    EXPECT_EQ(assembly.AddEntries({{"four", 196}, {"one", 100}}), 0U);
}

TEST(RegisterAssemblyAdd, RangeIsCheckedWithTheDefaultCount) {
    TestAssembly assembly(true, 100, 199);
    EXPECT_EQ(assembly.WithTypes().AddEntries({{"flexible", 196, 10}}), 0U);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{196, 205, "flexible name"}}));
    EXPECT_EQ(LoggedFailure(assembly, {"flexible", 197, 1}),
              "Cannot add block flexible name because the block output id/address range [197, 197] lies outside the "
              "valid output id/address range [100, 199].");
}

TEST(RegisterAssemblyAdd, PlainAssemblyDoesNotEnforceItsRange) {
    TestAssembly assembly(false, 5, 10);
    EXPECT_EQ(assembly.WithTypes().AddEntries({{"one", 2}, {"one", 60000}}), 0U);
}

TEST(RegisterAssemblyAdd, BlockWithoutRegistersEndsOneBelowItsStart) {
    TestAssembly assembly(true, 0, 10);
    assembly.AddType(TypeParams("none", 0));
    EXPECT_EQ(assembly.AddEntries({{"none", 10}}), 0U);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{10, 9, "none name"}}));
    EXPECT_EQ(LoggedFailure(assembly, {"none", 0}),
              "The block output id/address range [0 - 65535] overlaps with the output id/address range [10 - 9] of an "
              "existing block: none name. Check the id/address field in the industrial protocol connection map.");
    EXPECT_EQ(LoggedFailure(assembly, {"none", 11}),
              "Cannot add block none name because the block output id/address range [11, 10] lies outside the valid "
              "output id/address range [0, 10].");
}

TEST(RegisterAssemblyAdd, BehindABlockWithoutRegistersAtZeroTheNextIdIsZero) {
    TestAssembly assembly(true, 0, 10);
    assembly.AddType(TypeParams("none", 0));
    EXPECT_EQ(assembly.AddEntries({{"none"}}), 0U);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{0, 65535, "none name"}}));
    EXPECT_NE(LoggedFailure(assembly, {"none"}), "nothing was thrown");
}

TEST(RegisterAssemblyAdd, OverlapIsRefusedWithBothRanges) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"flexible", 105, 6, "", "old"}});
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_EQ(LoggedFailure(assembly, {"flexible", 100, 10}),
              "The block output id/address range [100 - 109] overlaps with the output id/address range [105 - 110] of "
              "an existing block: old. Check the id/address field in the industrial protocol connection map.");
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "The block output id/address range [%1$u - %2$u] overlaps with the output "
                                            "id/address range [%3$u - %4$u] of an existing block: %5$s. Check the "
                                            "id/address field in the industrial protocol connection map."));
    EXPECT_NE(LoggedFailure(assembly, {"flexible", 107, 2}), "");
    EXPECT_NE(LoggedFailure(assembly, {"flexible", 110, 2}), "");
    EXPECT_NE(LoggedFailure(assembly, {"flexible", 100, 30}), "");
    EXPECT_EQ(assembly.AddEntries({{"flexible", 111, 2}, {"flexible", 101, 4}}), 0U);
}

TEST(RegisterAssemblyAdd, OverlapOfASingleIdIsAConflict) {
    TestAssembly assembly(false);
    assembly.WithTypes().AddEntries({{"four", 7, {}, "", "old"}});
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_EQ(LoggedFailure(assembly, {"four", 7}),
              "The block output id/address 7 conflicts with the output id/address 7 of an existing block: old. Check "
              "the id/address field in the industrial protocol connection map.");
    EXPECT_TRUE(WasTranslated("beApp.ctrl",
                              "The block output id/address %1$u conflicts with the output id/address %2$u of an "
                              "existing block: %3$s. Check the id/address field in the industrial protocol connection "
                              "map."));
    TestAssembly global(true);
    global.WithTypes().AddEntries({{"four", 5, {}, "", "old"}});
    EXPECT_EQ(LoggedFailure(global, {"one", 7}),
              "The block output id/address 7 conflicts with the output id/address 5 of an existing block: old. Check "
              "the id/address field in the industrial protocol connection map.");
}

TEST(RegisterAssemblyAdd, AutoShiftMovesTheBlockInTheWay) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"four", 105, {}, "", "old"}});
    EXPECT_EQ(assembly.AddEntries({{"flexible", 100, 10, "", "new"}}, true), 1U);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{100, 109, "new"}, {110, 113, "old"}}));
    EXPECT_EQ(assembly.AddEntries({{"one", 200}}, true), 0U);
}

TEST(RegisterAssemblyAdd, NewBlockWinsThePlaceOfAnEqualId) {
    TestAssembly assembly(false);
    assembly.WithTypes().AddEntries({{"one", 5, {}, "", "old"}, {"one", 6, {}, "", "next"}, {"one", 9, {}, "", "far"}});
    EXPECT_EQ(assembly.AddEntries({{"one", 5, {}, "", "new"}}, true), 1U);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{5, 5, "new"}, {6, 6, "old"}, {7, 7, "next"}, {9, 9, "far"}}));
}

TEST(RegisterAssemblyAdd, ShiftEndsInTheGapThatAbsorbsIt) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"four", 0, {}, "", "a"}, {"four", 10, {}, "", "b"}, {"four", 14, {}, "", "c"}});
    EXPECT_EQ(assembly.AddEntries({{"four", 2, {}, "", "new"}}, true), 1U);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{2, 5, "new"}, {6, 9, "a"}, {10, 13, "b"}, {14, 17, "c"}}));
}

TEST(RegisterAssemblyAdd, ShiftWithoutRoomIsRefusedWithoutAText) {
    TestAssembly assembly(true, 0, 9);
    assembly.WithTypes().AddEntries({{"four", 0}, {"four", 6}});
    EXPECT_EQ(LoggedFailure(assembly, {"four", 0}, true), "");
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{0, 3, "four name"}, {6, 9, "four name"}}));
    EXPECT_EQ(assembly.AddEntries({{"one", 0}}, true), 1U);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{0, 0, "one name"}, {1, 4, "four name"}, {6, 9, "four name"}}));
}

TEST(RegisterAssemblyAdd, ShiftOfTheWholeRangeFitsExactly) {
    TestAssembly assembly(true, 0, 8);
    assembly.WithTypes().AddEntries({{"four", 0}, {"four", 5}});
    EXPECT_EQ(assembly.AddEntries({{"one", 0}}, true), 1U);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{0, 0, "one name"}, {1, 4, "four name"}, {5, 8, "four name"}}));
}

TEST(RegisterAssemblyAdd, ShiftInAPlainAssemblyWrapsAtSixteenBits) {
    TestAssembly assembly(false);
    assembly.WithTypes().AddEntries({{"one", 65533, {}, "", "a"}, {"one", 65534, {}, "", "b"}});
    EXPECT_EQ(assembly.AddEntries({{"one", 65533, {}, "", "c"}}, true), 1U);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{65533, 65533, "c"}, {65534, 65534, "a"}, {65535, 65535, "b"}}));
    EXPECT_EQ(assembly.AddEntries({{"one", 65533, {}, "", "d"}}, true), 1U);
    EXPECT_EQ(
        assembly.Places(),
        (std::vector<Placed>{{65533, 65533, "d"}, {65534, 65534, "c"}, {65535, 65535, "a"}, {65535, 65535, "b"}}));
}

TEST(RegisterAssemblyAdd, ShiftMovesBlocksThatClientsCantMove) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"four", 0, {}, "", "fixed"}});
    dynamic_cast<Vor::Params::Value<unsigned short>&>(assembly.Block(0)->At("outputId")).SetReadOnly(true);
    assembly.AddEntries({{"one", 0, {}, "", "new"}}, true);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{0, 0, "new"}, {1, 4, "fixed"}}));
}

TEST(RegisterAssemblyAdd, OnlyTheFirstCodeIsKept) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"four", 0}});
    EXPECT_EQ(assembly.AddEntries({{"one", 50}, {"one", 0, 3}, {"four", 0}}, true), 2U);
    EXPECT_EQ(assembly.AddEntries({{"four", 0}, {"one", 90, 3}}, true), 1U);
}

TEST(RegisterAssemblyAdd, PartOfARequestIsAddedLoggedAndReported) {
    TestAssembly assembly(true);
    assembly.WithTypes();
    VorGetText::GetInstance().ForgetCalls();
    const Vor::LogCapture log;
    EXPECT_FAILURE(assembly.AddEntries({{"four"}, {"five"}, {"one"}}), yERROR,
                   "Only 2 out of 3 data sources were added.  Please check the connection map for missing entries.");
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "Only %u out of %u data sources were added.  Please check the connection "
                                            "map for missing entries."));
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{0, 3, "four name"}, {4, 4, "one name"}}));
    EXPECT_EQ(log.CountLevel(0x8000000100000001), 1U);
}

TEST(RegisterAssemblyAdd, EntryWithoutTheLockIsLoggedAndTheNextIsTried) {
    TestAssembly assembly(true);
    assembly.WithTypes();
    yFault_Set("yLock_Enter", -79);
    const auto failure = FailureOf([&] { assembly.AddEntries({{"one"}, {"four"}}); });
    yFault_Clear();
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{0, 3, "four name"}}));
}

TEST(RegisterAssemblyAdd, OtherExceptionsLeaveTheRequest) {
    TestAssembly assembly(true);
    assembly.AddType(TypeParams<ThrowingBlock>("throwing"));
    EXPECT_THROW(assembly.AddEntries({{"throwing"}}), std::runtime_error);
    EXPECT_EQ(assembly.AddedRegisterBlocksCount(), 0U);
    EXPECT_TEXTLESS_FAILURE(assembly.EndLock(), yERROR_STATE);
}

TEST(RegisterAssemblyAdd, BlockThatFillsTheRangeLeavesNoChoiceOfOutputId) {
    TestAssembly exact(true, 10, 13);
    exact.WithTypes().AddEntries({{"one"}});
    EXPECT_FALSE(exact.OutputIdReadOnly());
    exact.ResetRegisterAssembly();
    exact.AddEntries({{"four"}});
    EXPECT_TRUE(exact.OutputIdReadOnly());
    exact.ResetRegisterAssembly();
    EXPECT_TRUE(exact.OutputIdReadOnly());

    TestAssembly wide(true, 10, 17);
    auto params = TypeParams("wide", 4);
    params.bytesPerRegister = 2;
    wide.AddType(params);
    wide.AddEntries({{"wide"}});
    EXPECT_TRUE(wide.OutputIdReadOnly());
}

TEST(RegisterAssemblyAdd, OnlyTypeWithOneInstanceLeavesNoChoiceOfOutputId) {
    auto params = TypeParams("single", 4);
    params.maxInstanceCount = 1;
    TestAssembly alone(false);
    alone.AddType(params);
    alone.AddEntries({{"single"}});
    EXPECT_TRUE(alone.OutputIdReadOnly());

    TestAssembly beside(false, 0, 3);
    beside.AddType(params);
    beside.AddType(TypeParams("other"));
    beside.AddEntries({{"single"}});
    EXPECT_FALSE(beside.OutputIdReadOnly());

    TestAssembly many(false);
    many.AddType(TypeParams("one"));
    many.AddEntries({{"one"}});
    EXPECT_FALSE(many.OutputIdReadOnly());
}
