#pragma once

#include <cstddef>
#include <mutex>
#include <span>
#include <vector>

namespace Services::Common {

/// The bytes [begin, end) of an image.
struct ByteRange {
    std::size_t begin;
    std::size_t end;
};

/// The bytes of the registers as clients read them. No read returns a part of what one call writes. All operations may
/// be called on any thread; only Replace allocates.
class RegisterImage {
public:
    /// Bytes of the map from byte `offset` on.
    struct Part {
        std::size_t offset = 0;
        std::span<const unsigned char> bytes = {};
    };

    /// Copies `size` bytes from `offset` on, all of them from one frame. Bytes that belong to no block are 0. Returns
    /// false, and copies nothing, when no byte of the range belongs to a block.
    bool Read(std::size_t offset, std::size_t size, unsigned char* destination) const;

    /// Sets a new map. `ranges` are the bytes that belong to blocks; they ascend, without overlap. `bytes` are all from
    /// offset 0 on.
    void Replace(std::vector<ByteRange> newRanges, std::vector<unsigned char> newBytes);

    /// Overwrites parts of the map, all within it.
    void Write(std::span<const Part> parts);

private:
    /// Guards the members below, only while they are copied. No lock is acquired under it.
    mutable std::mutex mutex;
    std::vector<ByteRange> ranges;
    std::vector<unsigned char> bytes;
};

} // namespace Services::Common
