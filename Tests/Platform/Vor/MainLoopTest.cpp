#include "Vor/MainLoop.h"

#include "Tests/Support/MainLoopThread.h"
#include "Vor/AsyncLoop.h"
#include "Vor/AsyncTimer.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/LoopCore.h"

#include <cstddef>
#include <future>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using Vor::AsyncLoop;
using Vor::MainLoop;
using namespace std::chrono_literals;

TEST(MainLoopTest, WithoutALoopNoThreadIsTheMainLoops) {
    EXPECT_FALSE(AsyncLoop::OnMainLoop());
}

TEST(MainLoopTest, ThreadThatMadeTheLoopIsTheMainLoopsUntilItGoes) {
    {
        const MainLoop loop;
        EXPECT_TRUE(AsyncLoop::OnMainLoop());
        EXPECT_FALSE(std::async(std::launch::async, [] { return AsyncLoop::OnMainLoop(); }).get());
    }
    EXPECT_FALSE(AsyncLoop::OnMainLoop());
}

TEST(MainLoopTest, ThreadThatRunsTheLoopIsTheMainLoops) {
    const Tests::MainLoopThread thread;
    EXPECT_FALSE(AsyncLoop::OnMainLoop());
}

TEST(MainLoopTest, SecondLoopIsRefused) {
    const MainLoop loop;
    try {
        const MainLoop second;
        FAIL() << "a second main loop was made";
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), yERROR_ALREADY_EXISTS);
    }
    EXPECT_TRUE(AsyncLoop::OnMainLoop());
}

TEST(MainLoopTest, RunEndsAtStopAndCanBeRunAgain) {
    MainLoop loop;
    int runs = 0;
    for (int i = 0; i < 2; ++i) {
        loop.Post([&] {
            ++runs;
            loop.Stop();
        });
        loop.Run();
    }
    EXPECT_EQ(runs, 2);
}

TEST(MainLoopTest, StopBeforeRunMakesItReturnAtOnce) {
    MainLoop loop;
    bool ran = false;
    loop.Stop();
    loop.Post([&] {
        ran = true;
        loop.Stop();
    });
    loop.Run();
    EXPECT_FALSE(ran);
    loop.Run();
    EXPECT_TRUE(ran);
}

TEST(MainLoopTest, StopOfAnotherThreadEndsRun) {
    MainLoop loop;
    std::promise<void> running;
    loop.Post([&] { running.set_value(); });
    std::thread stopper([&] {
        running.get_future().wait();
        loop.Stop();
    });
    loop.Run();
    stopper.join();
    EXPECT_TRUE(AsyncLoop::OnMainLoop());
}

TEST(MainLoopTest, SurvivesAnyExceptionOfACallAndLogsIt) {
    MainLoop loop(MainLoop::Mode::Manual);
    const Vor::LogCapture log;
    bool ran = false;
    loop.Post([] { throw std::runtime_error("broken"); });
    loop.Post([] { throw 5; });
    loop.Post([] { Vor::Throw(yERROR_STATE, "ours"); });
    loop.Post([&] { ran = true; });
    EXPECT_EQ(loop.RunReady(), 4U);
    EXPECT_TRUE(ran);
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception in a call of the main loop"), 3U);
    EXPECT_EQ(log.Count(Vor::LevelError, "unknown exception"), 1U);
    EXPECT_TRUE(log.Contains("Caught exception with status -1000: ours"));
}

TEST(MainLoopTest, StepRunsOneCallAtATime) {
    MainLoop loop(MainLoop::Mode::Manual);
    std::vector<int> order;
    loop.Post([&] { order.push_back(1); });
    loop.Post([&] { order.push_back(2); });
    EXPECT_TRUE(loop.Step());
    EXPECT_EQ(order, std::vector<int>{1});
    EXPECT_TRUE(loop.Step());
    EXPECT_FALSE(loop.Step());
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST(MainLoopTest, RunReadyRunsWhatBecomesReadyMeanwhile) {
    MainLoop loop(MainLoop::Mode::Manual);
    std::vector<int> order;
    loop.Post([&] {
        order.push_back(1);
        loop.Post([&] { order.push_back(3); });
    });
    loop.Post([&] { order.push_back(2); });
    EXPECT_EQ(loop.RunReady(), 3U);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(loop.RunReady(), 0U);
}

TEST(MainLoopTest, CallsPostedOnTheLoopKeepTheirPlaceBeforeLaterOnesOfOtherThreads) {
    MainLoop loop(MainLoop::Mode::Manual);
    std::vector<int> order;
    loop.Post([&] {
        loop.Post([&] { order.push_back(1); });
        std::thread([&] { loop.Post([&] { order.push_back(2); }); }).join();
    });
    loop.RunReady();
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST(MainLoopTest, CountsTheCallsThatWait) {
    MainLoop loop(MainLoop::Mode::Manual);
    loop.RunReady();
    const Vor::LoopCore& core = Vor::LoopCore::Instance();
    EXPECT_EQ(core.QueuedCount(), 0U);
    std::size_t whileFirstRuns = 0;
    loop.Post([&] { whileFirstRuns = core.QueuedCount(); });
    loop.Post([] {});
    EXPECT_EQ(core.QueuedCount(), 2U);
    loop.RunReady();
    EXPECT_EQ(whileFirstRuns, 1U);
    EXPECT_EQ(core.QueuedCount(), 0U);
}

TEST(MainLoopTest, WaitReadySeesACallOfAnotherThread) {
    MainLoop loop(MainLoop::Mode::Manual);
    bool ran = false;
    EXPECT_FALSE(loop.WaitReady(1ms));
    std::thread poster([&] { loop.Post([&] { ran = true; }); });
    EXPECT_TRUE(loop.WaitReady());
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_TRUE(ran);
    poster.join();
}

TEST(MainLoopTest, WhatNobodyRanWaitsForTheNextLoop) {
    bool ran = false;
    {
        MainLoop loop;
        loop.Post([&] { ran = true; });
    }
    EXPECT_FALSE(ran);
    MainLoop loop(MainLoop::Mode::Manual);
    loop.RunReady();
    EXPECT_TRUE(ran);
}

TEST(MainLoopTest, ModesAreKeptApart) {
    {
        MainLoop loop;
        EXPECT_THROW(loop.Step(), Vor::Exception);
        EXPECT_THROW(loop.Advance(1s), Vor::Exception);
    }
    MainLoop loop(MainLoop::Mode::Manual);
    EXPECT_THROW(loop.Run(), Vor::Exception);
}
