#include "Services/Common/Registers/AssemblyLayout.h"

#include "Tests/Services/Common/Registers/OneByteRegisters.h"
#include "Tests/Support/AddBlocks.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStringRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Services::Common {
namespace {

using namespace VorControl::ControlProtocol;
using Ranges = std::vector<std::pair<std::size_t, std::size_t>>;

Ranges RangesOf(const std::vector<ByteRange>& ranges) {
    Ranges result;
    for (const ByteRange& range : ranges) {
        result.emplace_back(range.begin, range.end);
    }
    return result;
}

/// Offsets and sizes.
Ranges PlacesOf(const std::vector<AssemblyLayout::Place>& places) {
    Ranges result;
    for (const AssemblyLayout::Place& place : places) {
        result.emplace_back(place.offset, place.size);
    }
    return result;
}

class AssemblyLayoutTest : public testing::Test {
protected:
    AssemblyLayoutTest() {
        assembly.AddSupportedBlockType(std::make_unique<DefaultMeasurementValueRegisterBlockInfo>());
        assembly.AddSupportedBlockType(std::make_unique<DefaultStringRegisterBlockInfo>(1));
        assembly.AddSupportedBlockType(OneByteCellTypes().input);
        assembly.AddSupportedBlockType(OneByteCellTypes().output);
    }

    AssemblyLayout LayOut(unsigned bytesPerRegister) const {
        const AssemblyLock lock(assembly);
        return {assembly, bytesPerRegister};
    }

    ProtocolRegisterAssemblyBase assembly{true, 0, 65534, "registerAssembly-0", "Map"};
};

TEST_F(AssemblyLayoutTest, IsEmptyWithoutBlocks) {
    const AssemblyLayout layout = LayOut(1);
    EXPECT_EQ(layout.size, 0u);
    EXPECT_TRUE(layout.ranges.empty() && layout.scanned.empty() && layout.scanBlocks.empty() && layout.cells.empty());
}

TEST_F(AssemblyLayoutTest, HasThePlacesOfBlocksAndWhatIsBetweenCells) {
    Tests::AddBlocks(assembly, {{"MeasurementValue", "a", 3},
                                {"String", "t", 7, 5},
                                {"ControlInput", "", 20},
                                {"ControlOutput", "", 87},
                                {"MeasurementValue", "b", 100}});
    const AssemblyLayout layout = LayOut(1);
    EXPECT_EQ(PlacesOf(layout.scanBlocks), (Ranges{{3, 4}, {7, 5}, {100, 4}}));
    EXPECT_EQ(PlacesOf(layout.cells), (Ranges{{20, 67}, {87, 3}}));
    EXPECT_EQ(RangesOf(layout.ranges), (Ranges{{3, 12}, {20, 90}, {100, 104}}));
    EXPECT_EQ(RangesOf(layout.scanned), (Ranges{{0, 20}, {90, 104}}));
    EXPECT_EQ(layout.size, 104u);
}

TEST_F(AssemblyLayoutTest, PlacesBlocksByTheWidthOfTheRegisters) {
    Tests::AddBlocks(assembly, {{"MeasurementValue", "a", 3}, {"ControlOutput", "", 10}});
    const AssemblyLayout layout = LayOut(4);
    EXPECT_EQ(layout.scanBlocks.at(0).offset, 12u);
    EXPECT_EQ(layout.cells.at(0).offset, 40u);
    EXPECT_EQ(RangesOf(layout.ranges), (Ranges{{12, 28}, {40, 52}}));
}

TEST_F(AssemblyLayoutTest, EndsWithACellWhereNothingIsBehindIt) {
    Tests::AddBlocks(assembly, {{"ControlOutput", "", 0}});
    const AssemblyLayout layout = LayOut(1);
    EXPECT_TRUE(layout.scanned.empty());
    EXPECT_EQ(layout.size, 3u);
}

} // namespace
} // namespace Services::Common
