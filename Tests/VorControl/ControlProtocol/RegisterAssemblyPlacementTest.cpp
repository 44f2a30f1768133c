#include "Tests/Support/Failure.h"
#include "Tests/VorControl/ControlProtocol/TestAssembly.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

using namespace Tests;

namespace {

constexpr int none = 65535;

struct ModelBlock {
    int id;
    int count;
    std::string name;
};

/// Where blocks go, found by walking the list from the front each time.
class Model {
public:
    Model(bool isGlobal, int least, int most)
        : isGlobal(isGlobal)
        , least(least)
        , most(most) {}

    int End(const ModelBlock& block) const { return isGlobal ? (block.id + block.count - 1) & 0xFFFF : block.id; }

    /// Whether the block was added; blocks may have moved even if it wasn't.
    bool Add(int id, int count, int defaultCount, bool autoShift, const std::string& name) {
        if (id == none) {
            id = blocks.empty() ? (isGlobal ? least : 0) : (End(blocks.back()) + 1) & 0xFFFF;
        }
        if (isGlobal && (id > most || id + defaultCount - 1 > most || id < least)) {
            return false;
        }
        const int end = isGlobal ? (id + count - 1) & 0xFFFF : id;
        std::size_t position = 0;
        for (; position < blocks.size(); ++position) {
            const auto& block = blocks[position];
            if (block.id == none) {
                continue;
            }
            if (Overlaps(id, end, block)) {
                if (!autoShift || !Shift(position, id, end)) {
                    return false;
                }
                break;
            }
            if (end < block.id) {
                break;
            }
        }
        blocks.insert(blocks.begin() + static_cast<std::ptrdiff_t>(position), ModelBlock{id, count, name});
        return true;
    }

    std::vector<ModelBlock> blocks;

private:
    bool Overlaps(int start, int end, const ModelBlock& block) const {
        const int last = End(block);
        return (block.id <= start && start <= last) || (block.id <= end && end <= last) ||
               (start <= block.id && end >= last);
    }

    bool Shift(std::size_t from, int start, int end) {
        if (isGlobal) {
            int used = 0;
            for (std::size_t i = from; i < blocks.size(); ++i) {
                used = (used + blocks[i].count) & 0xFFFF;
            }
            if (((end + 1 - start) & 0xFFFF) + used > ((most + 1 - start) & 0xFFFF)) {
                return false;
            }
        }
        int previousEnd = end;
        for (std::size_t i = from; i < blocks.size(); ++i) {
            if (blocks[i].id == none) {
                continue;
            }
            if (previousEnd < blocks[i].id) {
                break;
            }
            blocks[i].id = (previousEnd + 1) & 0xFFFF;
            previousEnd = End(blocks[i]);
        }
        return true;
    }

    bool isGlobal;
    int least;
    int most;
};

/// An assembly and its model, which do the same.
class Pair {
public:
    Pair(bool isGlobal, unsigned short least, unsigned short most)
        : assembly(isGlobal, least, most)
        , model(isGlobal, least, most) {
        for (const unsigned short registers : {0, 1, 2, 7}) {
            assembly.AddType(TypeParams("fixed" + std::to_string(registers), registers));
        }
        auto flexible = TypeParams("flexible", 3);
        flexible.configurableRegisterCount = true;
        assembly.AddType(std::move(flexible));
    }

    /// A count of 65535 asks for a type of a fixed count.
    void Add(unsigned short id, unsigned short count, int fixedCount, bool autoShift) {
        const bool isFixed = count == none;
        const std::string name = "block " + std::to_string(++made);
        const Entry entry{isFixed ? "fixed" + std::to_string(fixedCount) : "flexible", id, count, "", name};
        const auto failure = FailureOf([&] { assembly.AddEntries({entry}, autoShift); });
        const bool added = model.Add(id, isFixed ? fixedCount : count, isFixed ? fixedCount : 3, autoShift, name);
        RC_ASSERT(added == !failure.has_value());
        Compare();
    }

    void ChangeId(std::size_t position, unsigned short id, bool byDocument) {
        const auto block = assembly.Block(position);
        if (byDocument) {
            Vor::Properties::JsonSerializer::Deserialize(*block, {{"outputId", id}});
        } else {
            block->SetOutputId(id);
        }
        model.blocks[position].id = id;
        Compare();
    }

