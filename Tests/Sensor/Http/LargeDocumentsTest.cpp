#include "Sensor/Http/LargeDocuments.h"

#include "Vor/AsyncRunner.h"
#include "Vor/MainLoop.h"

#include <chrono>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t MiB = std::size_t{1024} * 1024;

class LargeDocumentsTest : public testing::Test {
protected:
    bool Wait(const std::string& path) {
        return large.Wait({.name = path,
                           .isWanted = [this, path] { return path != gone; },
                           .start =
                               [this, path](LargeDocuments::Turn turn) {
                                   started.push_back(path);
                                   turns.push_back(std::move(turn));
                               },
                           .drop = [this, path] { dropped.push_back(path); }});
    }

    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    std::shared_ptr<Budget> budget = std::make_shared<Budget>(100 * MiB);
    Vor::AsyncRunner runner;
    LargeDocuments large{*budget, runner};
    std::vector<std::string> started;
    std::vector<std::string> dropped;
    std::vector<LargeDocuments::Turn> turns;
    std::string gone;
};

TEST_F(LargeDocumentsTest, ADocumentIsLargeAsLongAsItsTextIs) {
    EXPECT_FALSE(large.IsLarge("/a"));
    large.Note("/a", MiB);
    EXPECT_FALSE(large.IsLarge("/a"));
    large.Note("/a", MiB + 1);
    EXPECT_TRUE(large.IsLarge("/a"));
    EXPECT_EQ(large.TextSize("/a"), MiB + 1);
    EXPECT_FALSE(large.IsLarge("/b"));
    large.Note("/a", 1);
    EXPECT_FALSE(large.IsLarge("/a"));
    EXPECT_EQ(large.TextSize("/a"), 0U);
}

TEST_F(LargeDocumentsTest, ATreeIsLargerThanItsText) {
    large.NoteTree("/a", 2 * MiB);
    EXPECT_FALSE(large.IsLarge("/a"));
    large.NoteTree("/a", 8 * MiB);
    EXPECT_TRUE(large.IsLarge("/a"));
}

TEST_F(LargeDocumentsTest, OneIsMadeAtATimeInTheOrderOfTheRequests) {
    EXPECT_TRUE(Wait("/a"));
    EXPECT_TRUE(Wait("/b"));
    EXPECT_TRUE(started.empty());
    loop.RunReady();
    EXPECT_EQ(started, std::vector<std::string>{"/a"});
    std::thread([this] { turns.clear(); }).join();
    EXPECT_EQ(started.size(), 1U);
    loop.RunReady();
    EXPECT_EQ(started, (std::vector<std::string>{"/a", "/b"}));
}

TEST_F(LargeDocumentsTest, WhatTheMainLoopHasToDoGoesFirst) {
    std::size_t startedBefore = 1;
    loop.Post([&] { startedBefore = started.size(); });
    Wait("/a");
    loop.RunReady();
    EXPECT_EQ(startedBefore, 0U);
    EXPECT_EQ(started.size(), 1U);
}

TEST_F(LargeDocumentsTest, OneThatProvedToBeLargeTakesATurn) {
    auto turn = large.BeginTurn();
    auto copy = turn;
    Wait("/a");
    loop.RunReady();
    turn.reset();
    loop.RunReady();
    EXPECT_TRUE(started.empty());
    copy.reset();
    loop.RunReady();
    EXPECT_EQ(started.size(), 1U);
}

TEST_F(LargeDocumentsTest, SixteenMayWait) {
    for (std::size_t i = 0; i < LargeDocuments::MaxWaiting; ++i) {
        EXPECT_TRUE(Wait("/" + std::to_string(i)));
    }
    EXPECT_FALSE(Wait("/more"));
    gone = "/7";
    EXPECT_TRUE(Wait("/more"));
    EXPECT_EQ(dropped, std::vector<std::string>{"/7"}) << "at once";
    EXPECT_FALSE(Wait("/evenMore"));
}

TEST_F(LargeDocumentsTest, NothingIsMadeForAClientThatHasGone) {
    Wait("/a");
    Wait("/b");
    gone = "/a";
    loop.RunReady();
    EXPECT_EQ(started, std::vector<std::string>{"/b"});
    EXPECT_EQ(dropped, std::vector<std::string>{"/a"});
}

TEST_F(LargeDocumentsTest, WhatHasWaitedForTooLongIsDropped) {
    auto turn = large.BeginTurn();
    Wait("/a");
    loop.Advance(1s);
    Wait("/b");
    loop.Advance(LargeDocuments::MaxWaitTime - 1s - 1us);
    EXPECT_TRUE(dropped.empty());
    loop.Advance(1us);
    EXPECT_EQ(dropped, std::vector<std::string>{"/a"});
    turn.reset();
    loop.RunReady();
    EXPECT_EQ(started, std::vector<std::string>{"/b"});
    loop.Advance(LargeDocuments::MaxWaitTime);
    EXPECT_EQ(dropped.size(), 1U) << "what has started isn't dropped";
}

TEST_F(LargeDocumentsTest, WhatIsDroppedLetsTheNextOneStart) {
    large.Note("/a", 30 * MiB);
    large.Note("/b", 10 * MiB);
    Budget::Share unsent(budget);
    unsent.Change(50 * MiB);
    Wait("/a");
    loop.Advance(1s);
    Wait("/b");
    loop.Advance(LargeDocuments::MaxWaitTime - 1s - 1us);
    EXPECT_TRUE(started.empty()) << "/a is the first, and has no room";
    loop.Advance(1us);
    EXPECT_EQ(dropped, std::vector<std::string>{"/a"});
    EXPECT_EQ(started, std::vector<std::string>{"/b"});
}

TEST_F(LargeDocumentsTest, TheBudgetMustHaveRoomForTreeAndText) {
    large.Note("/a", 10 * MiB);
    Budget::Share unsent(budget);
    unsent.Change(70 * MiB);
    Wait("/a");
    loop.RunReady();
    EXPECT_TRUE(started.empty());
    unsent.Change(65 * MiB);
    loop.RunReady();
    EXPECT_TRUE(started.empty());
    unsent.Change(60 * MiB);
    loop.RunReady();
    EXPECT_EQ(started.size(), 1U);
}

TEST_F(LargeDocumentsTest, ATurnMayOutliveIt) {
    auto other = std::make_unique<LargeDocuments>(*budget, runner);
    auto turn = other->BeginTurn();
    other.reset();
    loop.RunReady();
    turn.reset();
    EXPECT_EQ(loop.RunReady(), 0U);
}

} // namespace
} // namespace Sensor::Http
