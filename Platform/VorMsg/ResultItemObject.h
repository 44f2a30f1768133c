#pragma once

#include "VorMsg/ResultItem.h"

/// A result item, on its own or inside a set. For the sources of the result classes.
class ResultItemObject : public yObject {
public:
    /// Takes over one share of each of the two.
    ResultItemObject(yObject* set, yMsgInfo msgInfo, ResultInfo resultInfo)
        : yObject(yType_ResultItem)
        , msgInfo(msgInfo)
        , resultInfo(resultInfo)
        , set(set) {}
    ~ResultItemObject() {
        yObject_Release(msgInfo);
        yObject_Release(resultInfo);
    }

    const yMsgInfo msgInfo;
    const ResultInfo resultInfo;
    yObject* const set; ///< the set that the item lives in, or null
};
