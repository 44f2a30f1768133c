#pragma once

#include "Services/Common/ServiceCounters.h"
#include "Services/Modbus/ExceptionCodes.h"
#include "Services/Modbus/FrameCodec.h"
#include "Services/Modbus/IRegisterMap.h"

#include <cstddef>

namespace Services::Modbus {

/// Answers one request at a time from the registers, without a state of its own. Not thread-safe.
class RequestHandler {
public:
    /// `registers` and `counters` must outlive the handler. `unit` is the only unit identifier that is served; 0 serves
    /// all.
    RequestHandler(IRegisterMap& registers, Common::ServiceCounters& counters, unsigned char unit)
        : registers(registers)
        , counters(counters)
        , unit(unit) {}

    void SetUnit(unsigned char value) { unit = value; }

    /// Writes the reply frame, at most MaxFrameSize bytes, and returns its size. Every request has a reply. Without
    /// `mayWrite` the writing functions are answered as unknown.
    std::size_t Answer(const Frame& request, bool mayWrite, unsigned char* reply);

private:
    using Bytes = std::span<const unsigned char>;

    std::size_t AnswerPdu(const Frame& request, bool mayWrite, unsigned char* pdu);
    std::size_t AnswerRead(Bytes request, unsigned char* pdu) const;
    std::size_t AnswerWriteOne(Bytes request, unsigned char* pdu);
    std::size_t AnswerWriteMany(Bytes request, unsigned char* pdu);
    std::size_t AnswerMaskWrite(Bytes request, unsigned char* pdu);
    std::size_t AnswerReadWrite(Bytes request, unsigned char* pdu);
    static std::size_t AnswerIdentification(Bytes request, unsigned char* pdu);

    IRegisterMap& registers;
    Common::ServiceCounters& counters;
    unsigned char unit;
};

} // namespace Services::Modbus
