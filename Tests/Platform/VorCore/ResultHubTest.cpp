#include "VorCore/ResultHub.h"

#include "Tests/Support/Faults.h"
#include "Tests/Support/Signal.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/Object.h"
#include "VorMsg/ResultSet.h"

#include <array>
#include <atomic>
#include <pthread.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t Deadline = 20'000'000;

Vor::Object MakeSet() {
    Vor::Object set;
    EXPECT_EQ(ResultSet_Construct(set.Out()), yOK);
    return set;
}

} // namespace

class ResultHubTest : public testing::Test {
protected:
    Tests::Faults faults;
    VorCore::ResultHub hub;
};

TEST_F(ResultHubTest, CallsTheHandlersInOrderOnItsOwnThread) {
    std::vector<int> calls;
    std::thread::id thread;
    std::string name;
    hub.AddResultHandler([&](void*) {
        calls.push_back(1);
        thread = std::this_thread::get_id();
        std::array<char, 16> text{};
        pthread_getname_np(pthread_self(), text.data(), text.size());
        name = text.data();
    });
    hub.AddResultHandler([&](void*) { calls.push_back(2); });
    const auto set = MakeSet();
    hub.Publish(set.Get());
    hub.Publish(set.Get());
    ASSERT_TRUE(hub.Drain(Deadline));
    EXPECT_EQ(calls, (std::vector<int>{1, 2, 1, 2}));
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_EQ(name, "ResultHub");
}

TEST_F(ResultHubTest, CountsTheSetsThatWait) {
    Tests::Signal entered;
    Tests::Signal leave;
    hub.AddResultHandler([&](void*) {
        entered.Set();
        leave.Wait();
    });
    const auto set = MakeSet();
    EXPECT_EQ(hub.QueuedCount(), 0U);
    hub.Publish(set.Get());
    ASSERT_TRUE(entered.Wait());
    hub.Publish(set.Get());
    hub.Publish(set.Get());
    EXPECT_EQ(hub.QueuedCount(), 2U);
    leave.Set();
    ASSERT_TRUE(hub.Drain(Deadline));
    EXPECT_EQ(hub.QueuedCount(), 0U);
}

TEST_F(ResultHubTest, HoldsTheSetForTheCallAndNoLonger) {
    auto set = MakeSet();
    Vor::Object kept;
    hub.AddResultHandler([&](void* published) { kept = Vor::Object::Share(published); });
    void* handle = set.Get();
    hub.Publish(handle);
    set = {};
    ASSERT_TRUE(hub.Drain(Deadline));
    ASSERT_EQ(kept.Get(), handle);
    EXPECT_EQ(yObject_ShareCount(kept.Get()), 1);
}

TEST_F(ResultHubTest, DeliversInOrderOfPublishing) {
    std::vector<void*> seen;
    hub.AddResultHandler([&](void* set) { seen.push_back(set); });
    std::vector<Vor::Object> sets;
    std::vector<void*> published;
    for (int i = 0; i < 100; ++i) {
        sets.push_back(MakeSet());
        published.push_back(sets.back().Get());
        hub.Publish(published.back());
    }
    ASSERT_TRUE(hub.Drain(Deadline));
    EXPECT_EQ(seen, published);
}

TEST_F(ResultHubTest, SurvivesWhatAHandlerThrowsAndCallsTheNext) {
    Vor::LogCapture log;
    int calls = 0;
    hub.AddResultHandler([](void*) { Vor::Throw(yERROR_STATE, "first"); });
    hub.AddResultHandler([](void*) { throw std::runtime_error("second"); });
    hub.AddResultHandler([](void*) { throw 3; });
    hub.AddResultHandler([&](void*) { ++calls; });
    const auto set = MakeSet();
    hub.Publish(set.Get());
    hub.Publish(set.Get());
    ASSERT_TRUE(hub.Drain(Deadline));
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown by a result handler"), 6U);
    EXPECT_EQ(log.Count(Vor::LevelError, "unknown exception"), 2U);
}

TEST_F(ResultHubTest, RemovedHandlerIsNotCalledAndItsIdIsCleared) {
    int calls = 0;
    auto id = hub.AddResultHandler([&](void*) { ++calls; });
    EXPECT_TRUE(id.IsSet());
    EXPECT_EQ(hub.ResultHandlerCount(), 1U);
    hub.RemoveResultHandler(id);
    EXPECT_FALSE(id.IsSet());
    EXPECT_EQ(hub.ResultHandlerCount(), 0U);
    hub.RemoveResultHandler(id);
    hub.Publish(MakeSet().Get());
    ASSERT_TRUE(hub.Drain(Deadline));
    EXPECT_EQ(calls, 0);
}

