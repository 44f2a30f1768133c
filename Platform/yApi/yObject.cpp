#include "yApi/yObject.h"

#include <array>

namespace {

/// A part of the number of live objects. Threads count in parts of their own, as far as there are parts: counting in a
/// common one would cost more than the rest of making an object.
struct alignas(64) LiveCount {
    std::atomic<std::int64_t> value = 0;
};

constinit std::array<LiveCount, 16> liveCounts;
constinit std::atomic<std::size_t> countingThreads = 0;

[[gnu::tls_model("initial-exec")]] constinit thread_local LiveCount* ownLiveCount = nullptr;

std::atomic<std::int64_t>& OwnLiveCount() {
    if (ownLiveCount == nullptr) [[unlikely]] {
        ownLiveCount = &liveCounts[countingThreads.fetch_add(1) % liveCounts.size()];
    }
    return ownLiveCount->value;
}

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
    std::int64_t live = 0;
    for (const auto& part : liveCounts) {
        live += part.value.load(std::memory_order_relaxed);
    }
    return live;
}

void yObject_CountMade() {
    OwnLiveCount().fetch_add(1, std::memory_order_relaxed);
}

void yObject_CountDestroyed() {
    OwnLiveCount().fetch_sub(1, std::memory_order_relaxed);
}
