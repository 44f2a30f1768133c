#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Services::Modbus {

/// Sizes in bytes, see MODBUS Messaging on TCP/IP Implementation Guide V1.0b, 3.1.3, and MODBUS Application Protocol
/// V1.1b3, 4.1.
inline constexpr std::size_t HeaderSize = 7;
inline constexpr std::size_t MaxPduSize = 253;
inline constexpr std::size_t MaxFrameSize = HeaderSize + MaxPduSize;

/// One request or reply. `pdu` points into the decoded bytes and is valid as long as they are.
struct Frame {
    std::uint16_t transaction = 0;
    unsigned char unit = 0;
    std::span<const unsigned char> pdu;

    std::size_t Size() const { return HeaderSize + pdu.size(); }
};

enum class FrameStatus {
    Complete,   ///< `frame` is the first frame; it consists of the first Size() bytes
    Incomplete, ///< the bytes are the beginning of a frame
    Invalid,    ///< no frame begins with these bytes; the stream can't be used any further
};

/// Decodes the first frame of `bytes`. A wrong protocol identifier is detected in the first 4 bytes, an impossible
/// length in the first 6.
FrameStatus DecodeFrame(std::span<const unsigned char> bytes, Frame& frame) noexcept;

/// Writes the 7 bytes in front of a PDU of `pduSize` bytes.
void EncodeHeader(unsigned char* destination, std::uint16_t transaction, unsigned char unit,
                  std::size_t pduSize) noexcept;

inline std::uint16_t Word(const unsigned char* bytes) noexcept {
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

inline void PutWord(unsigned char* bytes, std::uint16_t value) noexcept {
    bytes[0] = static_cast<unsigned char>(value >> 8);
    bytes[1] = static_cast<unsigned char>(value);
}

} // namespace Services::Modbus
