#pragma once

#include "VorMsg/VvMsg.h"

#include <cstdint>

/// One measured value and the decision on it.
using VvMeasureMsg = void*;

extern const yType yType_VvMeasureMsg;

/// `decision` is 1 for a value inside its limits and 0 for one outside.
yStatus VvMeasureMsg_Construct(VvMeasureMsg* msg, double value, std::uint8_t decision, yAllocator allocator = nullptr);

double VvMeasureMsg_Value(VvMeasureMsg msg);
std::uint8_t VvMeasureMsg_Decision(VvMeasureMsg msg);

/// `value` times `scale`, rounded to the nearest integer, ties away from zero. Both flags are 0 when the result fits
/// into 32 bits with a sign; otherwise the result is 0 and one flag is 1: `notANumber` for NaN and infinities,
/// `outOfRange` for all else.
std::int32_t VvMeasureMsg_Convert64fTo32s(double value, double scale, int& notANumber, int& outOfRange);
