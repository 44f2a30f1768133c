#include "Tests/Support/MainLoopThread.h"
#include "Tests/VorControl/Control/OperationsFixture.h"
#include "VorControl/Control/ControlProtocolOperations.h"
#include "VorScan/AlignCompletionStatus.h"
#include "yApi/yObject.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

using Tests::Texts;
using VorControl::ControlProtocolOperations;

namespace {

class OperationsDispatcherTest : public Tests::OperationsFixture {};

TEST_F(OperationsDispatcherTest, AFailingQueueWaitIsLoggedAndTheThreadGoesOn) {
    faults.Set("yMsgQueue_Remove", -31, 0, 2);
    ASSERT_TRUE(Tests::WaitUntil([] { return yFault_HitCount() == 2; }));
    operations->StartScan("a");
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
    EXPECT_EQ(log.Count(Vor::LevelError, "Dispatcher queue wait failed with error -31"), 2U);
}

TEST_F(OperationsDispatcherTest, AQueueWaitThatKeepsFailingIsTriedAgainAfterAPause) {
    faults.Set("yMsgQueue_Remove", -31, 0, 1000000);
    ASSERT_TRUE(Tests::WaitUntil([] { return yFault_HitCount() >= 1; }));
    const auto first = std::chrono::steady_clock::now();
    const unsigned hits = yFault_HitCount();
    ASSERT_TRUE(Tests::WaitUntil([&] { return yFault_HitCount() >= hits + 3; }));
    EXPECT_GE(std::chrono::steady_clock::now() - first, std::chrono::milliseconds(200));
}

TEST_F(OperationsDispatcherTest, ATimeOutOfTheQueueWaitIsSilent) {
    faults.Set("yMsgQueue_Remove", yERROR_TIMEOUT, 0, 3);
    ASSERT_TRUE(Tests::WaitUntil([] { return yFault_HitCount() == 3; }));
    operations->StartScan("a");
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(OperationsDispatcherTest, AThrowingHandlerIsLoggedAndTheNextOperationEnds) {
    operations->AddOpEndEventHandler("b", [](int) { Vor::Throw(yERROR_FULL, "no room"); });
    operations->AddOpEndEventHandler("b", ends.Handler("behind it"));
    operations->StartScan("b");
    loop.RunReady();
    ASSERT_TRUE(log.WaitFor("Caught exception with status -977: no room"));
    EXPECT_EQ(log.Count(Vor::LevelError, "EXCEPTION THROWN: "), 1U);
    EXPECT_FALSE(SlotIsUsed());
    EXPECT_EQ(ends.Count(), 0U);
}

TEST_F(OperationsDispatcherTest, WhateverAHandlerThrowsTheThreadGoesOn) {
    std::atomic<int> calls = 0;
    operations->AddOpEndEventHandler("b", [&](int) {
        if (++calls == 1) {
            throw std::runtime_error("broken");
        }
        throw 7;
    });
    operations->StartScan("b");
    loop.RunReady();
    ASSERT_TRUE(log.WaitFor("Caught std::runtime_error: broken"));
    operations->StartScan("b");
    loop.RunReady();
    ASSERT_TRUE(Tests::WaitUntil([&] { return log.Count(Vor::LevelError, "EXCEPTION THROWN: ") == 2; }));
    EXPECT_FALSE(SlotIsUsed());
}

TEST_F(OperationsDispatcherTest, HasOneNamedThreadFromItsConstructionToItsEnd) {
    EXPECT_TRUE(Tests::WaitUntil([] { return Tests::CountThreads(Tests::DispatcherName) == 1; }));
    operations.reset();
    EXPECT_EQ(Tests::CountThreads(Tests::DispatcherName), 0U);
}

TEST_F(OperationsDispatcherTest, AConstructorThatFailsThrowsTheStatusAndLeavesNothing) {
    operations.reset();
    const auto liveBefore = yObject_LiveCount();
    for (const char* step : {"yMsgQueue_Construct", "yMsgQueue_SetDropHandler", "yLock_Construct", "yThread_Construct",
                             "yThread_SetName", "yThread_Start"}) {
        SCOPED_TRACE(step);
        faults.SetHere(step, -31);
        EXPECT_TEXTLESS_FAILURE(Make(), -31);
        EXPECT_EQ(Tests::CountThreads(Tests::DispatcherName), 0U);
        EXPECT_EQ(yObject_LiveCount(), liveBefore);
    }
    Make();
    operations->StartScan("a");
    EXPECT_EQ(RunToEnd(), Texts{"a 1"});
}

TEST_F(OperationsDispatcherTest, AnActionThatHasNotBegunNeverDoes) {
    operations->StartScan("a");
    operations.reset();
    loop.RunReady();
    EXPECT_TRUE(system.NewCalls().empty());
    EXPECT_EQ(ends.Count(), 0U);
}

TEST_F(OperationsDispatcherTest, ADestructorThatFailsLogsAndLosesTheEndsThatWait) {
    const auto liveBefore = yObject_LiveCount();
    Tests::Signal entered;
    Tests::Signal leave;
    operations->AddOpEndEventHandler("b", [&](int) {
        entered.Set();
        leave.Wait();
    });
    operations->StartScan("b");
    loop.RunReady();
    ASSERT_TRUE(entered.Wait());
    operations->StartScan("a");
    loop.RunReady();
    faults.Set("yThread_Join", -31);
    std::thread destroyer([this] { operations.reset(); });
    EXPECT_TRUE(log.WaitFor("Caught exception with status -31: (no text)"));
    leave.Set();
    destroyer.join();
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown in destructor"), 1U);
    EXPECT_EQ(ends.Count(), 0U);
    EXPECT_EQ(yObject_LiveCount(), liveBefore);
}

TEST(OperationsOfARunningLoopTest, TheObjectGoesAfterAnActionThatIsRunning) {
    const Tests::MainLoopThread loop;
    Tests::FakeSystemInterface system;
    Tests::FakeScanEngineInterface scanEngine;
    VorCommon::RuntimeCache runtimeCache;
    Tests::Signal acting;
    Tests::Signal going;
    std::size_t dispatchers = 0;
    std::atomic<bool> acted = false;
    system.OnCall([&](const std::string&) {
        acting.Set();
        EXPECT_TRUE(going.Wait());
        // The destructor runs meanwhile, but the queue for the action's end still exists.
        for (int i = 0; i < 50; ++i) {
            std::this_thread::yield();
        }
        dispatchers = Tests::CountThreads(Tests::DispatcherName);
        acted = true;
    });
    auto operations = std::make_unique<ControlProtocolOperations>(system, scanEngine, runtimeCache);
    ASSERT_TRUE(Tests::WaitUntil([] { return Tests::CountThreads(Tests::DispatcherName) == 1; })) << "it has its name";
    operations->StartScan("a");
    ASSERT_TRUE(acting.Wait());
    going.Set();
    operations.reset();
    EXPECT_TRUE(acted);
    EXPECT_EQ(dispatchers, 1U);
    EXPECT_EQ(Tests::CountThreads(Tests::DispatcherName), 0U);
}

TEST(OperationsUnderLoadTest, ManyProtocolsRaceForTheSlotAndEachThatGetsItIsToldOneEnd) {
    constexpr int Protocols = 4;
    constexpr int Attempts = 300;
    Tests::MainLoopThread loop;
    Tests::FakeSystemInterface system;
    Tests::FakeScanEngineInterface scanEngine;
    VorCommon::RuntimeCache runtimeCache;
    std::atomic<int> acting = 0;
    std::atomic<bool> overlapped = false;
    system.OnCall([&](const std::string&) {
        overlapped = overlapped || ++acting != 1;
        --acting;
    });
    Tests::Signal released;
    std::atomic<int> started = 0;
    std::atomic<int> ended = 0;
    std::optional<ControlProtocolOperations> operations;
    operations.emplace(system, scanEngine, runtimeCache);
    std::vector<std::thread> threads;
    for (int i = 0; i < Protocols; ++i) {
        threads.emplace_back([&, id = "p" + std::to_string(i)] {
            released.Wait();
            // Its handler is added while the ends of others are reported.
            std::atomic<int> ownEnded = 0;
            auto callback = operations->AddOpEndEventHandler(id, [&](int status) {
                ended += status;
                ++ownEnded;
            });
            int own = 0;
            for (int attempt = 0; attempt < Attempts; ++attempt) {
                if (!Tests::FailureOf([&] { operations->StartScan(id); })) {
                    ++started;
                    ++own;
                    ASSERT_TRUE(Tests::WaitUntil([&] { return ownEnded == own; }));
                }
            }
            operations->RemoveOpEndEventHandler(id, callback);
        });
    }
    released.Set();
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_GT(started, 0);
    EXPECT_EQ(ended, started);
    EXPECT_FALSE(overlapped);
    operations.reset();
    EXPECT_EQ(system.NewCalls().size(), static_cast<std::size_t>(started));
}

} // namespace
