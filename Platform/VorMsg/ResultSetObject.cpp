#include "VorMsg/ResultSetObject.h"

#include "VorMsg/ResultSet.h"
#include "yApi/BlockCache.h"

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <utility>

static_assert(sizeof(ResultSetObject) <= 64, "a set is one cache line");
static_assert(alignof(ResultSetObject) >= alignof(ResultItemObject), "the first chunk begins behind the set");

BlockCache* ResultSetObject::CacheOf(yAllocator allocator, unsigned firstBits) {
    static constinit auto caches = []<unsigned... Bits>(std::integer_sequence<unsigned, Bits...>) {
        return std::array{BlockCache(SizeInMemory(Bits), CacheSize / SizeInMemory(Bits))...};
    }(std::make_integer_sequence<unsigned, CachedSizes>());
    return allocator == nullptr && firstBits < CachedSizes ? &caches[firstBits] : nullptr;
}

ResultSetObject* ResultSetObject::New(yAllocator allocator, std::size_t capacity) {
    const auto firstBits = static_cast<unsigned>(std::bit_width(std::max<std::size_t>(capacity, 1) - 1));
    BlockCache* const cache = CacheOf(allocator, firstBits);
    void* const memory = cache != nullptr ? cache->Allocate() : yMemory_Allocate(allocator, SizeInMemory(firstBits));
    yObject_CountMade();
    return new (memory) ResultSetObject(allocator, firstBits);
}

void ResultSetObject::Delete(void* handle) {
    auto* const set = yObject_As<ResultSetObject>(handle);
    const yAllocator allocator = set->allocator;
    const unsigned firstBits = set->firstBits;
    set->~ResultSetObject();
    if (BlockCache* const cache = CacheOf(allocator, firstBits); cache != nullptr) {
        cache->Free(set);
    } else {
        yMemory_Free(allocator, set, SizeInMemory(firstBits));
    }
    yObject_CountDestroyed();
}

ResultSetObject::ResultSetObject(yAllocator allocator, unsigned firstBits)
    : yObject(yType_ResultSet)
    , allocator(allocator)
    , firstBits(firstBits)
    , next(FirstChunk())
    , end(next + SizeOf(0)) {}

ResultSetObject::~ResultSetObject() {
    std::size_t left = count;
    std::destroy_n(FirstChunk(), std::min(left, SizeOf(0)));
    if (laterChunks == nullptr) {
        return;
    }
    left -= SizeOf(0);
    for (std::size_t chunk = 1; left > 0; ++chunk) {
        const std::size_t used = std::min(left, SizeOf(chunk));
        std::destroy_n(Chunk(chunk), used);
        left -= used;
        if (chunk > 1) {
            yMemory_Free(allocator, Chunk(chunk), SizeOf(chunk) * sizeof(ResultItemObject));
        }
    }
    yMemory_Free(allocator, laterChunks, sizeof(LaterChunks) + SizeOf(1) * sizeof(ResultItemObject));
}

bool ResultSetObject::Grow() {
    const std::size_t chunk = ChunkOf(count);
    if (chunk >= MaxChunks) {
        return false;
    }
    const std::size_t size = SizeOf(chunk);
    const std::size_t bytes = size * sizeof(ResultItemObject);
    if (chunk == 1) {
        laterChunks = new (yMemory_Allocate(allocator, sizeof(LaterChunks) + bytes)) LaterChunks;
        next = reinterpret_cast<ResultItemObject*>(laterChunks + 1);
    } else {
        next = static_cast<ResultItemObject*>(yMemory_Allocate(allocator, bytes));
    }
    (*laterChunks)[chunk - 1] = next;
    end = next + size;
    return true;
}
