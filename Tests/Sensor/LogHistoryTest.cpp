#include "Sensor/LogHistory.h"

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

TEST(LogHistory, NumbersTheEntriesForUsers) {
    Vor::LogUser(Vor::UserInfo, "Before", "Nobody keeps it yet.");
    const LogHistory history;
    EXPECT_EQ(history.LastNumber(), 0U);
    EXPECT_TRUE(history.After(0).empty());
    const auto begin = std::chrono::system_clock::now();
    Vor::LogUser(Vor::UserInfo, "HTTP", "It is %s.", "served");
    Vor::LogError("Not for users.");
    Vor::LogUser(Vor::UserWarning, "Disk", "Nearly full.");
    Vor::LogUser(Vor::UserError, "Disk", "Full.");
    const auto entries = history.After(0);
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].number, 1U);
    EXPECT_EQ(entries[0].level, LogHistory::Level::Info);
    EXPECT_EQ(entries[0].title, "HTTP");
    EXPECT_EQ(entries[0].text, "It is served.");
    EXPECT_GE(entries[0].time, begin);
    EXPECT_LE(entries[0].time, std::chrono::system_clock::now());
    EXPECT_EQ(entries[1].level, LogHistory::Level::Warning);
    EXPECT_EQ(entries[2].level, LogHistory::Level::Error);
    EXPECT_EQ(entries[2].number, 3U);
    EXPECT_EQ(history.LastNumber(), 3U);
    EXPECT_EQ(history.After(2).size(), 1U);
    EXPECT_EQ(history.After(2)[0].text, "Full.");
    EXPECT_TRUE(history.After(3).empty());
    EXPECT_TRUE(history.After(UINT64_MAX).empty());
}

TEST(LogHistory, WhatClientsSendIsPrintableAndCut) {
    const LogHistory history;
    Vor::LogUser(Vor::UserInfo, "a\nb", "%s", "\x1b[31m\xff" + std::string(1'000'000, 'x'));
    const auto entry = history.After(0).at(0);
    EXPECT_EQ(entry.title, "a\\nb");
    EXPECT_EQ(entry.text.find("\\x1b[31m\\xffxxx"), 0U);
    EXPECT_NE(entry.text.find("bytes left out"), std::string::npos);
    EXPECT_LT(entry.text.size(), 1100U);
}

TEST(LogHistory, KeepsTheLatest) {
    const LogHistory history;
    for (std::size_t i = 0; i < LogHistory::Capacity + 5; ++i) {
        Vor::LogUser(Vor::UserInfo, "t", "entry");
    }
    const auto entries = history.After(0);
    ASSERT_EQ(entries.size(), LogHistory::Capacity);
    EXPECT_EQ(entries.front().number, 6U);
    EXPECT_EQ(entries.back().number, LogHistory::Capacity + 5);
    EXPECT_EQ(history.After(3).size(), LogHistory::Capacity);
}

TEST(LogHistory, ThreadsLogWhileItIsReadAndEnds) {
    auto history = std::make_unique<LogHistory>();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int k = 0; k < 200; ++k) {
                Vor::LogUser(Vor::UserInfo, "t", "entry");
            }
        });
    }
    std::uint64_t last = 0;
    while (last < 100) {
        for (const auto& entry : history->After(last)) {
            EXPECT_EQ(entry.number, last + 1);
            last = entry.number;
        }
    }
    history.reset();
    for (auto& thread : threads) {
        thread.join();
    }
}

} // namespace
} // namespace Sensor
