#include "VorMsg/ResultInfo.h"

#include "yApi/yFault.h"

#include <functional>
#include <string>

namespace {

class ResultInfoObject : public yObject {
public:
    ResultInfoObject(yAllocator allocator, std::uint16_t type, std::string_view source)
        : yObject(yType_ResultInfo)
        , kind(type)
        , numericId(ResultInfo_IdOfText(source))
        , allocator(allocator)
        , source(source) {}

    const std::uint16_t kind;
    const unsigned long numericId;
    const yAllocator allocator;
    const std::string source;
};

} // namespace

const yType yType_ResultInfo{"ResultInfo", nullptr, &yObject_Delete<ResultInfoObject>};

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

std::uint16_t ResultInfo_Type(ResultInfo info) {
    return yObject_As<ResultInfoObject>(info)->kind;
}

unsigned long ResultInfo_NumericId(ResultInfo info) {
    return yObject_As<ResultInfoObject>(info)->numericId;
}

const char* ResultInfo_Source(ResultInfo info) {
    return yObject_As<ResultInfoObject>(info)->source.c_str();
}
