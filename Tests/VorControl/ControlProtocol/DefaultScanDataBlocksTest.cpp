#include "Tests/Support/Failure.h"
#include "Tests/Support/ResultItems.h"
#include "Tests/VorControl/ControlProtocol/TestBlocks.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStringRegisterBlock.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStringRegisterBlockInfo.h"

#include <limits>

#include <gtest/gtest.h>

using namespace Tests;
using Input = ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData;

namespace {

constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

/// The bytes that the block writes for the item, and after them two bytes that must not change.
Bytes Serialized(ProtocolRegisterBlockInfo& info, const Vor::Object& item, unsigned int outputMode = 0,
                 unsigned short registerCount = 65535) {
    RegisterBlockParams params;
    params.dataSource = "source";
    params.registerCount = registerCount;
    const auto block = info.ConstructBlock(params);
    const std::size_t size = block->SerializedOutputSize();
    auto buffer = Canary(size + 2);
    const Input input{item.Get(), outputMode};
    block->Serialize(buffer.data(), size, &input, sizeof(input));
    EXPECT_EQ(buffer[size], 0xA5);
    EXPECT_EQ(buffer[size + 1], 0xA5);
    buffer.resize(size);
    return buffer;
}

/// A type of the given block in registers of two bytes.
template <class Block>
ProtocolRegisterBlockInfo Wide(unsigned short registers, bool bigEndian, bool configurable = false) {
    auto params = ScanTypeParams<Block>("wide", registers);
    params.bytesPerRegister = 2;
    params.isProtocolBigEndian = bigEndian;
    params.configurableRegisterCount = configurable;
    return ProtocolRegisterBlockInfo(std::move(params));
}

yStamp FullStamp() {
    yStamp stamp;
    stamp.inputs = 0x21;
    stamp.frameIndex = 0x1112131415161718;
    stamp.time = 0x2122232425262728;
    stamp.encoder = 0x3132333435363738;
    stamp.encoderAtZ = 0x4142434445464748;
    return stamp;
}

unsigned char InputState(std::uint16_t inputs) {
    yStamp stamp;
    stamp.inputs = inputs;
    return DefaultStampRegisterBlock::DigitalInputStateFromStamp(&stamp);
}

} // namespace

TEST(MeasurementValueBlock, WritesThousandthsInEitherByteOrder) {
    DefaultMeasurementValueRegisterBlockInfo info;
    EXPECT_EQ(Serialized(info, MeasureItem(1.5, 0)), (Bytes{0x00, 0x00, 0x05, 0xDC}));
    EXPECT_EQ(Serialized(info, MeasureItem(-1.5, 0)), (Bytes{0xFF, 0xFF, 0xFA, 0x24}));
    info.SetIsProtocolBigEndian(false);
    EXPECT_EQ(Serialized(info, MeasureItem(1.5, 0)), (Bytes{0xDC, 0x05, 0x00, 0x00}));
}

TEST(MeasurementValueBlock, RegistersOfTwoBytes) {
    auto big = Wide<DefaultMeasurementValueRegisterBlock>(2, true);
    EXPECT_EQ(Serialized(big, MeasureItem(1.5, 0)), (Bytes{0x00, 0x00, 0xDC, 0x05}));
    EXPECT_EQ(Serialized(big, Item(19, Null())), (Bytes{0x00, 0x80, 0x00, 0x00}));
    auto little = Wide<DefaultMeasurementValueRegisterBlock>(2, false);
    EXPECT_EQ(Serialized(little, MeasureItem(1.5, 0)), (Bytes{0xDC, 0x05, 0x00, 0x00}));
    EXPECT_EQ(Serialized(little, Item(19, Null())), (Bytes{0x00, 0x00, 0x00, 0x80}));
}

