#pragma once

#include "yApi/yObject.h"

#include <cstdint>

/// A message record: a message, its origin, and the monotonic time of its publication. A shared object.
using yMsgInfo = void*;

extern const yType yType_yMsgInfo;

/// On success takes over one share of `message`, which may be null. `published` is a yTime_Monotonic, or 0 for a
/// message that isn't published.
yStatus yMsgInfo_Construct(yMsgInfo* info, void* message, std::uint64_t origin, std::uint64_t published,
                           yAllocator allocator = nullptr);
/// The message, borrowed. Null for a null record.
void* yMsgInfo_Message(yMsgInfo info);
std::uint64_t yMsgInfo_Origin(yMsgInfo info);
/// When the result set of the message was published. 0 for a null record.
std::uint64_t yMsgInfo_Published(yMsgInfo info);
