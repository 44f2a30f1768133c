#include "Services/Modbus/RequestHandler.h"

#include <gtest/gtest.h>

#include "Tests/Services/Modbus/Bytes.h"

namespace Services::Modbus {
namespace {

Bytes Answer(const Bytes& request, unsigned char unit = 0, const IRegisterReader& registers = AddressRegisters()) {
    Frame frame;
    EXPECT_EQ(DecodeFrame(request, frame), FrameStatus::Complete);
    Bytes reply(MaxFrameSize + 8, 0xEE);
    const std::size_t size = RequestHandler(registers, unit).Answer(frame, reply.data());
    EXPECT_LE(size, MaxFrameSize);
    for (std::size_t i = size; i < reply.size() && size <= MaxFrameSize; ++i) {
        EXPECT_TRUE(reply[i] == 0xEE || i < MaxFrameSize) << "written behind the reply at " << i;
    }
    reply.resize(size);
    return reply;
}

Bytes Exception(unsigned char function, unsigned char code, unsigned char unit = 1) {
    return {0, 9, 0, 0, 0, 3, unit, static_cast<unsigned char>(function | 0x80), code};
}

TEST(RequestHandler, ReadsTheSameRegistersWithFunctions3And4) {
    for (const unsigned char function : {3, 4}) {
        EXPECT_EQ(Answer({0, 9, 0, 0, 0, 6, 1, function, 0x01, 0x02, 0, 2}),
                  (Bytes{0, 9, 0, 0, 0, 7, 1, function, 4, 0x01, 0x02, 0x01, 0x03}));
    }
}

TEST(RequestHandler, RefusesAQuantityOutsideOf1To125WithException3) {
    for (const unsigned quantity : {0u, 126u, 250u, 65535u}) {
        EXPECT_EQ(Answer(ReadRequest(9, 0, quantity)), Exception(3, 3)) << quantity;
        EXPECT_EQ(Answer(ReadRequest(9, 65535, quantity, 1, 4)), Exception(4, 3)) << quantity;
    }
    EXPECT_EQ(Answer(ReadRequest(9, 7, 1)).size(), 11u);
    EXPECT_EQ(Answer(ReadRequest(9, 7, 125)).size(), 259u);
}

TEST(RequestHandler, RefusesAReadBeyondTheLastRegisterWithException2) {
    EXPECT_EQ(Answer(ReadRequest(9, 65535, 2)), Exception(3, 2));
    EXPECT_EQ(Answer(ReadRequest(9, 65412, 125)), Exception(3, 2));
    EXPECT_EQ(Answer(ReadRequest(9, 65411, 125)).size(), 259u);
    EXPECT_EQ(Answer(ReadRequest(9, 65535, 1)), (Bytes{0, 9, 0, 0, 0, 5, 1, 3, 2, 0xFF, 0xFF}));
}

TEST(RequestHandler, RefusesARangeWithoutAnyBlockWithException2) {
    const AddressRegisters registers(10, 19);
    EXPECT_EQ(Answer(ReadRequest(9, 0, 10), 0, registers), Exception(3, 2));
    EXPECT_EQ(Answer(ReadRequest(9, 20, 10), 0, registers), Exception(3, 2));
    EXPECT_EQ(Answer(ReadRequest(9, 19, 2), 0, registers), (Bytes{0, 9, 0, 0, 0, 7, 1, 3, 4, 0, 19, 0, 0}));
}

TEST(RequestHandler, RefusesAReadOfAnotherLengthWithException3) {
    EXPECT_EQ(Answer({0, 9, 0, 0, 0, 2, 1, 3}), Exception(3, 3));
    EXPECT_EQ(Answer({0, 9, 0, 0, 0, 5, 1, 3, 0, 0, 0}), Exception(3, 3));
    EXPECT_EQ(Answer({0, 9, 0, 0, 0, 7, 1, 4, 0, 0, 0, 1, 0}), Exception(4, 3));
}

TEST(RequestHandler, RefusesEveryOtherFunctionWithException1) {
    for (unsigned function = 0; function < 256; ++function) {
        if (function == 3 || function == 4) {
            continue;
        }
        const auto code = static_cast<unsigned char>(function);
        EXPECT_EQ(Answer({0, 9, 0, 0, 0, 6, 1, code, 0, 0, 0, 1}), Exception(code, 1)) << function;
    }
}

TEST(RequestHandler, ServesEveryUnitWhenNoneIsChosen) {
    for (const unsigned char unit : {0, 1, 17, 255}) {
        EXPECT_EQ(Answer(ReadRequest(9, 0, 1, unit)), (Bytes{0, 9, 0, 0, 0, 5, unit, 3, 2, 0, 0}));
    }
}

TEST(RequestHandler, AnswersForAnotherUnitWithException11) {
    EXPECT_EQ(Answer(ReadRequest(9, 0, 1, 5), 5), (Bytes{0, 9, 0, 0, 0, 5, 5, 3, 2, 0, 0}));
    for (const unsigned char unit : {0, 4, 6, 255}) {
        EXPECT_EQ(Answer(ReadRequest(9, 0, 1, unit), 5), Exception(3, 11, unit));
    }
}

} // namespace
} // namespace Services::Modbus
