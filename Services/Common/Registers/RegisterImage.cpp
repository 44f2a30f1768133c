#include "Services/Common/Registers/RegisterImage.h"

#include <algorithm>
#include <cstring>

namespace Services::Common {

bool RegisterImage::Read(std::size_t offset, std::size_t size, unsigned char* destination) const {
    const std::lock_guard lock(mutex);
    const auto range = std::ranges::upper_bound(ranges, offset, {}, &ByteRange::end);
    if (range == ranges.end() || range->begin >= offset + size) {
        return false;
    }
    const std::size_t known = offset < bytes.size() ? std::min(size, bytes.size() - offset) : 0;
    std::memcpy(destination, bytes.data() + offset, known);
    std::memset(destination + known, 0, size - known);
    return true;
}

void RegisterImage::Replace(std::vector<ByteRange> newRanges, std::vector<unsigned char> newBytes) {
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

} // namespace Services::Common
