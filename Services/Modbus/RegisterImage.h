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

/// The registers as clients read them. No read returns a part of what one call writes. All operations may be called on
/// any thread; only Replace allocates.
class RegisterImage {
public:
    /// Bytes of the map from byte `offset` on.
    struct Part {
        std::size_t offset = 0;
        std::span<const unsigned char> bytes = {};
    };

    /// See IRegisterMap::Read.
    bool Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const;

    /// Sets a new map. `ranges` ascend, without overlap. `bytes` are the registers from address 0 on, high byte first.
    void Replace(std::vector<RegisterRange> newRanges, std::vector<unsigned char> newBytes);

    /// Overwrites parts of the registers, all within the map.
    void Write(std::span<const Part> parts);

private:
    /// Guards the members below, only while they are copied. No lock is acquired under it.
    mutable std::mutex mutex;
    std::vector<RegisterRange> ranges;
    std::vector<unsigned char> bytes;
};

} // namespace Services::Modbus
