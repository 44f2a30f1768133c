#include "Services/Modbus/RegisterMap.h"

#include "Services/Modbus/BlockTypes.h"
#include "Services/Modbus/DiagnosticsBlock.h"
#include "Tests/Services/Modbus/Bytes.h"
#include "Tests/Services/Modbus/Results.h"

#include <functional>

#include <gtest/gtest.h>

namespace Services::Modbus {
namespace {

using namespace VorControl::ControlProtocol;
using Common::CellPlaces;

class Runner : public Common::ICommandRunner {
public:
    bool IsBusy() const override { return busy; }
    void Run(const ControlRegisterCommandData& command) override {
        requestWords.push_back(command.requestWord);
        if (onRun) {
            onRun();
        }
    }

    bool busy = false;
    std::vector<unsigned> requestWords; ///< of the commands that were run
    std::function<void()> onRun;
};

/// Registers with the command at 10 to 74, the answer at 80 to 82, the states at 100 and 150.
class RegisterMapTest : public testing::Test {
protected:
    RegisterMapTest() {
        Replace({.places = {{"ControlInput", 20}, {"ControlOutput", 160}, {"System", 200}, {"Scanner", 300}}},
                {{10, 75}, {80, 83}, {100, 140}, {150, 160}});
    }

    /// `ranges` are registers.
    void Replace(const CellPlaces& places, std::vector<Common::ByteRange> ranges) {
        for (Common::ByteRange& range : ranges) {
            range = {2 * range.begin, 2 * range.end};
        }
        const std::size_t size = ranges.empty() ? 0 : ranges.back().end;
        cells.Replace(places, std::move(ranges), Bytes(size, 0));
    }

    Bytes Read(unsigned address, unsigned count) {
        Bytes bytes(2 * count);
        return map.Read(static_cast<std::uint16_t>(address), static_cast<std::uint16_t>(count), bytes.data()) ? bytes
                                                                                                              : Bytes();
    }

    unsigned char Write(unsigned address, const std::vector<unsigned>& words) {
        const Bytes values = Words(words);
        return map.Write({.address = static_cast<std::uint16_t>(address), .values = values});
    }

    Bytes Answer() { return Read(80, 3); }
    /// The register of the system's state that is 1 while a command is in progress.
    unsigned Busy() { return Word(Read(138, 1).data()); }

