#include "Tests/Support/CountAllocations.h"
#include "Vor/LogOutput.h"
#include "Vor/Logging.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using Tests::AllocationsOf;

class LogCostTest : public testing::Test {
protected:
    LogCostTest() {
        Vor::Logging::SetMinimumLevel(Vor::LevelWarning);
        Vor::LogOutput::Set([](const Vor::LogRecord&) {});
    }
    ~LogCostTest() override {
        Vor::LogOutput::Set(nullptr);
        Vor::Logging::SetMinimumLevel(Vor::LevelInfo);
    }

    const std::string text = std::string(100, 'x');
};

TEST_F(LogCostTest, AnEntryThatGoesNowhereAllocatesNothing) {
    EXPECT_EQ(AllocationsOf([&] { Vor::LogInfo("%1$s is %2$d of %3$s", text, 3, text.c_str()); }), 0U);
    EXPECT_EQ(AllocationsOf([&] { Vor::LogDebug("%s", text); }), 0U);
    EXPECT_EQ(AllocationsOf([&] { Vor_Log(1, "path", Vor::LevelTrace, "title", "%s %f", text, 1.5); }), 0U);
}

TEST_F(LogCostTest, AnEntryThatGoesSomewhereIsMade) {
    EXPECT_GT(AllocationsOf([&] { Vor::LogWarning("%s", text); }), 0U);
    EXPECT_GT(AllocationsOf([&] { Vor::LogUser(Vor::UserInfo, "VorControl", "%s", text); }), 0U);
    const Vor::LogCapture capture;
    Vor::LogInfo("%s", text);
    EXPECT_TRUE(capture.Contains(Vor::LevelInfo, text));
}

} // namespace
