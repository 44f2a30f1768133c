#include "Vor/LogOutput.h"

#include "Vor/Logging.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using Vor::LogOutput;

TEST(LogOutputTest, ReplacementGetsTheEntriesFromTheMinimumLevelUpUntilItIsRemoved) {
    std::vector<std::string> written;
    testing::internal::CaptureStderr();
    LogOutput::Set([&](const Vor::LogRecord& record) { written.push_back(record.text); });
    Vor::LogDebug("below");
    Vor::LogWarning("one");
    Vor::LogUser(Vor::UserInfo, "VorControl", "two");
    LogOutput::Set({});
    Vor::LogError("three");
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_EQ(written, (std::vector<std::string>{"one", "two"}));
    EXPECT_EQ(output.find("one"), std::string::npos);
    EXPECT_NE(output.find("three"), std::string::npos);
}

TEST(LogOutputTest, FailureOfTheReplacementStaysInside) {
    LogOutput::Set([](const Vor::LogRecord&) { throw std::runtime_error("output"); });
    EXPECT_NO_THROW(Vor::LogError("text"));
    LogOutput::Set({});
}
