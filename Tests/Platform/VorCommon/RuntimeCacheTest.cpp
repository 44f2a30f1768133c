#include "VorCommon/RuntimeCache.h"

#include <optional>

#include <gtest/gtest.h>

using VorCommon::RuntimeCache;

TEST(RuntimeCacheTest, KeepsTheStateOfTheService) {
    RuntimeCache cache;
    EXPECT_EQ(cache.ProfinetServiceRunningState(), RuntimeCache::ServiceState::Stopped);
    cache.SetProfinetServiceRunningState(RuntimeCache::ServiceState::Running);
    EXPECT_EQ(cache.ProfinetServiceRunningState(), RuntimeCache::ServiceState::Running);
}

TEST(RuntimeCacheTest, MainLoopIsBlockedWhileAnyBlockLives) {
    RuntimeCache cache;
    EXPECT_FALSE(cache.IsMainLoopBlocked());
    std::optional<RuntimeCache::MainLoopBlock> first(cache);
    {
        const RuntimeCache::MainLoopBlock second(cache);
        first.reset();
        EXPECT_TRUE(cache.IsMainLoopBlocked());
    }
    EXPECT_FALSE(cache.IsMainLoopBlocked());
}
