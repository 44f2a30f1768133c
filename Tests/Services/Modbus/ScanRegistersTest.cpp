#include "Services/Common/Registers/ScanRegisters.h"

#include "Services/Modbus/BlockTypes.h"
#include "Services/Modbus/RegisterMap.h"
#include "Tests/Services/Modbus/Results.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"

#include <gtest/gtest.h>

namespace Services::Modbus {
namespace {

using VorControl::ControlProtocol::DefaultScannerStateData;
using VorControl::ControlProtocol::ProtocolRegisterAssemblyBase;

class NoCommands : public Common::ICommandRunner {
public:
    bool IsBusy() const override { return false; }
    void Run(const VorControl::ControlProtocol::ControlRegisterCommandData&) override {}
};

class ScanRegistersTest : public testing::Test {
protected:
    ScanRegistersTest() {
        AddScanBlockTypes(*assembly);
        AddControlBlockTypes(*assembly);
    }

    void Map(const std::vector<BlockToAdd>& blocks) {
        AddBlocks(*assembly, blocks);
        registers.Rebuild();
    }

    Bytes Read(unsigned address, unsigned count) {
        Bytes bytes(2 * count);
        if (!map.Read(static_cast<std::uint16_t>(address), static_cast<std::uint16_t>(count), bytes.data())) {
            return {};
        }
        return bytes;
    }

    void Process(const Results& results) { registers.Process(results.Get()); }

