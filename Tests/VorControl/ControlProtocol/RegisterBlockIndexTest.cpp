#include "VorControl/ControlProtocol/RegisterBlockIndex.h"

#include "Tests/VorControl/ControlProtocol/TestBlocks.h"

#include <iterator>
#include <stdexcept>

#include <gtest/gtest.h>

using namespace Tests;

namespace {

/// A list of blocks with its index.
struct Indexed {
    explicit Indexed(bool isGlobal)
        : info([] {
            auto params = TypeParams("type");
            params.configurableRegisterCount = true;
            return params;
        }()) {
        info.SetIsGlobalAddressSpaceUsed(isGlobal);
    }

    /// Appends a block.
    void Add(unsigned short outputId, unsigned short registerCount = 1) {
        RegisterBlockParams params;
        params.outputId = outputId;
        params.registerCount = registerCount;
        const auto block = std::make_shared<OpenBlock>(params, info);
        index.Watch(*block);
        index.Added(blocks.insert(blocks.end(), block));
    }

    void Remove(std::size_t place) {
        index.Removing(At(place));
        blocks.erase(At(place));
    }

    RegisterBlockIndex::Blocks::iterator At(std::size_t place) {
        return std::next(blocks.begin(), static_cast<std::ptrdiff_t>(place));
    }
    ProtocolRegisterBlock& Block(std::size_t place) { return **At(place); }
    Vor::Params::Value<unsigned short>& Id(std::size_t place) {
        return dynamic_cast<Vor::Params::Value<unsigned short>&>(Block(place).At("outputId"));
    }

    /// The place of the block, or -1.
    int Find(unsigned short outputId) {
        const auto found = index.Find(outputId);
        return found == blocks.end() ? -1 : static_cast<int>(std::distance(blocks.begin(), found));
    }

    ProtocolRegisterBlockInfo info;
    RegisterBlockIndex::Blocks blocks;
    RegisterBlockIndex index{blocks};
};

} // namespace

TEST(RegisterBlockIndex, ListInOrderIsSearchable) {
    Indexed list(true);
    EXPECT_TRUE(list.index.IsSearchable());
    list.Add(10, 4);
    list.Add(14, 2);
    EXPECT_TRUE(list.index.IsSearchable());
    EXPECT_EQ(list.Find(14), 1);
    EXPECT_EQ(list.Find(15), -1);
    EXPECT_EQ(list.index.WalkStart(0, 5), list.At(0));
    EXPECT_EQ(list.index.WalkStart(13, 20), list.At(0));
    EXPECT_EQ(list.index.WalkStart(15, 15), list.At(1));
    EXPECT_EQ(list.index.WalkStart(16, 20), list.blocks.end());
    list.Add(15);
    EXPECT_FALSE(list.index.IsSearchable());
    list.Remove(1);
    EXPECT_TRUE(list.index.IsSearchable());
}

TEST(RegisterBlockIndex, BlockWithoutRegistersIsWalkedInAGlobalAddressSpaceOnly) {
    for (const unsigned short id : {0, 7}) {
        Indexed global(true);
        global.Add(id, 0);
        EXPECT_FALSE(global.index.IsSearchable());
        Indexed plain(false);
        plain.Add(id, 0);
        plain.Add(8, 0);
        EXPECT_TRUE(plain.index.IsSearchable());
        EXPECT_EQ(plain.Find(8), 1);
    }
}

TEST(RegisterBlockIndex, ActualThatIsEnabledLaterIsNoticed) {
    Indexed list(true);
    for (const unsigned short id : {10, 100, 600}) {
        list.Add(id);
    }
    EXPECT_EQ(list.Find(10), 0);
    list.Id(0).EnableActual(true);
    EXPECT_EQ(list.Find(10), -1);
    EXPECT_EQ(list.Find(0), 0);
    list.Id(0).SetActual(600);
    EXPECT_EQ(list.Find(600), 0);
    EXPECT_FALSE(list.index.IsSearchable());
    list.Id(0).EnableActual(false);
    EXPECT_TRUE(list.index.IsSearchable());
    EXPECT_EQ(list.Find(600), 2);
    EXPECT_EQ(list.Find(10), 0);
}

TEST(RegisterBlockIndex, ActualOfTheRegisterCountIsNoticed) {
    Indexed list(true);
    list.Add(10);
    list.Add(20);
    EXPECT_EQ(list.index.WalkStart(15, 15), list.At(1));
    auto& count = dynamic_cast<Vor::Params::Value<unsigned short>&>(list.Block(0).At("registerCount"));
    count.EnableActual(true);
    count.SetActual(6);
    EXPECT_EQ(list.index.WalkStart(15, 15), list.At(0));
}

