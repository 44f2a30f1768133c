#pragma once

#include "VorMsg/ResultItemObject.h"

#include <array>
#include <bit>
#include <cstddef>
#include <new>

/// What a `ResultSet` points to. Items lie in chunks, so that adding never moves them and a set costs few allocations:
/// the first chunk is part of the set, each later one makes the set four times as large.
class ResultSetObject : public yObject {
public:
    explicit ResultSetObject(yAllocator allocator);
    ~ResultSetObject();

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
    ResultItemObject* At(std::size_t index) const {
        const std::size_t chunk = ChunkOf(index);
        return chunks[chunk] + (index - BeginOf(chunk));
    }

    const yAllocator allocator;
    std::size_t count = 0;
    bool fromSimulation = false;

private:
    static constexpr std::size_t FirstChunkSize = 16;
    static constexpr std::size_t MaxChunks = 14;

    ResultItemObject* next; ///< where the next item goes, unless it is the end of the last chunk
    ResultItemObject* end;
    std::array<ResultItemObject*, MaxChunks> chunks{};
    alignas(ResultItemObject) std::byte first[FirstChunkSize * sizeof(ResultItemObject)];

    static std::size_t ChunkOf(std::size_t index) {
        return (static_cast<std::size_t>(std::bit_width(index / FirstChunkSize)) + 1) / 2;
    }
    static std::size_t BeginOf(std::size_t chunk) { return chunk == 0 ? 0 : FirstChunkSize << (2 * (chunk - 1)); }
    static std::size_t SizeOf(std::size_t chunk) { return chunk == 0 ? FirstChunkSize : 3 * BeginOf(chunk); }

    bool Grow();
};
