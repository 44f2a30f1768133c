#pragma once

#include "VorMsg/VvMsg.h"

#include <cstdint>

/// A message that carries time and encoder of its own beside its stamps.
using VvDataMsg = void*;

extern const yType yType_VvDataMsg;

yStatus VvDataMsg_Construct(VvDataMsg* msg, std::uint64_t time, std::int64_t encoder, yAllocator allocator = nullptr);

std::uint64_t VvDataMsg_Time(VvDataMsg msg);
std::int64_t VvDataMsg_Encoder(VvDataMsg msg);
