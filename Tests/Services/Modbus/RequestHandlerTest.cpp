#include "Services/Modbus/RequestHandler.h"

#include "Tests/Services/Modbus/Bytes.h"

#include <string>

#include <gtest/gtest.h>

namespace Services::Modbus {
namespace {

Bytes Ask(AddressRegisters& registers, const Bytes& request, unsigned char unit = 0, bool mayWrite = true) {
    Frame frame;
    EXPECT_EQ(DecodeFrame(request, frame), FrameStatus::Complete);
    Bytes reply(MaxFrameSize + 8, 0xEE);
    Common::ServiceCounters counters;
    const std::size_t size = RequestHandler(registers, counters, unit).Answer(frame, mayWrite, reply.data());
    EXPECT_LE(size, MaxFrameSize);
    for (std::size_t i = size; i < reply.size() && size <= MaxFrameSize; ++i) {
        EXPECT_TRUE(reply[i] == 0xEE || i < MaxFrameSize) << "written behind the reply at " << i;
    }
    reply.resize(size);
    EXPECT_EQ(counters.requests, 1u);
    EXPECT_EQ(counters.failed, (reply.at(7) & 0x80) ? 1u : 0u);
    return reply;
}

Bytes AnswerTo(const Bytes& request, unsigned char unit = 0, AddressRegisters registers = AddressRegisters()) {
    return Ask(registers, request, unit);
}

Bytes Exception(unsigned char function, unsigned char code, unsigned char unit = 1) {
    return {0, 9, 0, 0, 0, 3, unit, static_cast<unsigned char>(function | 0x80), code};
}

TEST(RequestHandler, ReadsTheSameRegistersWithFunctions3And4) {
    for (const unsigned char function : {3, 4}) {
        EXPECT_EQ(AnswerTo({0, 9, 0, 0, 0, 6, 1, function, 0x01, 0x02, 0, 2}),
                  (Bytes{0, 9, 0, 0, 0, 7, 1, function, 4, 0x01, 0x02, 0x01, 0x03}));
    }
}

TEST(RequestHandler, RefusesAQuantityOutsideOf1To125WithException3) {
    for (const unsigned quantity : {0u, 126u, 250u, 65535u}) {
        EXPECT_EQ(AnswerTo(ReadRequest(9, 0, quantity)), Exception(3, 3)) << quantity;
        EXPECT_EQ(AnswerTo(ReadRequest(9, 65535, quantity, 1, 4)), Exception(4, 3)) << quantity;
    }
    EXPECT_EQ(AnswerTo(ReadRequest(9, 7, 1)).size(), 11u);
    EXPECT_EQ(AnswerTo(ReadRequest(9, 7, 125)).size(), 259u);
}

TEST(RequestHandler, RefusesAReadBeyondTheLastRegisterWithException2) {
    EXPECT_EQ(AnswerTo(ReadRequest(9, 65535, 2)), Exception(3, 2));
    EXPECT_EQ(AnswerTo(ReadRequest(9, 65412, 125)), Exception(3, 2));
    EXPECT_EQ(AnswerTo(ReadRequest(9, 65411, 125)).size(), 259u);
    EXPECT_EQ(AnswerTo(ReadRequest(9, 65535, 1)), (Bytes{0, 9, 0, 0, 0, 5, 1, 3, 2, 0xFF, 0xFF}));
}

TEST(RequestHandler, RefusesARangeWithoutAnyBlockWithException2) {
    AddressRegisters registers(10, 19);
    EXPECT_EQ(AnswerTo(ReadRequest(9, 0, 10), 0, registers), Exception(3, 2));
    EXPECT_EQ(AnswerTo(ReadRequest(9, 20, 10), 0, registers), Exception(3, 2));
    EXPECT_EQ(AnswerTo(ReadRequest(9, 19, 2), 0, registers), (Bytes{0, 9, 0, 0, 0, 7, 1, 3, 4, 0, 19, 0, 0}));
}

TEST(RequestHandler, RefusesAReadOfAnotherLengthWithException3) {
    EXPECT_EQ(AnswerTo({0, 9, 0, 0, 0, 2, 1, 3}), Exception(3, 3));
    EXPECT_EQ(AnswerTo({0, 9, 0, 0, 0, 5, 1, 3, 0, 0, 0}), Exception(3, 3));
    EXPECT_EQ(AnswerTo({0, 9, 0, 0, 0, 7, 1, 4, 0, 0, 0, 1, 0}), Exception(4, 3));
}

TEST(RequestHandler, RefusesEveryOtherFunctionWithException1) {
    for (unsigned function = 0; function < 256; ++function) {
        if (function == 3 || function == 4 || function == 6 || function == 16 || function == 22 || function == 23) {
            continue;
        }
        const auto code = static_cast<unsigned char>(function);
        EXPECT_EQ(AnswerTo({0, 9, 0, 0, 0, 6, 1, code, 0, 0, 0, 1}), Exception(code, 1)) << function;
    }
}

TEST(RequestHandler, ServesEveryUnitWhenNoneIsChosen) {
    for (const unsigned char unit : {0, 1, 17, 255}) {
        EXPECT_EQ(AnswerTo(ReadRequest(9, 0, 1, unit)), (Bytes{0, 9, 0, 0, 0, 5, unit, 3, 2, 0, 0}));
    }
}

TEST(RequestHandler, AnswersForAnotherUnitWithException11) {
    EXPECT_EQ(AnswerTo(ReadRequest(9, 0, 1, 5), 5), (Bytes{0, 9, 0, 0, 0, 5, 5, 3, 2, 0, 0}));
    for (const unsigned char unit : {0, 4, 6, 255}) {
        EXPECT_EQ(AnswerTo(ReadRequest(9, 0, 1, unit), 5), Exception(3, 11, unit));
    }
}

/// Writing requests as complete frames, with transaction 9 and unit 1.
class RequestHandlerWriting : public testing::Test {
protected:
    RequestHandlerWriting() {
        registers.firstInput = 1000;
        registers.lastInput = 1199;
    }

