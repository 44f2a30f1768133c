#include "VorApi/AtScopeEnd.h"

#include "Vor/Logging.h"

#include <stdexcept>

#include <gtest/gtest.h>

TEST(AtScopeEndTest, RunsItsWorkOnceWhenTheScopeEnds) {
    int runs = 0;
    {
        const Vor::AtScopeEnd atEnd([&] { ++runs; });
        EXPECT_EQ(runs, 0);
    }
    EXPECT_EQ(runs, 1);
}

TEST(AtScopeEndTest, EndRunsItsWorkAtOnceAndOnlyThen) {
    int runs = 0;
    {
        Vor::AtScopeEnd atEnd([&] { ++runs; });
        atEnd.End();
        EXPECT_EQ(runs, 1);
    }
    EXPECT_EQ(runs, 1);
}

TEST(AtScopeEndTest, EndThrowsWhatItsWorkThrows) {
    int runs = 0;
    const auto fail = [&] {
        ++runs;
        throw std::runtime_error("second");
    };
    {
        Vor::AtScopeEnd atEnd(fail);
        EXPECT_THROW(atEnd.End(), std::runtime_error);
    }
    EXPECT_EQ(runs, 1);
}

TEST(AtScopeEndTest, RunsItsWorkWhenAnExceptionLeavesTheScope) {
    int runs = 0;
    try {
        const Vor::AtScopeEnd atEnd([&] { ++runs; });
        throw std::runtime_error("first");
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "first");
    }
    EXPECT_EQ(runs, 1);
}

TEST(AtScopeEndTest, WhatItsWorkThrowsIsLoggedAndSwallowed) {
    const Vor::LogCapture log;
    {
        const Vor::AtScopeEnd atEnd([] { throw std::runtime_error("second"); });
    }
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown in destructor"), 1U);
    EXPECT_EQ(log.Count(Vor::LevelError, "Caught std::runtime_error: second"), 1U);
}
