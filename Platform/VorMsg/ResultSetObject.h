#pragma once

#include "VorMsg/ResultItemObject.h"

#include <array>
#include <bit>
#include <cstddef>
#include <new>

class BlockCache;

/// What a `ResultSet` points to. Items lie in chunks, so that adding never moves them and a set costs few allocations:
/// the first chunk is after the set in the same allocation, each later one makes the set four times as large. It is one
/// cache line, since each service's copy of a frame goes from the publisher's core to the service's and back.
class ResultSetObject : public yObject {
public:
    /// The first chunk has room for `capacity` items.
    static ResultSetObject* New(yAllocator allocator, std::size_t capacity);
    /// The `destroy` of the class.
    static void Delete(void* handle);

    /// False when the set can hold no more items.
    bool Add(void* msgInfo, void* resultInfo) {
        if (next == end && !Grow()) [[unlikely]] {
            return false;
        }
        new (next) ResultItemObject(this, msgInfo, resultInfo);
        ++next;
        ++count;
        return true;
    }

    /// `index` is below `count`.
    ResultItemObject* At(std::size_t index) {
        const std::size_t chunk = ChunkOf(index);
        return Chunk(chunk) + (index - BeginOf(chunk));
    }

    const yAllocator allocator;
    std::size_t count = 0;
    bool fromSimulation = false;

private:
    static constexpr std::size_t MaxChunks = 14;
    static constexpr unsigned CachedSizes = 7;                     ///< sets made for up to 64 items
    static constexpr std::size_t CacheSize = std::size_t(8) << 20; ///< bytes of the sets of one size

    /// Those after the first, set as far as `next` has come. It is in front of the first of them.
    using LaterChunks = std::array<ResultItemObject*, MaxChunks - 1>;

    const unsigned firstBits; ///< the first chunk has 2^firstBits items
    ResultItemObject* next;   ///< where the next item goes, unless it is the end of the last chunk
    ResultItemObject* end;
    LaterChunks* laterChunks = nullptr; ///< null for most sets, which have one chunk

    ResultSetObject(yAllocator allocator, unsigned firstBits);
    ~ResultSetObject();

    static constexpr std::size_t SizeInMemory(unsigned firstBits) {
        return sizeof(ResultSetObject) + (sizeof(ResultItemObject) << firstBits);
    }
    ResultItemObject* FirstChunk() { return reinterpret_cast<ResultItemObject*>(this + 1); }
    ResultItemObject* Chunk(std::size_t chunk) { return chunk == 0 ? FirstChunk() : (*laterChunks)[chunk - 1]; }
    std::size_t ChunkOf(std::size_t index) const {
        return (static_cast<std::size_t>(std::bit_width(index >> firstBits)) + 1) / 2;
    }
    std::size_t BeginOf(std::size_t chunk) const {
        return chunk == 0 ? 0 : std::size_t(1) << (firstBits + 2 * (chunk - 1));
    }
    std::size_t SizeOf(std::size_t chunk) const {
        return chunk == 0 ? std::size_t(1) << firstBits : 3 * BeginOf(chunk);
    }

    /// Where the sets of the size come from and return to; null for those of an allocator, and for large ones.
    static BlockCache* CacheOf(yAllocator allocator, unsigned firstBits);
    bool Grow();
};
