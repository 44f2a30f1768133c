#include "Tests/Support/Failure.h"
#include "Tests/Support/MainLoopThread.h"
#include "Tests/Support/Signal.h"
#include "Tests/VorControl/Control/ControlDataCacheFixture.h"

#include <barrier>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>
#include <typeinfo>

using Tests::Elsewhere;
using Tests::FakeEngines;
using Tests::FakeSystem;
using Tests::LongWait;
using Tests::NumberOf;
using Tests::ScannerFlagText;
using Tests::ShortWait;
using Tests::StatsFailed;
using Tests::SystemFlagText;
using VorControl::ControlDataCache;

namespace {

class ControlDataCacheTest : public Tests::ControlDataCacheFixture {};

} // namespace

TEST_F(ControlDataCacheTest, OnTheMainLoopTheQueryRunsInPlace) {
    EXPECT_EQ(NumberOf(cache->SystemStats(0)), 1U);
    EXPECT_EQ(NumberOf(cache->SystemStats(LongWait)), 2U);
    EXPECT_EQ(log.Count(Vor::LevelError, SystemFlagText), 2U);
    EXPECT_EQ(cache->ScannerInfo("A", 0).id, "A");
    EXPECT_EQ(cache->ScannerInfo("B", LongWait).id, "B");
    EXPECT_EQ(log.Count(Vor::LevelError, ScannerFlagText), 2U);
    EXPECT_FALSE(loop.Step());
}

TEST_F(ControlDataCacheTest, OnTheMainLoopAFailedQueryIsntWaitedFor) {
    system.onStats = [] { Vor::Throw(yERROR_STATE); };
    engines.onInfo = [] { Vor::Throw(yERROR_STATE); };
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(NumberOf(cache->SystemStats(LongWait)), 0U);
    EXPECT_EQ(cache->ScannerInfo("", LongWait).id, "");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::microseconds(LongWait / 2));
}

TEST_F(ControlDataCacheTest, APollerWithoutPatienceSeesWhatItsPreviousCallAskedFor) {
    EXPECT_EQ(Poll(), 0U);
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(Poll(), 1U);
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(Poll(), 2U);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ControlDataCacheTest, ACallerThatWaitsGetsTheQuerysAnswer) {
    auto answer = std::async(std::launch::async, [&] { return NumberOf(cache->SystemStats(LongWait)); });
    ASSERT_TRUE(loop.WaitReady());
    EXPECT_TRUE(loop.Step());
    EXPECT_EQ(answer.get(), 1U);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ControlDataCacheTest, ALateAnswerServesTheNextCall) {
    EXPECT_EQ(Poll(ShortWait), 0U);
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(Poll(ShortWait), 1U);
}

TEST_F(ControlDataCacheTest, ABusyMainLoopHasAtMostOneQueryOfAKind) {
    EXPECT_EQ(Poll(), 0U);
    EXPECT_EQ(Poll(), 0U);
    EXPECT_EQ(Poll(ShortWait), 0U);
    EXPECT_EQ(PollScanner("").id, "");
    EXPECT_EQ(PollScanner("").id, "");
    EXPECT_EQ(loop.RunReady(), 2U);
    EXPECT_EQ(system.queries, 1);
    EXPECT_EQ(engines.queries, 1);
}

