#include "yApi/BlockCache.h"

#include "Tests/Support/CountAllocations.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <new>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr std::size_t BlockSize = 100;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool KeepsBlocks = false;
#else
constexpr bool KeepsBlocks = true;
#endif

std::vector<void*> Allocate(BlockCache& cache, std::size_t count) {
    std::vector<void*> blocks(count);
    for (void*& block : blocks) {
        block = cache.Allocate();
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0U) << "it begins a cache line";
        std::memset(block, 0xff, BlockSize);
    }
    EXPECT_EQ(std::set<void*>(blocks.begin(), blocks.end()).size(), count) << "each block is given out once";
    return blocks;
}

void Free(BlockCache& cache, const std::vector<void*>& blocks) {
    for (void* const block : blocks) {
        cache.Free(block);
    }
}

/// The number of blocks that come from the heap when `count` are allocated.
std::size_t NewBlocks(BlockCache& cache, std::size_t count) {
    std::vector<void*> blocks;
    blocks.reserve(count);
    const std::size_t made = Tests::AllocationsOf([&] {
        for (std::size_t i = 0; i < count; ++i) {
            blocks.push_back(cache.Allocate());
        }
    });
    Free(cache, blocks);
    return made;
}

} // namespace

TEST(BlockCacheTest, GivesOutAgainWhatWasFreed) {
    BlockCache cache(BlockSize, 10);
    EXPECT_EQ(NewBlocks(cache, 3), 3U);
    EXPECT_EQ(NewBlocks(cache, 10), KeepsBlocks ? 7U : 10U);
    for (int round = 0; round < 3; ++round) {
        Free(cache, Allocate(cache, 10));
        EXPECT_EQ(NewBlocks(cache, 10), KeepsBlocks ? 0U : 10U);
    }
}

TEST(BlockCacheTest, KeepsNoMoreThanItsLimit) {
    BlockCache cache(BlockSize, 10);
    for (int round = 0; round < 3; ++round) {
        Free(cache, Allocate(cache, 100));
        EXPECT_EQ(NewBlocks(cache, 100), KeepsBlocks ? 90U : 100U);
    }
}

TEST(BlockCacheTest, ReturnsBlocksToTheHeapWhileMoreAreInUseThanItsLimit) {
    BlockCache cache(BlockSize, 10);
    const auto used = Allocate(cache, 11);
    EXPECT_EQ(NewBlocks(cache, 3), 3U);
    EXPECT_EQ(NewBlocks(cache, 3), 3U);
    Free(cache, used);
    EXPECT_EQ(NewBlocks(cache, 10), KeepsBlocks ? 0U : 10U);
}

TEST(BlockCacheTest, NoBlockHasTwoUsersAtATime) {
    constexpr std::size_t Threads = 4;
    constexpr std::size_t Rounds = 2000;
    BlockCache cache(BlockSize, 64);
    std::atomic<std::size_t> overwritten = 0;
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < Threads; ++thread) {
        threads.emplace_back([&cache, &overwritten, thread] {
            for (std::size_t round = 0; round < Rounds; ++round) {
                std::vector<std::size_t*> own(1 + round % 7);
                for (auto*& block : own) {
                    block = new (cache.Allocate()) std::size_t(thread);
                }
                for (auto* const block : own) {
                    overwritten += *block == thread ? 0 : 1;
                    cache.Free(block);
                }
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(overwritten, 0U);
}