    std::shared_ptr<ProtocolRegisterAssemblyBase> assembly =
        std::make_shared<ProtocolRegisterAssemblyBase>(true, 0, 65534, "registerAssembly-0", "Map");
    Common::RegisterImage image;
    NoCommands commands;
    Common::CommandCells cells{image, commands, MakeCellTypes(), MakeRegisterFormat()};
    Common::ScanRegisters registers{assembly, image, cells, MakeRegisterFormat()};
    RegisterMap map{image, cells};
};

TEST_F(ScanRegistersTest, ShowsAMissingValueUntilTheFirstFrame) {
    Map({{"Measurement", "a", 0},
         {"MeasurementValue", "a", 3},
         {"MeasurementDecision", "a", 5},
         {"String", "t", 6},
         {"Stamp", "s", 10}});
    EXPECT_EQ(Read(0, 6), Words({0x8000, 0, 2, 0x8000, 0, 2}));
    EXPECT_EQ(Read(6, 22), Words(std::vector<unsigned>(22, 0)));
    EXPECT_EQ(Read(28, 1), Bytes());
}

TEST_F(ScanRegistersTest, WritesMeasurementsHighWordFirst) {
    Map({{"Measurement", "a", 0}, {"MeasurementValue", "a", 3}, {"MeasurementDecision", "a", 5}});
    Process(Results().Measurement("a", 1193046.5, 1)); // 1193046500 = 0x471C71E4
    EXPECT_EQ(Read(0, 6), Words({0x471C, 0x71E4, 1, 0x471C, 0x71E4, 1}));
    Process(Results().Measurement("a", -0.001, 0));
    EXPECT_EQ(Read(0, 6), Words({0xFFFF, 0xFFFF, 0, 0xFFFF, 0xFFFF, 0}));
}

TEST_F(ScanRegistersTest, WritesMeasurementsLowWordFirst) {
    assembly->ChangeBigEndianSupportedBlocks(false);
    Map({{"Measurement", "a", 0}, {"MeasurementValue", "a", 3}, {"MeasurementDecision", "a", 5}});
    EXPECT_EQ(Read(0, 6), Words({0, 0x8000, 2, 0, 0x8000, 2}));
    Process(Results().Measurement("a", 1193046.5, 1));
    EXPECT_EQ(Read(0, 6), Words({0x71E4, 0x471C, 1, 0x71E4, 0x471C, 1}));
}

TEST_F(ScanRegistersTest, RoundsToTheNearestThousandthTiesAwayFromZero) {
    Map({{"MeasurementValue", "a", 0}, {"MeasurementValue", "b", 2}});
    Process(Results().Measurement("a", 0.0625).Measurement("b", -0.0625)); // 62.5 thousandths
    EXPECT_EQ(Read(0, 4), Words({0, 63, 0xFFFF, 0x10000 - 63}));
}

TEST_F(ScanRegistersTest, WritesAStamp) {
    yStamp stamp;
    stamp.inputs = 0x21;
    stamp.frameIndex = 0x0102030405060708;
    stamp.time = 0x1112131415161718;
    stamp.encoder = -2;
    stamp.encoderAtZ = 0x2122232425262728;
    Map({{"Stamp", "s", 0}});
    Process(Results().Stamp("s", stamp));
    EXPECT_EQ(Read(0, 18), Words({0x2122, 0x2324, 0x2526, 0x2728, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFE, 0x1112, 0x1314,
                                  0x1516, 0x1718, 0x0102, 0x0304, 0x0506, 0x0708, 3, 0}));
    assembly->ChangeBigEndianSupportedBlocks(false);
    Process(Results().Stamp("s", stamp));
    EXPECT_EQ(Read(0, 18), Words({0x2728, 0x2526, 0x2324, 0x2122, 0xFFFE, 0xFFFF, 0xFFFF, 0xFFFF, 0x1718, 0x1516,
                                  0x1314, 0x1112, 0x0708, 0x0506, 0x0304, 0x0102, 3, 0}));
}

TEST_F(ScanRegistersTest, WritesTextInReadingOrderInBothByteOrders) {
    Map({{"String", "t", 0, 3}});
    for (const bool bigEndian : {true, false}) {
        assembly->ChangeBigEndianSupportedBlocks(bigEndian);
        Process(Results().Text("t", "abcde"));
        EXPECT_EQ(Read(0, 3), (Bytes{'a', 'b', 'c', 'd', 'e', 0}));
        Process(Results().Text("t", "0123456789"));
        EXPECT_EQ(Read(0, 3), (Bytes{'0', '1', '2', '3', '4', '5'}));
        Process(Results().Nothing("t", ResultInfo_TypeString));
        EXPECT_EQ(Read(0, 3), Bytes(6, 0));
    }
}

TEST_F(ScanRegistersTest, ShowsAMissingValueWhenTheSourceHasNone) {
    Map({{"Measurement", "a", 0}, {"Stamp", "s", 10}});
    yStamp stamp;
    stamp.time = 5;
    Process(Results().Measurement("a", 1).Stamp("s", stamp));
    Vor::LogCapture log;
    Process(Results().Nothing("a", ResultInfo_TypeMeasurement).Nothing("s", ResultInfo_TypeStamp));
    EXPECT_EQ(Read(0, 3), Words({0x8000, 0, 2}));
    EXPECT_EQ(Read(10, 18), Bytes(36, 0));
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0u);
}

TEST_F(ScanRegistersTest, ShowsAMissingValueForOneThatDoesNotFit) {
    Map({{"Measurement", "a", 0}});
    Process(Results().Measurement("a", 1));
    Process(Results().Measurement("a", 3e6));
    EXPECT_EQ(Read(0, 3), Words({0x8000, 0, 2}));
}

TEST_F(ScanRegistersTest, FeedsAllBlocksOfOneSource) {
    Map({{"MeasurementValue", "a", 100}, {"MeasurementValue", "b", 200}, {"MeasurementValue", "a", 300}});
    Process(Results().Measurement("a", 0.001).Measurement("b", 0.002).Measurement("unknown", 0.003));
    EXPECT_EQ(Read(100, 2), Words({0, 1}));
    EXPECT_EQ(Read(200, 2), Words({0, 2}));
    EXPECT_EQ(Read(300, 2), Words({0, 1}));
}

TEST_F(ScanRegistersTest, KeepsWhatAFrameDoesNotBring) {
    Map({{"MeasurementValue", "a", 0}, {"MeasurementValue", "b", 2}});
    Process(Results().Measurement("a", 0.001).Measurement("b", 0.002));
    Process(Results().Measurement("b", 0.003));
    EXPECT_EQ(Read(0, 4), Words({0, 1, 0, 3}));
}

TEST_F(ScanRegistersTest, LogsABlockThatCannotWriteOnceAndItsRecoveryOnce) {
    Map({{"Measurement", "a", 0}, {"MeasurementValue", "b", 3}});
    Vor::LogCapture log;
    for (int i = 0; i < 3; ++i) {
        Process(Results().Text("a", "no number").Measurement("b", 0.002));
        EXPECT_EQ(Read(0, 5), Words({0x8000, 0, 2, 0, 2})) << "the other blocks are written";
    }
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 1u);
    for (int i = 0; i < 3; ++i) {
        Process(Results().Measurement("a", 0.001));
        EXPECT_EQ(Read(0, 3), Words({0, 1, 1}));
    }
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 1u);
    EXPECT_EQ(log.Count("Register block at 0 writes the value of a again"), 1u);
}

