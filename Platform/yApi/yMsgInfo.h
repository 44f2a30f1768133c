#pragma once

#include "yApi/yObject.h"

#include <cstdint>

/// A message record: a message and two further fields, which the platform passes on unchanged. A shared object.
using yMsgInfo = void*;

extern const yType yType_yMsgInfo;

/// On success takes over one share of `message`, which may be null.
yStatus yMsgInfo_Construct(yMsgInfo* info, void* message, std::uint64_t origin, std::uint64_t tag,
                           yAllocator allocator = nullptr);
/// The message, borrowed. Null for a null record.
void* yMsgInfo_Message(yMsgInfo info);
std::uint64_t yMsgInfo_Origin(yMsgInfo info);
std::uint64_t yMsgInfo_Tag(yMsgInfo info);