    Bytes AnswerTo(const Bytes& request) { return Ask(registers, request); }

    void ExpectWritten(std::uint16_t address, const Bytes& values, std::uint16_t keep = 0) {
        ASSERT_EQ(registers.writes.size(), 1u);
        EXPECT_EQ(registers.writes[0], (AddressRegisters::Written{address, values, keep}));
        registers.writes.clear();
    }

    /// A request with an exception writes nothing.
    void ExpectException(const Bytes& request, unsigned char code) {
        EXPECT_EQ(AnswerTo(request), Exception(request.at(7), code));
        EXPECT_TRUE(registers.writes.empty());
    }

    AddressRegisters registers;
};

Bytes WithHeader(const Bytes& pdu) {
    Bytes header(7);
    EncodeHeader(header.data(), 9, 1, pdu.size());
    return header + pdu;
}

/// A request of function 16 for registers from address 1000 on, all with the value 0x5A5A.
Bytes WriteMany(unsigned quantity, std::size_t byteCount, std::size_t bytes) {
    return WithHeader(Bytes{16, 0x03, 0xE8, static_cast<unsigned char>(quantity >> 8),
                            static_cast<unsigned char>(quantity), static_cast<unsigned char>(byteCount)} +
                      Bytes(bytes, 0x5A));
}

/// A request of function 23: reads registers from address 0 on and writes registers from address 1000 on.
Bytes ReadWrite(unsigned readQuantity, unsigned quantity, std::size_t byteCount, std::size_t bytes) {
    return WithHeader(Bytes{23, 0, 0, static_cast<unsigned char>(readQuantity >> 8),
                            static_cast<unsigned char>(readQuantity), 0x03, 0xE8,
                            static_cast<unsigned char>(quantity >> 8), static_cast<unsigned char>(quantity),
                            static_cast<unsigned char>(byteCount)} +
                      Bytes(bytes, 0x5A));
}

TEST_F(RequestHandlerWriting, WritesOneRegisterWithFunction6) {
    const Bytes request = {0, 9, 0, 0, 0, 6, 1, 6, 0x03, 0xE8, 0x12, 0x34};
    EXPECT_EQ(AnswerTo(request), request);
    ExpectWritten(1000, {0x12, 0x34});
}

TEST_F(RequestHandlerWriting, WritesManyRegistersWithFunction16) {
    EXPECT_EQ(AnswerTo({0, 9, 0, 0, 0, 11, 1, 16, 0x03, 0xE9, 0, 2, 4, 0x12, 0x34, 0x56, 0x78}),
              (Bytes{0, 9, 0, 0, 0, 6, 1, 16, 0x03, 0xE9, 0, 2}));
    ExpectWritten(1001, {0x12, 0x34, 0x56, 0x78});
    EXPECT_EQ(AnswerTo(WriteMany(123, 246, 246)), (Bytes{0, 9, 0, 0, 0, 6, 1, 16, 0x03, 0xE8, 0, 123}));
    ExpectWritten(1000, Bytes(246, 0x5A));
}

TEST_F(RequestHandlerWriting, WritesBitsOfARegisterWithFunction22) {
    const Bytes request = {0, 9, 0, 0, 0, 8, 1, 22, 0x03, 0xE8, 0x00, 0xF2, 0x00, 0x25};
    EXPECT_EQ(AnswerTo(request), request);
    ExpectWritten(1000, {0x00, 0x25}, 0x00F2);
}

TEST_F(RequestHandlerWriting, WritesAndReadsWithFunction23) {
    EXPECT_EQ(AnswerTo({0, 9, 0, 0, 0, 15, 1, 23, 0x01, 0x02, 0, 2, 0x03, 0xE8, 0, 2, 4, 1, 2, 3, 4}),
              (Bytes{0, 9, 0, 0, 0, 7, 1, 23, 4, 0x01, 0x02, 0x01, 0x03}));
    ExpectWritten(1000, {1, 2, 3, 4});
    EXPECT_EQ(AnswerTo(ReadWrite(125, 1, 2, 2)).size(), 259u);
    ExpectWritten(1000, {0x5A, 0x5A});
    EXPECT_EQ(AnswerTo(ReadWrite(1, 121, 242, 242)), (Bytes{0, 9, 0, 0, 0, 5, 1, 23, 2, 0, 0}));
    ExpectWritten(1000, Bytes(242, 0x5A));
}

TEST_F(RequestHandlerWriting, RefusesAWriteOutsideOfInputBlocksWithException2) {
    ExpectException({0, 9, 0, 0, 0, 6, 1, 6, 0x03, 0xE7, 0, 1}, 2);
    ExpectException({0, 9, 0, 0, 0, 11, 1, 16, 0x04, 0xAF, 0, 2, 4, 1, 2, 3, 4}, 2);
    ExpectException({0, 9, 0, 0, 0, 8, 1, 22, 0x04, 0xB0, 0, 0, 0, 0}, 2);
    ExpectException({0, 9, 0, 0, 0, 13, 1, 23, 0, 0, 0, 1, 0x03, 0xE7, 0, 1, 2, 3, 4}, 2);
}

TEST_F(RequestHandlerWriting, RefusesRangesBeyondTheLastRegisterWithException2) {
    registers.lastInput = 65535;
    ExpectException({0, 9, 0, 0, 0, 11, 1, 16, 0xFF, 0xFF, 0, 2, 4, 1, 2, 3, 4}, 2);
    ExpectException({0, 9, 0, 0, 0, 15, 1, 23, 0, 0, 0, 1, 0xFF, 0xFF, 0, 2, 4, 1, 2, 3, 4}, 2);
    ExpectException({0, 9, 0, 0, 0, 13, 1, 23, 0xFF, 0xFF, 0, 2, 0x03, 0xE8, 0, 1, 2, 3, 4}, 2);
    EXPECT_EQ(AnswerTo({0, 9, 0, 0, 0, 6, 1, 6, 0xFF, 0xFF, 0, 1}).size(), 12u);
}

TEST_F(RequestHandlerWriting, RefusesQuantitiesAndByteCountsWithException3) {
    ExpectException(WriteMany(0, 0, 0), 3);
    ExpectException(WriteMany(124, 248 - 2, 246), 3);
    ExpectException(WriteMany(123, 245, 246), 3);
    ExpectException(WriteMany(2, 2, 4), 3);
    ExpectException(WriteMany(2, 4, 2), 3);
    ExpectException(WriteMany(2, 4, 6), 3);
    ExpectException(WriteMany(258, 4, 4), 3);
    ExpectException(WriteMany(65535, 254, 246), 3);
    ExpectException(ReadWrite(0, 1, 2, 2), 3);
    ExpectException(ReadWrite(126, 1, 2, 2), 3);
    ExpectException(ReadWrite(1, 0, 0, 0), 3);
    ExpectException(ReadWrite(1, 122, 244, 243), 3);
    ExpectException(ReadWrite(1, 2, 2, 4), 3);
    ExpectException(ReadWrite(1, 2, 4, 2), 3);
    ExpectException(ReadWrite(1, 2, 4, 6), 3);
}

TEST_F(RequestHandlerWriting, RefusesOtherLengthsWithException3) {
    const Bytes one = {6, 0x03, 0xE8, 0, 1};
    const Bytes mask = {22, 0x03, 0xE8, 0, 1, 0, 2};
    const Bytes many = {16, 0x03, 0xE8, 0, 1, 2, 0, 1};
    const Bytes both = {23, 0, 0, 0, 1, 0x03, 0xE8, 0, 1, 2, 0, 1};
    for (const Bytes& whole : {one, mask, many, both}) {
        for (std::size_t size = 1; size < whole.size(); ++size) {
            ExpectException(WithHeader(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))), 3);
        }
        ExpectException(WithHeader(whole + Bytes{0}), 3);
        EXPECT_LT(AnswerTo(WithHeader(whole)).at(7), 0x80);
        registers.writes.clear();
    }
}

