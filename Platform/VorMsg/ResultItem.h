#pragma once

#include "VorMsg/ResultInfo.h"
#include "yApi/yMsgInfo.h"

/// One result: a message record and the information of its source. A shared object; one that is in a set lives inside
/// the set, and a share of it is a share of the set.
using ResultItem = void*;

extern const yType yType_ResultItem;

/// On success takes over one share of each. `msgInfo` may be null, `resultInfo` not.
yStatus ResultItem_Construct(ResultItem* item, yMsgInfo msgInfo, ResultInfo resultInfo, yAllocator allocator = nullptr);

/// Borrowed. Null for a null item.
yMsgInfo ResultItem_MsgInfo(ResultItem item);
/// Borrowed. Null for a null item.
ResultInfo ResultItem_ResultInfo(ResultItem item);
