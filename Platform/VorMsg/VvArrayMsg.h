#pragma once

#include "VorMsg/VvMsg.h"

#include <cstddef>

/// A list of messages.
using VvArrayMsg = void*;

extern const yType yType_VvArrayMsg;

yStatus VvArrayMsg_Construct(VvArrayMsg* msg, yAllocator allocator = nullptr);
/// On success takes over one share of `element`, which is a message.
yStatus VvArrayMsg_Add(VvArrayMsg msg, void* element);

std::size_t VvArrayMsg_Count(VvArrayMsg msg);
/// The element, borrowed; null at or past the count.
void* VvArrayMsg_At(VvArrayMsg msg, std::size_t index);
