#include "VorApi/Threads/LockedEvent.h"

#include "Tests/Support/Faults.h"
#include "Tests/Support/Signal.h"

#include <atomic>
#include <thread>
#include <type_traits>

#include <gtest/gtest.h>

TEST(LockedEvent, IdsAreThoseOfTheEvent) {
    static_assert(std::is_same_v<Vor::LockedEvent<void*>::CallbackId, Vor::Event<void*>::CallbackId>);
    Vor::LockedEvent<int> event;
    int sum = 0;
    auto id = event.AddListener([&](int number) { sum += number; });
    EXPECT_EQ(event.Count(), 1U);
    event.Raise(4);
    event.RemoveListener(id);
    EXPECT_FALSE(id.IsSet());
    event.Raise(4);
    EXPECT_EQ(sum, 4);
    EXPECT_FALSE(event.AddListener(nullptr).IsSet());
}

TEST(LockedEvent, HoldsItsLockWhileCallbacksRun) {
    Vor::LockedEvent<> event;
    unsigned depth = 0;
    event.AddListener([&] { depth = yLock_Depth(event.Lock()); });
    event.Raise();
    EXPECT_EQ(depth, 1U);
    EXPECT_EQ(yLock_Depth(event.Lock()), 0U);
}

TEST(LockedEvent, CallbackMayRemoveItself) {
    Vor::LockedEvent<> event;
    int calls = 0;
    Vor::LockedEvent<>::CallbackId id;
    id = event.AddListener([&] {
        ++calls;
        event.RemoveListener(id);
    });
    event.Raise();
    event.Raise();
    EXPECT_EQ(calls, 1);
}

TEST(LockedEvent, RemovalWaitsForARaiseOfAnotherThread) {
    Vor::LockedEvent<> event;
    Tests::Signal entered;
    Tests::Signal leave;
    std::atomic<bool> ended = false;
    auto id = event.AddListener([&] {
        entered.Set();
        leave.Wait();
        ended = true;
    });
    std::thread raiser([&] { event.Raise(); });
    ASSERT_TRUE(entered.Wait());
    Tests::Signal about;
    std::thread remover([&] {
        about.Set();
        event.RemoveListener(id);
        EXPECT_TRUE(ended);
    });
    EXPECT_TRUE(about.Wait());
    leave.Set();
    remover.join();
    raiser.join();
}

TEST(LockedEvent, LockThatCantBeMadeIsThrownWithItsStatus) {
    Tests::Faults faults;
    faults.Set("yLock_Construct", -9);
    try {
        const Vor::LockedEvent<> event;
        FAIL() << "nothing was thrown";
    } catch (const Vor::Exception& exception) {
        EXPECT_EQ(exception.Status(), -9);
    }
}
