#include "Vor/AsyncTimer.h"

#include "Tests/Support/MainLoopThread.h"
#include "Vor/AsyncLoop.h"
#include "Vor/Exception.h"
#include "Vor/MainLoop.h"

#include <atomic>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using Vor::AsyncTimer;
using Vor::MainLoop;
using namespace std::chrono_literals;

TEST(AsyncTimerTest, FalseStartsARepeatingTimerThatKeepsItsPeriod) {
    MainLoop loop(MainLoop::Mode::Manual);
    int calls = 0;
    AsyncTimer timer([&](AsyncTimer&) {
        EXPECT_TRUE(Vor::AsyncLoop::OnMainLoop());
        ++calls;
    });
    timer.Start(250000, false);
    EXPECT_EQ(loop.Advance(249999us), 0U);
    EXPECT_EQ(loop.Advance(1us), 1U);
    EXPECT_EQ(loop.Advance(1s), 4U);
    EXPECT_EQ(calls, 5);
}

TEST(AsyncTimerTest, TrueStartsATimerThatCallsOnce) {
    MainLoop loop(MainLoop::Mode::Manual);
    int calls = 0;
    AsyncTimer timer([&](AsyncTimer&) { ++calls; });
    timer.Start(1000, true);
    loop.Advance(1s);
    EXPECT_EQ(calls, 1);
    timer.Start(0, true);
    EXPECT_EQ(calls, 1);
    loop.RunReady();
    EXPECT_EQ(calls, 2);
}

TEST(AsyncTimerTest, RepeatingTimerWithoutPeriodIsRefused) {
    AsyncTimer timer([](AsyncTimer&) {});
    try {
        timer.Start(0, false);
        FAIL() << "a period of 0 was accepted";
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), yERROR_PARAMETER);
    }
}

TEST(AsyncTimerTest, TimersCallInTheOrderOfTheirTimes) {
    MainLoop loop(MainLoop::Mode::Manual);
    std::vector<char> order;
    AsyncTimer slow([&](AsyncTimer&) { order.push_back('s'); });
    AsyncTimer fast([&](AsyncTimer&) { order.push_back('f'); });
    slow.Start(300, false);
    fast.Start(200, false);
    loop.Advance(650us);
    EXPECT_EQ(order, (std::vector<char>{'f', 's', 'f', 's', 'f'}));
}

TEST(AsyncTimerTest, NoCallComesAfterStop) {
    MainLoop loop(MainLoop::Mode::Manual);
    int calls = 0;
    AsyncTimer timer([&](AsyncTimer&) { ++calls; });
    timer.Start(100, false);
    loop.Advance(100us);
    timer.Stop();
    timer.Stop();
    loop.Advance(1s);
    EXPECT_EQ(calls, 1);
}

TEST(AsyncTimerTest, CallbackMayStopItsTimer) {
    MainLoop loop(MainLoop::Mode::Manual);
    int calls = 0;
    AsyncTimer timer([&](AsyncTimer& self) {
        if (++calls == 2) {
            self.Stop();
        }
    });
    timer.Start(100, false);
    loop.Advance(1s);
    EXPECT_EQ(calls, 2);
}

TEST(AsyncTimerTest, CallbackMayStartItsTimerAnew) {
    MainLoop loop(MainLoop::Mode::Manual);
    int calls = 0;
    AsyncTimer timer([&](AsyncTimer& self) {
        ++calls;
        self.Start(1000000, true);
    });
    timer.Start(100, false);
    loop.Advance(500us);
    EXPECT_EQ(calls, 1);
    loop.Advance(1s);
    EXPECT_EQ(calls, 2);
}

TEST(AsyncTimerTest, CallbackMayDestroyItsTimer) {
    MainLoop loop(MainLoop::Mode::Manual);
    int calls = 0;
    std::unique_ptr<AsyncTimer> timer;
    timer = std::make_unique<AsyncTimer>([&](AsyncTimer&) {
        timer.reset();
        ++calls;
    });
    timer->Start(100, false);
    loop.Advance(1s);
    EXPECT_EQ(calls, 1);
}

TEST(AsyncTimerTest, StartOfARunningTimerStartsAnew) {
    MainLoop loop(MainLoop::Mode::Manual);
    int calls = 0;
    AsyncTimer timer([&](AsyncTimer&) { ++calls; });
    timer.Start(100, false);
    loop.Advance(50us);
    timer.Start(100, false);
    loop.Advance(99us);
    EXPECT_EQ(calls, 0);
    loop.Advance(1us);
    EXPECT_EQ(calls, 1);
}

TEST(AsyncTimerTest, FailingCallbackIsCalledAgain) {
    MainLoop loop(MainLoop::Mode::Manual);
    int calls = 0;
    AsyncTimer timer([&](AsyncTimer&) {
        ++calls;
        throw std::runtime_error("callback");
    });
    timer.Start(100, false);
    loop.Advance(300us);
    EXPECT_EQ(calls, 3);
}

TEST(AsyncTimerTest, LongestPeriodIsLegal) {
    MainLoop loop(MainLoop::Mode::Manual);
    int calls = 0;
    AsyncTimer timer([&](AsyncTimer&) { ++calls; });
    timer.Start(~0ULL, false);
    loop.Advance(24h);
    EXPECT_EQ(calls, 0);
}

TEST(AsyncTimerTest, RunsWithTheClockOfTheSystem) {
    const Tests::MainLoopThread thread;
    std::promise<std::chrono::steady_clock::time_point> third;
    int calls = 0;
    const auto start = std::chrono::steady_clock::now();
    AsyncTimer timer([&](AsyncTimer& self) {
        if (++calls == 3) {
            self.Stop();
            third.set_value(std::chrono::steady_clock::now());
        }
    });
    timer.Start(2000, false);
    auto done = third.get_future();
    ASSERT_EQ(done.wait_for(10s), std::future_status::ready);
    EXPECT_GE(done.get() - start, 6ms);
}

TEST(AsyncTimerTest, EarlierTimerIsntHeldUpByALaterOne) {
    const Tests::MainLoopThread thread;
    std::promise<void> early;
    AsyncTimer late([](AsyncTimer&) {});
    AsyncTimer soon([&](AsyncTimer&) { early.set_value(); });
    late.Start(3600ULL * 1000000, true);
    soon.Start(1000, true);
    EXPECT_EQ(early.get_future().wait_for(10s), std::future_status::ready);
}

TEST(AsyncTimerTest, StopOfAnotherThreadWaitsForARunningCallback) {
    const Tests::MainLoopThread thread;
    std::promise<void> entered;
    std::promise<void> leave;
    std::atomic<bool> left{false};
    AsyncTimer timer([&](AsyncTimer&) {
        entered.set_value();
        leave.get_future().wait();
        left = true;
    });
    timer.Start(1, true);
    entered.get_future().wait();
    std::thread helper([&] { leave.set_value(); });
    timer.Stop();
    EXPECT_TRUE(left);
    helper.join();
}