    void ChangeCount(std::size_t position, unsigned short count) {
        assembly.Block(position)->SetRegisterCount(count);
        model.blocks[position].count = count;
        Compare();
    }

    void Reset() {
        assembly.ResetRegisterAssembly();
        model.blocks.clear();
        Compare();
    }

    std::size_t Count() const { return model.blocks.size(); }

private:
    void Compare() const {
        std::vector<Placed> expected;
        for (const auto& block : model.blocks) {
            expected.push_back({block.id, model.End(block), block.name});
        }
        RC_ASSERT(assembly.Places() == expected);
    }

    TestAssembly assembly;
    Model model;
    int made = 0;
};

/// Ids around both ends of a range and close to each other, so that blocks meet.
rc::Gen<unsigned short> IdGen(unsigned short least, unsigned short most) {
    return rc::gen::weightedOneOf<unsigned short>(
        {{10, rc::gen::inRange<unsigned short>(
                  least, static_cast<unsigned short>(std::min(most, static_cast<unsigned short>(least + 60)) + 1))},
         {2, rc::gen::inRange<unsigned short>(static_cast<unsigned short>(std::max<int>(least, most - 12)),
                                              static_cast<unsigned short>(most + 1))},
         {3, rc::gen::just<unsigned short>(none)},
         {1, rc::gen::arbitrary<unsigned short>()}});
}

void CheckRandomRequests(bool isGlobal, bool withoutRegisters, bool changedOutside) {
    // The many refused entries are the user's log, not this test's output.
    Vor::Logging::SetMinimumLevel(Vor::LevelError);
    const auto least = *rc::gen::element<unsigned short>(0, 1, 100);
    const auto most = *rc::gen::element<unsigned short>(130, 400, 65534);
    Pair pair(isGlobal, least, most);
    const int steps = *rc::gen::inRange(1, 60);
    for (int step = 0; step < steps; ++step) {
        const int action = *rc::gen::inRange(0, 100);
        if (changedOutside && action < 12 && pair.Count() > 0) {
            const auto position = *rc::gen::inRange<std::size_t>(0, pair.Count());
            if (action < 8) {
                pair.ChangeId(position, *IdGen(least, most), action < 4);
            } else {
                pair.ChangeCount(position, *rc::gen::inRange<unsigned short>(0, 9));
            }
        } else if (action == 99) {
            pair.Reset();
        } else {
            const auto lowest = static_cast<unsigned short>(withoutRegisters ? 0 : 1);
            const auto count =
                *rc::gen::oneOf(rc::gen::just<unsigned short>(none), rc::gen::inRange<unsigned short>(lowest, 9));
            const int fixedCount = withoutRegisters ? *rc::gen::element(0, 1, 2, 7) : *rc::gen::element(1, 2, 7);
            pair.Add(*IdGen(least, most), count, fixedCount, *rc::gen::arbitrary<bool>());
        }
    }
}

} // namespace

RC_GTEST_PROP(RegisterAssemblyPlacement, GlobalAssemblyPlacesAsTheWalkDoes, ()) {
    CheckRandomRequests(true, false, false);
}

RC_GTEST_PROP(RegisterAssemblyPlacement, PlainAssemblyPlacesAsTheWalkDoes, ()) {
    CheckRandomRequests(false, false, false);
}

RC_GTEST_PROP(RegisterAssemblyPlacement, GlobalAssemblyWithBlocksWithoutRegisters, ()) {
    CheckRandomRequests(true, true, false);
}

RC_GTEST_PROP(RegisterAssemblyPlacement, GlobalAssemblyWithBlocksChangedFromOutside, ()) {
    CheckRandomRequests(true, false, true);
}

RC_GTEST_PROP(RegisterAssemblyPlacement, GlobalAssemblyWithAllOfIt, ()) {
    CheckRandomRequests(true, true, true);
}

RC_GTEST_PROP(RegisterAssemblyPlacement, PlainAssemblyWithAllOfIt, ()) {
    CheckRandomRequests(false, true, true);
}

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
