#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

/// Network settings of a node, three addresses of 128 bits each, passed on as they are.
struct yIpConfig {
    std::array<std::uint8_t, 16> address{};
    std::array<std::uint8_t, 16> mask{};
    std::array<std::uint8_t, 16> gateway{};

    bool operator==(const yIpConfig&) const = default;
};

static_assert(sizeof(yIpConfig) == 48);
static_assert(std::is_trivially_copyable_v<yIpConfig>);
