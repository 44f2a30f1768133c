#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

namespace Services::Modbus {

/// Registers [begin, end) that belong to blocks.
struct RegisterRange {
    unsigned begin;
    unsigned end;
};

/// The registers as clients read them. What is written in one call becomes visible whole: no read sees a part of it.
/// All operations may be called on any thread and allocate nothing but for Replace.
class RegisterImage {
public:
    /// Bytes of the map from byte `offset` on.
    struct Part {
        std::size_t offset = 0;
        std::span<const unsigned char> bytes = {};
    };

    /// As IRegisterMap::Read.
    bool Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const;

    /// Takes a new map. `ranges` ascend, without overlap. `bytes` are the registers from address 0 on, high byte first.
    void Replace(std::vector<RegisterRange> newRanges, std::vector<unsigned char> newBytes);

    /// Overwrites parts of the registers, all within the map.
    void Write(std::span<const Part> parts);

private:
    /// Guards the members below. A leaf: it is held for a copy only.
    mutable std::mutex mutex;
    std::vector<RegisterRange> ranges;
    std::vector<unsigned char> bytes;
};

} // namespace Services::Modbus