    Common::RegisterImage image;
    Runner runner;
    Common::CommandCells cells{image, runner, MakeCellTypes(), MakeRegisterFormat()};
    RegisterMap map{image, cells};
};

TEST_F(RegisterMapTest, StartsWithZeros) {
    EXPECT_EQ(Read(10, 65), Bytes(130, 0));
    EXPECT_EQ(Answer(), Words({0, 0, 0}));
    EXPECT_EQ(Read(100, 40), Bytes(80, 0));
    EXPECT_EQ(Read(150, 10), Bytes(20, 0));
}

TEST_F(RegisterMapTest, TakesACommandWhenAWriteChangesTheRequestWord) {
    std::vector<Bytes> seen;
    runner.onRun = [&] { seen.push_back(Answer()); };
    EXPECT_EQ(Write(10, {1, 7}), NoException);
    EXPECT_EQ(runner.requestWords, (std::vector<unsigned>{1}));
    EXPECT_EQ(seen, (std::vector<Bytes>{Words({1, 1, 0})})) << "the echo is there before the command requestWords";
    EXPECT_EQ(Read(10, 3), Words({1, 7, 0}));
    EXPECT_EQ(Busy(), 1u);
    cells.EndCommand(2);
    EXPECT_EQ(Answer(), Words({1, 2, 0}));
    EXPECT_EQ(Busy(), 0u);
    EXPECT_EQ(Write(10, {2}), NoException);
    cells.EndCommand(3);
    EXPECT_EQ(Answer(), Words({2, 3, 0}));
    EXPECT_EQ(runner.requestWords, (std::vector<unsigned>{1, 2}));
}

TEST_F(RegisterMapTest, BearsACommandThatEndsBeforeItsRunReturns) {
    runner.onRun = [&] { cells.EndCommand(2); };
    EXPECT_EQ(Write(10, {0xFFFF, 1}), NoException);
    EXPECT_EQ(Answer(), Words({0xFFFF, 2, 0}));
    EXPECT_EQ(Write(10, {1}), NoException);
    EXPECT_EQ(Answer(), Words({1, 2, 0}));
}

TEST_F(RegisterMapTest, RunsNothingWithoutAChangeOfTheRequestWord) {
    EXPECT_EQ(Write(10, {0, 1}), NoException) << "0 is what stands there at first";
    EXPECT_EQ(Write(11, {2, 'a', 'b'}), NoException);
    EXPECT_EQ(runner.requestWords, std::vector<unsigned>());
    EXPECT_EQ(Read(10, 4), Words({0, 2, 'a', 'b'}));
    EXPECT_EQ(Answer(), Words({0, 0, 0}));
    EXPECT_EQ(Write(10, {5}), NoException);
    cells.EndCommand(2);
    EXPECT_EQ(Write(10, {5, 1}), NoException);
    EXPECT_EQ(runner.requestWords, (std::vector<unsigned>{5}));
    EXPECT_EQ(Answer(), Words({5, 2, 0}));
}

TEST_F(RegisterMapTest, RefusesAnotherRequestWordWhileACommandIsUnderWay) {
    EXPECT_EQ(Write(10, {1, 1}), NoException);
    EXPECT_EQ(Write(10, {2, 2, 3}), ServerDeviceBusy);
    EXPECT_EQ(Read(10, 3), Words({1, 1, 0})) << "nothing is changed";
    EXPECT_EQ(Write(11, {9}), NoException) << "arguments may be written";
    EXPECT_EQ(Write(10, {1, 8}), NoException) << "with the same request word, too";
    EXPECT_EQ(Read(10, 3), Words({1, 8, 0}));
    EXPECT_EQ(runner.requestWords, (std::vector<unsigned>{1}));
    cells.EndCommand(2);
    EXPECT_EQ(Write(10, {2, 2, 3}), NoException);
    EXPECT_EQ(Answer(), Words({2, 1, 0}));
}

TEST_F(RegisterMapTest, RefusesACommandWhileTheRunnerIsBusy) {
    runner.busy = true;
    EXPECT_EQ(Write(10, {1, 1}), ServerDeviceBusy);
    EXPECT_EQ(Read(10, 2), Words({0, 0}));
    EXPECT_EQ(Answer(), Words({0, 0, 0}));
    EXPECT_EQ(Write(11, {1}), NoException);
    EXPECT_EQ(runner.requestWords, std::vector<unsigned>());
}

TEST_F(RegisterMapTest, TakesTheFirstRequestWordAsABaseWhereItMustNotRun) {
    cells.SetFirstRequestRuns(false);
    EXPECT_EQ(Write(11, {1, 2}), NoException) << "is no request word";
    EXPECT_EQ(Write(10, {7, 1}), NoException);
    EXPECT_EQ(runner.requestWords, std::vector<unsigned>());
    EXPECT_EQ(Answer(), Words({7, 0, 0})) << "so a client sees that nothing ran";
    EXPECT_EQ(Busy(), 0u);
    EXPECT_EQ(Read(10, 3), Words({7, 1, 2}));
    EXPECT_EQ(Write(10, {7, 1}), NoException);
    EXPECT_EQ(runner.requestWords, std::vector<unsigned>()) << "no change";
    EXPECT_EQ(Write(10, {8, 1}), NoException);
    EXPECT_EQ(runner.requestWords, std::vector<unsigned>{8});
    EXPECT_EQ(Answer(), Words({8, 1, 0}));
}

TEST_F(RegisterMapTest, TakesZeroAsABase) {
    cells.SetFirstRequestRuns(false);
    EXPECT_EQ(Write(10, {0, 1}), NoException);
    EXPECT_EQ(Answer(), Words({0, 0, 0}));
    EXPECT_EQ(Write(10, {1, 1}), NoException);
    EXPECT_EQ(runner.requestWords, std::vector<unsigned>{1});
}

TEST_F(RegisterMapTest, TakesABaseOnceInItsLife) {
    EXPECT_EQ(Write(10, {1}), NoException);
    cells.EndCommand(2);
    cells.SetFirstRequestRuns(false);
    EXPECT_EQ(Write(10, {2}), NoException);
    EXPECT_EQ(runner.requestWords, (std::vector<unsigned>{1, 2})) << "the first one has run before";
    cells.EndCommand(2);
    Replace({.places = {{"ControlInput", 10}}}, {{5, 70}});
    EXPECT_EQ(Write(5, {3}), NoException);
    EXPECT_EQ(runner.requestWords, (std::vector<unsigned>{1, 2, 3})) << "a new map is no start";
}

TEST_F(RegisterMapTest, TakesAMaskedRequestWordAsABase) {
    cells.SetFirstRequestRuns(false);
    const Bytes value = Words({0x0100});
    EXPECT_EQ(map.Write({.address = 10, .values = value, .keep = 0xFEFF}), NoException);
    EXPECT_EQ(Answer(), Words({0x0100, 0, 0}));
    EXPECT_EQ(map.Write({.address = 10, .values = value, .keep = 0xFFFF}), NoException);
    EXPECT_EQ(runner.requestWords, std::vector<unsigned>());
}

TEST_F(RegisterMapTest, TakesTheFirstEndOfACommandOnly) {
    cells.EndCommand(3);
    EXPECT_EQ(Answer(), Words({0, 0, 0})) << "of no command at all";
    EXPECT_EQ(Write(10, {1}), NoException);
    cells.EndCommand(2);
    cells.EndCommand(3);
    EXPECT_EQ(Answer(), Words({1, 2, 0}));
}

TEST_F(RegisterMapTest, WritesWithinTheCommandsRegistersOnly) {
    const Bytes all = Read(10, 150);
    for (const auto& [address, count] : {std::pair{9u, 1u},
                                         {9u, 2u},
                                         {74u, 2u},
                                         {75u, 1u},
                                         {80u, 1u},
                                         {100u, 1u},
                                         {150u, 1u},
                                         {0u, 1u},
                                         {65535u, 1u},
                                         {9u, 67u}}) {
        EXPECT_EQ(Write(address, std::vector<unsigned>(count, 0x5A5A)), IllegalDataAddress) << address;
    }
    EXPECT_EQ(Read(10, 150), all);
    EXPECT_EQ(Write(11, std::vector<unsigned>(64, 0x5A5A)), NoException);
    EXPECT_EQ(Read(10, 65), Bytes(2, 0) + Bytes(128, 0x5A));
    EXPECT_EQ(Read(75, 75), Bytes(all.begin() + 130, all.begin() + 280));
}

TEST_F(RegisterMapTest, KeepsTheBitsThatAMaskNames) {
    EXPECT_EQ(Write(11, {0x0012}), NoException);
    const Bytes value = Words({0x0025});
    EXPECT_EQ(map.Write({.address = 11, .values = value, .keep = 0x00F2}), NoException);
    EXPECT_EQ(Read(11, 1), Words({0x0017})) << "the example of MODBUS Application Protocol V1.1b3, 6.16";
    const Bytes bit = Words({0x0100});
    EXPECT_EQ(map.Write({.address = 10, .values = bit, .keep = 0xFEFF}), NoException);
    EXPECT_EQ(runner.requestWords, (std::vector<unsigned>{0x0100})) << "a mask may change the request word";
    const Bytes other = Words({0x0001});
    EXPECT_EQ(map.Write({.address = 10, .values = other, .keep = 0xFFFE}), ServerDeviceBusy);
    EXPECT_EQ(map.Write({.address = 10, .values = bit, .keep = 0xFEFF}), NoException);
}

TEST_F(RegisterMapTest, ReadsWhatItHasJustWritten) {
    Bytes read(142, 0xEE);
    const Bytes values = Words({1, 2});
    EXPECT_EQ(map.Write({.address = 10, .values = values, .readAddress = 10, .read = read}), NoException);
    EXPECT_EQ(Bytes(read.begin(), read.begin() + 6), Words({1, 2, 0}));
    EXPECT_EQ(Bytes(read.begin() + 140, read.end()), Words({1})) << "and the echo";
}

TEST_F(RegisterMapTest, WritesNothingWhenItCannotRead) {
    Bytes read(2);
    const Bytes values = Words({1, 2});
    EXPECT_EQ(map.Write({.address = 10, .values = values, .readAddress = 0, .read = read}), IllegalDataAddress);
    EXPECT_EQ(map.Write({.address = 9, .values = values, .readAddress = 10, .read = read}), IllegalDataAddress);
    EXPECT_EQ(Read(10, 2), Words({0, 0}));
    EXPECT_EQ(runner.requestWords, std::vector<unsigned>());
}

TEST_F(RegisterMapTest, ShowsTheStates) {
    DefaultSystemStateData system{
        .firstStateByte = 1, .jobFileNameLength = 3, .secondStateByte = 1, .thirdStateByte = 42, .stateValue = 70000};
    system.jobFileName = {'a', 'b', 'c'};
    cells.SetSystemState(system);
    EXPECT_EQ(Read(100, 8), Words({0, 0, 1, 4464, 1, 3, 0x6162, 0x6300}));
    EXPECT_EQ(Read(108, 32), Words(std::vector<unsigned>(31, 0)) + Words({42}))
        << "the second byte tells of this object's command";
    cells.SetState(ScannerType, DefaultScannerStateData{
                                    .firstScannerByte = 2, .secondScannerByte = 1, .signedScannerValue = -70000});
    EXPECT_EQ(Read(150, 10), Words({0xFFFF, 0xFFFF, 0xFFFE, 0xEE90, 0, 0, 0, 0, 2, 1}));
}

TEST_F(RegisterMapTest, WritesTheDiagnosticsWhereTheMapHasThem) {
    const Diagnostics counts{
        .clients = 1, .refused = 2, .requests = 0x00030004, .exceptions = 5, .dropCount = 6, .uptime = 7};
    cells.SetState(DiagnosticsType, counts);
    EXPECT_EQ(Read(100, 40), Bytes(80, 0)) << "this map has none";
    CellPlaces places{.places = {{DiagnosticsType, 8}}};
    Replace(places, {{4, 16}});
    EXPECT_TRUE(cells.HasState(DiagnosticsType));
    EXPECT_FALSE(cells.HasState(ScannerType));
    EXPECT_FALSE(cells.HasSystemState());
    EXPECT_EQ(Read(4, 12), Words({0, 1, 0, 2, 3, 4, 0, 5, 0, 6, 0, 7}));
    cells.SetState(DiagnosticsType, Diagnostics());
    EXPECT_EQ(Read(4, 12), Bytes(24, 0));
    places.isBigEndian = false;
    Replace(places, {{4, 16}});
    cells.SetState(DiagnosticsType, counts);
    EXPECT_EQ(Read(4, 12), Words({1, 0, 2, 0, 4, 3, 5, 0, 6, 0, 7, 0}));
}

TEST_F(RegisterMapTest, KeepsItsContentInANewMap) {
    EXPECT_EQ(Write(10, {1, 5, 'a'}), NoException);
    cells.SetState(ScannerType, DefaultScannerStateData{.signedScannerValue = 7});
    Replace({}, {});
    EXPECT_FALSE(cells.HasState(ScannerType));
    EXPECT_EQ(Write(10, {1}), IllegalDataAddress);
    cells.EndCommand(2);
    EXPECT_EQ(Write(0, {1}), IllegalDataAddress);
    EXPECT_EQ(Read(0, 1), Bytes());
    Replace({.places = {{"ControlInput", 0}, {"ControlOutput", 130}, {"Scanner", 140}}, .isBigEndian = false},
            {{0, 80}});
    EXPECT_TRUE(cells.HasState(ScannerType));
    EXPECT_EQ(Read(0, 3), Words({1, 5, 'a'}));
    EXPECT_EQ(Read(65, 3), Words({1, 2, 0}));
    EXPECT_EQ(Read(70, 4), Words({7, 0, 0, 0}));
    EXPECT_EQ(Write(0, {1}), NoException);
    EXPECT_EQ(runner.requestWords, (std::vector<unsigned>{1})) << "the same request word is no change there either";
}

TEST_F(RegisterMapTest, RunsCommandsInAMapWithoutAnAnswer) {
    Replace({.places = {{"ControlInput", 0}}}, {{0, 65}});
    EXPECT_EQ(Write(0, {1}), NoException);
    EXPECT_EQ(runner.requestWords, (std::vector<unsigned>{1}));
    EXPECT_EQ(Write(0, {2}), ServerDeviceBusy);
    cells.EndCommand(2);
    EXPECT_EQ(Write(0, {2}), NoException);
    EXPECT_EQ(Read(0, 1), Words({2}));
}

} // namespace
} // namespace Services::Modbus
