#pragma once

#include "VorMsg/ResultItem.h"
#include "VorMsg/ResultSetObject.h"
#include "yApi/yFault.h"

#include <cstddef>
#include <cstdint>

/// The results of one scan, in order. A shared object, filled by one thread and read-only once others can reach it.
using ResultSet = void*;

extern const yType yType_ResultSet;

/// A set of up to `capacity` items is one allocation; it can hold more.
yStatus ResultSet_Construct(ResultSet* set, yAllocator allocator = nullptr, std::size_t capacity = 16);

/// Appends an item; on success takes over one share of each. `msgInfo` may be null, `resultInfo` not. The last
/// argument is 0.
inline yStatus ResultSet_Add(ResultSet set, yMsgInfo msgInfo, ResultInfo resultInfo, std::uint32_t) {
    if (const yStatus fault = yFault_Check("ResultSet_Add"); fault != yOK) {
        return fault;
    }
    if (set == nullptr || resultInfo == nullptr) {
        return yERROR_PARAMETER;
    }
    return yObject_As<ResultSetObject>(set)->Add(msgInfo, resultInfo) ? yOK : yERROR_FULL;
}

/// 0 for a null set.
inline std::size_t ResultSet_Count(ResultSet set) {
    return set == nullptr ? 0 : yObject_As<ResultSetObject>(set)->count;
}
/// The item, borrowed; null at or past the count.
inline ResultItem ResultSet_At(ResultSet set, std::size_t index) {
    return index < ResultSet_Count(set) ? yObject_ToHandle(yObject_As<ResultSetObject>(set)->At(index)) : nullptr;
}

/// Whether the results come from a simulation; false for a new set.
inline bool ResultSet_FromSimulation(ResultSet set) {
    return set != nullptr && yObject_As<ResultSetObject>(set)->fromSimulation;
}
inline void ResultSet_SetFromSimulation(ResultSet set, bool fromSimulation) {
    yObject_As<ResultSetObject>(set)->fromSimulation = fromSimulation;
}
