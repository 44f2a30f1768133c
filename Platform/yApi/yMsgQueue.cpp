#include "yApi/yMsgQueue.h"

#include "yApi/yDuration.h"
#include "yApi/yFault.h"
#include "yApi/yThread.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

struct yMsgQueueObject {
    yMsgQueueObject(const yType& itemType, yAllocator allocator)
        : itemType(itemType)
        , allocator(allocator) {}

    /// Removes the oldest items beyond the maximum count and returns them. Called with the mutex held.
    std::vector<void*> RemoveSurplus() {
        std::vector<void*> surplus;
        while (maxCount != 0 && items.size() > maxCount) {
            surplus.push_back(items.front());
            items.pop_front();
        }
        return surplus;
    }

    /// Called without the mutex.
    template <class Items>
    void Drop(const Items& dropped) {
        if (dropped.empty()) {
            return;
        }
        std::pair<yMsgQueueDropHandler, void*> handler;
        {
            const std::lock_guard guard(mutex);
            handler = dropHandler;
        }
        for (void* item : dropped) {
            if (handler.first != nullptr) {
                handler.first(handler.second, item);
            } else {
                yObject_Release(item);
            }
        }
    }

    const yType& itemType;
    const yAllocator allocator;
    std::mutex mutex; ///< guards the members below; no handler runs and no other lock is taken while it is held
    std::condition_variable added;
    std::deque<void*> items;
    std::uint64_t maxCount = 0;
    std::pair<yMsgQueueDropHandler, void*> dropHandler{nullptr, nullptr};
};

yStatus yMsgQueue_Construct(yMsgQueue* queue, const yType& itemType, yAllocator allocator) {
    if (const yStatus fault = yFault_Check("yMsgQueue_Construct"); fault != yOK) {
        return fault;
    }
    if (queue == nullptr) {
        return yERROR_PARAMETER;
    }
    *queue = new (yMemory_Allocate(allocator, sizeof(yMsgQueueObject))) yMsgQueueObject(itemType, allocator);
    return yOK;
}

yStatus yMsgQueue_Destroy(yMsgQueue queue) {
    if (queue == nullptr) {
        return yOK;
    }
    queue->Drop(std::exchange(queue->items, {}));
    const yAllocator allocator = queue->allocator;
    queue->~yMsgQueueObject();
    yMemory_Free(allocator, queue, sizeof(yMsgQueueObject));
    return yOK;
}

yStatus yMsgQueue_SetDropHandler(yMsgQueue queue, yMsgQueueDropHandler handler, void* receiver) {
    if (const yStatus fault = yFault_Check("yMsgQueue_SetDropHandler"); fault != yOK) {
        return fault;
    }
    if (queue == nullptr) {
        return yERROR_PARAMETER;
    }
    const std::lock_guard guard(queue->mutex);
    queue->dropHandler = {handler, receiver};
    return yOK;
}

yStatus yMsgQueue_SetMaxCount(yMsgQueue queue, std::uint64_t maxCount) {
    if (const yStatus fault = yFault_Check("yMsgQueue_SetMaxCount"); fault != yOK) {
        return fault;
    }
    if (queue == nullptr) {
        return yERROR_PARAMETER;
    }
    std::vector<void*> surplus;
    {
        const std::lock_guard guard(queue->mutex);
        queue->maxCount = maxCount;
        surplus = queue->RemoveSurplus();
    }
    queue->Drop(surplus);
    return yOK;
}

yStatus yMsgQueue_AddEx(yMsgQueue queue, void* const* item, std::uint32_t) {
    if (const yStatus fault = yFault_Check("yMsgQueue_AddEx"); fault != yOK) {
        return fault;
    }
    if (queue == nullptr || item == nullptr || !yObject_Is(*item, queue->itemType)) {
        return yERROR_PARAMETER;
    }
    std::vector<void*> surplus;
    {
        const std::lock_guard guard(queue->mutex);
        queue->items.push_back(*item);
        surplus = queue->RemoveSurplus();
        queue->added.notify_one();
    }
    queue->Drop(surplus);
    return yOK;
}

yStatus yMsgQueue_Remove(yMsgQueue queue, void** item, std::uint64_t timeoutMicroseconds) {
    if (const yStatus fault = yFault_Check("yMsgQueue_Remove"); fault != yOK) {
        return fault;
    }
    if (queue == nullptr || item == nullptr) {
        return yERROR_PARAMETER;
    }
    std::unique_lock guard(queue->mutex);
    const auto hasItem = [queue] { return !queue->items.empty(); };
    if (timeoutMicroseconds == yINFINITE) {
        queue->added.wait(guard, hasItem);
    } else if (!hasItem() && (timeoutMicroseconds == 0 ||
                              !queue->added.wait_for(guard, yThread_Duration(timeoutMicroseconds), hasItem))) {
        return yERROR_TIMEOUT;
    }
    *item = queue->items.front();
    queue->items.pop_front();
    return yOK;
}

yStatus yMsgQueue_PurgeEx(yMsgQueue queue, std::uint32_t options) {
    if (const yStatus fault = yFault_Check("yMsgQueue_PurgeEx"); fault != yOK) {
        return fault;
    }
    if (queue == nullptr) {
        return yERROR_PARAMETER;
    }
    std::deque<void*> purged;
    {
        const std::lock_guard guard(queue->mutex);
        purged.swap(queue->items);
    }
    if (options == yMSG_QUEUE_PURGE_DROP) {
        queue->Drop(purged);
    } else {
        for (void* item : purged) {
            yObject_Release(item);
        }
    }
    return yOK;
}

std::size_t yMsgQueue_Count(yMsgQueue queue) {
    if (queue == nullptr) {
        return 0;
    }
    const std::lock_guard guard(queue->mutex);
    return queue->items.size();
}
