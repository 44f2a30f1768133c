#pragma once

#include <mutex>
#include <span>
#include <vector>

#include "Services/Modbus/IRegisterReader.h"

namespace Services::Modbus {

// Registers [begin, end) that belong to blocks.
struct RegisterRange {
    unsigned begin;
    unsigned end;
};

// The registers as clients read them. What is written in one call becomes visible whole: no read sees a part of it.
// All operations may be called on any thread and allocate nothing but for Replace.
class RegisterImage : public IRegisterReader {
public:
    bool Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const override;

    // Takes a new map. `ranges` ascend, without overlap. `bytes` are the registers from address 0 on, high byte first.
    void Replace(std::vector<RegisterRange> newRanges, std::vector<unsigned char> newBytes);

    // Overwrites `source.size()` bytes from byte `offset` on; both are within the map.
    void Write(std::size_t offset, std::span<const unsigned char> source);

private:
    // Guards the members below. A leaf: it is held for a copy only.
    mutable std::mutex mutex;
    std::vector<RegisterRange> ranges;
    std::vector<unsigned char> bytes;
};

} // namespace Services::Modbus
