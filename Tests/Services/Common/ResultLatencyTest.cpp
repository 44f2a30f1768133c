#include "Services/Common/ResultLatency.h"

#include "Tests/Support/CountAllocations.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace Services::Common {
namespace {

constexpr std::uint64_t Microsecond = 1'000;
constexpr std::uint64_t Second = 1'000'000'000;
constexpr std::uint64_t Start = 1'000 * Second;

/// Microseconds.
void Add(ResultLatency& latency, std::uint64_t value, std::uint64_t now = Start) {
    latency.Add(now - value * Microsecond, now);
}

std::uint64_t CountOf(const ResultLatency::Figures& figures) {
    return std::accumulate(figures.counts.begin(), figures.counts.end(), std::uint64_t{0});
}

TEST(ResultLatency, IsNothingWithoutResults) {
    const ResultLatency::Figures figures = ResultLatency().Read(Start);
    EXPECT_EQ(CountOf(figures), 0U);
    EXPECT_EQ(figures.sum, 0U);
    EXPECT_EQ(figures.recent, 0U);
    EXPECT_EQ(figures.median, 0U);
    EXPECT_EQ(figures.percentile99, 0U);
    EXPECT_EQ(figures.greatest, 0U);
}

TEST(ResultLatency, ABucketHasWhatIsUpToItsBound) {
    for (std::size_t i = 0; i < ResultLatency::Bounds.size(); ++i) {
        ResultLatency latency;
        Add(latency, ResultLatency::Bounds[i]);
        Add(latency, ResultLatency::Bounds[i] + 1);
        const ResultLatency::Figures figures = latency.Read(Start);
        EXPECT_EQ(figures.counts[i], 1U) << i;
        EXPECT_EQ(figures.counts[i + 1], 1U) << i;
        EXPECT_EQ(CountOf(figures), 2U);
        EXPECT_EQ(figures.sum, 2 * ResultLatency::Bounds[i] + 1);
    }
}

TEST(ResultLatency, OneResultIsAllQuantiles) {
    for (const std::uint64_t value : {0ULL, 1ULL, 7ULL, 8ULL, 1'234'567ULL, 67'108'863ULL, 67'108'864ULL, 1ULL << 40}) {
        ResultLatency latency;
        Add(latency, value, 2'000'000 * Second);
        const ResultLatency::Figures figures = latency.Read(2'000'000 * Second);
        EXPECT_EQ(figures.recent, 1U) << value;
        EXPECT_EQ(figures.median, value);
        EXPECT_EQ(figures.percentile99, value);
        EXPECT_EQ(figures.greatest, value);
    }
}

TEST(ResultLatency, WhatIsPublishedLaterThanItIsReadTakesNoTime) {
    ResultLatency latency;
    latency.Add(Start + Second, Start);
    EXPECT_EQ(latency.Read(Start).greatest, 0U);
}

TEST(ResultLatency, QuantilesAreAtMostAnEighthTooGreat) {
    std::mt19937 random(1);
    for (const std::size_t count : {2U, 3U, 99U, 100U, 101U, 5000U}) {
        ResultLatency latency;
        std::vector<std::uint64_t> values;
        for (std::size_t i = 0; i < count; ++i) {
            values.push_back(
                static_cast<std::uint64_t>(std::pow(10, 7.5 * static_cast<double>(random()) / 4294967296.0)));
            Add(latency, values.back(), Start + i * Second / 1000);
        }
        std::ranges::sort(values);
        const ResultLatency::Figures figures = latency.Read(Start + count * Second / 1000);
        const auto expect = [&](std::uint64_t quantile, std::size_t percent) {
            const std::uint64_t exact = values[(count * percent + 99) / 100 - 1];
            EXPECT_GE(quantile, exact) << percent << " of " << count;
            EXPECT_LE(quantile, exact + exact / 8) << percent << " of " << count;
        };
        EXPECT_EQ(figures.recent, count);
        expect(figures.median, 50);
        expect(figures.percentile99, 99);
        EXPECT_EQ(figures.greatest, values.back());
    }
}

TEST(ResultLatency, ForgetsTheQuantilesAfterTenSecondsButNotTheHistogram) {
    ResultLatency latency;
    Add(latency, 900, Start);
    Add(latency, 100, Start + 5 * Second);
    EXPECT_EQ(latency.Read(Start + 9 * Second).recent, 2U);
    EXPECT_EQ(latency.Read(Start + 9 * Second).greatest, 900U);
    EXPECT_EQ(latency.Read(Start + 10 * Second).recent, 1U);
    EXPECT_EQ(latency.Read(Start + 10 * Second).greatest, 100U);
    EXPECT_EQ(latency.Read(Start + 15 * Second).recent, 0U);
    EXPECT_EQ(latency.Read(Start + 15 * Second).median, 0U);
    Add(latency, 200, Start + 20 * Second);
    const ResultLatency::Figures figures = latency.Read(Start + 20 * Second);
    EXPECT_EQ(figures.recent, 1U) << "the place of a former second is used again";
    EXPECT_EQ(figures.greatest, 200U);
    EXPECT_EQ(CountOf(figures), 3U);
    EXPECT_EQ(figures.sum, 1200U);
}

TEST(ResultLatency, BeginsAnewAfterAReset) {
    ResultLatency latency;
    Add(latency, 500);
    latency.Reset();
    const ResultLatency::Figures figures = latency.Read(Start);
    EXPECT_EQ(CountOf(figures), 0U);
    EXPECT_EQ(figures.sum, 0U);
    EXPECT_EQ(figures.recent, 0U);
    EXPECT_EQ(figures.greatest, 0U);
}

TEST(ResultLatency, AllocatesNothing) {
    ResultLatency latency;
    EXPECT_EQ(Tests::AllocationsOf([&] {
                  for (std::uint64_t i = 0; i < 100; ++i) {
                      Add(latency, i, Start + i * Second / 3);
                  }
                  latency.Read(Start);
              }),
              0U);
}

} // namespace
} // namespace Services::Common
