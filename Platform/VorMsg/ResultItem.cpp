#include "VorMsg/ResultItem.h"

#include "yApi/yFault.h"

namespace {

class FreeResultItem : public ResultItemObject {
public:
    FreeResultItem(yAllocator allocator, yMsgInfo msgInfo, ResultInfo resultInfo)
        : ResultItemObject(nullptr, msgInfo, resultInfo)
        , allocator(allocator) {}

    const yAllocator allocator;
};

void* SetOf(const void* item) {
    return static_cast<const ResultItemObject*>(static_cast<const yObject*>(item))->set;
}

} // namespace

const yType yType_ResultItem{nullptr, &yObject_Delete<FreeResultItem>, &SetOf};

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
