#include "Vor/Logging.h"

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using Vor::LogCapture;
using Vor::Logging;

TEST(LoggingTest, RecordCarriesLevelTitleRawFormatAndText) {
    const LogCapture log;
    Vor_Log(7, "some/file.cpp", 0x8000000000000001, "Title", "%1$s is %2$d", "x", 3);
    const auto records = log.Records();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].level, 0x8000000000000001);
    EXPECT_EQ(records[0].title, "Title");
    EXPECT_EQ(records[0].format, "%1$s is %2$d");
    EXPECT_EQ(records[0].text, "x is 3");
    EXPECT_EQ(records[0].path, "some/file.cpp");
    EXPECT_EQ(records[0].line, 7);
}

TEST(LoggingTest, HelpersUseTheirLevelWordAndTheFunctionThatLogs) {
    const LogCapture log;
    Vor::LogInfo("a");
    Vor::LogWarning("b %d", 1);
    Vor::LogError("c");
    Vor::LogDebug("d");
    Vor::LogUser(Vor::UserWarning, "VorControl", "e");
    const auto records = log.Records();
    ASSERT_EQ(records.size(), 5U);
    EXPECT_EQ(records[0].level, 0x8000000000000000);
    EXPECT_EQ(records[1].level, 0x8000000000000001);
    EXPECT_EQ(records[2].level, 0x8000000000000002);
    EXPECT_EQ(records[3].level, 0x8000000000000004);
    EXPECT_EQ(records[4].level, 0x8000000100000001);
    EXPECT_EQ(records[4].title, "VorControl");
    EXPECT_NE(records[0].title.find("HelpersUseTheirLevelWord"), std::string::npos);
    EXPECT_NE(records[0].path.find("LoggingTest.cpp"), std::string::npos);
}

TEST(LoggingTest, UserLevelWordsHaveBit32) {
    EXPECT_EQ(Vor::UserInfo, 0x8000000100000000);
    EXPECT_EQ(Vor::UserWarning, 0x8000000100000001);
    EXPECT_EQ(Vor::UserError, 0x8000000100000002);
}

TEST(LoggingTest, NullTextsAreTolerated) {
    const LogCapture log;
    Vor_Log(0, nullptr, Vor::LevelInfo, nullptr, nullptr);
    ASSERT_EQ(log.Records().size(), 1U);
    EXPECT_EQ(log.Records()[0].text, "");
}

TEST(LoggingTest, CapturesNestAndEachSeesItsOwnTime) {
    const LogCapture outer;
    Vor::LogInfo("one");
    {
        const LogCapture inner;
        Vor::LogInfo("two");
        EXPECT_FALSE(inner.Contains("one"));
        EXPECT_TRUE(inner.Contains("two"));
    }
    Vor::LogInfo("three");
    EXPECT_EQ(outer.Records().size(), 3U);
}

TEST(LoggingTest, CaptureSeesWhatIsBelowTheMinimumLevel) {
    Logging::SetMinimumLevel(Vor::LevelError);
    const LogCapture log;
    Vor::LogDebug("quiet");
    EXPECT_TRUE(log.Contains(Vor::LevelDebug, "quiet"));
    Logging::SetMinimumLevel(Vor::LevelInfo);
}

TEST(LoggingTest, OutputGoesToStandardErrorFromTheMinimumLevelUp) {
    testing::internal::CaptureStderr();
    Vor::LogDebug("below");
    Vor::LogError("above");
    Logging::SetMinimumLevel(Vor::LevelDebug);
    Vor::LogDebug("now above");
    Logging::SetMinimumLevel(Vor::LevelInfo);
    Vor::LogError("last");
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_EQ(output.find("below"), std::string::npos);
    EXPECT_NE(output.find("above"), std::string::npos);
    EXPECT_NE(output.find("now above"), std::string::npos);
}

TEST(LoggingTest, EntriesForTheUserGoToTheOutputWhateverTheMinimumLevel) {
    testing::internal::CaptureStderr();
    Logging::SetMinimumLevel(Vor::LevelError);
    Vor::LogUser(Vor::UserInfo, "VorControl", "for the user");
    Vor::LogWarning("below");
    Logging::SetMinimumLevel(Vor::LevelInfo);
    Vor::LogError("last");
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_NE(output.find("for the user"), std::string::npos);
    EXPECT_EQ(output.find("below"), std::string::npos);
}

