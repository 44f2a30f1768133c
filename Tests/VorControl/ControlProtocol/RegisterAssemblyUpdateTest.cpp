#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestAssembly.h"
#include "Vor/JsonSerializer.h"
#include "yApi/yFault.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace Tests;

namespace {

using Places = std::vector<Placed>;

/// Blocks at 0 (4 registers), 10 (4), 14 (4), of any size.
TestAssembly& ThreeOfFour(TestAssembly& assembly) {
    assembly.WithTypes().AddEntries(
        {{"flexible", 0, {}, "", "a"}, {"flexible", 10, {}, "", "b"}, {"flexible", 14, {}, "", "c"}});
    return assembly;
}

class BlockWithFixedId : public OpenBlock {
public:
    BlockWithFixedId(const RegisterBlockParams& params, ProtocolRegisterBlockInfo& info)
        : OpenBlock(params, info) {
        dynamic_cast<Vor::Params::Value<unsigned short>&>(At("outputId")).SetReadOnly(true);
    }
};

} // namespace

TEST(RegisterAssemblyUpdate, ShiftStopsAtTheGapThatAbsorbsIt) {
    TestAssembly assembly(true);
    ThreeOfFour(assembly);
    EXPECT_EQ(assembly.AddEntries({{"four", 2, {}, "", "new"}}, true), 1U);
    EXPECT_EQ(assembly.Places(), (Places{{2, 5, "new"}, {6, 9, "a"}, {10, 13, "b"}, {14, 17, "c"}}));
}

TEST(RegisterAssemblyUpdate, RequestMustBeAnUpdateRequest) {
    TestAssembly assembly(true);
    EXPECT_THROW(assembly.Update(Vor::Params::Group("")), std::bad_cast);
    EXPECT_THROW(assembly.Update(UpdateBlockNewParams()), std::bad_cast);
}

TEST(RegisterAssemblyUpdate, BlockIsSelectedByItsOutputId) {
    TestAssembly assembly(true);
    ThreeOfFour(assembly);
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(assembly.UpdateOne(65535, {}), yERROR_PARAMETER,
                   "Unable to update the connection map because output id 65535 is invalid.");
    EXPECT_TRUE(WasTranslated("beApp.ctrl", "Unable to update the connection map because output id %1$u is invalid."));
    EXPECT_FAILURE(assembly.UpdateOne(11, {}), yERROR_NOT_FOUND,
                   "Unable to update te connection map because there are no data sources with output id 11.");
    EXPECT_TRUE(WasTranslated(
        "beApp.ctrl", "Unable to update te connection map because there are no data sources with output id %1$u."));
    EXPECT_EQ(assembly.UpdateOne(10, {.displayName = "new name"}), 0U);
    EXPECT_EQ(assembly.Places(), (Places{{0, 3, "a"}, {10, 13, "new name"}, {14, 17, "c"}}));
}

TEST(RegisterAssemblyUpdate, MissingIdIsToldBeforeTheLockIsEntered) {
    TestAssembly assembly(true);
    yFault_Set("yLock_Enter", -84);
    EXPECT_FAILURE(assembly.UpdateOne(65535, {}), yERROR_PARAMETER,
                   "Unable to update the connection map because output id 65535 is invalid.");
    EXPECT_TEXTLESS_FAILURE(assembly.UpdateOne(1, {}), -84);
    yFault_Clear();
}

TEST(RegisterAssemblyUpdate, EmptyUpdateChangesNothing) {
    TestAssembly assembly(true);
    const auto before = ThreeOfFour(assembly).Places();
    EXPECT_EQ(assembly.UpdateOne(10, {}), 0U);
    EXPECT_EQ(assembly.UpdateOne(10, {.outputId = 10, .registerCount = 4}), 0U);
    EXPECT_EQ(assembly.Places(), before);
}

TEST(RegisterAssemblyUpdate, LargerCountShiftsTheSuccessorsAndKeepsThePlace) {
    TestAssembly assembly(true);
    ThreeOfFour(assembly);
    EXPECT_EQ(assembly.UpdateOne(10, {.outputId = 10, .registerCount = 6}, true), 1U);
    EXPECT_EQ(assembly.Places(), (Places{{0, 3, "a"}, {10, 15, "b"}, {16, 19, "c"}}));
    EXPECT_EQ(assembly.UpdateOne(10, {.registerCount = 1}, true), 0U);
    EXPECT_EQ(assembly.Places(), (Places{{0, 3, "a"}, {10, 10, "b"}, {16, 19, "c"}}));
}

