#pragma once

#include "VorMsg/VvMsg.h"

/// A message that is nothing but its stamps.
using VvStampMsg = void*;

extern const yType yType_VvStampMsg;

/// Made with one stamp; more may be added.
yStatus VvStampMsg_Construct(VvStampMsg* msg, const yStamp& stamp, yAllocator allocator = nullptr);
