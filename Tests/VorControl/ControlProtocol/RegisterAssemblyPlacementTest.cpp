#include "Tests/Support/Failure.h"
#include "Tests/VorControl/ControlProtocol/TestAssembly.h"

#include <gtest/gtest.h>

using namespace Tests;

namespace {

Vor::Params::Value<unsigned short>& IdOf(const TestAssembly& assembly, std::size_t position) {
    return dynamic_cast<Vor::Params::Value<unsigned short>&>(assembly.Block(position)->At("outputId"));
}

/// The block has another id than the one with which it was added.
void SetActualId(const TestAssembly& assembly, std::size_t position, unsigned short id) {
    IdOf(assembly, position).EnableActual(true);
    IdOf(assembly, position).SetActual(id);
}

} // namespace

TEST(RegisterAssemblyPlacement, BlockWithAnActualIdIsFoundByTheWalk) {
    TestAssembly assembly(false);
    assembly.AddType(TypeParams("one"));
    assembly.AddEntries({{"one", 10}, {"one", 20}, {"one", 30}});
    SetActualId(assembly, 1, 25);
    assembly.Block(0)->SetOutputId(11);
    EXPECT_EQ(assembly.AddEntries({{"one", 20}}), 0U);
    EXPECT_TRUE(FailureOf([&] { assembly.AddEntries({{"one", 25}}); }).has_value());
}

TEST(RegisterAssemblyPlacement, BlockThatOutlivesTheAssemblyCanBeChanged) {
    std::shared_ptr<ProtocolRegisterBlock> block;
    {
        TestAssembly assembly(false);
        assembly.AddType(TypeParams("one"));
        assembly.AddEntries({{"one", 10}});
        block = assembly.Block(0);
        assembly.ResetRegisterAssembly();
        assembly.AddEntries({{"one", 10}});
        block->SetOutputId(3);
        assembly.AddEntries({{"one", 4}});
        EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{4, 4, "one name"}, {10, 10, "one name"}}));
    }
    block->SetOutputId(5);
    EXPECT_EQ(block->OutputId(), 5);
}

TEST(RegisterAssemblyPlacement, BlockWithALaterActualIdKeepsOthersOut) {
    TestAssembly assembly(true);
    assembly.AddType(TypeParams("one"));
    assembly.AddEntries({{"one", 10}, {"one", 100}, {"one", 600}});
    SetActualId(assembly, 0, 500);
    EXPECT_TRUE(FailureOf([&] { assembly.AddEntries({{"one", 500}}); }).has_value());
    EXPECT_EQ(assembly.AddedRegisterBlocksCount(), 3U);
}

TEST(RegisterAssemblyPlacement, FirstOfTwoBlocksThatHaveTheIdIsUpdated) {
    TestAssembly assembly(true);
    assembly.AddType(TypeParams("one"));
    assembly.AddEntries({{"one", 1}, {"one", 5}});
    assembly.UpdateOne(5, {.displayName = "found"});
    SetActualId(assembly, 0, 5);
    assembly.UpdateOne(5, {.displayName = "updated"});
    EXPECT_EQ(assembly.Block(0)->DisplayName(), "updated");
    EXPECT_EQ(assembly.Block(1)->DisplayName(), "found");
}

TEST(RegisterAssemblyPlacement, BlockWithALaterActualIdIsUpdatedAndRemoved) {
    TestAssembly assembly(true);
    assembly.AddType(TypeParams("one"));
    assembly.AddEntries({{"one", 10}, {"one", 20}});
    SetActualId(assembly, 0, 15);
    EXPECT_TRUE(FailureOf([&] { assembly.UpdateOne(10, {.displayName = "x"}); }).has_value());
    EXPECT_EQ(assembly.UpdateOne(15, {.displayName = "updated"}), 0U);
    EXPECT_EQ(assembly.RemoveIds({15}), 0U);
    EXPECT_EQ(assembly.Places(), (std::vector<Placed>{{20, 20, "one name"}}));
    IdOf(assembly, 0).EnableActual(true);
    assembly.RemoveAll();
    EXPECT_TRUE(FailureOf([&] { assembly.UpdateOne(20, {.displayName = "x"}); }).has_value());
}

TEST(RegisterAssemblyPlacement, BlockThatAHandlerMovesDuringAShiftIsFound) {
    TestAssembly assembly(true);
    assembly.AddType(TypeParams("one"));
    assembly.AddEntries({{"one", 10}, {"one", 20}, {"one", 30}});
    const auto last = assembly.Block(2);
    IdOf(assembly, 0).AddChangeHandler([last](Vor::Properties::Node&) { last->SetOutputId(40); });
    EXPECT_EQ(assembly.AddEntries({{"one", 10}}, true), 1U);
    EXPECT_TRUE(FailureOf([&] { assembly.UpdateOne(30, {.displayName = "x"}); }).has_value());
    EXPECT_EQ(assembly.UpdateOne(40, {.displayName = "found"}), 0U);
    EXPECT_EQ(last->DisplayName(), "found");
    EXPECT_EQ(assembly.AddEntries({{"one", 30}}), 0U);
}