TEST(RegisterAssemblyUpdate, LargerCountIsRefusedWithoutShift) {
    TestAssembly assembly(true);
    const auto before = ThreeOfFour(assembly).Places();
    EXPECT_FAILURE(assembly.UpdateOne(10, {.registerCount = 5}), yERROR_CONFLICT,
                   "The block output id/address range [10 - 14] overlaps with the output id/address range [14 - 17] of "
                   "an existing block: c. Check the id/address field in the industrial protocol connection map.");
    EXPECT_EQ(assembly.Places(), before);
}

TEST(RegisterAssemblyUpdate, IdBehindTheSuccessorMovesTheBlockBehindIt) {
    TestAssembly assembly(true);
    ThreeOfFour(assembly);
    EXPECT_EQ(assembly.UpdateOne(0, {.outputId = 20}), 0U);
    EXPECT_EQ(assembly.Places(), (Places{{10, 13, "b"}, {14, 17, "c"}, {20, 23, "a"}}));
    EXPECT_EQ(assembly.UpdateOne(14, {.outputId = 3}), 0U);
    EXPECT_EQ(assembly.Places(), (Places{{3, 6, "c"}, {10, 13, "b"}, {20, 23, "a"}}));
    EXPECT_EQ(assembly.UpdateOne(3, {.outputId = 0}), 0U);
    EXPECT_EQ(assembly.UpdateOne(0, {.outputId = 14}), 0U);
    EXPECT_EQ(assembly.Places(), (Places{{10, 13, "b"}, {14, 17, "c"}, {20, 23, "a"}}));
}

TEST(RegisterAssemblyUpdate, BlockDoesntOverlapItself) {
    TestAssembly assembly(true);
    ThreeOfFour(assembly);
    EXPECT_EQ(assembly.UpdateOne(10, {.outputId = 8}), 0U);
    EXPECT_EQ(assembly.UpdateOne(8, {.outputId = 9}), 0U);
    EXPECT_EQ(assembly.Places(), (Places{{0, 3, "a"}, {9, 12, "b"}, {14, 17, "c"}}));
}

TEST(RegisterAssemblyUpdate, IdOfAnotherBlockIsRefusedOrShiftsIt) {
    TestAssembly assembly(false);
    ThreeOfFour(assembly);
    EXPECT_FAILURE(assembly.UpdateOne(0, {.outputId = 10}), yERROR_CONFLICT,
                   "The block output id/address 10 conflicts with the output id/address 10 of an existing block: b. "
                   "Check the id/address field in the industrial protocol connection map.");
    EXPECT_EQ(assembly.UpdateOne(0, {.outputId = 10}, true), 1U);
    EXPECT_EQ(assembly.Places(), (Places{{10, 10, "a"}, {11, 11, "b"}, {14, 14, "c"}}));
}

TEST(RegisterAssemblyUpdate, ShiftPassesOverTheBlockThatIsBeingMoved) {
    TestAssembly assembly(true);
    ThreeOfFour(assembly);
    EXPECT_EQ(assembly.UpdateOne(14, {.outputId = 2}, true), 1U);
    EXPECT_EQ(assembly.Places(), (Places{{2, 5, "c"}, {6, 9, "a"}, {10, 13, "b"}}));
    EXPECT_EQ(assembly.UpdateOne(6, {.outputId = 4}, true), 1U);
    EXPECT_EQ(assembly.Places(), (Places{{4, 7, "a"}, {8, 11, "c"}, {12, 15, "b"}}));
}

TEST(RegisterAssemblyUpdate, CountOfAPlainAssemblyStaysWhichIsCode2) {
    TestAssembly assembly(false);
    assembly.WithTypes().AddEntries({{"flexible", 3}, {"flexible", 4}});
    EXPECT_EQ(assembly.UpdateOne(3, {.registerCount = 9}), 2U);
    EXPECT_EQ(assembly.Block(0)->RegisterCount(), 4);
    EXPECT_EQ(assembly.UpdateOne(3, {.registerCount = 4}), 0U);
    EXPECT_EQ(assembly.UpdateOne(3, {.outputId = 4, .registerCount = 9}, true), 2U);
    EXPECT_EQ(assembly.Places(), (Places{{4, 4, "flexible name"}, {5, 5, "flexible name"}}));
    EXPECT_EQ(assembly.Block(0)->RegisterCount(), 4);
}

