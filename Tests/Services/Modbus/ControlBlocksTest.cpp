// The layouts of the blocks without data source, in the byte order of the blocks, not of the wire.

#include "Services/Modbus/BlockTypes.h"
#include "Services/Modbus/ControlOutputBlock.h"
#include "Services/Modbus/DiagnosticsBlock.h"
#include "Tests/Services/Modbus/Bytes.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/RegisterBlockParams.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace Services::Modbus {
namespace {

using namespace VorControl::ControlProtocol;

constexpr unsigned char Canary = 0xEE;

class ControlBlocks : public testing::TestWithParam<bool> {
protected:
    void Make(BlockType made) {
        type = std::move(made);
        type->SetIsProtocolBigEndian(GetParam());
        block = type->ConstructBlock(RegisterBlockParams());
    }

    template <class Record>
    Bytes Serialize(const Record& record) {
        Bytes bytes(block->SerializedOutputSize() + 2u, Canary);
        block->Serialize(bytes.data(), bytes.size() - 2, &record, sizeof record);
        EXPECT_EQ(bytes[bytes.size() - 2], Canary);
        EXPECT_EQ(bytes[bytes.size() - 1], Canary);
        bytes.resize(bytes.size() - 2);
        return bytes;
    }

    /// The status with which the block refuses the sizes; yOK when it doesn't.
    yStatus Refusal(std::size_t destinationSize, std::size_t sourceSize, bool reads = false) {
        Bytes destination(600, Canary);
        const Bytes source(600, 0);
        try {
            if (reads) {
                block->Deserialize(destination.data(), destinationSize, source.data(), sourceSize);
            } else {
                block->Serialize(destination.data(), destinationSize, source.data(), sourceSize);
            }
        } catch (const Vor::Exception& e) {
            EXPECT_EQ(destination, Bytes(600, Canary));
            return e.Status();
        }
        return yOK;
    }

    /// Converts bytes from the order of the wire to that of the block.
    Bytes InBlockOrder(Bytes wire) const {
        if (!GetParam()) {
            for (std::size_t i = 0; i + 1 < wire.size(); i += 2) {
                std::swap(wire[i], wire[i + 1]);
            }
        }
        return wire;
    }

    ControlRegisterCommandData Deserialize(const Bytes& wire) {
        ControlRegisterCommandData command;
        command.commandArgs.fill('?');
        command.commandArgsSize = 99;
        const Bytes source = InBlockOrder(wire);
        block->Deserialize(&command, sizeof command, source.data(), source.size());
        return command;
    }

    BlockType type;
    std::shared_ptr<ProtocolRegisterBlock> block;
};

INSTANTIATE_TEST_SUITE_P(ByteOrder, ControlBlocks, testing::Bool(),
                         [](const auto& info) { return info.param ? "BigEndian" : "LittleEndian"; });

TEST_P(ControlBlocks, SystemHasFieldsThatDoNotOverlap) {
    Make(MakeSystemType());
    DefaultSystemStateData state{.firstStateByte = 0x11,
                                 .jobFileNameLength = 5,
                                 .secondStateByte = 0x22,
                                 .thirdStateByte = 0x33,
                                 .stateValue = 0x0102030405060708};
    std::memcpy(state.jobFileName.data(), "abcde??", 7);
    const Bytes value = GetParam() ? Bytes{0x02, 0x01, 0x04, 0x03, 0x06, 0x05, 0x08, 0x07}
                                   : Bytes{0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01};
    const Bytes name = {0x11, 0, 5, 0, 'b', 'a', 'd', 'c', 0, 'e'};
    const Bytes end = {0x22, 0, 0x33, 0};
    EXPECT_EQ(Serialize(state), value + name + Bytes(58, 0) + end);
}

TEST_P(ControlBlocks, SystemTakesAJobNameOf64Characters) {
    Make(MakeSystemType());
    DefaultSystemStateData state{.jobFileNameLength = 64};
    state.jobFileName.fill('x');
    const Bytes length = {0, 0, 64, 0};
    EXPECT_EQ(Serialize(state), Bytes(8, 0) + length + Bytes(64, 'x') + Bytes(4, 0));
    state.jobFileNameLength = 65;
    EXPECT_THROW(Serialize(state), Vor::Exception);
    state.jobFileNameLength = 0;
    EXPECT_EQ(Serialize(state), Bytes(80, 0)) << "no trace of the long name";
}

TEST_P(ControlBlocks, SystemChecksSizes) {
    Make(MakeSystemType());
    EXPECT_EQ(Refusal(80, 80), yOK);
    EXPECT_EQ(Refusal(80, 79), yERROR_SIZE);
    EXPECT_EQ(Refusal(80, 81), yERROR_SIZE);
    EXPECT_EQ(Refusal(79, 80), yERROR_SIZE);
    EXPECT_EQ(Refusal(81, 80), yERROR_SIZE);
}

TEST_P(ControlBlocks, ScannerHasFieldsThatDoNotOverlap) {
    Make(MakeScannerType());
    const DefaultScannerStateData state{.firstScannerByte = 0x11,
                                        .secondScannerByte = 0x22,
                                        .signedScannerValue = -2,
                                        .unsignedScannerValue = 0x0102030405060708};
    EXPECT_EQ(Serialize(state), GetParam() ? (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0x02, 0x01,
                                                    0x04, 0x03, 0x06, 0x05, 0x08, 0x07, 0x11, 0,    0x22, 0})
                                           : (Bytes{0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x08, 0x07,
                                                    0x06, 0x05, 0x04, 0x03, 0x02, 0x01, 0x11, 0,    0x22, 0}));
    EXPECT_EQ(Refusal(20, 23), yERROR_SIZE);
    EXPECT_EQ(Refusal(21, 24), yERROR_SIZE);
}

