#pragma once

#include "Vor/Exception.h"
#include "VorApi/Handle.h"
#include "VorApi/Object.h"
#include "yApi/PointerWrapper.h"
#include "yApi/yMsgQueue.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

namespace Vor {

/// A thread-safe queue of heap objects, unbounded until a maximum count is set. A failure is thrown with its status.
template <class T>
class MsgQueue {
public:
    /// `onDrop` is called for each object that the queue drops, before it is deleted, on the thread whose call drops
    /// it. The destructor drops all objects that are still in the queue.
    explicit MsgQueue(std::function<void(T*)> onDrop = nullptr, yAllocator allocator = nullptr)
        : onDrop(std::move(onDrop))
        , allocator(allocator) {
        ThrowIfFailed(yMsgQueue_Construct(queue.Out(), yType_PointerWrapper, allocator));
        ThrowIfFailed(yMsgQueue_SetDropHandler(queue.Get(), &MsgQueue::Drop, this));
    }

    MsgQueue(const MsgQueue&) = delete;
    MsgQueue& operator=(const MsgQueue&) = delete;

    ~MsgQueue() { yMsgQueue_PurgeEx(queue.Get(), yMSG_QUEUE_PURGE_DROP); }

    /// A failing call deletes the object.
    void Add(std::unique_ptr<T> object) {
        Object wrapper;
        ThrowIfFailed(PointerWrapper_Construct(wrapper.Out(), object.get(), 0, allocator));
        void* item = yObject_Share(wrapper.Get());
        const yStatus status = yMsgQueue_AddEx(queue.Get(), &item, 0);
        if (status != yOK) {
            yObject_Release(item);
        }
        ThrowIfFailed(status);
        static_cast<void>(object.release());
    }

    /// Waits for an object and moves it to `object`. Returns `yERROR_TIMEOUT` if there was none. 0 doesn't wait.
    yStatus Remove(std::unique_ptr<T>& object, std::uint64_t timeoutMicroseconds) {
        Object wrapper;
        const yStatus status = yMsgQueue_Remove(queue.Get(), wrapper.Out(), timeoutMicroseconds);
        if (status == yOK) {
            object.reset(static_cast<T*>(PointerWrapper_Pointer(wrapper.Get())));
        }
        return status;
    }

    /// Objects above the count are dropped, oldest first.
    void SetMaxCount(std::uint64_t maxCount) { ThrowIfFailed(yMsgQueue_SetMaxCount(queue.Get(), maxCount)); }

    /// Drops everything.
    void Clear() { ThrowIfFailed(yMsgQueue_PurgeEx(queue.Get(), yMSG_QUEUE_PURGE_DROP)); }

    std::size_t Count() const { return yMsgQueue_Count(queue.Get()); }

    /// The queue itself. Its items are `PointerWrapper`s: a caller that removes one owns its share and the object.
    yMsgQueue Handle() const { return queue.Get(); }

private:
    std::function<void(T*)> onDrop;
    yAllocator allocator;
    Vor::Handle<yMsgQueue, yMsgQueue_Destroy> queue;

    static yStatus Drop(void* receiver, void* item) {
        const Object wrapper = Object::Adopt(item);
        const std::unique_ptr<T> object(static_cast<T*>(PointerWrapper_Pointer(item)));
        if (const auto& onDrop = static_cast<MsgQueue*>(receiver)->onDrop) {
            onDrop(object.get());
        }
        return yOK;
    }
};

} // namespace Vor