TEST(RegisterAssemblyUpdate, SizeOfAFixedTypeIsRefused) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"four", 3, {}, "", "fixed"}});
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(assembly.UpdateOne(3, {.outputId = 9, .registerCount = 5, .displayName = "other"}), yERROR_PARAMETER,
                   "Block fixed does not support changes to its size.");
    EXPECT_TRUE(WasTranslated("control", "Block %1$s does not support changes to its size."));
    EXPECT_EQ(assembly.Places(), (Places{{3, 6, "fixed"}}));
    EXPECT_EQ(assembly.UpdateOne(3, {.registerCount = 4}), 0U);
}

TEST(RegisterAssemblyUpdate, FixedIdIsRefusedAfterTheSize) {
    TestAssembly assembly(true);
    auto params = TypeParams<BlockWithFixedId>("fixed", 2);
    params.configurableRegisterCount = true;
    assembly.AddType(std::move(params));
    assembly.AddType(TypeParams("one"));
    assembly.AddEntries({{"fixed", 3, {}, "", "bolt"}});
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(assembly.UpdateOne(3, {.outputId = 4, .registerCount = 5, .displayName = "other"}), yERROR_PARAMETER,
                   "Block bolt does not support changes to its output id.");
    EXPECT_TRUE(WasTranslated("control", "Block %1$s does not support changes to its output id."));
    EXPECT_EQ(assembly.Places(), (Places{{3, 4, "bolt"}}));
    EXPECT_EQ(assembly.UpdateOne(3, {.outputId = 3, .registerCount = 5}), 0U);

    // A shift and a compaction move it nevertheless.
    assembly.AddEntries({{"one", 1, {}, "", "one"}});
    EXPECT_EQ(assembly.UpdateOne(1, {.outputId = 3}, true), 1U);
    EXPECT_EQ(assembly.Places(), (Places{{3, 3, "one"}, {4, 8, "bolt"}}));
    assembly.CompactFrom(65535);
    EXPECT_EQ(assembly.Places(), (Places{{0, 0, "one"}, {1, 5, "bolt"}}));
}

TEST(RegisterAssemblyUpdate, RangeIsCheckedWithTheRealCount) {
    TestAssembly assembly(true, 100, 199);
    assembly.WithTypes().AddEntries({{"flexible", 150, {}, "", "a"}});
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(assembly.UpdateOne(150, {.outputId = 197, .displayName = "b"}), yERROR_PARAMETER,
                   "Cannot update block a because the block output id/address range [197, 200] lies outside the valid "
                   "output id/address range [100, 199].");
    EXPECT_TRUE(WasTranslated("beApp.ctrl",
                              "Cannot update block %1$s because the block output id/address range [%2$u, %3$u] lies "
                              "outside the valid output id/address range [%4$u, %5$u]."));
    EXPECT_FAILURE(assembly.UpdateOne(150, {.outputId = 99}), yERROR_PARAMETER,
                   "Cannot update block a because the block output id/address range [99, 102] lies outside the valid "
                   "output id/address range [100, 199].");
    EXPECT_FAILURE(
        assembly.UpdateOne(150, {.registerCount = 65534}), yERROR_PARAMETER,
        "Cannot update block a because the block output id/address range [150, 65683] lies outside the valid "
        "output id/address range [100, 199].");
    EXPECT_EQ(assembly.Places(), (Places{{150, 153, "a"}}));
    EXPECT_EQ(assembly.UpdateOne(150, {.registerCount = 50}), 0U);
    EXPECT_EQ(assembly.Places(), (Places{{150, 199, "a"}}));
}

TEST(RegisterAssemblyUpdate, PlainAssemblyHasNoRange) {
    TestAssembly assembly(false, 100, 199);
    assembly.WithTypes().AddEntries({{"one", 150}});
    EXPECT_EQ(assembly.UpdateOne(150, {.outputId = 65534}), 0U);
    EXPECT_EQ(assembly.UpdateOne(65534, {.outputId = 0}), 0U);
    EXPECT_EQ(assembly.Block(0)->OutputId(), 0);
}