TEST_P(ControlBlocks, DiagnosticsAreSixUnsignedValues) {
    Make(MakeDiagnosticsType());
    const Diagnostics counts{.clients = 0x01020304,
                             .refused = 0x11121314,
                             .requests = 0x21222324,
                             .exceptions = 0xFFFFFFFF,
                             .dropCount = 5,
                             .uptime = 0x80000000};
    const Bytes big = {0x02, 0x01, 0x04, 0x03, 0x12, 0x11, 0x14, 0x13, 0x22, 0x21, 0x24, 0x23,
                       0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x05, 0x00, 0x00, 0x80, 0x00, 0x00};
    const Bytes little = {0x04, 0x03, 0x02, 0x01, 0x14, 0x13, 0x12, 0x11, 0x24, 0x23, 0x22, 0x21,
                          0xFF, 0xFF, 0xFF, 0xFF, 0x05, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80};
    EXPECT_EQ(Serialize(counts), GetParam() ? big : little);
    EXPECT_EQ(Refusal(24, sizeof(Diagnostics)), yOK);
    EXPECT_EQ(Refusal(23, sizeof(Diagnostics)), yERROR_SIZE);
    EXPECT_EQ(Refusal(25, sizeof(Diagnostics)), yERROR_SIZE);
    EXPECT_EQ(Refusal(24, sizeof(Diagnostics) - 1), yERROR_SIZE);
}

TEST_P(ControlBlocks, ControlOutputIsRequestWordStatusAndZero) {
    Make(MakeControlOutputType());
    EXPECT_EQ(Serialize(DefaultCommandResultData{.requestWord = 0x1234, .commandResult = 2}),
              (Bytes{0x34, 0x12, 2, 0, 0, 0}));
    EXPECT_EQ(Refusal(6, 3), yERROR_SIZE);
    EXPECT_EQ(Refusal(5, 4), yERROR_SIZE);
}

TEST_P(ControlBlocks, ControlInputReadsRequestWordAndTheLowByteOfTheCommand) {
    Make(MakeControlInputType());
    const auto command = Deserialize(Bytes{0x12, 0x34, 0xFF, 1} + Bytes(126, 0x55));
    EXPECT_EQ(command.requestWord, 0x1234);
    EXPECT_EQ(command.commandId, 1);
    EXPECT_EQ(command.commandArgsSize, 0u);
    EXPECT_EQ(command.commandArgs[0], 0);
    EXPECT_EQ(Deserialize(Bytes{0, 1, 0, 7} + Bytes(126, 0)).commandId, 7);
}

TEST_P(ControlBlocks, ControlInputReadsAJobNameFromLowBytes) {
    Make(MakeControlInputType());
    Bytes wire(130, 0x55);
    const Bytes begin = {0, 1, 0, 5, 0xFF, 'j', 0, 'o', 0, 'b', 0, 0};
    std::copy(begin.begin(), begin.end(), wire.begin());
    const auto command = Deserialize(wire);
    EXPECT_EQ(command.commandId, 5);
    EXPECT_STREQ(command.commandArgs.data(), "job.vrjob");
    EXPECT_EQ(command.commandArgsSize, 0u);

    Bytes longest(130, 'n');
    longest[3] = 5;
    EXPECT_EQ(Deserialize(longest).commandArgs.data(), std::string(62, 'n') + ".vrjob");
}

TEST_P(ControlBlocks, ControlInputLeavesAWholeJobFileNameAsItIs) {
    Make(MakeControlInputType());
    Bytes wire = {0, 1, 0, 5};
    for (const char character : std::string("job.vrjob")) {
        wire.push_back(0);
        wire.push_back(static_cast<unsigned char>(character));
    }
    wire.resize(130, 0);
    EXPECT_STREQ(Deserialize(wire).commandArgs.data(), "job.vrjob");
}

TEST_P(ControlBlocks, ControlInputRefusesALoadWithoutAJobName) {
    Make(MakeControlInputType());
    Vor::LogCapture log;
    EXPECT_THROW(Deserialize(Bytes{0, 1, 0, 5} + Bytes(126, 0)), Vor::Exception);
}

TEST_P(ControlBlocks, ControlInputReadsUserDataAsTheyStoodOnTheWire) {
    Make(MakeControlInputType());
    Bytes wire = {0x12, 0x34, 0xAB, 9};
    for (unsigned char i = 1; i <= 126; ++i) {
        wire.push_back(i);
    }
    const auto command = Deserialize(wire);
    EXPECT_EQ(command.requestWord, 0x1234);
    EXPECT_EQ(command.commandId, 9);
    EXPECT_EQ(command.commandArgsSize, 126u);
    for (unsigned char i = 0; i < 126; ++i) {
        EXPECT_EQ(static_cast<unsigned char>(command.commandArgs[i]), i + 1);
    }
    EXPECT_EQ(command.commandArgs[126], 0);
}

TEST_P(ControlBlocks, ControlInputChecksSizes) {
    Make(MakeControlInputType());
    EXPECT_EQ(Refusal(504, 129, true), yERROR_SIZE);
    EXPECT_EQ(Refusal(503, 130, true), yERROR_SIZE);
    EXPECT_EQ(Refusal(505, 130, true), yERROR_SIZE);
    EXPECT_EQ(Refusal(504, 131, true), yOK);
    Bytes userData(131, 9);
    ControlRegisterCommandData command;
    EXPECT_THROW(block->Deserialize(&command, sizeof command, userData.data(), 129), Vor::Exception);
    EXPECT_THROW(block->Deserialize(&command, sizeof command - 1, userData.data(), 130), Vor::Exception);
}

} // namespace
} // namespace Services::Modbus
