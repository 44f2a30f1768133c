#include "Vor/UserData/UdiCache.h"

#include "Tests/Support/Failure.h"

#include <thread>

#include <gtest/gtest.h>

namespace Vor::UserData {
namespace {

using Bytes = std::vector<unsigned char>;

class UdiCacheTest : public testing::Test {
protected:
    void SetUp() override { cache.Clear(); }
    void TearDown() override { cache.Clear(); }

    UdiCache& cache = UdiCache::GetInstance();
};

TEST_F(UdiCacheTest, IsOneForTheProcess) {
    EXPECT_EQ(&UdiCache::GetInstance(), &cache);
}

TEST_F(UdiCacheTest, ReturnsWhatWasWrittenAtItsPlace) {
    const Bytes data{1, 2, 3};
    cache.Write(data.data(), 2, data.size());
    EXPECT_EQ(cache.Read(0, 6), (Bytes{0, 0, 1, 2, 3, 0}));
    cache.Write(data.data(), 3, 1);
    EXPECT_EQ(cache.Read(2, 3), (Bytes{1, 1, 3}));
}

TEST_F(UdiCacheTest, AcceptsBytesUpToItsEnd) {
    const Bytes whole(UdiCache::Capacity, 0x5A);
    cache.Write(whole.data(), 0, whole.size());
    EXPECT_EQ(cache.Read(0, UdiCache::Capacity), whole);
    cache.Write(nullptr, UdiCache::Capacity, 0);
    EXPECT_TRUE(cache.Read(UdiCache::Capacity, 0).empty());
}

TEST_F(UdiCacheTest, RefusesWhatLiesBeyondItsEndAndChangesNothing) {
    const Bytes data{1, 2};
    EXPECT_FAILURE(cache.Write(data.data(), 1023, 2), yERROR_SIZE,
                   "User data of 2 bytes at 1023 is more than the 1024 bytes that there are.");
    EXPECT_TRUE(Tests::FailureOf([&] { cache.Write(data.data(), SIZE_MAX, 2); }).has_value());
    EXPECT_TRUE(Tests::FailureOf([&] { cache.Write(data.data(), 2, SIZE_MAX); }).has_value());
    EXPECT_FAILURE(cache.Read(1024, 1), yERROR_SIZE,
                   "User data of 1 bytes at 1024 is more than the 1024 bytes that there are.");
    EXPECT_EQ(cache.Read(0, UdiCache::Capacity), Bytes(UdiCache::Capacity, 0));
}

TEST_F(UdiCacheTest, ClearMakesAllZerosAgain) {
    const Bytes data{1, 2, 3};
    cache.Write(data.data(), 1021, data.size());
    cache.Clear();
    EXPECT_EQ(cache.Read(0, UdiCache::Capacity), Bytes(UdiCache::Capacity, 0));
}

TEST_F(UdiCacheTest, AReadNeverMixesTwoWrites) {
    constexpr std::size_t Size = 512;
    std::thread writer([&] {
        for (unsigned char round = 0; round < 200; ++round) {
            const Bytes data(Size, round);
            cache.Write(data.data(), 0, Size);
        }
    });
    for (int round = 0; round < 200; ++round) {
        const Bytes read = cache.Read(0, Size);
        EXPECT_EQ(read, Bytes(Size, read.front()));
    }
    writer.join();
}

} // namespace
} // namespace Vor::UserData
