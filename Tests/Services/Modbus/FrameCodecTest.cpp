#include "Services/Modbus/FrameCodec.h"

#include "Tests/Services/Modbus/Bytes.h"

#include <gtest/gtest.h>

namespace Services::Modbus {
namespace {

const Bytes Request = {0x12, 0x34, 0x00, 0x00, 0x00, 0x06, 0x07, 0x03, 0x00, 0x6B, 0x00, 0x03};

Bytes Header(unsigned length) {
    return {0, 1, 0, 0, static_cast<unsigned char>(length >> 8), static_cast<unsigned char>(length)};
}

TEST(FrameCodec, DecodesARequest) {
    Frame frame;
    ASSERT_EQ(DecodeFrame(Request, frame), FrameStatus::Complete);
    EXPECT_EQ(frame.transaction, 0x1234);
    EXPECT_EQ(frame.unit, 7);
    EXPECT_EQ(Bytes(frame.pdu.begin(), frame.pdu.end()), (Bytes{0x03, 0x00, 0x6B, 0x00, 0x03}));
    EXPECT_EQ(frame.pdu.data(), &Request[7]) << "the bytes are not copied";
    EXPECT_EQ(frame.Size(), 12u);
}

TEST(FrameCodec, IsIncompleteCutAtEveryLength) {
    Frame frame;
    for (std::size_t length = 0; length < Request.size(); ++length) {
        EXPECT_EQ(DecodeFrame(std::span(Request).first(length), frame), FrameStatus::Incomplete) << length;
    }
}

TEST(FrameCodec, LooksAtTheFirstOfSeveralFrames) {
    const Bytes two = Request + ReadRequest(0x5678, 1, 2);
    Frame frame;
    ASSERT_EQ(DecodeFrame(two, frame), FrameStatus::Complete);
    EXPECT_EQ(frame.transaction, 0x1234);
    ASSERT_EQ(DecodeFrame(std::span(two).subspan(frame.Size()), frame), FrameStatus::Complete);
    EXPECT_EQ(frame.transaction, 0x5678);
}

TEST(FrameCodec, RefusesAnotherProtocolAsSoonAsItIsSeen) {
    Frame frame;
    const Bytes bytes = {0, 1, 0, 1};
    EXPECT_EQ(DecodeFrame(std::span(bytes).first(3), frame), FrameStatus::Incomplete);
    EXPECT_EQ(DecodeFrame(bytes, frame), FrameStatus::Invalid);
    EXPECT_EQ(DecodeFrame(Bytes{'G', 'E', 'T', ' '}, frame), FrameStatus::Invalid);
}

TEST(FrameCodec, RefusesALengthThatNoFrameHas) {
    Frame frame;
    for (const unsigned length : {0u, 1u, 255u, 256u, 65535u}) {
        EXPECT_EQ(DecodeFrame(Header(length), frame), FrameStatus::Invalid) << length;
    }
    for (const unsigned length : {2u, 6u, 254u}) {
        EXPECT_EQ(DecodeFrame(Header(length), frame), FrameStatus::Incomplete) << length;
    }
}

TEST(FrameCodec, DecodesTheShortestAndTheLongestFrame) {
    Frame frame;
    ASSERT_EQ(DecodeFrame(Header(2) + Bytes{9, 0x2B}, frame), FrameStatus::Complete);
    EXPECT_EQ(frame.pdu.size(), 1u);
    ASSERT_EQ(DecodeFrame(Header(254) + Bytes(254, 5), frame), FrameStatus::Complete);
    EXPECT_EQ(frame.pdu.size(), MaxPduSize);
    EXPECT_EQ(frame.Size(), MaxFrameSize);
}

TEST(FrameCodec, EncodesSevenBytesAndNoMore) {
    Bytes bytes(9, 0xEE);
    EncodeHeader(&bytes[1], 0x1234, 0xF7, 203);
    EXPECT_EQ(bytes, (Bytes{0xEE, 0x12, 0x34, 0x00, 0x00, 0x00, 0xCC, 0xF7, 0xEE}));
}

} // namespace
} // namespace Services::Modbus