TEST_F(ScanRegistersTest, KeepsTheLastValuesWhenTheMapChanges) {
    Map({{"MeasurementValue", "a", 0}, {"MeasurementValue", "b", 2}});
    Process(Results().Measurement("a", 0.001).Measurement("b", 0.002));
    assembly->ResetRegisterAssembly();
    assembly->ChangeBigEndianSupportedBlocks(false);
    Map({{"Measurement", "a", 50}, {"MeasurementValue", "c", 60}});
    EXPECT_EQ(Read(0, 4), Bytes());
    EXPECT_EQ(Read(50, 3), Words({1, 0, 1}));
    EXPECT_EQ(Read(60, 2), Words({0, 0x8000}));
}

TEST_F(ScanRegistersTest, StartsWithoutValuesOnceTheyAreForgotten) {
    Map({{"MeasurementValue", "a", 0}});
    Process(Results().Measurement("a", 0.001));
    registers.ForgetValues();
    EXPECT_EQ(Read(0, 2), Words({0, 1}));
    registers.Rebuild();
    EXPECT_EQ(Read(0, 2), Words({0x8000, 0}));
}

TEST_F(ScanRegistersTest, LeavesABlockThatIsBeingEditedUntilTheMapIsTakenOver) {
    Map({{"String", "t", 0, 2}, {"String", "u", 10, 2}});
    Process(Results().Text("t", "abcd").Text("u", "abcd"));
    assembly->BeginLock();
    assembly->AddedRegisterBlocks().front()->SetRegisterCount(3);
    assembly->EndLock();
    Process(Results().Text("t", "ABCDEFGH").Text("u", "ABCDEFGH"));
    EXPECT_EQ(Read(0, 3), (Bytes{'a', 'b', 'c', 'd', 0, 0}));
    EXPECT_EQ(Read(10, 2), (Bytes{'A', 'B', 'C', 'D'}));
    registers.Rebuild();
    EXPECT_EQ(Read(0, 3), (Bytes{'A', 'B', 'C', 'D', 'E', 'F'}));
}

TEST_F(ScanRegistersTest, TakesBlocksAtBothEndsOfTheAddresses) {
    Map({{"MeasurementDecision", "a", 0}, {"MeasurementDecision", "a", 65534}, {"String", "t", 60000, 5000}});
    Process(Results().Measurement("a", 1, 1).Text("t", "x"));
    EXPECT_EQ(Read(65534, 2), Words({1, 0}));
    EXPECT_EQ(Read(64999, 1), Words({0}));
    EXPECT_EQ(Read(65000, 100), Bytes());
}