TEST_F(RequestHandlerWriting, PassesTheRefusalOfTheRegistersOn) {
    registers.refusal = ServerDeviceBusy;
    for (const Bytes& request : {WithHeader({6, 0x03, 0xE8, 0, 1}), WriteMany(1, 2, 2),
                                 WithHeader({22, 0x03, 0xE8, 0, 1, 0, 2}), ReadWrite(1, 1, 2, 2)}) {
        ExpectException(request, 6);
    }
}

TEST_F(RequestHandlerWriting, RefusesWritingFunctionsWithException1WhereTheClientMayNotWrite) {
    for (const unsigned char function : {6, 16, 22, 23}) {
        for (const Bytes& arguments : {Bytes{0x03, 0xE8, 0, 1}, Bytes{}}) {
            EXPECT_EQ(Ask(registers, WithHeader(Bytes{function} + arguments), 0, false), Exception(function, 1));
        }
    }
    EXPECT_TRUE(registers.writes.empty());
    EXPECT_EQ(Ask(registers, ReadRequest(9, 1, 1), 0, false), (Bytes{0, 9, 0, 0, 0, 5, 1, 3, 2, 0, 1}));
}

TEST_F(RequestHandlerWriting, AnswersForAnotherUnitWithException11) {
    EXPECT_EQ(Ask(registers, WithHeader({6, 0x03, 0xE8, 0, 1}), 5), Exception(6, 11));
    EXPECT_EQ(Ask(registers, WithHeader({6, 0x03, 0xE8, 0, 1}), 5, false), Exception(6, 11));
    EXPECT_TRUE(registers.writes.empty());
}

