#pragma once

#include "yApi/yStatus.h"

#include <compare>
#include <cstdint>

struct yVersion {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t release = 0;
    std::uint32_t build = 0;

    auto operator<=>(const yVersion&) const = default;
};

/// Parses four decimal numbers with dots between them, such as "1.0.0.0". `yERROR_FORMAT`, with `version` unchanged,
/// for anything else.
yStatus yVersion_Parse(yVersion* version, const char* text);
