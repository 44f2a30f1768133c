#pragma once

#include <atomic>
#include <cstddef>

/// Blocks of the heap, all of one size, that are kept when they are freed and given out again: for objects that one
/// thread makes at a high rate and others free, for which the heap is slow. All calls are safe from any thread and
/// never wait. A block begins a cache line, which no other thread's block shares. A block that is freed while about
/// `mostBlocks` others exist, used and kept ones together, goes back to the heap. Kept ones stay to the end of the
/// process.
class BlockCache {
public:
    constexpr BlockCache(std::size_t blockSize, std::size_t mostBlocks)
        : blockSize(blockSize)
        , mostBlocks(mostBlocks) {}

    BlockCache(const BlockCache&) = delete;
    BlockCache& operator=(const BlockCache&) = delete;

    void* Allocate();
    /// `memory` is from `Allocate`.
    void Free(void* memory);

private:
    struct Block {
        Block* next;
    };

    const std::size_t blockSize;
    const std::size_t mostBlocks;
    std::atomic<std::size_t> existing = 0; ///< blocks that came from the heap and haven't gone back
    // What allocating changes, what freeing changes, and what both only read have cache lines of their own.
    /// Whether a thread uses `available`. Another one goes to the heap meanwhile.
    alignas(64) std::atomic<bool> inUse = false;
    Block* available = nullptr;
    /// Threads add single blocks, and all are moved to `available` at once, so no block is removed in between.
    alignas(64) std::atomic<Block*> freed = nullptr;

    void* FromHeap();
    void* Reuse();
};