TEST(RegisterAssemblyUpdate, ShiftWithoutRoomThrowsNoText) {
    TestAssembly assembly(true, 0, 9);
    assembly.WithTypes().AddEntries({{"four", 0, {}, "", "a"}, {"four", 4, {}, "", "b"}, {"one", 9, {}, "", "c"}});
    const auto before = assembly.Places();
    // The moved block is counted, too: 13 registers are needed, and there are 10.
    EXPECT_TEXTLESS_FAILURE(assembly.UpdateOne(4, {.outputId = 0}, true), yERROR_FULL);
    EXPECT_EQ(assembly.Places(), before);
}

TEST(RegisterAssemblyUpdate, ShiftOfAPlainAssemblyWrapsTheIds) {
    TestAssembly assembly(false);
    assembly.WithTypes().AddEntries(
        {{"one", 1, {}, "", "a"}, {"one", 65533, {}, "", "b"}, {"one", 65534, {}, "", "c"}});
    EXPECT_EQ(assembly.UpdateOne(1, {.outputId = 65533}, true), 1U);
    EXPECT_EQ(assembly.Places(), (Places{{65533, 65533, "a"}, {65534, 65534, "b"}, {65535, 65535, "c"}}));
    EXPECT_EQ(assembly.AddEntries({{"one", 65535, {}, "", "d"}}), 0U);
    EXPECT_EQ(assembly.Places(), (Places{{0, 0, "d"}, {65533, 65533, "a"}, {65534, 65534, "b"}, {65535, 65535, "c"}}));
    EXPECT_EQ(assembly.UpdateOne(65533, {.outputId = 65534}, true), 1U);
    EXPECT_EQ(assembly.Places(), (Places{{0, 0, "d"}, {65534, 65534, "a"}, {65535, 65535, "b"}, {0, 0, "c"}}));
}

TEST(RegisterAssemblyUpdate, BlockAtTheIdOfNoneIsPassedOverByANewBlock) {
    TestAssembly assembly(false);
    assembly.WithTypes().AddEntries({{"one", 65533, {}, "", "a"}, {"one", 65534, {}, "", "b"}});
    assembly.AddEntries({{"one", 65533, {}, "", "c"}}, true);
    EXPECT_EQ(assembly.AddEntries({{"one", 65534, {}, "", "d"}}, true), 1U);
    EXPECT_EQ(assembly.Places(),
              (Places{{65533, 65533, "c"}, {65534, 65534, "d"}, {65535, 65535, "a"}, {65535, 65535, "b"}}));
}

TEST(RegisterAssemblyUpdate, NamesAndSourcesChangeWithoutAMove) {
    TestAssembly assembly(true);
    assembly.WithTypes().AddEntries({{"scan", 3, {}, "x", "a"}, {"four", 9, {}, "", "b"}});
    EXPECT_EQ(assembly.UpdateOne(3, {.dataSource = "y"}), 0U);
    EXPECT_EQ(assembly.Block(0)->DataSource(), "y");
    EXPECT_EQ(assembly.Block(0)->DisplayName(), "a");
    EXPECT_EQ(assembly.UpdateOne(3, {.outputId = 20, .dataSource = "z", .displayName = "c"}), 0U);
    EXPECT_EQ(assembly.Places(), (Places{{9, 12, "b"}, {20, 21, "c"}}));
    EXPECT_EQ(assembly.DataSourceList(), std::vector<std::string>{"z"});
    EXPECT_EQ(assembly.UpdateOne(9, {.dataSource = "none taken", .displayName = "d"}), 0U);
    EXPECT_EQ(assembly.Block(0)->DisplayName(), "d");
}

TEST(RegisterAssemblyUpdate, FirstOfBlocksWithOneIdIsChanged) {
    TestAssembly assembly(false);
    assembly.WithTypes().AddEntries({{"one", 5, {}, "", "a"}, {"one", 6, {}, "", "b"}});
    assembly.Block(1)->SetOutputId(5);
    EXPECT_EQ(assembly.UpdateOne(5, {.displayName = "c"}), 0U);
    EXPECT_EQ(assembly.Places(), (Places{{5, 5, "c"}, {5, 5, "b"}}));
}
