#include "Sensor/UserLog.h"
#include "Tests/Support/CountAllocations.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/Logging.h"

#include <string>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

TEST(UserLogCostTest, AnEntryThatNobodyReadsAllocatesNothing) {
    const std::string text(100, 'x');
    const Tests::TempFolder folder;
    const auto cost = [&](const UserLog::Settings& settings) {
        const UserLog log(settings);
        return Tests::AllocationsOf([&] { Vor::LogInfo("%s", text); });
    };
    EXPECT_EQ(cost({}), 0U);
    EXPECT_GT(cost({.file = folder.Path() / "log"}), 0U);
}

} // namespace
} // namespace Sensor
