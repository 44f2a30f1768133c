#include "Tests/Support/Failure.h"
#include "Tests/VorControl/ControlProtocol/TestAssembly.h"

#include <gtest/gtest.h>

using namespace Tests;

TEST(RegisterAssemblyPlacement, BlockWithAnActualIdIsFoundByTheWalk) {
    TestAssembly assembly(false);
    assembly.AddType(TypeParams("one"));
    assembly.AddEntries({{"one", 10}, {"one", 20}, {"one", 30}});
    auto& id = dynamic_cast<Vor::Params::Value<unsigned short>&>(assembly.Block(1)->At("outputId"));
    id.EnableActual(true);
    id.SetActual(25);
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
