#pragma once

#include <cstddef>
#include <cstdint>

/// The record that a scan engine attaches to what it measured.
struct yStamp {
    std::uint32_t reserved0 = 0; ///< not used
    std::uint16_t inputs = 0;    ///< digital inputs: bits 0 and 4 the first, bits 1 and 5 the second
    std::uint16_t reserved1 = 0; ///< not used
    std::uint64_t frameIndex = 0;
    std::uint64_t time = 0; ///< microseconds
    std::int64_t encoder = 0;
    std::int64_t encoderAtZ = 0; ///< encoder at its last index pulse
};

static_assert(offsetof(yStamp, inputs) == 4);
static_assert(offsetof(yStamp, frameIndex) == 8);
static_assert(offsetof(yStamp, time) == 16);
static_assert(offsetof(yStamp, encoder) == 24);
static_assert(offsetof(yStamp, encoderAtZ) == 32);
static_assert(sizeof(yStamp) == 40);
