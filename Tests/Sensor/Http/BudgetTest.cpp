#include "Sensor/Http/Budget.h"

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

TEST(BudgetTest, ASharesEndGivesItBack) {
    const auto budget = std::make_shared<Budget>(100);
    {
        Budget::Share one(budget);
        Budget::Share other(budget);
        one.Change(60);
        other.Change(20);
        one.Change(50);
        EXPECT_EQ(budget->Used(), 70U);
        EXPECT_TRUE(budget->HasRoom(30));
        EXPECT_FALSE(budget->HasRoom(31));
    }
    EXPECT_EQ(budget->Used(), 0U);
}

TEST(BudgetTest, WhatIsLargerThanAllOfItIsMadeAlone) {
    const auto budget = std::make_shared<Budget>(100);
    EXPECT_TRUE(budget->HasRoom(1000));
    Budget::Share share(budget);
    share.Change(1);
    EXPECT_FALSE(budget->HasRoom(1000));
    share.Change(1000);
    EXPECT_FALSE(budget->HasRoom(0));
    share.Change(100);
    EXPECT_FALSE(budget->HasRoom(0));
    share.Change(99);
    EXPECT_TRUE(budget->HasRoom(0));
}

TEST(BudgetTest, WhoWaitsIsCalledOnceWhenSomethingIsGivenBack) {
    const auto budget = std::make_shared<Budget>(100);
    Budget::Share share(budget);
    Budget::Share other(budget);
    share.Change(90);
    int calls = 0;
    EXPECT_TRUE(budget->HasRoom(10, [&] { ++calls; }));
    EXPECT_FALSE(budget->HasRoom(11, [&] { ++calls; }));
    other.Change(5);
    EXPECT_EQ(calls, 0);
    share.Change(80);
    share.Change(70);
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(budget->HasRoom(50, [&] { ++calls; }));
    budget->StopWaiting();
    share.Change(0);
    EXPECT_EQ(calls, 1);
}

TEST(BudgetTest, ATextKeepsItsShareUntilItIsReleased) {
    const auto budget = std::make_shared<Budget>(100);
    auto share = std::make_shared<Budget::Share>(budget);
    share->Change(7);
    std::string text(1000, 'a');
    const char* const place = text.data();
    auto held = Budget::Hold(std::move(text), std::move(share));
    auto copy = held;
    EXPECT_EQ(held->data(), place);
    EXPECT_EQ(budget->Used(), held->capacity());
    held.reset();
    EXPECT_NE(budget->Used(), 0U);
    copy.reset();
    EXPECT_EQ(budget->Used(), 0U);
}

} // namespace
} // namespace Sensor::Http
