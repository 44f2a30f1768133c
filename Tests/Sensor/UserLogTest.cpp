#include "Sensor/UserLog.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"

#include <iostream>
#include <sstream>

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

    std::string Text() const { return text.str(); }

private:
    std::ostringstream text;
    std::streambuf* former;
};

TEST(UserLog, TellsWarningsErrorsAndTheUsersLog) {
    const StandardError error;
    const UserLog log(false);
    Vor::LogDebug("debug");
    Vor::LogInfo("information");
    Vor::LogWarning("port %d is low", 3);
    Vor::LogError("broken");
    Vor::LogUser(Vor::UserInfo, "VorControl", "hello");
    Vor::LogUser(Vor::UserWarning, "VorControl", "careful");
    Vor::LogUser(Vor::UserError, "VorControl", "stop");
    EXPECT_EQ(error.Text(), "warning: port 3 is low\nerror: broken\nhello\nwarning: careful\nerror: stop\n");
}

TEST(UserLog, TellsAnExceptionWithoutItsBackTrace) {
    const StandardError error;
    const UserLog log(false);
    const Vor::Exception exception(1, "file", yERROR, "Function", "no disk");
    Vor::Exception::LogException(exception);
    const std::string text = error.Text();
    EXPECT_NE(text.find("no disk"), std::string::npos) << text;
    Vor::Exception::LogBackTrace(exception);
    EXPECT_EQ(error.Text(), text);
}

TEST(UserLog, TellsNothingWhileItIsSilent) {
    const StandardError error;
    const UserLog log(false);
    {
        const UserLog::Silence silence(log);
        Vor::LogError("unheard");
    }
    Vor::LogError("heard");
    EXPECT_EQ(error.Text(), "error: heard\n");
}

TEST(UserLog, LeavesStandardErrorToTheLogAgain) {
    const StandardError error;
    { const UserLog log(false); }
    Vor::LogWarning("not through here");
    EXPECT_EQ(error.Text(), "");
}

} // namespace
} // namespace Sensor
