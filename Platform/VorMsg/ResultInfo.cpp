#include "VorMsg/ResultInfo.h"

#include "yApi/yFault.h"

#include <functional>

const yType yType_ResultInfo{nullptr, &yObject_Delete<ResultInfoObject>};

ResultInfoObject::ResultInfoObject(yAllocator allocator, std::uint16_t kind, std::string_view source)
    : yObject(yType_ResultInfo)
    , kind(kind)
    , numericId(ResultInfo_IdOfText(source))
    , allocator(allocator)
    , source(source) {}

unsigned long ResultInfo_IdOfText(std::string_view text) {
    return std::hash<std::string_view>()(text);
}

yStatus ResultInfo_Construct(ResultInfo* info, std::uint16_t type, std::string_view source, yAllocator allocator) {
    if (const yStatus fault = yFault_Check("ResultInfo_Construct"); fault != yOK) {
        return fault;
    }
    if (info == nullptr) {
        return yERROR_PARAMETER;
    }
    *info = yObject_ToHandle(yObject_New<ResultInfoObject>(allocator, type, source));
    return yOK;
}
