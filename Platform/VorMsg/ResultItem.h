#pragma once

#include "VorMsg/ResultInfo.h"
#include "VorMsg/ResultItemObject.h"
#include "yApi/yMsgInfo.h"

/// One result: a message record and the information of its source. A shared object; one that is in a set lives inside
/// the set, and a share of it is a share of the set.
using ResultItem = void*;

/// On success takes over one share of each. `msgInfo` may be null, `resultInfo` not.
yStatus ResultItem_Construct(ResultItem* item, yMsgInfo msgInfo, ResultInfo resultInfo, yAllocator allocator = nullptr);

/// Borrowed. Null for a null item.
inline yMsgInfo ResultItem_MsgInfo(ResultItem item) {
    return item == nullptr ? nullptr : yObject_As<ResultItemObject>(item)->msgInfo;
}
/// Borrowed. Null for a null item.
inline ResultInfo ResultItem_ResultInfo(ResultItem item) {
    return item == nullptr ? nullptr : yObject_As<ResultItemObject>(item)->resultInfo;
}
