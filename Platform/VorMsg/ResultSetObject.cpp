#include "VorMsg/ResultSetObject.h"

#include "VorMsg/ResultSet.h"

#include <algorithm>
#include <memory>

ResultSetObject::ResultSetObject(yAllocator allocator)
    : yObject(yType_ResultSet)
    , allocator(allocator) {
    chunks[0] = reinterpret_cast<ResultItemObject*>(first);
    next = chunks[0];
    end = chunks[0] + FirstChunkSize;
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
