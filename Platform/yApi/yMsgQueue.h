#pragma once

#include "yApi/yObject.h"
#include "yApi/yStatus.h"

#include <cstddef>
#include <cstdint>

/// A thread-safe queue of shared objects, in order of adding. It owns one share of each object in it.
using yMsgQueue = struct yMsgQueueObject*;

/// Receives an item that the queue drops, with the share that the queue had. Called outside the queue's lock, on the
/// thread whose call dropped the item; its status is ignored.
using yMsgQueueDropHandler = yStatus (*)(void* receiver, void* item);

/// Empties the queue through the drop handler.
inline constexpr std::uint32_t yMSG_QUEUE_PURGE_DROP = 2;

/// Unbounded until a maximum count is set.
yStatus yMsgQueue_Construct(yMsgQueue* queue, const yType& itemType, yAllocator allocator = nullptr);
/// Drops the items that are left. No thread may use the queue or wait for an item. Null is legal.
yStatus yMsgQueue_Destroy(yMsgQueue queue);

/// Without a handler a dropped item's share is released.
yStatus yMsgQueue_SetDropHandler(yMsgQueue queue, yMsgQueueDropHandler handler, void* receiver);
/// The oldest items beyond `maxCount` are dropped, now and at each call of `yMsgQueue_AddEx`. 0 means no limit.
yStatus yMsgQueue_SetMaxCount(yMsgQueue queue, std::uint64_t maxCount);

/// Appends `*item` and takes over one share of it; on failure the share stays the caller's. `options` is 0.
/// `yERROR_PARAMETER` for a null item or one of another type.
yStatus yMsgQueue_AddEx(yMsgQueue queue, void* const* item, std::uint32_t options);
/// Waits for an item and removes it; its share is then the caller's. `yERROR_TIMEOUT` when none came; a time-out of 0
/// doesn't wait.
yStatus yMsgQueue_Remove(yMsgQueue queue, void** item, std::uint64_t timeoutMicroseconds);
/// Empties the queue: through the drop handler with `yMSG_QUEUE_PURGE_DROP`, else by releasing the shares.
yStatus yMsgQueue_PurgeEx(yMsgQueue queue, std::uint32_t options);

std::size_t yMsgQueue_Count(yMsgQueue queue);
