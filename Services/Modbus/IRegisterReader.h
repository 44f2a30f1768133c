#pragma once

#include <cstdint>

namespace Services::Modbus {

// What the network side reads: 65536 registers of 16 bits.
class IRegisterReader {
public:
    virtual ~IRegisterReader() = default;

    // Writes `count` registers from `address` on to `destination`, high byte first, two bytes a register, all of them
    // of one frame. Registers that belong to no block are 0. Returns false, with nothing written, when no register of
    // the range belongs to a block. `address + count` is at most 65536. Called by the network thread for each request:
    // it must not wait for longer than it takes to copy the image.
    virtual bool Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const = 0;
};

} // namespace Services::Modbus
