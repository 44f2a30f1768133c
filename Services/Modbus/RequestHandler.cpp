#include "Services/Modbus/RequestHandler.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Services::Modbus {

namespace {

constexpr unsigned char ReadHoldingRegisters = 3;
constexpr unsigned char ReadInputRegisters = 4;
constexpr unsigned char WriteSingleRegister = 6;
constexpr unsigned char WriteMultipleRegisters = 16;
constexpr unsigned char MaskWriteRegister = 22;
constexpr unsigned char ReadWriteMultipleRegisters = 23;
constexpr unsigned char EncapsulatedInterface = 43;
constexpr unsigned char ReadDeviceIdentification = 14; ///< a type of the encapsulated interface
constexpr unsigned MaxReadQuantity = 125;
constexpr unsigned MaxWriteQuantity = 123;
constexpr unsigned MaxReadWriteQuantity = 121; ///< of the registers written
constexpr unsigned AddressCount = 65536;

/// What identifies the device, by object id: vendor name, product code, revision.
constexpr std::array<std::string_view, 3> DeviceObjects = {"vorsensor", "virtual sensor", VOR_VERSION};
constexpr unsigned char ConformityLevel = 0x81; ///< the basic objects, as a stream and one by one
constexpr unsigned char BasicStream = 1;        ///< what a client may ask for
constexpr unsigned char ExtendedStream = 3;
constexpr unsigned char OneObject = 4;

std::size_t PutException(unsigned char* pdu, unsigned char function, unsigned char code) {
    pdu[0] = function | 0x80;
    pdu[1] = code;
    return 2;
}

/// The reply of a write: the first `size` bytes of its request, or the exception.
std::size_t PutEcho(unsigned char* pdu, std::span<const unsigned char> request, std::size_t size, unsigned char code) {
    if (code != NoException) {
        return PutException(pdu, request[0], code);
    }
    std::ranges::copy(request.first(size), pdu);
    return size;
}

bool IsIn(unsigned quantity, unsigned max) {
    return quantity >= 1 && quantity <= max;
}

} // namespace

std::size_t RequestHandler::Answer(const Frame& request, bool mayWrite, unsigned char* reply) {
    unsigned char* const pdu = reply + HeaderSize;
    const std::size_t pduSize = AnswerPdu(request, mayWrite, pdu);
    EncodeHeader(reply, request.transaction, request.unit, pduSize);
    counters.requests.fetch_add(1, std::memory_order_relaxed);
    if (pdu[0] & 0x80) {
        counters.failed.fetch_add(1, std::memory_order_relaxed);
    }
    return HeaderSize + pduSize;
}

// The order of the checks is that of MODBUS Application Protocol V1.1b3, 6: the function, the quantity, the address.
std::size_t RequestHandler::AnswerPdu(const Frame& request, bool mayWrite, unsigned char* pdu) {
    const unsigned char function = request.pdu[0];
    if (unit != 0 && request.unit != unit) {
        return PutException(pdu, function, GatewayTargetFailedToRespond);
    }
    if (function == ReadHoldingRegisters || function == ReadInputRegisters) {
        return AnswerRead(request.pdu, pdu);
    }
    if (function == EncapsulatedInterface) {
        return AnswerIdentification(request.pdu, pdu);
    }
    if (mayWrite) {
        switch (function) {
        case WriteSingleRegister:
            return AnswerWriteOne(request.pdu, pdu);
        case WriteMultipleRegisters:
            return AnswerWriteMany(request.pdu, pdu);
        case MaskWriteRegister:
            return AnswerMaskWrite(request.pdu, pdu);
        case ReadWriteMultipleRegisters:
            return AnswerReadWrite(request.pdu, pdu);
        default:
            break;
        }
    }
    return PutException(pdu, function, IllegalFunction);
}

std::size_t RequestHandler::AnswerRead(Bytes request, unsigned char* pdu) const {
    const unsigned char function = request[0];
    if (request.size() != 5) {
        return PutException(pdu, function, IllegalDataValue);
    }
    const std::uint16_t address = Word(&request[1]);
    const std::uint16_t quantity = Word(&request[3]);
    if (!IsIn(quantity, MaxReadQuantity)) {
        return PutException(pdu, function, IllegalDataValue);
    }
    if (address + quantity > AddressCount || !registers.Read(address, quantity, pdu + 2)) {
        return PutException(pdu, function, IllegalDataAddress);
    }
    pdu[0] = function;
    pdu[1] = static_cast<unsigned char>(2 * quantity);
    return 2 + 2u * quantity;
}