TEST(RegisterBlockIndex, CopiedActualIsNoticed) {
    Indexed list(true);
    list.Add(10);
    list.Add(20);
    Indexed other(true);
    other.Add(10);
    other.Id(0).EnableActual(true);
    other.Id(0).SetActual(30);
    EXPECT_TRUE(list.index.IsSearchable());
    list.Id(0).CopyValues(other.Id(0));
    EXPECT_EQ(list.Find(30), 0);
}

TEST(RegisterBlockIndex, RemovedBlockIsForgottenWhateverIdItHas) {
    Indexed list(true);
    list.Add(10);
    list.Add(20);
    EXPECT_TRUE(list.index.IsSearchable());
    list.Id(0).EnableActual(true);
    list.Id(0).SetActual(15);
    list.Remove(0);
    EXPECT_EQ(list.Find(10), -1);
    list.Id(0).Modify() = 25;
    list.Remove(0);
    EXPECT_EQ(list.Find(20), -1);
    EXPECT_EQ(list.Find(25), -1);
}

TEST(RegisterBlockIndex, ChangeIsFollowed) {
    Indexed list(true);
    for (const unsigned short id : {10, 20, 30}) {
        list.Add(id);
    }
    EXPECT_EQ(list.index.RegistersFrom(list.blocks.begin()), 3);
    EXPECT_EQ(list.index.RegistersFrom(list.At(1)), 2);
    list.index.Change(list.At(1), [&] {
        list.Block(1).SetOutputId(21);
        list.Block(1).SetRegisterCount(4);
    });
    EXPECT_TRUE(list.index.IsSearchable());
    EXPECT_EQ(list.Find(20), -1);
    EXPECT_EQ(list.Find(21), 1);
    EXPECT_EQ(list.index.RegistersFrom(list.At(1)), 5);
}

TEST(RegisterBlockIndex, HandlerOfAChangeMovesAnotherBlock) {
    Indexed list(true);
    for (const unsigned short id : {10, 20, 30}) {
        list.Add(id);
    }
    list.Id(0).AddChangeHandler([&](Vor::Properties::Node&) { list.Block(2).SetOutputId(40); });
    EXPECT_TRUE(list.index.IsSearchable());
    list.index.Change(list.At(0), [&] { list.Block(0).SetOutputId(11); });
    EXPECT_EQ(list.Find(30), -1);
    EXPECT_EQ(list.Find(40), 2);
    EXPECT_EQ(list.Find(11), 0);
}

TEST(RegisterBlockIndex, HandlerOfAChangeSearches) {
    for (const bool fromOutside : {false, true}) {
        Indexed list(true);
        list.Add(10);
        list.Add(20);
        list.Id(0).AddChangeHandler([&](Vor::Properties::Node&) {
            for (int i = 0; i < 3; ++i) {
                EXPECT_EQ(list.Find(10), 0);
                EXPECT_EQ(list.Find(11), -1);
            }
        });
        EXPECT_TRUE(list.index.IsSearchable());
        if (fromOutside) {
            list.Block(0).SetOutputId(11);
        } else {
            list.index.Change(list.At(0), [&] { list.Block(0).SetOutputId(11); });
        }
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(list.Find(10), -1);
            EXPECT_EQ(list.Find(11), 0);
        }
        EXPECT_TRUE(list.index.IsSearchable());
    }
}

TEST(RegisterBlockIndex, HandlerOfAChangeFails) {
    Indexed list(true);
    list.Add(10);
    list.Add(20);
    const auto id =
        list.Id(0).AddChangeHandler([](Vor::Properties::Node&) { throw std::runtime_error("stays as it is"); });
    EXPECT_TRUE(list.index.IsSearchable());
    const auto move = [&] { list.index.Change(list.At(0), [&] { list.Block(0).SetOutputId(11); }); };
    EXPECT_THROW(move(), std::runtime_error);
    auto failing = id;
    list.Id(0).RemoveChangeHandler(failing);
    move();
    EXPECT_EQ(list.Find(10), -1);
    EXPECT_EQ(list.Find(11), 0);
    EXPECT_EQ(list.Find(20), 1);
}

TEST(RegisterBlockIndex, RemovedBlockCanBeChanged) {
    Indexed list(true);
    list.Add(10);
    list.Add(20);
    const auto block = *list.At(0);
    list.Remove(0);
    block->SetOutputId(20);
    EXPECT_EQ(list.Find(20), 0);
    list.blocks.clear();
    list.index.Cleared();
    list.Add(20);
    EXPECT_TRUE(list.index.IsSearchable());
    block->SetOutputId(30);
    EXPECT_TRUE(list.index.IsSearchable());
}