TEST_F(ScanRegistersTest, BearsATextThatReachesBeyondTheLastAddress) {
    Map({{"String", "t", 65500, 40000}, {"MeasurementDecision", "a", 0}});
    Process(Results().Text("t", "x").Measurement("a", 1));
    EXPECT_EQ(Read(65500, 36).size(), 72u);
    EXPECT_EQ(Read(65500, 1), (Bytes{'x', 0}));
}

TEST_F(ScanRegistersTest, LeavesTheRegistersThatNoScanFeedsAlone) {
    Map({{"MeasurementValue", "a", 0},
         {"ControlInput", "", 2},
         {"ControlOutput", "", 67},
         {"MeasurementValue", "b", 70},
         {"Scanner", "", 80},
         {"MeasurementValue", "c", 95}});
    const Bytes request = Words({7, 0xABCD});
    EXPECT_EQ(map.Write({.address = 2, .values = request}), NoException);
    cells.SetState(ScannerType, DefaultScannerStateData{.firstScannerByte = 2, .signedScannerValue = -1});
    for (int turn = 1; turn <= 2; ++turn) {
        Process(Results().Measurement("a", 0.001 * turn).Measurement("b", 0.002).Measurement("c", 0.003));
        const auto value = static_cast<unsigned>(turn);
        EXPECT_EQ(Read(0, 4), Words({0, value, 7, 0xABCD}));
        EXPECT_EQ(Read(67, 5), Words({7, 1, 0, 0, 2}));
        EXPECT_EQ(Read(80, 4), Words({0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF}));
        EXPECT_EQ(Read(88, 2), Words({2, 0}));
        EXPECT_EQ(Read(95, 2), Words({0, 3}));
    }
    Process(Results().Measurement("b", 0.004));
    EXPECT_EQ(Read(67, 5), Words({7, 1, 0, 0, 4}));
}

TEST_F(ScanRegistersTest, TakesTheRegistersThatNoScanFeedsToTheirNewPlaces) {
    Map({{"ControlInput", "", 0}, {"MeasurementValue", "a", 65}});
    const Bytes request = Words({7, 0xABCD});
    EXPECT_EQ(map.Write({.address = 0, .values = request}), NoException);
    cells.SetState(ScannerType,
                   DefaultScannerStateData{.secondScannerByte = 1, .unsignedScannerValue = 0x0102030405060708});
    assembly->ResetRegisterAssembly();
    assembly->ChangeBigEndianSupportedBlocks(false);
    Map({{"Scanner", "", 10}, {"ControlOutput", "", 30}, {"ControlInput", "", 200}});
    EXPECT_EQ(Read(0, 10), Bytes());
    EXPECT_EQ(Read(14, 6), Words({0x0708, 0x0506, 0x0304, 0x0102, 0, 1}));
    EXPECT_EQ(Read(30, 3), Words({7, 1, 0}));
    EXPECT_EQ(Read(200, 3), Words({7, 0xABCD, 0}));
    EXPECT_EQ(Read(264, 2), Words({0, 0}));
    EXPECT_EQ(Read(265, 1), Bytes());
}

TEST_F(ScanRegistersTest, GivesBackEveryResultWhenItGoes) {
    const auto before = yObject_LiveCount();
    {
        const auto own = std::make_shared<ProtocolRegisterAssemblyBase>(true, 0, 65534, "registerAssembly-0", "Map");
        AddScanBlockTypes(*own);
        AddBlocks(*own, {{"MeasurementValue", "a", 0}});
        Common::RegisterImage ownImage;
        Common::CommandCells ownCells(ownImage, commands, MakeCellTypes(), MakeRegisterFormat());
        Common::ScanRegisters ownRegisters(own, ownImage, ownCells, MakeRegisterFormat());
        ownRegisters.Rebuild();
        ownRegisters.Process(Results().Measurement("a", 1).Get());
        ownRegisters.Process(Results().Measurement("a", 2).Get());
    }
    EXPECT_EQ(yObject_LiveCount(), before);
}

} // namespace
} // namespace Services::Modbus
