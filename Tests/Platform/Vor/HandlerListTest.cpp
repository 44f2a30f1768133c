#include "Vor/HandlerList.h"

#include <functional>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

using Vor::Properties::HandlerId;
using Vor::Properties::Internal::HandlerList;

TEST(HandlerListTest, RunsInOrderOfAdding) {
    HandlerList<int> list;
    std::string order;
    list.Add([&](int n) { order += "a" + std::to_string(n); });
    list.Add([&](int n) { order += "b" + std::to_string(n); });
    list.Run(3);
    EXPECT_EQ(order, "a3b3");
    EXPECT_EQ(list.Count(), 2U);
}

TEST(HandlerListTest, WithoutHandlersIsOnePointer) {
    HandlerList<int> list;
    EXPECT_EQ(sizeof(list), sizeof(void*));
    list.Run(1);
    EXPECT_EQ(list.Count(), 0U);
}

TEST(HandlerListTest, EmptyHandlerIsKeptAndFailsWhenRun) {
    HandlerList<> list;
    const HandlerId id = list.Add({});
    EXPECT_NE(id, 0U);
    EXPECT_EQ(list.Count(), 1U);
    EXPECT_THROW(list.Run(), std::bad_function_call);
}

TEST(HandlerListTest, RemoveClearsTheIdAndIgnoresUnknownOnes) {
    HandlerList<> list;
    int runs = 0;
    HandlerId id = list.Add([&] { ++runs; });
    HandlerId unknown = id + 7;
    list.Remove(unknown);
    EXPECT_EQ(unknown, 0U);
    EXPECT_EQ(list.Count(), 1U);
    list.Remove(id);
    EXPECT_EQ(id, 0U);
    list.Remove(id);
    list.Run();
    EXPECT_EQ(runs, 0);
}

TEST(HandlerListTest, RemoveOnAnUnusedListDoesNothing) {
    HandlerList<> list;
    HandlerId id = 5;
    list.Remove(id);
    EXPECT_EQ(id, 0U);
}

TEST(HandlerListTest, HandlerThatRemovesItselfRunsOnceAndTheNextStillRuns) {
    HandlerList<> list;
    std::string order;
    HandlerId first = 0;
    first = list.Add([&] {
        order += "a";
        list.Remove(first);
        order += "A";
    });
    list.Add([&] { order += "b"; });
    list.Run();
    list.Run();
    EXPECT_EQ(order, "aAbb");
    EXPECT_EQ(list.Count(), 1U);
}

TEST(HandlerListTest, HandlerRemovedByAnEarlierOneOfTheRoundDoesNotRun) {
    HandlerList<> list;
    std::string order;
    HandlerId second = 0;
    list.Add([&] {
        order += "a";
        list.Remove(second);
    });
    second = list.Add([&] { order += "b"; });
    list.Run();
    EXPECT_EQ(order, "a");
}

TEST(HandlerListTest, HandlerAddedDuringARoundRunsAtItsEnd) {
    HandlerList<> list;
    std::string order;
    bool added = false;
    list.Add([&] {
        order += "a";
        if (!added) {
            added = true;
            list.Add([&] { order += "c"; });
        }
    });
    list.Add([&] { order += "b"; });
    list.Run();
    EXPECT_EQ(order, "abc");
}

TEST(HandlerListTest, FailureEndsTheRoundAndLeavesTheListUsable) {
    HandlerList<> list;
    std::string order;
    HandlerId failing = list.Add([&] {
        order += "x";
        throw std::runtime_error("handler");
    });
    list.Add([&] { order += "b"; });
    EXPECT_THROW(list.Run(), std::runtime_error);
    list.Remove(failing);
    EXPECT_EQ(list.Count(), 1U);
    list.Run();
    EXPECT_EQ(order, "xb");
}