TEST_F(ResultHubTest, EmptyHandlerIsNotAdded) {
    auto id = hub.AddResultHandler(nullptr);
    EXPECT_FALSE(id.IsSet());
    EXPECT_EQ(hub.ResultHandlerCount(), 0U);
    hub.RemoveResultHandler(id);
}

TEST_F(ResultHubTest, RemovalWaitsForTheRunningHandler) {
    Tests::Signal entered;
    Tests::Signal leave;
    std::atomic<bool> ended = false;
    auto id = hub.AddResultHandler([&](void*) {
        entered.Set();
        leave.Wait();
        ended = true;
    });
    hub.Publish(MakeSet().Get());
    ASSERT_TRUE(entered.Wait());
    Tests::Signal about;
    std::thread remover([&] {
        about.Set();
        hub.RemoveResultHandler(id);
        EXPECT_TRUE(ended);
    });
    EXPECT_TRUE(about.Wait());
    EXPECT_FALSE(hub.Drain(1000));
    leave.Set();
    remover.join();
}

TEST_F(ResultHubTest, RemovalEndsThoughSetsKeepComing) {
    std::atomic<bool> stop = false;
    std::thread producer([&] {
        const auto set = MakeSet();
        while (!stop) {
            hub.Publish(set.Get());
            std::this_thread::yield();
        }
    });
    std::atomic<int> calls = 0;
    for (int i = 0; i < 50; ++i) {
        auto id = hub.AddResultHandler([&](void*) { ++calls; });
        hub.RemoveResultHandler(id);
        const int now = calls;
        std::this_thread::yield();
        EXPECT_EQ(calls, now);
    }
    stop = true;
    producer.join();
}

TEST_F(ResultHubTest, HandlerMayRemoveItselfAndTheNextOne) {
    int calls = 0;
    VorCore::ResultHub::CallbackId first;
    VorCore::ResultHub::CallbackId second;
    first = hub.AddResultHandler([&](void*) {
        ++calls;
        hub.RemoveResultHandler(second);
        hub.RemoveResultHandler(first);
    });
    second = hub.AddResultHandler([&](void*) { calls += 100; });
    hub.Publish(MakeSet().Get());
    hub.Publish(MakeSet().Get());
    ASSERT_TRUE(hub.Drain(Deadline));
    EXPECT_EQ(calls, 1);
}

TEST_F(ResultHubTest, DrainTimesOutWhileAHandlerRuns) {
    Tests::Signal leave;
    hub.AddResultHandler([&](void*) { leave.Wait(); });
    hub.Publish(MakeSet().Get());
    EXPECT_FALSE(hub.Drain(1000));
    leave.Set();
    EXPECT_TRUE(hub.Drain(Deadline));
}

TEST_F(ResultHubTest, AddAndRemoveCanBeMadeToFailAndRemovalStillRemoves) {
    faults.Set("ResultHub_AddResultHandler", -1);
    EXPECT_THROW(hub.AddResultHandler([](void*) {}), Vor::Exception);
    auto id = hub.AddResultHandler([](void*) {});
    faults.Set("ResultHub_RemoveResultHandler", -2);
    EXPECT_THROW(hub.RemoveResultHandler(id), Vor::Exception);
    EXPECT_EQ(hub.ResultHandlerCount(), 0U);
}

TEST(ResultHub, DestructionDropsWhatWasNotDelivered) {
    const auto before = yObject_LiveCount();
    Tests::Signal entered;
    Tests::Signal leave;
    std::atomic<int> calls = 0;
    std::thread releaser;
    {
        VorCore::ResultHub hub;
        hub.AddResultHandler([&](void*) {
            ++calls;
            entered.Set();
            leave.Wait();
        });
        hub.Publish(MakeSet().Get());
        ASSERT_TRUE(entered.Wait());
        hub.Publish(MakeSet().Get());
        EXPECT_EQ(yObject_LiveCount(), before + 2);
        releaser = std::thread([&] {
            while (yObject_LiveCount() != before + 1) {
                std::this_thread::yield();
            }
            leave.Set();
        });
    }
    releaser.join();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(yObject_LiveCount(), before);
}
