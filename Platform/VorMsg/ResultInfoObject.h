#pragma once

#include "yApi/yObject.h"

#include <cstdint>
#include <string>
#include <string_view>

/// What a `ResultInfo` points to.
class ResultInfoObject : public yObject {
public:
    ResultInfoObject(yAllocator allocator, std::uint16_t kind, std::string_view source);

    const std::uint16_t kind;
    const unsigned long numericId;
    const yAllocator allocator;
    const std::string source;
};
