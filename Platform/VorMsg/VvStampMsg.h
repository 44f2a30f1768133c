#pragma once

#include "VorMsg/VvMsg.h"

/// A message that has stamps and nothing else.
using VvStampMsg = void*;

extern const yType yType_VvStampMsg;

/// Made with one stamp; more may be added.
yStatus VvStampMsg_Construct(VvStampMsg* msg, const yStamp& stamp, yAllocator allocator = nullptr);
