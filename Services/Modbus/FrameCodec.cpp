#include "Services/Modbus/FrameCodec.h"

namespace Services::Modbus {

FrameStatus DecodeFrame(std::span<const unsigned char> bytes, Frame& frame) noexcept {
    if (bytes.size() >= 4 && Word(&bytes[2]) != 0) {
        return FrameStatus::Invalid;
    }
    if (bytes.size() < 6) {
        return FrameStatus::Incomplete;
    }
    const std::size_t length = Word(&bytes[4]); // the unit identifier and the PDU
    if (length < 2 || length > 1 + MaxPduSize) {
        return FrameStatus::Invalid;
    }
    if (bytes.size() < 6 + length) {
        return FrameStatus::Incomplete;
    }
    frame.transaction = Word(&bytes[0]);
    frame.unit = bytes[6];
    frame.pdu = bytes.subspan(HeaderSize, length - 1);
    return FrameStatus::Complete;
}

void EncodeHeader(unsigned char* destination, std::uint16_t transaction, unsigned char unit,
                  std::size_t pduSize) noexcept {
    PutWord(destination, transaction);
    PutWord(destination + 2, 0);
    PutWord(destination + 4, static_cast<std::uint16_t>(pduSize + 1));
    destination[6] = unit;
}

} // namespace Services::Modbus
