#pragma once

#include "yApi/yObject.h"

extern const yType yType_ResultItem;

/// What a `ResultItem` points to, on its own or inside a set. It owns one share of each of its parts.
class ResultItemObject : public yObject {
public:
    ResultItemObject(yObject* set, void* msgInfo, void* resultInfo)
        : yObject(yType_ResultItem, set != nullptr)
        , msgInfo(msgInfo)
        , resultInfo(resultInfo)
        , set(set) {}
    ~ResultItemObject() {
        yObject_Release(msgInfo);
        yObject_Release(resultInfo);
    }

    void* const msgInfo;
    void* const resultInfo;
    yObject* const set; ///< the set that the item lives in, or null
};
