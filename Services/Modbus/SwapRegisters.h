#pragma once

#include <cstddef>
#include <span>
#include <utility>

namespace Services::Modbus {

/// Swaps the bytes of each register: blocks write the low byte first, the wire has the high byte first.
inline void SwapRegisters(std::span<unsigned char> bytes) {
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        std::swap(bytes[i], bytes[i + 1]);
    }
}

} // namespace Services::Modbus
