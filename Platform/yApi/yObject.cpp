#include "yApi/yObject.h"

namespace {

std::atomic<std::int64_t> liveCount{0};

} // namespace

yAllocator yType_Allocator(const yType&) {
    return nullptr;
}

std::int32_t yObject_ShareCount(const void* handle) {
    if (handle == nullptr) {
        return 0;
    }
    const auto* object = static_cast<const yObject*>(handle);
    if (object->owned) {
        object = static_cast<const yObject*>(object->type->owner(handle));
    }
    return object->shares.load(std::memory_order_acquire);
}

std::int64_t yObject_LiveCount() {
    return liveCount.load(std::memory_order_relaxed);
}

void yObject_CountMade() {
    liveCount.fetch_add(1, std::memory_order_relaxed);
}

void yObject_CountDestroyed() {
    liveCount.fetch_sub(1, std::memory_order_relaxed);
}
