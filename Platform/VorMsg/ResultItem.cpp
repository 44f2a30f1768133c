#include "VorMsg/ResultItem.h"

#include "VorMsg/ResultItemObject.h"
#include "yApi/yFault.h"

namespace {

class FreeResultItem : public ResultItemObject {
public:
    FreeResultItem(yAllocator allocator, yMsgInfo msgInfo, ResultInfo resultInfo)
        : ResultItemObject(nullptr, msgInfo, resultInfo)
        , allocator(allocator) {}

    const yAllocator allocator;
};

void* OwnerOf(void* item) {
    auto* object = yObject_As<ResultItemObject>(item);
    return object->set != nullptr ? object->set : object;
}

} // namespace

const yType yType_ResultItem{"ResultItem", nullptr, &yObject_Delete<FreeResultItem>, &OwnerOf};

yStatus ResultItem_Construct(ResultItem* item, yMsgInfo msgInfo, ResultInfo resultInfo, yAllocator allocator) {
    if (const yStatus fault = yFault_Check("ResultItem_Construct"); fault != yOK) {
        return fault;
    }
    if (item == nullptr || resultInfo == nullptr) {
        return yERROR_PARAMETER;
    }
    *item = yObject_ToHandle(yObject_New<FreeResultItem>(allocator, msgInfo, resultInfo));
    return yOK;
}

yMsgInfo ResultItem_MsgInfo(ResultItem item) {
    return item == nullptr ? nullptr : yObject_As<ResultItemObject>(item)->msgInfo;
}

ResultInfo ResultItem_ResultInfo(ResultItem item) {
    return item == nullptr ? nullptr : yObject_As<ResultItemObject>(item)->resultInfo;
}
