#include "Sensor/ResidentMemory.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <latch>
#include <malloc.h>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

TEST(ResidentMemory, RisesByWhatTheProgramUses) {
    constexpr std::size_t Size = std::size_t{64} * 1024 * 1024;
    const auto before = ResidentMemory();
    EXPECT_GT(before, 0U);
    const std::string used(Size, 'x');
    EXPECT_GT(ResidentMemory(), before + Size / 2);
    EXPECT_EQ(used.back(), 'x');
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // these have heaps of their own

std::size_t CountHeaps() {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const file = open_memstream(&text, &size);
    malloc_info(0, file);
    std::fclose(file);
    std::size_t heaps = 0;
    const std::string info(text, size);
    for (auto at = info.find("<heap "); at != std::string::npos; at = info.find("<heap ", at + 1)) {
        ++heaps;
    }
    std::free(text);
    return heaps;
}

std::size_t HeapsOfThreads() {
    constexpr int Threads = 8;
    std::latch allocated(Threads);
    std::vector<std::thread> threads;
    for (int i = 0; i < Threads; ++i) {
        threads.emplace_back([&allocated] {
            void* volatile memory = std::malloc(100'000);
            std::free(memory);
            allocated.arrive_and_wait(); // while the thread lives, no other one gets its heap
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    return CountHeaps();
}

TEST(ResidentMemoryDeathTest, ThreadsHaveTwoHeapsTogether) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            LimitHeaps();
            std::exit(static_cast<int>(HeapsOfThreads()));
        },
        testing::ExitedWithCode(2), "");
}

#endif

} // namespace
} // namespace Sensor