TEST(LoggingTest, OutputNamesTheFunctionWithoutItsArguments) {
    testing::internal::CaptureStderr();
    Vor_Log(0, "", Vor::LevelError, "std::vector<int, std::allocator<int> > Space::Class::Call(int) const", "text");
    EXPECT_NE(testing::internal::GetCapturedStderr().find("] Space::Class::Call: text"), std::string::npos);
}

TEST(LoggingTest, OutputKeepsTitles) {
    testing::internal::CaptureStderr();
    Vor::LogUser(Vor::UserError, "Params validation", "text");
    Vor_Log(0, "", Vor::LevelError, "Some title", "more");
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_NE(output.find("[user] Params validation: text"), std::string::npos);
    EXPECT_NE(output.find("] Some title: more"), std::string::npos);
}

TEST(LoggingTest, TextWithBracesIsPrintedAsItIs) {
    testing::internal::CaptureStderr();
    Vor::LogError("{} {broken");
    EXPECT_NE(testing::internal::GetCapturedStderr().find("{} {broken"), std::string::npos);
}

TEST(LoggingTest, UserLogKeepsUserEntriesOnlyAndTheLatestOfThem) {
    Logging::ClearUserRecords();
    Vor::LogInfo("not for the user");
    for (std::size_t i = 0; i < Logging::MaxUserRecords + 5; ++i) {
        Vor_Log(0, "", Vor::UserInfo, "VorControl", "entry %zu", i);
    }
    const auto records = Logging::UserRecords();
    ASSERT_EQ(records.size(), Logging::MaxUserRecords);
    EXPECT_EQ(records.front().text, "entry 5");
    EXPECT_EQ(records.back().text, "entry 1004");
    Logging::ClearUserRecords();
    EXPECT_TRUE(Logging::UserRecords().empty());
}

TEST(LoggingTest, UserHandlerGetsUserEntriesUntilItIsRemoved) {
    std::vector<std::string> notified;
    const auto id = Logging::AddUserHandler([&](const Vor::LogRecord& record) { notified.push_back(record.text); });
    Vor::LogUser(Vor::UserError, "VorControl", "one");
    Vor::LogError("not for the user");
    Logging::RemoveUserHandler(id);
    Vor::LogUser(Vor::UserError, "VorControl", "two");
    EXPECT_EQ(notified, std::vector<std::string>{"one"});
}

TEST(LoggingTest, FailureOfAUserHandlerStaysInside) {
    const auto id = Logging::AddUserHandler([](const Vor::LogRecord&) { throw std::runtime_error("handler"); });
    EXPECT_NO_THROW(Vor::LogUser(Vor::UserInfo, "VorControl", "one"));
    Logging::RemoveUserHandler(id);
}

TEST(LoggingTest, UserHandlerMayLogAndRemoveItself) {
    const LogCapture log;
    Logging::UserHandlerId id = 0;
    id = Logging::AddUserHandler([&](const Vor::LogRecord&) {
        Logging::RemoveUserHandler(id);
        Vor::LogInfo("from the handler");
    });
    Vor::LogUser(Vor::UserInfo, "VorControl", "one");
    Vor::LogUser(Vor::UserInfo, "VorControl", "two");
    EXPECT_EQ(log.Count("from the handler"), 1U);
}

TEST(LoggingTest, ThreadsLogTogetherAndNothingIsLost) {
    Logging::SetMinimumLevel(Vor::LevelError);
    const LogCapture log;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int k = 0; k < 250; ++k) {
                Vor::LogInfo("entry");
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    Logging::SetMinimumLevel(Vor::LevelInfo);
    EXPECT_EQ(log.Count(Vor::LevelInfo, "entry"), 1000U);
    EXPECT_EQ(log.CountLevel(Vor::LevelInfo), 1000U);
}

TEST(LoggingTest, CaptureWaitsForAnEntryOfAnotherThread) {
    const LogCapture log;
    std::thread thread([] { Vor::LogInfo("late"); });
    EXPECT_TRUE(log.WaitFor("late"));
    thread.join();
    EXPECT_FALSE(log.WaitFor("never", 1000));
}
