#include "Sensor/SignalWatch.h"

#include "Tests/Support/Signal.h"

#include <atomic>
#include <unistd.h>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

constexpr std::chrono::hours Long{1};

TEST(SignalWatch, TellsOfEachSignalThatEndsAProgram) {
    for (const int number : {SIGINT, SIGTERM}) {
        Tests::Signal stopped;
        const SignalWatch watch([&] { stopped.Set(); }, Long, [] { ADD_FAILURE() << "overdue"; });
        kill(getpid(), number);
        EXPECT_TRUE(stopped.Wait()) << number;
    }
}

TEST(SignalWatch, CanBeTriggeredByTheProgramItself) {
    Tests::Signal stopped;
    SignalWatch watch([&] { stopped.Set(); }, Long, [] { ADD_FAILURE() << "overdue"; });
    watch.Trigger();
    EXPECT_TRUE(stopped.Wait());
}

TEST(SignalWatch, EndsWithoutASignal) {
    const SignalWatch watch([] { ADD_FAILURE() << "stop"; }, Long, [] { ADD_FAILURE() << "overdue"; });
}

TEST(SignalWatch, TellsOnceWhenTheEndIsOverdue) {
    Tests::Signal late;
    std::atomic<int> stops = 0;
    {
        const SignalWatch watch([&] { ++stops; }, std::chrono::milliseconds(1), [&] { late.Set(); });
        kill(getpid(), SIGTERM);
        EXPECT_TRUE(late.Wait());
    }
    EXPECT_EQ(stops, 1);
}

TEST(SignalWatch, ASecondSignalChangesNothing) {
    Tests::Signal stopped;
    Tests::Signal late;
    std::atomic<int> stops = 0;
    {
        const SignalWatch watch(
            [&] {
                ++stops;
                stopped.Set();
            },
            std::chrono::milliseconds(50), [&] { late.Set(); });
        kill(getpid(), SIGTERM);
        ASSERT_TRUE(stopped.Wait());
        kill(getpid(), SIGINT);
        EXPECT_TRUE(late.Wait());
    }
    EXPECT_EQ(stops, 1);
}

} // namespace
} // namespace Sensor
