#include "Services/Modbus/RegisterImage.h"

#include <algorithm>
#include <cstring>

namespace Services::Modbus {

bool RegisterImage::Read(std::uint16_t address, std::uint16_t count, unsigned char* destination) const {
    const unsigned end = address + count;
    const std::lock_guard lock(mutex);
    const auto range = std::ranges::upper_bound(ranges, static_cast<unsigned>(address), {}, &RegisterRange::end);
    if (range == ranges.end() || range->begin >= end) {
        return false;
    }
    const std::size_t offset = std::size_t{2} * address;
    const std::size_t known = offset < bytes.size() ? std::min(std::size_t{2} * count, bytes.size() - offset) : 0;
    std::memcpy(destination, bytes.data() + offset, known);
    std::memset(destination + known, 0, std::size_t{2} * count - known);
    return true;
}

void RegisterImage::Replace(std::vector<RegisterRange> newRanges, std::vector<unsigned char> newBytes) {
    const std::lock_guard lock(mutex);
    ranges.swap(newRanges);
    bytes.swap(newBytes);
}

void RegisterImage::Write(std::span<const Part> parts) {
    const std::lock_guard lock(mutex);
    for (const Part& part : parts) {
        std::ranges::copy(part.bytes, bytes.begin() + static_cast<std::ptrdiff_t>(part.offset));
    }
}

} // namespace Services::Modbus
