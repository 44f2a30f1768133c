#pragma once

#include <atomic>
#include <cstddef>

/// Blocks of the heap, all of one size, that are kept when they are freed and given out again: for objects that one
/// thread makes at a high rate and others free, for which the heap is slow. All calls are safe from any thread and
/// never wait. A block begins a cache line, which no other thread's block shares. It keeps at most about twice
/// `mostBlocks` blocks, to the end of the process.
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
    /// Whether a thread uses `available`. Another one goes to the heap meanwhile.
    std::atomic<bool> inUse = false;
    Block* available = nullptr;
    /// Threads add single blocks, and all are moved to `available` at once, so no block is removed in between.
    alignas(64) std::atomic<Block*> freed = nullptr;
    std::atomic<std::size_t> freedCount = 0; ///< at least about the number of blocks in `freed`

    void* Reuse();
};
