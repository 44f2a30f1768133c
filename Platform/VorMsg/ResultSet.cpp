#include "VorMsg/ResultSet.h"

#include "VorMsg/ResultItemObject.h"
#include "yApi/yFault.h"

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <new>

namespace {

/// Items lie in chunks, so that adding never moves them and a set costs few allocations: the first chunk is part of the
/// set, chunk n > 0 holds as many items as all chunks before it together.
class ResultSetObject : public yObject {
public:
    static constexpr std::size_t FirstChunkSize = 16;
    static constexpr std::size_t MaxChunks = 28;

    explicit ResultSetObject(yAllocator allocator)
        : yObject(yType_ResultSet)
        , allocator(allocator) {}

    ~ResultSetObject() {
        std::size_t left = count;
        for (std::size_t chunk = 0; left > 0; ++chunk) {
            const std::size_t used = std::min(left, SizeOf(chunk));
            std::destroy_n(Chunk(chunk), used);
            left -= used;
        }
        for (std::size_t chunk = 1; chunk < MaxChunks && chunks[chunk - 1] != nullptr; ++chunk) {
            yMemory_Free(allocator, chunks[chunk - 1], SizeOf(chunk) * sizeof(ResultItemObject));
        }
    }

    yStatus Add(yMsgInfo msgInfo, ResultInfo resultInfo) {
        const std::size_t chunk = ChunkOf(count);
        if (chunk >= MaxChunks) {
            return yERROR_FULL;
        }
        if (chunk > 0 && chunks[chunk - 1] == nullptr) {
            chunks[chunk - 1] =
                static_cast<ResultItemObject*>(yMemory_Allocate(allocator, SizeOf(chunk) * sizeof(ResultItemObject)));
        }
        new (Chunk(chunk) + (count - BeginOf(chunk))) ResultItemObject(this, msgInfo, resultInfo);
        ++count;
        return yOK;
    }

    ResultItemObject* At(std::size_t index) {
        const std::size_t chunk = ChunkOf(index);
        return Chunk(chunk) + (index - BeginOf(chunk));
    }

    const yAllocator allocator;
    std::size_t count = 0;
    bool fromSimulation = false;

private:
    std::array<ResultItemObject*, MaxChunks - 1> chunks{};
    alignas(ResultItemObject) std::byte first[FirstChunkSize * sizeof(ResultItemObject)];

    static std::size_t ChunkOf(std::size_t index) {
        return static_cast<std::size_t>(std::bit_width(index / FirstChunkSize));
    }
    static std::size_t BeginOf(std::size_t chunk) { return chunk == 0 ? 0 : FirstChunkSize << (chunk - 1); }
    static std::size_t SizeOf(std::size_t chunk) { return chunk == 0 ? FirstChunkSize : BeginOf(chunk); }

    ResultItemObject* Chunk(std::size_t chunk) {
        return chunk == 0 ? std::launder(reinterpret_cast<ResultItemObject*>(first)) : chunks[chunk - 1];
    }
};

} // namespace

const yType yType_ResultSet{"ResultSet", nullptr, &yObject_Delete<ResultSetObject>};

yStatus ResultSet_Construct(ResultSet* set, yAllocator allocator) {
    if (const yStatus fault = yFault_Check("ResultSet_Construct"); fault != yOK) {
        return fault;
    }
    if (set == nullptr) {
        return yERROR_PARAMETER;
    }
    *set = yObject_ToHandle(yObject_New<ResultSetObject>(allocator));
    return yOK;
}

yStatus ResultSet_Add(ResultSet set, yMsgInfo msgInfo, ResultInfo resultInfo, std::uint32_t) {
    if (const yStatus fault = yFault_Check("ResultSet_Add"); fault != yOK) {
        return fault;
    }
    if (set == nullptr || resultInfo == nullptr) {
        return yERROR_PARAMETER;
    }
    return yObject_As<ResultSetObject>(set)->Add(msgInfo, resultInfo);
}

std::size_t ResultSet_Count(ResultSet set) {
    return set == nullptr ? 0 : yObject_As<ResultSetObject>(set)->count;
}

ResultItem ResultSet_At(ResultSet set, std::size_t index) {
    return index < ResultSet_Count(set) ? yObject_ToHandle(yObject_As<ResultSetObject>(set)->At(index)) : nullptr;
}

bool ResultSet_FromSimulation(ResultSet set) {
    return set != nullptr && yObject_As<ResultSetObject>(set)->fromSimulation;
}

void ResultSet_SetFromSimulation(ResultSet set, bool fromSimulation) {
    yObject_As<ResultSetObject>(set)->fromSimulation = fromSimulation;
}
