#include "VorControl/Control/ControlScanResultsDispatcher.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Faults.h"
#include "Tests/Support/ResultSets.h"
#include "Tests/Support/SetCollector.h"
#include "Tests/Support/Signal.h"
#include "Tests/Support/Threads.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"

#include <atomic>
#include <functional>
#include <memory>
#include <pthread.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using VorControl::ControlScanResultsDispatcher;

namespace {} // namespace

class ControlScanResultsDispatcherTest : public testing::Test {
protected:
    void TearDown() override {
        dispatcher.reset();
        collector.Clear();
        EXPECT_EQ(Tests::CountThreads(Tests::ScanResultsThread), 0U);
        EXPECT_EQ(yObject_LiveCount(), liveBefore);
    }

    void Make() { dispatcher = std::make_unique<ControlScanResultsDispatcher>(nullptr); }

    const std::int64_t liveBefore = yObject_LiveCount();
    Tests::Faults faults;
    /// What handlers use outlives the dispatcher.
    Tests::SetCollector collector;
    Tests::Signal entered;
    Tests::Signal leave;
    std::unique_ptr<ControlScanResultsDispatcher> dispatcher;
};

TEST_F(ControlScanResultsDispatcherTest, RunsFromItsConstructionForwardingNothingAndFiltering) {
    Make();
    EXPECT_TRUE(Tests::WaitUntil([] { return Tests::CountThreads(Tests::ScanResultsThread) == 1; }));
    EXPECT_FALSE(dispatcher->ForwardScanResults());
    EXPECT_TRUE(dispatcher->ScanResultsFiltering());
    EXPECT_EQ(dispatcher->ResultHandlerCount(), 0U);
    EXPECT_EQ(Tests::StatusOf([&] { dispatcher->Start(); }), yERROR_STATE);
}

TEST_F(ControlScanResultsDispatcherTest, CountsTheSetsThatArentProcessedYet) {
    Make();
    dispatcher->AddResultHandler([this](void*) {
        entered.Set();
        leave.Wait();
    });
    EXPECT_EQ(dispatcher->QueuedCount(), 0U);
    dispatcher->AddResult(Tests::MakeResultSet({"a"}).Get());
    ASSERT_TRUE(entered.Wait());
    dispatcher->AddResult(Tests::MakeResultSet({"a"}).Get());
    EXPECT_EQ(dispatcher->QueuedCount(), 2U);
    leave.Set();
    EXPECT_TRUE(Tests::WaitUntil([this] { return dispatcher->QueuedCount() == 0; }));
    dispatcher->Stop();
    dispatcher->AddResult(Tests::MakeResultSet({"a"}).Get());
    EXPECT_EQ(dispatcher->QueuedCount(), 1U);
    dispatcher->Start();
    EXPECT_TRUE(Tests::WaitUntil([this] { return dispatcher->QueuedCount() == 0; }));
}

TEST_F(ControlScanResultsDispatcherTest, FlagsReadBackAsSet) {
    Make();
    dispatcher->SetForwardScanResults(true);
    dispatcher->SetScanResultsFiltering(false);
    EXPECT_TRUE(dispatcher->ForwardScanResults());
    EXPECT_FALSE(dispatcher->ScanResultsFiltering());
}

TEST_F(ControlScanResultsDispatcherTest, HandsSetsOverInOrderOfArrivalAndKeepsNoShare) {
    Make();
    dispatcher->AddResultHandler(collector.Handler());
    std::vector<Vor::Object> sets;
    for (int i = 0; i < 50; ++i) {
        sets.push_back(Tests::MakeResultSet({"a"}));
        dispatcher->AddResult(sets.back().Get());
    }
    ASSERT_TRUE(collector.WaitFor(50));
    const auto received = collector.Sets();
    for (std::size_t i = 0; i < sets.size(); ++i) {
        EXPECT_EQ(received[i].Get(), sets[i].Get());
    }
    for (const std::size_t size : collector.BatchSizes()) {
        EXPECT_GE(size, 1U);
    }
    collector.Clear();
    EXPECT_TRUE(Tests::WaitUntil([&] { return yObject_ShareCount(sets.back().Get()) == 2; }));
}