TEST_F(ControlDataCacheTest, CallsOfManyThreadsAtOnceShareOneQuery) {
    constexpr int Count = 4;
    std::barrier begin(Count);
    std::vector<std::thread> threads;
    std::atomic<int> answered{0};
    for (int i = 0; i < Count; ++i) {
        threads.emplace_back([&] {
            begin.arrive_and_wait();
            answered += NumberOf(cache->SystemStats(0)) == 0 ? 1 : 0;
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(answered, Count);
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(Poll(), 1U);
}

TEST_F(ControlDataCacheTest, AWaitingCallerHindersNobody) {
    auto answer = std::async(std::launch::async, [&] { return NumberOf(cache->SystemStats(LongWait)); });
    ASSERT_TRUE(loop.WaitReady());
    EXPECT_EQ(Poll(), 0U);
    EXPECT_EQ(PollScanner("").id, "");
    EXPECT_EQ(loop.RunReady(), 2U);
    EXPECT_EQ(answer.get(), 1U);
}

TEST_F(ControlDataCacheTest, AQueryThatIsStuckHindersNobody) {
    Tests::Signal inside;
    Tests::Signal release;
    system.onStats = [&] {
        inside.Set();
        EXPECT_TRUE(release.Wait());
    };
    auto polls = std::async(std::launch::async, [&] {
        NumberOf(cache->SystemStats(0));
        EXPECT_TRUE(inside.Wait());
        const auto during = NumberOf(cache->SystemStats(ShortWait));
        release.Set();
        return during;
    });
    ASSERT_TRUE(loop.WaitReady());
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(polls.get(), 0U);
    EXPECT_EQ(system.queries, 1);
    system.onStats = nullptr;
    EXPECT_EQ(Poll(), 1U);
}

TEST_F(ControlDataCacheTest, AFailedQueryIsLoggedAndKeepsTheCopy) {
    Poll();
    loop.RunReady();
    EXPECT_EQ(Poll(), 1U);
    system.onStats = [] { Vor::Throw(yERROR_FULL, "no metrics"); };
    loop.RunReady();
    EXPECT_EQ(log.Count(Vor::LevelError, StatsFailed), 1U);
    EXPECT_TRUE(IsLogged("exception with status -977: no metrics"));
    EXPECT_TRUE(IsLogged("Back trace of status -977"));
    EXPECT_FALSE(log.Contains(SystemFlagText));
    system.onStats = nullptr;
    EXPECT_EQ(Poll(), 1U);
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(Poll(), 3U);
}

TEST_F(ControlDataCacheTest, AFailureOfAnotherKindEndsTheQueryToo) {
    system.onStats = [] { throw std::bad_cast(); };
    engines.onInfo = [] { throw std::runtime_error("odd"); };
    Poll();
    PollScanner("");
    EXPECT_EQ(loop.RunReady(), 2U);
    EXPECT_FALSE(log.Contains(StatsFailed));
    EXPECT_FALSE(log.Contains(SystemFlagText));
    EXPECT_FALSE(log.Contains(ScannerFlagText));
    system.onStats = nullptr;
    engines.onInfo = nullptr;
    Poll();
    PollScanner("");
    EXPECT_EQ(loop.RunReady(), 2U);
    EXPECT_EQ(Poll(), 2U);
    EXPECT_EQ(PollScanner("").currentSyncTime, 2U);
}

TEST_F(ControlDataCacheTest, ADirectQueryMeetsAPendingOneAndClearsItsFlag) {
    EXPECT_EQ(Poll(), 0U);
    EXPECT_EQ(NumberOf(cache->SystemStats(0)), 1U);
    EXPECT_FALSE(log.Contains(SystemFlagText));
    EXPECT_EQ(Poll(), 1U);
    EXPECT_EQ(loop.RunReady(), 2U);
    EXPECT_EQ(log.Count(Vor::LevelError, SystemFlagText), 1U);
    EXPECT_EQ(Poll(), 3U);
}

TEST_F(ControlDataCacheTest, AnAnswerThatNobodyTookIsRenewed) {
    Poll();
    loop.RunReady();
    Elsewhere([&] {
        faults.SetHere("yMsgQueue_Remove", yERROR_TIMEOUT, 0, 2);
        EXPECT_EQ(NumberOf(cache->SystemStats(0)), 0U);
    });
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(Poll(), 2U);
    EXPECT_EQ(Poll(), 2U);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ControlDataCacheTest, ACallerIsToldOfAFailingQueue) {
    for (const unsigned skip : {0U, 1U}) {
        Elsewhere([&] {
            faults.SetHere("yMsgQueue_Remove", yERROR_STATE, skip);
            EXPECT_FAILURE(cache->SystemStats(ShortWait), yERROR_STATE, "Error -1000 emptying system stats queue");
        });
        EXPECT_EQ(loop.RunReady(), skip);
        Elsewhere([&] {
            faults.SetHere("yMsgQueue_Remove", yERROR_FULL, skip);
            EXPECT_FAILURE(cache->ScannerInfo("", ShortWait), yERROR_FULL, "Error -977 emptying scanner stats queue");
        });
        EXPECT_EQ(loop.RunReady(), skip);
    }
    EXPECT_EQ(Poll(), 1U);
}

TEST_F(ControlDataCacheTest, AQueueThatFailsInTheQueryEndsIt) {
    Poll();
    faults.SetHere("yMsgQueue_Remove", yERROR_STATE);
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(log.Count(Vor::LevelError, StatsFailed), 1U);
    EXPECT_TRUE(IsLogged("exception with status -1000: Failed to remove item from system stats queue"));
    EXPECT_FALSE(log.Contains(SystemFlagText));
    EXPECT_EQ(Poll(), 0U);
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(Poll(), 2U);
}

TEST_F(ControlDataCacheTest, AnAnswerThatCantBeAddedFindsTheFlagCleared) {
    Poll();
    faults.SetHere("yMsgQueue_AddEx", yERROR_FULL);
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(log.Count(Vor::LevelError, StatsFailed), 1U);
    EXPECT_TRUE(IsLogged("exception with status -977"));
    EXPECT_EQ(log.Count(Vor::LevelError, SystemFlagText), 1U);
    EXPECT_EQ(Poll(), 0U);
    EXPECT_EQ(loop.RunReady(), 1U);
    EXPECT_EQ(Poll(), 2U);
}

TEST_F(ControlDataCacheTest, AQueryThatCantBePostedFreesTheFlag) {
    Elsewhere([&] {
        faults.SetHere("AsyncRunner_Run", yERROR_FULL, 0, 2);
        EXPECT_EQ(Tests::FailureOf([&] { cache->SystemStats(0); })->status, yERROR_FULL);
        EXPECT_EQ(Tests::FailureOf([&] { cache->ScannerInfo("", 0); })->status, yERROR_FULL);
    });
    Poll();
    PollScanner("");
    EXPECT_EQ(loop.RunReady(), 2U);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ControlDataCacheTest, AFailingConstructionIsThrown) {
    cache.reset();
    const std::vector<std::pair<const char*, unsigned>> steps{
        {"yMsgQueue_Construct", 0}, {"yMsgQueue_Construct", 1},   {"yLock_Construct", 0},
        {"yLock_Construct", 1},     {"yMsgQueue_SetMaxCount", 0}, {"yMsgQueue_SetMaxCount", 1}};
    for (const auto& [name, skip] : steps) {
        faults.SetHere(name, yERROR_FULL, skip);
        const auto failure = Tests::FailureOf([&] { const ControlDataCache failing(system, engines); });
        ASSERT_TRUE(failure.has_value()) << name << " " << skip;
        EXPECT_EQ(failure->status, yERROR_FULL);
        yFault_Clear();
    }
}

TEST_F(ControlDataCacheTest, AQueryDoesntOutliveTheCache) {
    Poll();
    PollScanner("");
    cache.reset();
    loop.RunReady();
    EXPECT_EQ(system.queries, 0);
    EXPECT_EQ(engines.queries, 0);
}

TEST_F(ControlDataCacheTest, AnswersThatNobodyTookGoWithTheCache) {
    Poll();
    PollScanner("");
    loop.RunReady();
    faults.SetHere("yMsgQueue_PurgeEx", yERROR_STATE);
    cache.reset();
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Exception thrown in destructor"));
    EXPECT_TRUE(IsLogged("exception with status -1000"));
}

TEST(ControlDataCacheThreadsTest, TheCacheGoesAfterAQueryThatIsRunning) {
    FakeSystem system;
    FakeEngines engines;
    Tests::Signal inside;
    Tests::Signal release;
    std::atomic<bool> ended{false};
    system.onStats = [&] {
        inside.Set();
        EXPECT_TRUE(release.Wait());
        ended = true;
    };
    const Tests::MainLoopThread loop;
    auto cache = std::make_unique<ControlDataCache>(system, engines);
    cache->SystemStats(0);
    ASSERT_TRUE(inside.Wait());
    auto gone = std::async(std::launch::async, [&] {
        cache.reset();
        return ended.load();
    });
    release.Set();
    EXPECT_TRUE(gone.get());
}

TEST(ControlDataCacheThreadsTest, RecordsStayWholeUnderManyPollers) {
    FakeSystem system;
    FakeEngines engines;
    const Tests::MainLoopThread loop;
    ControlDataCache cache(system, engines);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&cache, i] {
            const std::string id = i % 2 == 0 ? "A" : "B";
            for (int n = 0; n < 200; ++n) {
                NumberOf(cache.SystemStats(n % 2 == 0 ? 0 : ShortWait));
                try {
                    EXPECT_EQ(cache.ScannerInfo(id, n % 2 == 0 ? 0 : ShortWait).id, id);
                } catch (const Vor::Exception& e) {
                    EXPECT_EQ(e.Status(), yERROR_NOT_FOUND);
                }
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_GT(NumberOf(cache.SystemStats(LongWait)), 0U);
}
