#pragma once

#include "VorMsg/ResultInfoObject.h"
#include "yApi/yObject.h"

#include <cstdint>
#include <string_view>

/// The kind of a result item and the data source that it comes from. A shared object.
using ResultInfo = void*;

extern const yType yType_ResultInfo;

/// Kinds of results.
inline constexpr std::uint16_t ResultInfo_TypeStamp = 11;
inline constexpr std::uint16_t ResultInfo_TypeMeasurement = 19;
inline constexpr std::uint16_t ResultInfo_TypeString = 20;

/// The numeric id of a data source: std::hash of its text. Those who publish results and those who filter them must
/// both use this function.
unsigned long ResultInfo_IdOfText(std::string_view text);

/// The numeric id is that of `source`.
yStatus ResultInfo_Construct(ResultInfo* info, std::uint16_t type, std::string_view source,
                             yAllocator allocator = nullptr);

inline std::uint16_t ResultInfo_Type(ResultInfo info) {
    return yObject_As<ResultInfoObject>(info)->kind;
}
inline unsigned long ResultInfo_NumericId(ResultInfo info) {
    return yObject_As<ResultInfoObject>(info)->numericId;
}
/// The data source; valid as long as the info.
inline const char* ResultInfo_Source(ResultInfo info) {
    return yObject_As<ResultInfoObject>(info)->source.c_str();
}