TEST_F(ControlScanResultsDispatcherTest, CallsHandlersOnItsNamedThread) {
    Make();
    std::string name;
    dispatcher->AddResultHandler([&](void*) {
        char text[16] = {};
        pthread_getname_np(pthread_self(), text, sizeof(text));
        name = text;
        entered.Set();
    });
    dispatcher->AddResult(Tests::MakeResultSet({"a"}).Get());
    ASSERT_TRUE(entered.Wait());
    EXPECT_EQ(name, Tests::ScanResultsThread);
}

TEST_F(ControlScanResultsDispatcherTest, TwoHandlersGetTheSameBatchInOrderOfRegistration) {
    Make();
    std::vector<std::pair<int, void*>> calls;
    dispatcher->AddResultHandler([&](void* batch) { calls.emplace_back(1, batch); });
    dispatcher->AddResultHandler([&](void* batch) {
        calls.emplace_back(2, batch);
        entered.Set();
    });
    EXPECT_EQ(dispatcher->ResultHandlerCount(), 2U);
    dispatcher->AddResult(Tests::MakeResultSet({"a"}).Get());
    ASSERT_TRUE(entered.Wait());
    dispatcher->Stop();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].first, 1);
    EXPECT_EQ(calls[1].first, 2);
    EXPECT_EQ(calls[0].second, calls[1].second);
}

TEST_F(ControlScanResultsDispatcherTest, FailureOfTheFirstHandlerKeepsTheSecondFromThatBatchOnly) {
    Make();
    Vor::LogCapture log;
    dispatcher->AddResultHandler([&](void*) {
        if (!entered.IsSet()) {
            entered.Set();
            Vor::Throw(yERROR_PARAMETER, "bad batch");
        }
    });
    dispatcher->AddResultHandler(collector.Handler());
    const auto lost = Tests::MakeResultSet({"a"});
    const auto kept = Tests::MakeResultSet({"b"});
    dispatcher->AddResult(lost.Get());
    ASSERT_TRUE(entered.Wait());
    EXPECT_TRUE(Tests::WaitUntil([&] { return yObject_ShareCount(lost.Get()) == 1; }));
    dispatcher->AddResult(kept.Get());
    ASSERT_TRUE(collector.WaitFor(1));
    EXPECT_EQ(collector.Sets().front().Get(), kept.Get());
    EXPECT_EQ(log.Count(Vor::LevelError, "EXCEPTION THROWN: "), 1U);
    dispatcher->Stop();
    EXPECT_EQ(log.CountLevel(Vor::LevelInfo), 0U);
}

TEST_F(ControlScanResultsDispatcherTest, BatchWithoutHandlersIsPurgedWithoutACall) {
    Make();
    const auto set = Tests::MakeResultSet({"a"});
    dispatcher->AddResult(set.Get());
    EXPECT_TRUE(Tests::WaitUntil([&] { return yObject_ShareCount(set.Get()) == 1; }));
    dispatcher->AddResultHandler(collector.Handler());
    const auto later = Tests::MakeResultSet({"b"});
    dispatcher->AddResult(later.Get());
    ASSERT_TRUE(collector.WaitFor(1));
    EXPECT_EQ(collector.Sets().front().Get(), later.Get());
}

TEST_F(ControlScanResultsDispatcherTest, WhatArrivesDuringACycleFormsOneBatch) {
    Make();
    dispatcher->AddResultHandler([&](void* batch) {
        entered.Set();
        leave.Wait();
        collector.Append(batch);
    });
    dispatcher->AddResult(Tests::MakeResultSet({"first"}).Get());
    ASSERT_TRUE(entered.Wait());
    for (int i = 0; i < 1000; ++i) {
        dispatcher->AddResult(Tests::MakeResultSet({std::to_string(i)}).Get());
    }
    leave.Set();
    ASSERT_TRUE(collector.WaitFor(1001));
    EXPECT_EQ(collector.BatchSizes(), (std::vector<std::size_t>{1, 1000}));
    const auto sets = collector.Sets();
    for (std::size_t i = 0; i < 1000; ++i) {
        EXPECT_EQ(Tests::SourcesOf(sets[i + 1].Get()), std::vector<std::string>{std::to_string(i)});
    }
}

