#include "Services/Modbus/RequestHandler.h"

namespace Services::Modbus {

namespace {

constexpr unsigned char ReadHoldingRegisters = 3;
constexpr unsigned char ReadInputRegisters = 4;
constexpr unsigned MaxReadQuantity = 125;
constexpr unsigned AddressCount = 65536;

std::size_t PutException(unsigned char* pdu, unsigned char function, unsigned char code) {
    pdu[0] = function | 0x80;
    pdu[1] = code;
    return 2;
}

} // namespace

std::size_t RequestHandler::Answer(const Frame& request, unsigned char* reply) const {
    const std::size_t pduSize = AnswerPdu(request, reply + HeaderSize);
    EncodeHeader(reply, request.transaction, request.unit, pduSize);
    return HeaderSize + pduSize;
}

std::size_t RequestHandler::AnswerPdu(const Frame& request, unsigned char* pdu) const {
    const unsigned char function = request.pdu[0];
    if (unit != 0 && request.unit != unit) {
        return PutException(pdu, function, GatewayTargetFailedToRespond);
    }
    if (function == ReadHoldingRegisters || function == ReadInputRegisters) {
        return AnswerRead(request.pdu, pdu);
    }
    return PutException(pdu, function, IllegalFunction);
}

// MODBUS Application Protocol V1.1b3, 6.3 and 6.4: the quantity is checked before the address.
std::size_t RequestHandler::AnswerRead(std::span<const unsigned char> request, unsigned char* pdu) const {
    const unsigned char function = request[0];
    if (request.size() != 5) {
        return PutException(pdu, function, IllegalDataValue);
    }
    const std::uint16_t address = Word(&request[1]);
    const std::uint16_t quantity = Word(&request[3]);
    if (quantity < 1 || quantity > MaxReadQuantity) {
        return PutException(pdu, function, IllegalDataValue);
    }
    if (address + quantity > AddressCount || !registers.Read(address, quantity, pdu + 2)) {
        return PutException(pdu, function, IllegalDataAddress);
    }
    pdu[0] = function;
    pdu[1] = static_cast<unsigned char>(2 * quantity);
    return 2 + 2u * quantity;
}

} // namespace Services::Modbus
