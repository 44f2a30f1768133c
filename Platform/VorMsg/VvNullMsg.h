#pragma once

#include "VorMsg/VvMsg.h"

/// The message of a source that has no value.
using VvNullMsg = void*;

extern const yType yType_VvNullMsg;

yStatus VvNullMsg_Construct(VvNullMsg* msg, yAllocator allocator = nullptr);
