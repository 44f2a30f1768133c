#pragma once

#include <cstddef>
#include <span>
#include <utility>

namespace Services::Modbus {

/// A register is written low byte first by its block and goes over the wire high byte first.
inline void SwapRegisters(std::span<unsigned char> bytes) {
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        std::swap(bytes[i], bytes[i + 1]);
    }
}

} // namespace Services::Modbus
