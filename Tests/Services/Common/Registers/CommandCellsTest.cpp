#include "Services/Common/Registers/CommandCells.h"

#include "Tests/Services/Common/Registers/OneByteRegisters.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

namespace Services::Common {
namespace {

using namespace VorControl::ControlProtocol;

/// Registers of one byte with the command at 5 to 71, the answer at 80 to 82, the states at 100 and 200.
class CommandCellsTest : public testing::Test {
protected:
    CommandCellsTest() { Replace(true); }

    void Replace(bool isBigEndian) {
        cells.Replace({.places = {{"ControlInput", 5}, {"ControlOutput", 80}, {"System", 100}, {"Scanner", 200}},
                       .isBigEndian = isBigEndian},
                      {{5, 72}, {80, 83}, {100, 176}, {200, 218}}, Bytes(218, 0));
    }

    Bytes Read(std::size_t offset, std::size_t size) {
        Bytes bytes(size);
        return image.Read(offset, size, bytes.data()) ? bytes : Bytes();
    }
    InputResult Write(std::size_t offset, const Bytes& values) {
        return cells.Write({.offset = offset, .values = values});
    }
    Bytes Answer() { return Read(80, 3); }

    RegisterImage image;
    RecordingRunner runner;
    CommandCells cells{image, runner, OneByteCellTypes(), {.bytesPerRegister = 1}};
};

TEST_F(CommandCellsTest, RunsACommandWhenAWriteChangesTheRequestWord) {
    Bytes seen;
    runner.onRun = [&] { seen = Answer(); };
    EXPECT_EQ(Write(5, {0x01, 0x02, ControlRegisterCommandData::LoadJob, 0, 'a', 'b', 0}), InputResult::Done);
    ASSERT_EQ(runner.commands.size(), 1u);
    EXPECT_EQ(runner.commands[0].requestWord, 0x0102);
    EXPECT_EQ(runner.commands[0].commandId, ControlRegisterCommandData::LoadJob);
    EXPECT_STREQ(runner.commands[0].commandArgs.data(), "ab");
    EXPECT_EQ(seen, (Bytes{1, 2, 1})) << "the answer is in progress before the command runs";
    EXPECT_EQ(Read(174, 1), (Bytes{1})) << "and so is the state of the system";
    EXPECT_EQ(Write(5, {0x01, 0x03}), InputResult::Busy);
    EXPECT_EQ(Read(5, 2), (Bytes{1, 2})) << "nothing is changed";
    cells.EndCommand(CommandCells::CommandDone);
    EXPECT_EQ(Answer(), (Bytes{1, 2, 2}));
    EXPECT_EQ(Read(174, 1), (Bytes{0}));
    EXPECT_EQ(Write(5, {1, 2, 1}), InputResult::Done);
    EXPECT_EQ(runner.commands.size(), 1u) << "the request word is the same";
}

TEST_F(CommandCellsTest, ReadsTheRequestWordInTheOrderOfTheClients) {
    CellTypes types = OneByteCellTypes();
    types.input->SetIsProtocolBigEndian(false);
    CommandCells little(image, runner, std::move(types), {.bytesPerRegister = 1});
    little.Replace({.places = {{"ControlInput", 0}, {"ControlOutput", 70}}, .isBigEndian = false}, {{0, 73}},
                   Bytes(73, 0));
    const Bytes values{0x02, 0x01, 1};
    EXPECT_EQ(little.Write({.offset = 0, .values = values}), InputResult::Done);
    ASSERT_EQ(runner.commands.size(), 1u);
    EXPECT_EQ(runner.commands[0].requestWord, 0x0102);
    EXPECT_EQ(Read(70, 3), (Bytes{2, 1, 1}));
}

TEST_F(CommandCellsTest, FailsACommandThatItCannotRead) {
    EXPECT_EQ(Write(5, {0, 1, ControlRegisterCommandData::LoadJob}), InputResult::Done) << "without a name";
    EXPECT_EQ(runner.commands.size(), 0u);
    EXPECT_EQ(Answer(), (Bytes{0, 1, 3}));
    EXPECT_EQ(Write(5, {0, 2, 1}), InputResult::Done);
    EXPECT_EQ(runner.commands.size(), 1u);
}

TEST_F(CommandCellsTest, WritesWithinTheCommandOnly) {
    const Bytes all = Read(5, 213);
    EXPECT_EQ(Write(4, {1, 1}), InputResult::OutOfRange);
    EXPECT_EQ(Write(71, {1, 1}), InputResult::OutOfRange);
    EXPECT_EQ(Write(72, {1}), InputResult::OutOfRange);
    EXPECT_EQ(Write(80, {1}), InputResult::OutOfRange);
    EXPECT_EQ(Read(5, 213), all);
    EXPECT_EQ(Write(71, {9}), InputResult::Done);
    EXPECT_EQ(Read(71, 1), (Bytes{9}));
}

TEST_F(CommandCellsTest, KeepsTheBitsOfAPattern) {
    EXPECT_EQ(Write(9, {0xFF, 0x00, 0xFF, 0x00}), InputResult::Done);
    const Bytes values{0x12, 0x34, 0x56, 0x78};
    const Bytes keep{0xF0, 0x0F};
    EXPECT_EQ(cells.Write({.offset = 9, .values = values, .keep = keep}), InputResult::Done);
    EXPECT_EQ(Read(9, 4), (Bytes{0xF2, 0x30, 0xF6, 0x70}));
}

TEST_F(CommandCellsTest, TakesAFirstWriteOfOneByteOfTheRequestWordAsABase) {
    cells.SetFirstRequestRuns(false);
    EXPECT_EQ(Write(6, {7}), InputResult::Done);
    EXPECT_EQ(Answer(), (Bytes{0, 7, 0}));
    EXPECT_EQ(runner.commands.size(), 0u);
    EXPECT_EQ(Write(6, {8}), InputResult::Done);
    EXPECT_EQ(runner.commands.size(), 1u);
}

TEST_F(CommandCellsTest, MovesItsContentToANewMapInItsByteOrder) {
    EXPECT_EQ(Write(5, {1, 2, 1}), InputResult::Done);
    cells.SetState("Scanner", DefaultScannerStateData{.firstScannerByte = 2, .signedScannerValue = 0x0102});
    cells.SetSystemState({.firstStateByte = 1, .stateValue = 0x0304});
    EXPECT_EQ(Read(200, 8), (Bytes{0, 0, 0, 0, 0, 0, 1, 2}));
    EXPECT_EQ(Read(100, 9), (Bytes{0, 0, 0, 0, 0, 0, 3, 4, 1}));
    Replace(false);
    EXPECT_EQ(Read(5, 3), (Bytes{1, 2, 1})) << "in the order in which the client wrote it";
    EXPECT_EQ(Answer(), (Bytes{2, 1, 1}));
    EXPECT_EQ(Read(200, 8), (Bytes{2, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Read(216, 1), (Bytes{2}));
    EXPECT_EQ(Read(100, 9), (Bytes{4, 3, 0, 0, 0, 0, 0, 0, 1}));
    EXPECT_TRUE(cells.HasSystemState());
    EXPECT_TRUE(cells.HasState("Scanner"));
    EXPECT_FALSE(cells.HasState("Other"));
    cells.Replace({.places = {{"ControlInput", 0}}}, {{0, 67}}, Bytes(67, 0));
    EXPECT_FALSE(cells.HasSystemState());
    EXPECT_FALSE(cells.HasState("Scanner"));
    EXPECT_EQ(Read(0, 3), (Bytes{1, 2, 1}));
}

} // namespace
} // namespace Services::Common
