#include "Vor/AsyncRunner.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/MainLoopThread.h"
#include "Vor/AsyncLoop.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "yApi/yFault.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using Vor::AsyncRunner;
using Vor::MainLoop;
using namespace std::chrono_literals;

namespace {

constexpr unsigned long long Second = 1000000;
constexpr unsigned long long Minute = 60 * Second;

} // namespace

TEST(AsyncRunnerTest, RunNeverRunsInlineNotEvenOnTheMainLoop) {
    MainLoop loop(MainLoop::Mode::Manual);
    AsyncRunner runner;
    bool ran = false;
    runner.Run([&] { ran = true; });
    EXPECT_FALSE(ran);
    loop.RunReady();
    EXPECT_TRUE(ran);
}

TEST(AsyncRunnerTest, ClosuresRunOnTheMainLoopInOrder) {
    MainLoop loop(MainLoop::Mode::Manual);
    AsyncRunner first;
    AsyncRunner second;
    std::vector<int> order;
    for (int i = 0; i < 6; ++i) {
        (i % 2 == 0 ? first : second).Run([&order, i] {
            EXPECT_TRUE(Vor::AsyncLoop::OnMainLoop());
            order.push_back(i);
        });
    }
    loop.RunReady();
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4, 5}));
}

TEST(AsyncRunnerTest, FailingClosureIsLoggedAndTheNextOneRuns) {
    MainLoop loop(MainLoop::Mode::Manual);
    const Vor::LogCapture log;
    AsyncRunner runner;
    bool ran = false;
    runner.Run([] { throw std::runtime_error("closure"); });
    runner.Run([&] { ran = true; });
    loop.RunReady();
    EXPECT_TRUE(ran);
    EXPECT_TRUE(log.Contains("Caught std::runtime_error: closure"));
}

TEST(AsyncRunnerTest, DestructorDropsWhatIsQueuedAndFreesItAtOnce) {
    MainLoop loop(MainLoop::Mode::Manual);
    const auto held = std::make_shared<int>(0);
    {
        AsyncRunner runner;
        runner.Run([held] { ++*held; });
        EXPECT_EQ(held.use_count(), 2);
    }
    EXPECT_EQ(held.use_count(), 1);
    loop.RunReady();
    EXPECT_EQ(*held, 0);
}

TEST(AsyncRunnerTest, DestructorWaitsForARunningClosure) {
    const Tests::MainLoopThread thread;
    std::promise<void> entered;
    std::promise<void> leave;
    std::atomic<bool> left{false};
    auto runner = std::make_unique<AsyncRunner>();
    runner->Run([&] {
        entered.set_value();
        leave.get_future().wait();
        left = true;
    });
    entered.get_future().wait();
    std::thread helper([&] { leave.set_value(); });
    runner.reset();
    EXPECT_TRUE(left);
    helper.join();
}

TEST(AsyncRunnerTest, RunnerMayBeDestroyedByItsOwnClosure) {
    MainLoop loop(MainLoop::Mode::Manual);
    auto runner = std::make_unique<AsyncRunner>();
    int ran = 0;
    runner->Run([&] {
        runner.reset();
        ++ran;
    });
    runner->Run([&] { ++ran; });
    loop.RunReady();
    EXPECT_EQ(ran, 1);
}

TEST(AsyncRunnerTest, RunAndWaitOnTheMainLoopRunsInline) {
    MainLoop loop(MainLoop::Mode::Manual);
    AsyncRunner runner;
    bool ran = false;
    runner.RunAndWait([&] { ran = true; }, 0);
    EXPECT_TRUE(ran);
    EXPECT_EQ(Tests::StatusOf([&] { runner.RunAndWait([] { Vor::Throw(yERROR_FULL); }, Second); }), yERROR_FULL);
}

TEST(AsyncRunnerTest, RunAndWaitOfAnotherThreadReturnsWhenTheMainLoopIsDone) {
    const Tests::MainLoopThread thread;
    AsyncRunner runner;
    bool onLoop = false;
    runner.RunAndWait([&] { onLoop = Vor::AsyncLoop::OnMainLoop(); }, Minute);
    EXPECT_TRUE(onLoop);
}

TEST(AsyncRunnerTest, RunAndWaitThrowsTheFailureOfTheClosureToTheWaiter) {
    const Tests::MainLoopThread thread;
    AsyncRunner runner;
    EXPECT_EQ(Tests::StatusOf([&] { runner.RunAndWait([] { Vor::Throw(yERROR_FULL, "full"); }, Minute); }),
              yERROR_FULL);
    EXPECT_THROW(runner.RunAndWait([] { throw std::out_of_range("far"); }, Minute), std::out_of_range);
    EXPECT_THROW(runner.RunAndWait([] { throw 5; }, Minute), int);
}

