#include "VorMsg/ResultSetObject.h"

#include "VorMsg/ResultSet.h"

#include <algorithm>
#include <bit>
#include <memory>

static_assert(alignof(ResultSetObject) >= alignof(ResultItemObject), "the first chunk begins behind the set");

ResultSetObject* ResultSetObject::New(yAllocator allocator, std::size_t capacity) {
    const auto firstBits = static_cast<unsigned>(std::bit_width(std::max<std::size_t>(capacity, 1) - 1));
    auto* const set = new (yMemory_Allocate(allocator, SizeInMemory(firstBits))) ResultSetObject(allocator, firstBits);
    yObject_CountMade();
    return set;
}

void ResultSetObject::Delete(void* handle) {
    auto* const set = yObject_As<ResultSetObject>(handle);
    const yAllocator allocator = set->allocator;
    const std::size_t size = SizeInMemory(set->firstBits);
    set->~ResultSetObject();
    yMemory_Free(allocator, set, size);
    yObject_CountDestroyed();
}

ResultSetObject::ResultSetObject(yAllocator allocator, unsigned firstBits)
    : yObject(yType_ResultSet)
    , allocator(allocator)
    , firstBits(firstBits) {
    chunks[0] = reinterpret_cast<ResultItemObject*>(this + 1);
    next = chunks[0];
    end = next + SizeOf(0);
}

ResultSetObject::~ResultSetObject() {
    std::size_t left = count;
    for (std::size_t chunk = 0; left > 0; ++chunk) {
        const std::size_t used = std::min(left, SizeOf(chunk));
        std::destroy_n(chunks[chunk], used);
        left -= used;
    }
    for (std::size_t chunk = 1; chunk < MaxChunks && chunks[chunk] != nullptr; ++chunk) {
        yMemory_Free(allocator, chunks[chunk], SizeOf(chunk) * sizeof(ResultItemObject));
    }
}

bool ResultSetObject::Grow() {
    const std::size_t chunk = ChunkOf(count);
    if (chunk >= MaxChunks) {
        return false;
    }
    const std::size_t size = SizeOf(chunk);
    chunks[chunk] = static_cast<ResultItemObject*>(yMemory_Allocate(allocator, size * sizeof(ResultItemObject)));
    next = chunks[chunk];
    end = next + size;
    return true;
}