TEST(MeasurementValueBlock, MissingOrUnspeakableValueIsTheInvalidOne) {
    DefaultMeasurementValueRegisterBlockInfo info;
    const Bytes invalid{0x80, 0x00, 0x00, 0x00};
    EXPECT_EQ(Serialized(info, Item(19, Null())), invalid);
    EXPECT_EQ(Serialized(info, MeasureItem(NotANumber, 1)), invalid);
    EXPECT_EQ(Serialized(info, MeasureItem(std::numeric_limits<double>::infinity(), 1)), invalid);
    EXPECT_EQ(Serialized(info, MeasureItem(2147483.648, 1)), invalid);
    EXPECT_EQ(Serialized(info, MeasureItem(2147483.647, 1)), (Bytes{0x7F, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(Serialized(info, Item(19, ArrayOf(Null()))), invalid);
    info.SetIsProtocolBigEndian(false);
    EXPECT_EQ(Serialized(info, MeasureItem(NotANumber, 1)), (Bytes{0x00, 0x00, 0x00, 0x80}));
}

TEST(MeasurementValueBlock, WritesTheFirstOfAnArray) {
    DefaultMeasurementValueRegisterBlockInfo info;
    EXPECT_EQ(Serialized(info, Item(19, ArrayOf(Measure(0.258, 1), Measure(2, 1), Measure(3, 1)))),
              (Bytes{0x00, 0x00, 0x01, 0x02}));
}

TEST(MeasurementValueBlock, DoesNotTakeOtherKindsOfMessages) {
    DefaultMeasurementValueRegisterBlockInfo info;
    EXPECT_TEXTLESS_FAILURE(Serialized(info, Item(20, Text("x"))), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(Serialized(info, Item(11, Stamp(yStamp()))), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(Serialized(info, Item(19, Vor::Object())), yERROR_PARAMETER);
}

TEST(MeasurementValueBlock, WidthOfThreeIsRefused) {
    auto params = ScanTypeParams<DefaultMeasurementValueRegisterBlock>("odd", 4);
    params.bytesPerRegister = 3;
    ProtocolRegisterBlockInfo info(std::move(params));
    EXPECT_FAILURE(Serialized(info, MeasureItem(1, 1)), yERROR_PARAMETER, "Invalid bytes per register found (3)");
}

TEST(MeasurementDecisionBlock, WritesTheMessagesDecision) {
    DefaultMeasurementDecisionRegisterBlockInfo info;
    EXPECT_EQ(Serialized(info, MeasureItem(1.5, 1)), (Bytes{1}));
    EXPECT_EQ(Serialized(info, MeasureItem(1.5, 0)), (Bytes{0}));
    EXPECT_EQ(Serialized(info, MeasureItem(NotANumber, 0x83)), (Bytes{0x83}));
    EXPECT_EQ(Serialized(info, Item(19, Null())), (Bytes{2}));
}

TEST(MeasurementDecisionBlock, RegistersOfTwoBytes) {
    for (const bool bigEndian : {false, true}) {
        auto info = Wide<DefaultMeasurementDecisionRegisterBlock>(1, bigEndian);
        EXPECT_EQ(Serialized(info, MeasureItem(1.5, 1)), (Bytes{1, 0}));
        EXPECT_EQ(Serialized(info, Item(19, Null())), (Bytes{2, 0}));
    }
}

TEST(MeasurementDecisionBlock, DecisionWithoutAValueHasBitOneSet) {
    using Block = DefaultMeasurementDecisionRegisterBlock;
    EXPECT_EQ(Block::GetDecision(1, true), 1);
    EXPECT_EQ(Block::GetDecision(0, false), 2);
    EXPECT_EQ(Block::GetDecision(1, false), 3);
    EXPECT_EQ(Block::GetDecision(0xFD, false), 0xFF);
}

TEST(MeasurementBlock, WritesValueAndDecision) {
    DefaultMeasurementValueAndDecisionRegisterBlockInfo info;
    EXPECT_EQ(Serialized(info, MeasureItem(1.5, 1)), (Bytes{0x00, 0x00, 0x05, 0xDC, 0x01}));
    EXPECT_EQ(Serialized(info, MeasureItem(1.5, 0)), (Bytes{0x00, 0x00, 0x05, 0xDC, 0x00}));
    info.SetIsProtocolBigEndian(false);
    EXPECT_EQ(Serialized(info, MeasureItem(1.5, 1)), (Bytes{0xDC, 0x05, 0x00, 0x00, 0x01}));
}

TEST(MeasurementBlock, MissingOrUnspeakableValueDropsTheMessagesDecision) {
    DefaultMeasurementValueAndDecisionRegisterBlockInfo info;
    const Bytes invalid{0x80, 0x00, 0x00, 0x00, 0x02};
    EXPECT_EQ(Serialized(info, Item(19, Null())), invalid);
    EXPECT_EQ(Serialized(info, MeasureItem(NotANumber, 1)), invalid);
    EXPECT_EQ(Serialized(info, MeasureItem(-2147483.649, 1)), invalid);
    info.SetIsProtocolBigEndian(false);
    EXPECT_EQ(Serialized(info, Item(19, Null())), (Bytes{0x00, 0x00, 0x00, 0x80, 0x02}));
}

TEST(MeasurementBlock, SmallestValueIsAValueWithItsDecision) {
    DefaultMeasurementValueAndDecisionRegisterBlockInfo info;
    EXPECT_EQ(Serialized(info, MeasureItem(-2147483.648, 1)), (Bytes{0x80, 0x00, 0x00, 0x00, 0x01}));
}

TEST(MeasurementBlock, RegistersOfTwoBytes) {
    auto big = Wide<DefaultMeasurementValueAndDecisionRegisterBlock>(3, true);
    EXPECT_EQ(Serialized(big, MeasureItem(1.5, 1)), (Bytes{0x00, 0x00, 0xDC, 0x05, 0x01, 0x00}));
    EXPECT_EQ(Serialized(big, Item(19, Null())), (Bytes{0x00, 0x80, 0x00, 0x00, 0x02, 0x00}));
    auto little = Wide<DefaultMeasurementValueAndDecisionRegisterBlock>(3, false);
    EXPECT_EQ(Serialized(little, MeasureItem(1.5, 1)), (Bytes{0xDC, 0x05, 0x00, 0x00, 0x01, 0x00}));
    EXPECT_EQ(Serialized(little, Item(19, Null())), (Bytes{0x00, 0x00, 0x00, 0x80, 0x02, 0x00}));
}

TEST(MeasurementBlock, IsOneBlockWithOneDocument) {
    DefaultMeasurementValueAndDecisionRegisterBlockInfo info;
    RegisterBlockParams params;
    params.dataSource = "source";
    const auto block = info.ConstructBlock(params);
    EXPECT_EQ(block->Members().size(), 6U);
    EXPECT_EQ(block->DataSource(), "source");
}

TEST(MeasurementBlock, WritesTheFirstOfAnArray) {
    DefaultMeasurementValueAndDecisionRegisterBlockInfo info;
    EXPECT_EQ(Serialized(info, Item(19, ArrayOf(Measure(0.258, 1), Measure(2, 0)))),
              (Bytes{0x00, 0x00, 0x01, 0x02, 0x01}));
}

TEST(StampBlock, WritesEveryField) {
    DefaultStampRegisterBlockInfo info;
    EXPECT_EQ(Serialized(info, Item(11, Stamp(FullStamp()))),
              (Bytes{0x41, 0x42, 0x43, 0x44, 0x45, 0x46, 0x47, 0x48, 0x31, 0x32, 0x33, 0x34,
                     0x35, 0x36, 0x37, 0x38, 0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, 0x28,
                     0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x03, 0x00, 0x00, 0x00}));
    info.SetIsProtocolBigEndian(false);
    EXPECT_EQ(Serialized(info, Item(11, Stamp(FullStamp()))),
              (Bytes{0x48, 0x47, 0x46, 0x45, 0x44, 0x43, 0x42, 0x41, 0x38, 0x37, 0x36, 0x35,
                     0x34, 0x33, 0x32, 0x31, 0x28, 0x27, 0x26, 0x25, 0x24, 0x23, 0x22, 0x21,
                     0x18, 0x17, 0x16, 0x15, 0x14, 0x13, 0x12, 0x11, 0x03, 0x00, 0x00, 0x00}));
}

TEST(StampBlock, RegistersOfTwoBytesHaveTheSameOffsets) {
    auto info = Wide<DefaultStampRegisterBlock>(18, true);
    EXPECT_EQ(Serialized(info, Item(11, Stamp(FullStamp()))),
              (Bytes{0x42, 0x41, 0x44, 0x43, 0x46, 0x45, 0x48, 0x47, 0x32, 0x31, 0x34, 0x33,
                     0x36, 0x35, 0x38, 0x37, 0x22, 0x21, 0x24, 0x23, 0x26, 0x25, 0x28, 0x27,
                     0x12, 0x11, 0x14, 0x13, 0x16, 0x15, 0x18, 0x17, 0x03, 0x00, 0x00, 0x00}));
}

TEST(StampBlock, ShortFormChangesOnlyBytes24To31) {
    DefaultStampRegisterBlockInfo info;
    Bytes expected = Canary(36);
    for (unsigned char i = 0; i < 8; ++i) {
        expected[24U + i] = static_cast<unsigned char>(0x11 + i);
    }
    EXPECT_EQ(Serialized(info, Item(11, Stamp(FullStamp())), 1), expected);
    EXPECT_EQ(Serialized(info, Item(11, Stamp(FullStamp())), 2), Serialized(info, Item(11, Stamp(FullStamp())), 0));
}

TEST(StampBlock, DataMessageHasTimeAndEncoderOfItsOwn) {
    DefaultStampRegisterBlockInfo info;
    const auto data = Data(0x5152535455565758, -2);
    Vor::ThrowIfFailed(VvMsg_AddStamp(data.Get(), FullStamp()));
    const auto bytes = Serialized(info, Item(11, data));
    EXPECT_EQ(Bytes(bytes.begin() + 8, bytes.begin() + 24),
              (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0x51, 0x52, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58}));

    unsigned long long time = 0;
    long long encoder = 0;
    DefaultStampRegisterBlock::ExtendedStamp(data.Get(), &time, &encoder);
    EXPECT_EQ(time, 0x5152535455565758U);
    EXPECT_EQ(encoder, -2);
}

TEST(StampBlock, FirstOfSeveralStampsCounts) {
    DefaultStampRegisterBlockInfo info;
    const auto msg = Stamp(FullStamp());
    Vor::ThrowIfFailed(VvMsg_AddStamp(msg.Get(), yStamp()));
    EXPECT_EQ(Serialized(info, Item(11, msg)), Serialized(info, Item(11, Stamp(FullStamp()))));
}

TEST(StampBlock, InputStateJoinsTwoBitsOfEachInput) {
    EXPECT_EQ(InputState(0x0000), 0);
    EXPECT_EQ(InputState(0x0001), 1);
    EXPECT_EQ(InputState(0x0010), 1);
    EXPECT_EQ(InputState(0x0002), 2);
    EXPECT_EQ(InputState(0x0020), 2);
    EXPECT_EQ(InputState(0x0021), 3);
    EXPECT_EQ(InputState(0x0012), 3);
    EXPECT_EQ(InputState(0xFFCC), 0);
    EXPECT_EQ(InputState(0xFFFF), 3);
}

TEST(StampBlock, NullMessageIsRefused) {
    DefaultStampRegisterBlockInfo info;
    EXPECT_TEXTLESS_FAILURE(Serialized(info, Item(11, Null())), yERROR_UNIMPLEMENTED);
}

TEST(StampBlock, MessageWithoutAStampIsRefused) {
    DefaultStampRegisterBlockInfo info;
    EXPECT_TEXTLESS_FAILURE(Serialized(info, Item(11, Data(1, 2))), yERROR_SIZE);
    EXPECT_TEXTLESS_FAILURE(Serialized(info, Item(11, Vor::Object())), yERROR_PARAMETER);
}

TEST(StringBlock, TextIsCutOrFollowedByZeros) {
    DefaultStringRegisterBlockInfo info(1);
    EXPECT_EQ(Serialized(info, Item(20, Text("abc"))), (Bytes{'a', 'b', 'c', 0, 0, 0, 0, 0}));
    EXPECT_EQ(Serialized(info, Item(20, Text("abcdefgh"))), (Bytes{'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'}));
    EXPECT_EQ(Serialized(info, Item(20, Text("abcdefghij"))), (Bytes{'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'}));
    EXPECT_EQ(Serialized(info, Item(20, Text(""))), Bytes(8, 0));
    EXPECT_EQ(Serialized(info, Item(20, Text("abcdef")), 0, 3), (Bytes{'a', 'b', 'c'}));
}

TEST(StringBlock, ReadsTheSameInEveryByteOrderAndWidth) {
    for (const bool bigEndian : {false, true}) {
        DefaultStringRegisterBlockInfo info(2);
        info.SetIsProtocolBigEndian(bigEndian);
        EXPECT_EQ(Serialized(info, Item(20, Text("abcde"))), (Bytes{'a', 'b', 'c', 'd', 'e', 0, 0, 0}));
    }
}

TEST(StringBlock, NullMessageIsZeros) {
    DefaultStringRegisterBlockInfo info(2);
    EXPECT_EQ(Serialized(info, Item(20, Null())), Bytes(8, 0));
}

TEST(StringBlock, WritesNoMoreThanTheSizeInSixteenBits) {
    DefaultStringRegisterBlockInfo info(2);
    const std::string text(100000, 'x');
    EXPECT_EQ(Serialized(info, Item(20, Text(text)), 0, 40000), Bytes(14464, 'x'));
    EXPECT_EQ(Serialized(info, Item(20, Null()), 0, 40000), Bytes(14464, 0));
}

TEST(StringBlock, ItemWithoutAMessageIsRefused) {
    DefaultStringRegisterBlockInfo info(1);
    EXPECT_TEXTLESS_FAILURE(Serialized(info, Item(20, Vor::Object())), yERROR_PARAMETER);
}
