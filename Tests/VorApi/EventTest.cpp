#include "VorApi/Event.h"

#include <atomic>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

TEST(Event, CallsInOrderOfAddingWithTheArguments) {
    Vor::Event<int, std::string> event;
    std::vector<std::string> calls;
    event.Add([&](int number, const std::string& text) { calls.push_back("a" + std::to_string(number) + text); });
    event.Add([&](int number, const std::string& text) { calls.push_back("b" + std::to_string(number) + text); });
    event.Raise(1, "x");
    event(2, "y");
    EXPECT_EQ(calls, (std::vector<std::string>{"a1x", "b1x", "a2y", "b2y"}));
    EXPECT_EQ(event.Count(), 2U);
}

TEST(Event, RaiseToAllCallsEachAndThrowsTheFirstFailure) {
    Vor::Event<int> event;
    std::vector<int> calls;
    event.Add([&](int number) { calls.push_back(number); });
    event.Add([&](int) { throw std::runtime_error("first"); });
    event.Add([&](int) { throw 5; });
    auto last = event.Add([&](int number) { calls.push_back(-number); });
    try {
        event.RaiseToAll(3);
        FAIL();
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "first");
    }
    EXPECT_EQ(calls, (std::vector<int>{3, -3}));
    event.Remove(last);
    EXPECT_THROW(event.RaiseToAll(4), std::runtime_error);
    EXPECT_EQ(calls.back(), 4);
}

TEST(Event, WithoutCallbacksRaisesNothing) {
    const Vor::Event<> event;
    event.Raise();
    event.RaiseToAll();
    EXPECT_EQ(event.Count(), 0U);
}

TEST(Event, EmptyFunctionIsNotAddedAndItsIdDoesNothing) {
    Vor::Event<> event;
    int calls = 0;
    event.Add([&] { ++calls; });
    auto id = event.Add(nullptr);
    EXPECT_FALSE(id.IsSet());
    EXPECT_EQ(event.Count(), 1U);
    event.Remove(id);
    event.Raise();
    EXPECT_EQ(calls, 1);
}

TEST(Event, RemovalTakesExactlyThatCallbackAndClearsTheId) {
    Vor::Event<> event;
    std::vector<int> calls;
    auto first = event.Add([&] { calls.push_back(1); });
    auto second = event.Add([&] { calls.push_back(2); });
    auto third = event.Add([&] { calls.push_back(3); });
    EXPECT_TRUE(second.IsSet());
    event.Remove(second);
    EXPECT_FALSE(second.IsSet());
    event.Remove(second);
    event.Raise();
    EXPECT_EQ(calls, (std::vector<int>{1, 3}));
    EXPECT_TRUE(first.IsSet());
    EXPECT_TRUE(third.IsSet());
}

TEST(Event, CopyOfAnIdWhoseCallbackIsGoneIsHarmless) {
    Vor::Event<> event;
    auto id = event.Add([] {});
    auto copy = id;
    event.Remove(id);
    event.Add([] {});
    event.Remove(copy);
    EXPECT_FALSE(copy.IsSet());
    EXPECT_EQ(event.Count(), 1U);
}

TEST(Event, IdOfAnotherEventIsHarmless) {
    Vor::Event<> event;
    Vor::Event<> other;
    event.Add([] {});
    auto id = other.Add([] {});
    event.Remove(id);
    EXPECT_EQ(event.Count(), 1U);
    EXPECT_EQ(other.Count(), 1U);
}

TEST(Event, IdOutlivesItsEvent) {
    auto event = std::make_unique<Vor::Event<>>();
    auto id = event->Add([] {});
    event.reset();
    Vor::Event<> other;
    other.Remove(id);
    EXPECT_FALSE(id.IsSet());
}

TEST(Event, CallbackRemovedDuringTheRaiseIsNotCalledAnyMore) {
    Vor::Event<> event;
    std::vector<int> calls;
    Vor::Event<>::CallbackId first;
    Vor::Event<>::CallbackId second;
    first = event.Add([&] {
        calls.push_back(1);
        event.Remove(first);
        event.Remove(second);
    });
    second = event.Add([&] { calls.push_back(2); });
    event.Add([&] { calls.push_back(3); });
    event.Raise();
    event.Raise();
    EXPECT_EQ(calls, (std::vector<int>{1, 3, 3}));
}

TEST(Event, CallbackAddedDuringTheRaiseWaitsForTheNextOne) {
    Vor::Event<> event;
    int added = 0;
    auto id = event.Add([&] { event.Add([&] { ++added; }); });
    event.Raise();
    EXPECT_EQ(added, 0);
    event.Remove(id);
    event.Raise();
    EXPECT_EQ(added, 1);
}

TEST(Event, ExceptionEndsTheWalkAndPassesOn) {
    Vor::Event<> event;
    int calls = 0;
    event.Add([] { throw std::runtime_error("x"); });
    event.Add([&] { ++calls; });
    EXPECT_THROW(event.Raise(), std::runtime_error);
    EXPECT_EQ(calls, 0);
}

TEST(Event, CallbackMayDestroyTheEventThatCallsIt) {
    std::map<int, Vor::Event<>> events;
    int calls = 0;
    events[1].Add([&] {
        ++calls;
        events.clear();
    });
    events[1].Add([&] { ++calls; });
    events[1].Raise();
    EXPECT_EQ(calls, 2);
}

TEST(Event, RemovalDestroysTheFunction) {
    Vor::Event<> event;
    auto token = std::make_shared<int>(1);
    auto id = event.Add([token] {});
    EXPECT_EQ(token.use_count(), 2);
    event.Remove(id);
    EXPECT_EQ(token.use_count(), 1);
}

TEST(Event, ThreadsMayAddRemoveAndRaiseAtOnce) {
    Vor::Event<int> event;
    std::atomic<int> sum = 0;
    std::atomic<bool> stop = false;
    std::thread raiser([&] {
        while (!stop) {
            event.Raise(1);
        }
    });
    std::vector<std::thread> changers;
    for (int i = 0; i < 2; ++i) {
        changers.emplace_back([&] {
            for (int n = 0; n < 2000; ++n) {
                auto id = event.Add([&](int number) { sum += number; });
                event.Remove(id);
            }
        });
    }
    for (auto& changer : changers) {
        changer.join();
    }
    stop = true;
    raiser.join();
    EXPECT_EQ(event.Count(), 0U);
}