std::size_t RequestHandler::AnswerWriteOne(Bytes request, unsigned char* pdu) {
    if (request.size() != 5) {
        return PutException(pdu, request[0], IllegalDataValue);
    }
    const RegisterWrite write{.address = Word(&request[1]), .values = request.subspan(3)};
    return PutEcho(pdu, request, 5, registers.Write(write));
}

std::size_t RequestHandler::AnswerWriteMany(Bytes request, unsigned char* pdu) {
    if (request.size() < 6) {
        return PutException(pdu, request[0], IllegalDataValue);
    }
    const std::uint16_t address = Word(&request[1]);
    const std::uint16_t quantity = Word(&request[3]);
    const Bytes values = request.subspan(6);
    if (!IsIn(quantity, MaxWriteQuantity) || request[5] != 2 * quantity || values.size() != std::size_t{2} * quantity) {
        return PutException(pdu, request[0], IllegalDataValue);
    }
    if (address + quantity > AddressCount) {
        return PutException(pdu, request[0], IllegalDataAddress);
    }
    return PutEcho(pdu, request, 5, registers.Write({.address = address, .values = values}));
}

// Result = (register AND andMask) OR (orMask AND (NOT andMask)): MODBUS Application Protocol V1.1b3, 6.16.
std::size_t RequestHandler::AnswerMaskWrite(Bytes request, unsigned char* pdu) {
    if (request.size() != 7) {
        return PutException(pdu, request[0], IllegalDataValue);
    }
    const RegisterWrite write{.address = Word(&request[1]), .values = request.subspan(5), .keep = Word(&request[3])};
    return PutEcho(pdu, request, 7, registers.Write(write));
}

std::size_t RequestHandler::AnswerReadWrite(Bytes request, unsigned char* pdu) {
    const unsigned char function = request[0];
    if (request.size() < 10) {
        return PutException(pdu, function, IllegalDataValue);
    }
    const std::uint16_t readAddress = Word(&request[1]);
    const std::uint16_t readQuantity = Word(&request[3]);
    const std::uint16_t address = Word(&request[5]);
    const std::uint16_t quantity = Word(&request[7]);
    const Bytes values = request.subspan(10);
    if (!IsIn(readQuantity, MaxReadQuantity) || !IsIn(quantity, MaxReadWriteQuantity) || request[9] != 2 * quantity ||
        values.size() != std::size_t{2} * quantity) {
        return PutException(pdu, function, IllegalDataValue);
    }
    if (readAddress + readQuantity > AddressCount || address + quantity > AddressCount) {
        return PutException(pdu, function, IllegalDataAddress);
    }
    const std::size_t readSize = std::size_t{2} * readQuantity;
    const unsigned char code = registers.Write(
        {.address = address, .values = values, .readAddress = readAddress, .read = std::span(pdu + 2, readSize)});
    if (code != NoException) {
        return PutException(pdu, function, code);
    }
    pdu[0] = function;
    pdu[1] = static_cast<unsigned char>(readSize);
    return 2 + readSize;
}

// MODBUS Application Protocol V1.1b3, 6.21: all objects fit into one reply. A stream that would begin with an unknown
// object begins with the first one.
std::size_t RequestHandler::AnswerIdentification(Bytes request, unsigned char* pdu) {
    if (request.size() < 2) {
        return PutException(pdu, request[0], IllegalDataValue);
    }
    if (request[1] != ReadDeviceIdentification) {
        return PutException(pdu, request[0], IllegalFunction);
    }
    if (request.size() != 4 || request[2] < BasicStream || request[2] > OneObject) {
        return PutException(pdu, request[0], IllegalDataValue);
    }
    const bool isStream = request[2] <= ExtendedStream;
    std::size_t begin = request[3];
    if (begin >= DeviceObjects.size()) {
        if (!isStream) {
            return PutException(pdu, request[0], IllegalDataAddress);
        }
        begin = 0;
    }
    const std::size_t end = isStream ? DeviceObjects.size() : begin + 1;
    const std::array<unsigned char, 7> head = {request[0],
                                               request[1],
                                               request[2],
                                               ConformityLevel,
                                               0, // nothing follows
                                               0, // the object that would
                                               static_cast<unsigned char>(end - begin)};
    unsigned char* place = std::ranges::copy(head, pdu).out;
    for (std::size_t id = begin; id < end; ++id) {
        *place++ = static_cast<unsigned char>(id);
        *place++ = static_cast<unsigned char>(DeviceObjects[id].size());
        place = std::ranges::copy(DeviceObjects[id], place).out;
    }
    return static_cast<std::size_t>(place - pdu);
}

} // namespace Services::Modbus
