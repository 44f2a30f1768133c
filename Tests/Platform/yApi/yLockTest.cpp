#include "yApi/yLock.h"

#include "Tests/Support/Faults.h"
#include "Tests/Support/Signal.h"

#include <thread>

#include <gtest/gtest.h>

class yLockTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(yLock_Construct(&lock), yOK); }
    void TearDown() override { EXPECT_EQ(yLock_Destroy(lock), yOK); }

    Tests::Faults faults;
    yLock lock = nullptr;
};

TEST_F(yLockTest, HolderEntersAgainAndLeavesAsOften) {
    EXPECT_EQ(yLock_Enter(lock), yOK);
    EXPECT_EQ(yLock_Enter(lock), yOK);
    EXPECT_EQ(yLock_Depth(lock), 2U);
    EXPECT_TRUE(yLock_IsOwner(lock));
    EXPECT_EQ(yLock_Exit(lock), yOK);
    EXPECT_EQ(yLock_Depth(lock), 1U);
    EXPECT_EQ(yLock_Exit(lock), yOK);
    EXPECT_EQ(yLock_Depth(lock), 0U);
    EXPECT_FALSE(yLock_IsOwner(lock));
}

TEST_F(yLockTest, LeavingAFreeLockFails) {
    EXPECT_EQ(yLock_Exit(lock), yERROR_STATE);
}

TEST_F(yLockTest, LeavingByAnotherThreadFailsWithoutEffect) {
    ASSERT_EQ(yLock_Enter(lock), yOK);
    yStatus status = yOK;
    bool owner = true;
    std::thread([&] {
        status = yLock_Exit(lock);
        owner = yLock_IsOwner(lock);
    }).join();
    EXPECT_EQ(status, yERROR_STATE);
    EXPECT_FALSE(owner);
    EXPECT_EQ(yLock_Depth(lock), 1U);
    EXPECT_EQ(yLock_Exit(lock), yOK);
}

TEST_F(yLockTest, AnotherThreadWaitsUntilTheLastLeaving) {
    ASSERT_EQ(yLock_Enter(lock), yOK);
    ASSERT_EQ(yLock_Enter(lock), yOK);
    Tests::Signal about;
    Tests::Signal entered;
    std::thread other([&] {
        about.Set();
        EXPECT_EQ(yLock_Enter(lock), yOK);
        entered.Set();
        EXPECT_EQ(yLock_Exit(lock), yOK);
    });
    EXPECT_TRUE(about.Wait());
    EXPECT_EQ(yLock_Exit(lock), yOK);
    EXPECT_FALSE(entered.IsSet());
    EXPECT_EQ(yLock_Exit(lock), yOK);
    EXPECT_TRUE(entered.Wait());
    other.join();
}

TEST_F(yLockTest, ExcludesThreadsFromEachOther) {
    int count = 0;
    const auto work = [&] {
        for (int n = 0; n < 20000; ++n) {
            yLock_Enter(lock);
            ++count;
            yLock_Exit(lock);
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(count, 40000);
}

TEST_F(yLockTest, CanBeMadeToFail) {
    faults.Set("yLock_Construct", -1);
    faults.Set("yLock_Enter", -2);
    yLock other = nullptr;
    EXPECT_EQ(yLock_Construct(&other), -1);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(yLock_Enter(lock), -2);
    EXPECT_EQ(yLock_Depth(lock), 0U);
}

TEST_F(yLockTest, FailureToLeaveIsReportedThoughTheLockIsFree) {
    ASSERT_EQ(yLock_Enter(lock), yOK);
    faults.Set("yLock_Exit", -3);
    EXPECT_EQ(yLock_Exit(lock), -3);
    EXPECT_EQ(yLock_Depth(lock), 0U);
}

TEST(yLock, NullIsABadParameter) {
    EXPECT_EQ(yLock_Construct(nullptr), yERROR_PARAMETER);
    EXPECT_EQ(yLock_Enter(nullptr), yERROR_PARAMETER);
    EXPECT_EQ(yLock_Exit(nullptr), yERROR_PARAMETER);
    EXPECT_EQ(yLock_Destroy(nullptr), yOK);
    EXPECT_EQ(yLock_Depth(nullptr), 0U);
    EXPECT_FALSE(yLock_IsOwner(nullptr));
}