/// A request for the device's identification: what to read, and the object.
Bytes IdentificationRequest(unsigned char code, unsigned char object) {
    return {0, 9, 0, 0, 0, 5, 1, 43, 14, code, object};
}

/// An object in the reply, with its id and its size.
Bytes Object(unsigned char id, const std::string& value) {
    return Bytes{id, static_cast<unsigned char>(value.size())} + Bytes(value.begin(), value.end());
}

Bytes Identification(unsigned char code, unsigned char count, const Bytes& objects) {
    return Bytes{0, 9, 0, 0, 0, static_cast<unsigned char>(8 + objects.size()), 1, 43, 14, code, 0x81, 0, 0, count} +
           objects;
}

TEST(RequestHandler, IdentifiesTheDeviceInAStream) {
    const Bytes vendor = Object(0, "vorsensor");
    const Bytes product = Object(1, "virtual sensor");
    const Bytes revision = Object(2, VOR_VERSION);
    for (const unsigned char code : {1, 2, 3}) {
        const Bytes all = Identification(code, 3, vendor + product + revision);
        EXPECT_EQ(AnswerTo(IdentificationRequest(code, 0)), all);
        EXPECT_EQ(AnswerTo(IdentificationRequest(code, 1)), Identification(code, 2, product + revision));
        EXPECT_EQ(AnswerTo(IdentificationRequest(code, 2)), Identification(code, 1, revision));
        for (const unsigned char unknown : {3, 4, 0x80, 0xFF}) {
            EXPECT_EQ(AnswerTo(IdentificationRequest(code, unknown)), all) << "begins anew";
        }
    }
}

