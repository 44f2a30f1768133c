#include "VorApi/Threads/Locker.h"

#include "Tests/Support/Faults.h"
#include "Vor/Logging.h"
#include "VorApi/Handle.h"

#include <gtest/gtest.h>

class LockerTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(yLock_Construct(lock.Out()), yOK); }

    Tests::Faults faults;
    Vor::Handle<yLock, yLock_Destroy> lock;
};

TEST_F(LockerTest, HoldsTheLockForItsScope) {
    {
        const Vor::Locker outer(lock.Get());
        const Vor::Locker inner(lock.Get());
        EXPECT_EQ(yLock_Depth(lock.Get()), 2U);
    }
    EXPECT_EQ(yLock_Depth(lock.Get()), 0U);
}

TEST_F(LockerTest, FailureToEnterIsThrownWithItsStatus) {
    faults.Set("yLock_Enter", -55);
    try {
        const Vor::Locker locker(lock.Get());
        FAIL() << "nothing was thrown";
    } catch (const Vor::Exception& exception) {
        EXPECT_EQ(exception.Status(), -55);
        EXPECT_FALSE(exception.HasText());
    }
    EXPECT_EQ(yLock_Depth(lock.Get()), 0U);
}

TEST_F(LockerTest, FailureToLeaveIsLoggedAndSwallowed) {
    Vor::LogCapture log;
    {
        const Vor::Locker locker(lock.Get());
        faults.Set("yLock_Exit", -56);
    }
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Exception thrown in destructor"));
}
