#include "Sensor/UserLog.h"

#include "Sensor/StartError.h"
#include "Tests/Support/LogLines.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/Exception.h"
#include "Vor/LogOutput.h"
#include "Vor/Logging.h"

#include <filesystem>
#include <iostream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

/// Records what is written to std::cerr during its lifetime.
class StandardError {
public:
    StandardError()
        : former(std::cerr.rdbuf(text.rdbuf())) {}
    ~StandardError() { std::cerr.rdbuf(former); }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    /// Without the times.
    std::string Text() const { return Tests::WithoutTimes(text.str()); }
    std::string Whole() const { return text.str(); }

private:
    std::ostringstream text;
    std::streambuf* former;
};

/// One entry of each level.
void LogEachLevel() {
    Vor_Log(1, "file", Vor::LevelTrace, "Title", "trace");
    Vor_Log(1, "file", Vor::LevelDebug, "Title", "debug");
    Vor_Log(1, "file", Vor::LevelInfo, "Title", "information");
    Vor_Log(1, "file", Vor::LevelWarning, "Title", "port %d is low", 3);
    Vor_Log(1, "file", Vor::LevelError, "Title", "broken");
    Vor::LogUser(Vor::UserInfo, "VorControl", "hello");
    Vor::LogUser(Vor::UserWarning, "VorControl", "careful");
    Vor::LogUser(Vor::UserError, "VorControl", "stop");
}

/// What the log of record contains of it from information up, with the name of this thread.
std::string RecordOfEachLevel() {
    char name[16] = {};
    pthread_getname_np(pthread_self(), name, sizeof name);
    const std::string thread = std::string("[") + name + "] ";
    return "info " + thread + "Title: information\n" + "warning " + thread + "Title: port 3 is low\n" + "error " +
           thread + "Title: broken\n" + "info " + thread + "[user] VorControl: hello\n" + "warning " + thread +
           "[user] VorControl: careful\n" + "error " + thread + "[user] VorControl: stop\n";
}

TEST(UserLog, TellsWarningsErrorsAndTheUsersLog) {
    const StandardError error;
    const UserLog log({});
    LogEachLevel();
    EXPECT_EQ(error.Text(), "warning: port 3 is low\nerror: broken\ninfo: hello\nwarning: careful\nerror: stop\n");
}

TEST(UserLog, HasTheTimeOnEachLine) {
    const StandardError error;
    const UserLog log({});
    Vor::LogError("broken");
    EXPECT_TRUE(
        std::regex_match(error.Whole(), std::regex(R"(20\d\d-\d\d-\d\dT\d\d:\d\d:\d\d\.\d\d\dZ error: broken\n)")))
        << error.Whole();
}

TEST(UserLog, TellsAnExceptionWithoutItsBackTrace) {
    const StandardError error;
    const UserLog log({});
    const Vor::Exception exception(1, "file", yERROR, "Function", "no disk");
    Vor::Exception::LogException(exception);
    const std::string text = error.Text();
    EXPECT_NE(text.find("no disk"), std::string::npos) << text;
    Vor::Exception::LogBackTrace(exception);
    EXPECT_EQ(error.Text(), text);
}

TEST(UserLog, TellsUsersNothingOfAStateThatIsReadOnTheMainLoop) {
    const StandardError error;
    const Tests::TempFolder folder;
    const UserLog log({.file = folder.File("log")});
    for (const std::string kind : {"System stats", "Scanner info"}) {
        const std::string text = kind + " operation ended but flag was not in the InProgress state";
        Vor::LogError(text);
        EXPECT_NE(Tests::ReadWholeFile(folder.File("log")).find(text), std::string::npos);
    }
    EXPECT_EQ(error.Text(), "");
}

TEST(UserLog, CountsEntriesThatAreEqualToOneBefore) {
    const StandardError error;
    {
        UserLog log({});
        for (int i = 0; i < 1000; ++i) {
            Vor::LogError("broken");
            Vor::LogWarning("broken");
        }
        log.ReportRepeats();
        EXPECT_EQ(error.Text(), "error: broken\nwarning: broken\n");
    }
    EXPECT_EQ(error.Text(), "error: broken\nwarning: broken\nwarning: 999 more: broken\nerror: 999 more: broken\n");
}

TEST(UserLog, EscapesAndCutsWhatTheTextContains) {
    const StandardError error;
    const Tests::TempFolder folder;
    {
        const UserLog log({.file = folder.File("log")});
        Vor::LogError("No scanner %s", "a\n2026-01-31T23:59:59.999Z error: forged\x1b[2J\xff");
        Vor::LogError("No scanner %s here", std::string(1'000'000, 'x'));
    }
    const std::string front = "No scanner " + std::string(739, 'x') + "... (999016 bytes left out) ...";
    const std::string back = std::string(245, 'x') + " here\n";
    const std::string forged = "No scanner a\\n2026-01-31T23:59:59.999Z error: forged\\x1b[2J\\xff\n";
    EXPECT_EQ(error.Text(), "error: " + forged + "error: " + front + back);
    const std::string record = Tests::ReadWholeFile(folder.File("log"));
    EXPECT_NE(record.find(forged), std::string::npos) << record;
    EXPECT_NE(record.find(front + back), std::string::npos) << record;
    EXPECT_EQ(std::count(record.begin(), record.end(), '\n'), 2) << record;
}