TEST(AsyncRunnerTest, TimedOutClosureOfALivingRunnerRunsLater) {
    const Vor::LogCapture log;
    AsyncRunner runner;
    const auto ran = std::make_shared<bool>(false);
    EXPECT_EQ(Tests::StatusOf([&] { runner.RunAndWait([ran] { *ran = true; }, 0); }), yERROR_TIMEOUT);
    EXPECT_EQ(Tests::StatusOf([&] { runner.RunAndWait([] { throw std::runtime_error("late"); }, 1); }), yERROR_TIMEOUT);
    EXPECT_FALSE(*ran);
    MainLoop loop(MainLoop::Mode::Manual);
    loop.RunReady();
    EXPECT_TRUE(*ran);
    EXPECT_TRUE(log.Contains("Caught std::runtime_error: late"));
}

TEST(AsyncRunnerTest, TimedOutClosureOfADestroyedRunnerNeverRuns) {
    const auto ran = std::make_shared<bool>(false);
    {
        AsyncRunner runner;
        EXPECT_EQ(Tests::StatusOf([&] { runner.RunAndWait([ran] { *ran = true; }, 0); }), yERROR_TIMEOUT);
    }
    MainLoop loop(MainLoop::Mode::Manual);
    loop.RunReady();
    EXPECT_FALSE(*ran);
}

TEST(AsyncRunnerTest, WaiterOfAManualLoopGetsItsAnswerWhenTheLoopIsStepped) {
    MainLoop loop(MainLoop::Mode::Manual);
    AsyncRunner runner;
    auto waiter =
        std::async(std::launch::async, [&] { return Tests::StatusOf([&] { runner.RunAndWait([] {}, Minute); }); });
    ASSERT_TRUE(loop.WaitReady());
    EXPECT_TRUE(loop.Step());
    EXPECT_EQ(waiter.get(), yOK);
}

TEST(AsyncRunnerTest, TimeOutFollowsTheClockOfAManualLoopAndTheLateClosureStillRuns) {
    MainLoop loop(MainLoop::Mode::Manual);
    AsyncRunner runner;
    bool late = false;
    auto waiter = std::async(std::launch::async, [&] {
        return Tests::StatusOf([&] { runner.RunAndWait([&late] { late = true; }, Minute); });
    });
    ASSERT_TRUE(loop.WaitReady());
    loop.Elapse(59999999us);
    EXPECT_EQ(waiter.wait_for(0s), std::future_status::timeout);
    loop.Elapse(1us);
    EXPECT_EQ(waiter.get(), yERROR_TIMEOUT);
    EXPECT_FALSE(late);
    loop.RunReady();
    EXPECT_TRUE(late);
}

TEST(AsyncRunnerTest, ClosureIsFreedBeforeTheWaiterGoesOn) {
    const Tests::MainLoopThread thread;
    AsyncRunner runner;
    for (int i = 0; i < 100; ++i) {
        const auto held = std::make_shared<int>(0);
        runner.RunAndWait([held] { ++*held; }, Minute);
        EXPECT_EQ(held.use_count(), 1);
    }
}

TEST(AsyncRunnerTest, LongestTimeOutIsLegal) {
    const Tests::MainLoopThread thread;
    AsyncRunner runner;
    bool ran = false;
    runner.RunAndWait([&] { ran = true; }, ~0ULL);
    EXPECT_TRUE(ran);
}

TEST(AsyncRunnerTest, RunCanBeMadeToFail) {
    MainLoop loop(MainLoop::Mode::Manual);
    AsyncRunner runner;
    bool ran = false;
    yFault_Set("AsyncRunner_Run", yERROR_FULL);
    EXPECT_EQ(Tests::StatusOf([&] { runner.Run([&] { ran = true; }); }), yERROR_FULL);
    yFault_Clear();
    loop.RunReady();
    EXPECT_FALSE(ran);
}

TEST(AsyncRunnerTest, ManyThreadsRunManyClosuresEachInItsOrder) {
    const Tests::MainLoopThread thread;
    constexpr int Count = 200;
    AsyncRunner runner;
    std::vector<std::vector<int>> orders(4);
    std::vector<std::thread> threads;
    for (auto& order : orders) {
        threads.emplace_back([&runner, &order] {
            for (int i = 0; i < Count; ++i) {
                runner.Run([&order, i] { order.push_back(i); });
            }
        });
    }
    for (auto& one : threads) {
        one.join();
    }
    runner.RunAndWait([] {}, Minute);
    for (const auto& order : orders) {
        ASSERT_EQ(order.size(), static_cast<std::size_t>(Count));
        EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    }
}
