#pragma once

#include <cstddef>

#include "Services/Modbus/FrameCodec.h"
#include "Services/Modbus/IRegisterReader.h"

namespace Services::Modbus {

// Exception codes: MODBUS Application Protocol V1.1b3, 7.
inline constexpr unsigned char IllegalFunction = 1;
inline constexpr unsigned char IllegalDataAddress = 2;
inline constexpr unsigned char IllegalDataValue = 3;
inline constexpr unsigned char GatewayTargetFailedToRespond = 11;

// Answers one request at a time from the registers; keeps nothing between two of them. Not thread-safe.
class RequestHandler {
public:
    // `registers` must outlive the handler. `unit` is the one unit identifier that is served, 0 serves all.
    RequestHandler(const IRegisterReader& registers, unsigned char unit)
        : registers(registers)
        , unit(unit) {}

    void SetUnit(unsigned char value) { unit = value; }

    // Writes the reply frame, at most MaxFrameSize bytes, and returns its size. Every request has a reply.
    std::size_t Answer(const Frame& request, unsigned char* reply) const;

private:
    std::size_t AnswerPdu(const Frame& request, unsigned char* pdu) const;
    std::size_t AnswerRead(std::span<const unsigned char> request, unsigned char* pdu) const;

    const IRegisterReader& registers;
    unsigned char unit;
};

} // namespace Services::Modbus