TEST_F(ControlScanResultsDispatcherTest, RemovalWaitsForTheBatchInProgress) {
    Make();
    std::atomic<bool> ended = false;
    auto id = dispatcher->AddResultHandler([&](void*) {
        entered.Set();
        leave.Wait();
        ended = true;
    });
    dispatcher->AddResult(Tests::MakeResultSet({"a"}).Get());
    ASSERT_TRUE(entered.Wait());
    std::thread remover([&] {
        dispatcher->RemoveResultHandler(id);
        EXPECT_TRUE(ended);
        EXPECT_FALSE(id.IsSet());
    });
    leave.Set();
    remover.join();
    EXPECT_EQ(dispatcher->ResultHandlerCount(), 0U);
}

TEST_F(ControlScanResultsDispatcherTest, StopDiscardsBothListsAndStartBeginsAnew) {
    Make();
    dispatcher->AddResultHandler([&](void* batch) {
        collector.Append(batch);
        entered.Set();
        leave.Wait();
    });
    const auto first = Tests::MakeResultSet({"first"});
    const auto swapped = Tests::MakeResultSet({"swapped"});
    const auto incoming = Tests::MakeResultSet({"incoming"});
    dispatcher->AddResult(first.Get());
    ASSERT_TRUE(entered.Wait());
    dispatcher->AddResult(swapped.Get());
    faults.Set("yThread_Sleep", -1);
    leave.Set();
    ASSERT_TRUE(Tests::WaitUntil([] { return Tests::CountThreads(Tests::ScanResultsThread) == 0; }));
    dispatcher->AddResult(incoming.Get());
    EXPECT_EQ(yObject_ShareCount(swapped.Get()), 2);
    EXPECT_EQ(yObject_ShareCount(incoming.Get()), 2);
    dispatcher->Stop();
    EXPECT_EQ(yObject_ShareCount(swapped.Get()), 1);
    EXPECT_EQ(yObject_ShareCount(incoming.Get()), 1);
    EXPECT_EQ(collector.Sets().size(), 1U);
    dispatcher->Stop();
    collector.Clear();
    const auto again = Tests::MakeResultSet({"again"});
    dispatcher->Start();
    dispatcher->AddResult(again.Get());
    ASSERT_TRUE(collector.WaitFor(1));
    EXPECT_EQ(collector.Sets().front().Get(), again.Get());
}

TEST_F(ControlScanResultsDispatcherTest, StopWaitsForTheRunningHandler) {
    Make();
    std::atomic<bool> ended = false;
    dispatcher->AddResultHandler([&](void*) {
        entered.Set();
        leave.Wait();
        ended = true;
    });
    dispatcher->AddResult(Tests::MakeResultSet({"a"}).Get());
    ASSERT_TRUE(entered.Wait());
    std::thread stopper([&] {
        dispatcher->Stop();
        EXPECT_TRUE(ended);
    });
    leave.Set();
    stopper.join();
    EXPECT_EQ(Tests::CountThreads(Tests::ScanResultsThread), 0U);
}

TEST_F(ControlScanResultsDispatcherTest, StandardExceptionEndsTheThreadAndResultsPileUpUntilTheStop) {
    Make();
    Vor::LogCapture log;
    dispatcher->AddResultHandler([&](void*) {
        entered.Set();
        throw std::runtime_error("handler broke");
    });
    const auto first = Tests::MakeResultSet({"a"});
    const auto second = Tests::MakeResultSet({"b"});
    dispatcher->AddResult(first.Get());
    ASSERT_TRUE(entered.Wait());
    EXPECT_TRUE(Tests::WaitUntil([] { return Tests::CountThreads(Tests::ScanResultsThread) == 0; }));
    EXPECT_EQ(yObject_ShareCount(first.Get()), 1);
    dispatcher->AddResult(second.Get());
    dispatcher->AddResult(second.Get());
    EXPECT_EQ(yObject_ShareCount(second.Get()), 3);
    EXPECT_EQ(Tests::StatusOf([&] { dispatcher->Start(); }), yERROR_STATE);
    EXPECT_EQ(log.Count(Vor::LevelError, "EXCEPTION THROWN: "), 1U);
    dispatcher->Stop();
    EXPECT_EQ(log.Count(Vor::LevelInfo, "ControlScanResultsDispatcher thread stopped with error:0"), 1U);
    EXPECT_EQ(yObject_ShareCount(second.Get()), 1);
}

