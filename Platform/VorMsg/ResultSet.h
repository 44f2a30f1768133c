#pragma once

#include "VorMsg/ResultItem.h"

#include <cstddef>
#include <cstdint>

/// The results of one scan, in order. A shared object, filled by its maker alone and read-only once others have it.
using ResultSet = void*;

extern const yType yType_ResultSet;

yStatus ResultSet_Construct(ResultSet* set, yAllocator allocator = nullptr);

/// Appends an item; on success takes over one share of each. `msgInfo` may be null, `resultInfo` not. `options` is 0.
yStatus ResultSet_Add(ResultSet set, yMsgInfo msgInfo, ResultInfo resultInfo, std::uint32_t options);

/// 0 for a null set.
std::size_t ResultSet_Count(ResultSet set);
/// The item, borrowed; null at or past the count.
ResultItem ResultSet_At(ResultSet set, std::size_t index);

/// Whether the results come from a simulation; a new set's don't.
bool ResultSet_FromSimulation(ResultSet set);
void ResultSet_SetFromSimulation(ResultSet set, bool fromSimulation);