TEST(RequestHandler, IdentifiesTheDeviceByOneObject) {
    EXPECT_EQ(AnswerTo(IdentificationRequest(4, 0)), Identification(4, 1, Object(0, "vorsensor")));
    EXPECT_EQ(AnswerTo(IdentificationRequest(4, 1)), Identification(4, 1, Object(1, "virtual sensor")));
    EXPECT_EQ(AnswerTo(IdentificationRequest(4, 2)), Identification(4, 1, Object(2, VOR_VERSION)));
    for (const unsigned char unknown : {3, 4, 5, 0x80, 0xFF}) {
        EXPECT_EQ(AnswerTo(IdentificationRequest(4, unknown)), Exception(43, 2));
    }
}

TEST(RequestHandler, RefusesOtherIdentifications) {
    for (const unsigned char code : {0, 5, 255}) {
        EXPECT_EQ(AnswerTo(IdentificationRequest(code, 0)), Exception(43, 3));
    }
    for (const unsigned char type : {0, 13, 15, 255}) {
        EXPECT_EQ(AnswerTo({0, 9, 0, 0, 0, 5, 1, 43, type, 1, 0}), Exception(43, 1));
    }
    EXPECT_EQ(AnswerTo({0, 9, 0, 0, 0, 2, 1, 43}), Exception(43, 3));
    EXPECT_EQ(AnswerTo({0, 9, 0, 0, 0, 3, 1, 43, 14}), Exception(43, 3));
    EXPECT_EQ(AnswerTo({0, 9, 0, 0, 0, 4, 1, 43, 14, 1}), Exception(43, 3));
    EXPECT_EQ(AnswerTo({0, 9, 0, 0, 0, 6, 1, 43, 14, 1, 0, 0}), Exception(43, 3));
}

TEST(RequestHandler, IdentifiesTheDeviceForThoseWhoMayOnlyRead) {
    AddressRegisters registers;
    EXPECT_EQ(Ask(registers, IdentificationRequest(4, 0), 0, false), Identification(4, 1, Object(0, "vorsensor")));
    EXPECT_EQ(Ask(registers, IdentificationRequest(4, 0), 7), Exception(43, 11)) << "of its unit only";
}

} // namespace
} // namespace Services::Modbus
