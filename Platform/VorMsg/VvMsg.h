#pragma once

#include "yApi/yObject.h"
#include "yApi/yStamp.h"

#include <cstddef>

/// Base of every scan message: a shared object with any number of stamps.
using VvMsg = void*;

extern const yType yType_VvMsg;

/// Only before other objects or threads can reach the message.
yStatus VvMsg_AddStamp(VvMsg msg, const yStamp& stamp);

/// 0 for a null message.
std::size_t VvMsg_StampCount(VvMsg msg);
/// Valid as long as the message; null at or past the count.
const yStamp* VvMsg_StampAt(VvMsg msg, std::size_t index);