TEST(UserLog, TellsNothingWhileItIsSilent) {
    const StandardError error;
    const Tests::TempFolder folder;
    const UserLog log({.file = folder.File("log")});
    {
        const UserLog::Silence silence(log);
        Vor::LogError("unheard");
    }
    Vor::LogError("heard");
    EXPECT_EQ(error.Text(), "error: heard\n");
    EXPECT_NE(Tests::ReadWholeFile(folder.File("log")).find("unheard"), std::string::npos);
}

TEST(UserLog, PrintsTheLogOfRecordWhenItIsVerbose) {
    const StandardError error;
    const UserLog log({.verbose = true});
    LogEachLevel();
    LogEachLevel();
    const std::string all = error.Text();
    const std::string details = all.substr(0, all.find("info "));
    EXPECT_NE(details.find("trace ["), std::string::npos) << all;
    EXPECT_NE(details.find("debug ["), std::string::npos) << all;
    EXPECT_EQ(all, details + RecordOfEachLevel() + details + RecordOfEachLevel());
}

TEST(UserLog, WritesTheLogOfRecordToAFileFromInformationUp) {
    for (const bool verbose : {false, true}) {
        const StandardError error;
        const Tests::TempFolder folder;
        Tests::WriteWholeFile(folder.File("log"), "before\n");
        const UserLog log({.verbose = verbose, .file = folder.File("log")});
        LogEachLevel();
        LogEachLevel();
        EXPECT_EQ(Tests::WithoutTimes(Tests::ReadWholeFile(folder.File("log"))),
                  "before\n" + RecordOfEachLevel() + RecordOfEachLevel());
    }
}

TEST(UserLog, IndentsTheLinesOfABackTraceInTheFile) {
    const Tests::TempFolder folder;
    const UserLog log({.file = folder.File("log")});
    Vor::Exception::LogBackTrace(Vor::Exception(1, "file", yERROR, "Function", "no disk"));
    std::istringstream lines(Tests::ReadWholeFile(folder.File("log")));
    std::string line;
    std::getline(lines, line);
    EXPECT_NE(line.find("Back trace of status "), std::string::npos) << line;
    std::size_t calls = 0;
    for (; std::getline(lines, line); ++calls) {
        EXPECT_TRUE(line.starts_with("    #")) << line;
    }
    EXPECT_GT(calls, 0U);
}

TEST(UserLog, OpensItsFileAnew) {
    const Tests::TempFolder folder;
    UserLog log({.file = folder.File("log")});
    Vor::LogInfo("one");
    std::filesystem::rename(folder.File("log"), folder.File("log.1"));
    Vor::LogInfo("two");
    log.ReopenFile();
    Vor::LogInfo("three");
    const std::string former = Tests::ReadWholeFile(folder.File("log.1"));
    EXPECT_NE(former.find("one\n"), std::string::npos) << former;
    EXPECT_NE(former.find("two\n"), std::string::npos) << former;
    const std::string present = Tests::ReadWholeFile(folder.File("log"));
    EXPECT_NE(present.find("three\n"), std::string::npos) << present;
    EXPECT_EQ(present.find("two\n"), std::string::npos) << present;
}

TEST(UserLog, KeepsItsFileWhenItCannotOpenItAnew) {
    const StandardError error;
    const Tests::TempFolder folder;
    std::filesystem::create_directory(folder.File("logs"));
    UserLog log({.file = folder.File("logs/log")});
    std::filesystem::rename(folder.File("logs"), folder.File("old"));
    log.ReopenFile();
    Vor::LogInfo("on");
    EXPECT_EQ(error.Text(), "error: The log file can't be opened anew: No such file or directory.\n");
    EXPECT_NE(Tests::ReadWholeFile(folder.File("old/log")).find("on\n"), std::string::npos);
}

TEST(UserLog, TellsOnceThatItsFileCannotBeWritten) {
    const StandardError error;
    const UserLog log({.file = "/dev/full"});
    Vor::LogInfo("one");
    Vor::LogInfo("two");
    EXPECT_EQ(error.Text(), "error: The log file can't be written: No space left on device.\n");
}

TEST(UserLog, RefusesAFileThatCannotBeOpened) {
    const Tests::TempFolder folder;
    try {
        const UserLog log({.file = folder.Path()});
        ADD_FAILURE() << "it is no file";
    } catch (const StartError& e) {
        EXPECT_EQ(std::string(e.what()), "--log-file " + folder.Path().string() + ": Is a directory.");
    }
}

TEST(UserLog, WritesWholeLinesFromSeveralThreads) {
    const Tests::TempFolder folder;
    {
        UserLog log({.file = folder.File("log")});
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([] {
                for (int entry = 0; entry < 200; ++entry) {
                    Vor_Log(1, "file", Vor::LevelInfo, "Title", "%s", std::string(500, 'x'));
                }
            });
        }
        for (int i = 0; i < 100; ++i) {
            log.ReopenFile();
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    std::istringstream lines(Tests::ReadWholeFile(folder.File("log")));
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_TRUE(line.ends_with("Title: " + std::string(500, 'x'))) << line;
    }
    EXPECT_EQ(count, 800U);
}

TEST(UserLog, LeavesStandardErrorToTheLogAgain) {
    const StandardError error;
    { const UserLog log({}); }
    Vor::LogWarning("not through here");
    EXPECT_EQ(error.Text(), "");
}

} // namespace
} // namespace Sensor