TEST_F(ControlScanResultsDispatcherTest, AnyOtherExceptionEndsTheThreadToo) {
    Make();
    Vor::LogCapture log;
    dispatcher->AddResultHandler([&](void*) {
        entered.Set();
        throw 5;
    });
    const auto set = Tests::MakeResultSet({"a"});
    dispatcher->AddResult(set.Get());
    ASSERT_TRUE(entered.Wait());
    EXPECT_TRUE(Tests::WaitUntil([] { return Tests::CountThreads(Tests::ScanResultsThread) == 0; }));
    EXPECT_EQ(yObject_ShareCount(set.Get()), 1);
    EXPECT_EQ(log.Count("EXCEPTION THROWN: "), 0U);
    dispatcher->Stop();
    EXPECT_EQ(log.Count(Vor::LevelInfo, "ControlScanResultsDispatcher thread stopped with error:0"), 1U);
}

TEST_F(ControlScanResultsDispatcherTest, FailingPauseOrLockEndsTheThreadWithItsStatus) {
    for (const char* step : {"yThread_Sleep", "yLock_Enter"}) {
        Vor::LogCapture log;
        Make();
        faults.Set(step, -41);
        EXPECT_TRUE(Tests::WaitUntil([] { return yFault_HitCount() == 1; })) << step;
        dispatcher->Stop();
        EXPECT_EQ(log.Count(Vor::LevelError, "EXCEPTION THROWN: "), 1U) << step;
        EXPECT_EQ(log.Count(Vor::LevelInfo, "ControlScanResultsDispatcher thread stopped with error:-41"), 1U) << step;
        yFault_Clear();
    }
}

TEST_F(ControlScanResultsDispatcherTest, EachStepOfConstructionIsThrownWithItsStatus) {
    struct Step {
        const char* name;
        unsigned skip;
    };
    for (const auto& [name, skip] :
         {Step{"yLock_Construct", 0}, Step{"yLock_Construct", 1}, Step{"yArrayList_Construct", 0},
          Step{"yArrayList_Construct", 1}, Step{"yThread_Construct", 0}, Step{"yThread_SetName", 0},
          Step{"yThread_Start", 0}}) {
        faults.Set(name, -42, skip);
        EXPECT_EQ(Tests::StatusOf([] { const ControlScanResultsDispatcher failing(nullptr); }), -42) << name << skip;
        yFault_Clear();
    }
}

TEST_F(ControlScanResultsDispatcherTest, RestartThatFailsCanBeTriedAgain) {
    Make();
    dispatcher->Stop();
    faults.Set("yThread_Start", -43);
    EXPECT_EQ(Tests::StatusOf([&] { dispatcher->Start(); }), -43);
    dispatcher->Stop();
    EXPECT_EQ(Tests::StatusOf([&] { dispatcher->Start(); }), yOK);
}

TEST_F(ControlScanResultsDispatcherTest, FailedAppendIsThrownAndTakesNoShare) {
    Make();
    const auto set = Tests::MakeResultSet({"a"});
    faults.Set("yArrayList_Add", yERROR_FULL);
    EXPECT_EQ(Tests::StatusOf([&] { dispatcher->AddResult(set.Get()); }), yERROR_FULL);
    EXPECT_EQ(yObject_ShareCount(set.Get()), 1);
}

TEST_F(ControlScanResultsDispatcherTest, FailingJoinIsThrownByStopAndLoggedByTheDestructor) {
    Make();
    faults.Set("yThread_Join", -44);
    EXPECT_EQ(Tests::StatusOf([&] { dispatcher->Stop(); }), -44);
    Make();
    Vor::LogCapture log;
    faults.Set("yThread_Join", -45);
    dispatcher.reset();
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown in destructor"), 1U);
}
