#pragma once

#include "VorMsg/VvMsg.h"

#include <cstddef>
#include <string_view>

/// A text.
using VvStringMsg = void*;

extern const yType yType_VvStringMsg;

yStatus VvStringMsg_Construct(VvStringMsg* msg, std::string_view text, yAllocator allocator = nullptr);

/// Zero-ended; valid as long as the message.
const char* VvStringMsg_Value(VvStringMsg msg);
/// Bytes, without the terminator.
std::size_t VvStringMsg_Length(VvStringMsg msg);
