#include "Sensor/RepeatedEntries.h"

#include "Vor/Logging.h"

#include <gtest/gtest.h>

namespace Sensor {
namespace {

using namespace std::chrono_literals;

class RepeatedEntriesTest : public testing::Test {
protected:
    bool Add(const std::string& text, std::uint64_t level = Vor::LevelError) { return entries.Add(level, text, now); }

    std::string Ended() {
        std::string all;
        for (const auto& repeated : entries.Ended(now)) {
            all += std::to_string(repeated.count) + " " + repeated.text + ";";
        }
        return all;
    }

    RepeatedEntries entries;
    RepeatedEntries::Clock::time_point now;
};

TEST_F(RepeatedEntriesTest, AreCountedForTenSeconds) {
    EXPECT_TRUE(Add("a"));
    now += 9999ms;
    EXPECT_FALSE(Add("a"));
    EXPECT_FALSE(Add("a"));
    EXPECT_EQ(Ended(), "");
    now += 1ms;
    EXPECT_EQ(Ended(), "2 a;");
    EXPECT_EQ(Ended(), "");
}

TEST_F(RepeatedEntriesTest, AreEqualInLevelAndText) {
    EXPECT_TRUE(Add("a"));
    EXPECT_TRUE(Add("b"));
    EXPECT_TRUE(Add("a", Vor::LevelWarning));
    EXPECT_FALSE(Add("a", Vor::LevelWarning));
    now += 10s;
    EXPECT_EQ(Ended(), "1 a;");
}

TEST_F(RepeatedEntriesTest, AreToldOnceInTenSecondsAsLongAsTheyCome) {
    EXPECT_TRUE(Add("a"));
    for (int i = 0; i < 3; ++i) {
        now += 5s;
        EXPECT_FALSE(Add("a"));
        EXPECT_EQ(Ended(), "");
        now += 5s;
        EXPECT_EQ(Ended(), "1 a;");
    }
}

TEST_F(RepeatedEntriesTest, AreForgottenAfterTenSecondsWithoutOne) {
    EXPECT_TRUE(Add("a"));
    now += 10s;
    EXPECT_EQ(Ended(), "");
    EXPECT_TRUE(Add("a"));
}

TEST_F(RepeatedEntriesTest, DoNotGrowWithoutLimit) {
    for (std::size_t i = 0; i < RepeatedEntries::MaxEntries; ++i) {
        EXPECT_TRUE(Add(std::to_string(i)));
    }
    EXPECT_TRUE(Add("one more"));
    EXPECT_TRUE(Add("one more"));
    EXPECT_FALSE(Add("0"));
}

} // namespace
} // namespace Sensor
