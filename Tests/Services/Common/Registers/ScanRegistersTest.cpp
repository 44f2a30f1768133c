#include "Services/Common/Registers/ScanRegisters.h"

#include "Tests/Services/Common/Registers/OneByteRegisters.h"
#include "Tests/Support/AddBlocks.h"
#include "Tests/Support/Results.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStringRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"

#include <algorithm>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Services::Common {
namespace {

using namespace VorControl::ControlProtocol;
using Tests::AddBlocks;
using Tests::Results;

/// Can't be locked while it is `broken`.
class Assembly : public ProtocolRegisterAssemblyBase {
public:
    Assembly()
        : ProtocolRegisterAssemblyBase(true, 0, 65534, "registerAssembly-0", "Map") {
        AddSupportedBlockType(std::make_unique<DefaultMeasurementValueRegisterBlockInfo>());
        AddSupportedBlockType(std::make_unique<DefaultStringRegisterBlockInfo>(1));
        CellTypes types = OneByteCellTypes();
        AddSupportedBlockType(std::move(types.input));
        AddSupportedBlockType(std::move(types.output));
        AddSupportedBlockType(std::move(types.system));
        AddSupportedBlockType(std::move(types.others.front()));
    }

    void BeginLock() const override {
        if (broken) {
            Vor::Throw(yERROR_STATE, "broken");
        }
        ProtocolRegisterAssemblyBase::BeginLock();
    }

    bool broken = false;
};

/// Registers of one byte.
class ScanRegistersTest : public testing::Test {
protected:
    void Map(const std::vector<Tests::BlockToAdd>& blocks) {
        AddBlocks(*assembly, blocks);
        registers.Rebuild();
    }

    Bytes Read(std::size_t offset, std::size_t size) {
        Bytes bytes(size);
        return image.Read(offset, size, bytes.data()) ? bytes : Bytes();
    }

    const std::shared_ptr<Assembly> assembly = std::make_shared<Assembly>();
    RegisterImage image;
    RecordingRunner runner;
    CommandCells cells{image, runner, OneByteCellTypes(), {.bytesPerRegister = 1}};
    ScanRegisters registers{assembly, image, cells, {.bytesPerRegister = 1}};
};

TEST_F(ScanRegistersTest, WritesAByteForEachRegister) {
    Map({{"MeasurementValue", "a", 3}, {"String", "t", 7, 4}});
    EXPECT_EQ(Read(3, 4), (Bytes{0x80, 0, 0, 0}));
    EXPECT_EQ(Read(0, 3), Bytes()) << "no block";
    registers.Process(Results().Measurement("a", 1193046.5).Text("t", "abc").Get()); // 1193046500 = 0x471C71E4
    EXPECT_EQ(Read(3, 8), (Bytes{0x47, 0x1C, 0x71, 0xE4, 'a', 'b', 'c', 0}));
    EXPECT_EQ(Read(11, 1), Bytes());
    assembly->ChangeBigEndianSupportedBlocks(false);
    registers.Rebuild();
    EXPECT_EQ(Read(3, 8), (Bytes{0xE4, 0x71, 0x1C, 0x47, 'a', 'b', 'c', 0}));
}

TEST_F(ScanRegistersTest, OrdersTheBytesOfAllBlocksButTexts) {
    const RegisterFormat reversed{.bytesPerRegister = 1,
                                  .order = [](std::span<unsigned char> bytes) { std::ranges::reverse(bytes); }};
    CommandCells reversedCells(image, runner, OneByteCellTypes(), reversed);
    ScanRegisters reversedRegisters(assembly, image, reversedCells, reversed);
    AddBlocks(
        *assembly,
        {{"MeasurementValue", "a", 0}, {"String", "t", 4, 3}, {"ControlOutput", "", 10}, {"ControlInput", "", 20}});
    reversedRegisters.Rebuild();
    reversedRegisters.Process(Results().Measurement("a", 0.258).Text("t", "abc").Get());
    EXPECT_EQ(Read(0, 7), (Bytes{2, 1, 0, 0, 'a', 'b', 'c'}));
    const Bytes values{5, 6};
    EXPECT_EQ(reversedCells.Write({.offset = 20, .values = values}), InputResult::Done);
    EXPECT_EQ(Read(10, 3), (Bytes{1, 6, 5}));
    EXPECT_EQ(Read(20, 2), values);
}

TEST_F(ScanRegistersTest, KeepsTheLatestResultsOverANewMap) {
    Map({{"MeasurementValue", "a", 0}, {"MeasurementValue", "b", 4}, {"ControlInput", "", 8}});
    registers.Process(Results().Measurement("a", 0.001).Measurement("b", 0.002).Get());
    const Bytes values{5, 6, 1};
    EXPECT_EQ(cells.Write({.offset = 8, .values = values}), InputResult::Done);
    assembly->ResetRegisterAssembly();
    Map({{"ControlInput", "", 1}, {"MeasurementValue", "b", 100}, {"MeasurementValue", "c", 104}});
    EXPECT_EQ(Read(0, 4), (Bytes{0, 5, 6, 1}));
    EXPECT_EQ(Read(100, 8), (Bytes{0, 0, 0, 2, 0x80, 0, 0, 0}));
}

TEST_F(ScanRegistersTest, LeavesWhatNoScanFeedsAlone) {
    Map({{"MeasurementValue", "a", 0}, {"ControlInput", "", 4}, {"MeasurementValue", "b", 71}});
    const Bytes values{5, 6, 1};
    EXPECT_EQ(cells.Write({.offset = 4, .values = values}), InputResult::Done);
    registers.Process(Results().Measurement("a", 0.001).Measurement("b", 0.002).Get());
    EXPECT_EQ(Read(0, 7), (Bytes{0, 0, 0, 1, 5, 6, 1}));
    EXPECT_EQ(Read(71, 4), (Bytes{0, 0, 0, 2}));
}

TEST_F(ScanRegistersTest, ReportsAFrameThatItCannotWriteAndLogsTheFirstOne) {
    Map({{"MeasurementValue", "a", 0}});
    const Vor::LogCapture log;
    assembly->broken = true;
    EXPECT_FALSE(registers.Process(Results().Measurement("a", 0.001).Get()));
    EXPECT_FALSE(registers.Process(Results().Measurement("a", 0.002).Get()));
    assembly->broken = false;
    EXPECT_EQ(log.Count("A frame can't be written into the registers."), 1u);
    EXPECT_EQ(Read(0, 4), (Bytes{0x80, 0, 0, 0}));
    EXPECT_TRUE(registers.Process(Results().Text("a", "no number").Get()))
        << "a value that its block can't write is no lost frame";
    EXPECT_TRUE(registers.Process(Results().Measurement("a", 0.003).Get()));
    EXPECT_EQ(Read(0, 4), (Bytes{0, 0, 0, 3}));
}

} // namespace
} // namespace Services::Common
