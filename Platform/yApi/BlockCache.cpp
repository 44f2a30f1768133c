#include "yApi/BlockCache.h"

#include <new>
#include <utility>

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool KeepsBlocks = false; // so that the use of a freed block is detected
#else
constexpr bool KeepsBlocks = true;
#endif

constexpr std::align_val_t CacheLine{64};

} // namespace

void* BlockCache::Allocate() {
    void* memory = nullptr;
    if (!inUse.exchange(true, std::memory_order_acquire)) {
        memory = Reuse();
        inUse.store(false, std::memory_order_release);
    }
    return memory != nullptr ? memory : FromHeap();
}

void BlockCache::Free(void* memory) {
    if (!KeepsBlocks || existing.load(std::memory_order_relaxed) > mostBlocks) {
        existing.fetch_sub(1, std::memory_order_relaxed);
        ::operator delete(memory, CacheLine);
        return;
    }
    auto* const block = new (memory) Block{freed.load(std::memory_order_relaxed)};
    while (!freed.compare_exchange_weak(block->next, block, std::memory_order_release, std::memory_order_relaxed)) {
    }
}

void* BlockCache::FromHeap() {
    void* const memory = ::operator new(blockSize, CacheLine);
    existing.fetch_add(1, std::memory_order_relaxed);
    return memory;
}

void* BlockCache::Reuse() {
    if (available == nullptr) {
        if (freed.load(std::memory_order_relaxed) == nullptr) {
            return nullptr;
        }
        available = freed.exchange(nullptr, std::memory_order_acquire);
    }
    Block* const block = available;
    available = block->next;
    __builtin_prefetch(available, 1); // another core has it in its cache
    return block;
}
