#include "Sensor/SignalWatch.h"

#include "Tests/Support/Signal.h"

#include <atomic>
#include <unistd.h>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

constexpr std::chrono::hours Long{1};

void HangUpUnexpected() {
    ADD_FAILURE() << "hang-up";
}

TEST(SignalWatch, TellsOfEachSignalThatEndsAProgram) {
    for (const int number : {SIGINT, SIGTERM}) {
        Tests::Signal stopped;
        const SignalWatch watch([&] { stopped.Set(); }, Long, [] { ADD_FAILURE() << "overdue"; }, HangUpUnexpected);
        kill(getpid(), number);
        EXPECT_TRUE(stopped.Wait()) << number;
    }
}

TEST(SignalWatch, CanBeTriggeredByTheProgramItself) {
    Tests::Signal stopped;
    SignalWatch watch([&] { stopped.Set(); }, Long, [] { ADD_FAILURE() << "overdue"; }, HangUpUnexpected);
    watch.Trigger();
    EXPECT_TRUE(stopped.Wait());
}

TEST(SignalWatch, EndsWithoutASignal) {
    const SignalWatch watch([] { ADD_FAILURE() << "stop"; }, Long, [] { ADD_FAILURE() << "overdue"; },
                            HangUpUnexpected);
}

TEST(SignalWatch, TellsOnceWhenTheEndIsOverdue) {
    Tests::Signal late;
    std::atomic<int> stops = 0;
    {
        const SignalWatch watch([&] { ++stops; }, std::chrono::milliseconds(1), [&] { late.Set(); }, HangUpUnexpected);
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
            std::chrono::milliseconds(50), [&] { late.Set(); }, HangUpUnexpected);
        kill(getpid(), SIGTERM);
        ASSERT_TRUE(stopped.Wait());
        kill(getpid(), SIGINT);
        EXPECT_TRUE(late.Wait());
    }
    EXPECT_EQ(stops, 1);
}

TEST(SignalWatch, TellsOfEachHangUpAndGoesOn) {
    Tests::Signal hungUp;
    Tests::Signal hungUpAgain;
    Tests::Signal stopped;
    std::atomic<int> hangUps = 0;
    const SignalWatch watch([&] { stopped.Set(); }, Long, [] { ADD_FAILURE() << "overdue"; },
                            [&] { (++hangUps == 1 ? hungUp : hungUpAgain).Set(); });
    kill(getpid(), SIGHUP);
    ASSERT_TRUE(hungUp.Wait());
    kill(getpid(), SIGHUP);
    ASSERT_TRUE(hungUpAgain.Wait());
    kill(getpid(), SIGTERM);
    EXPECT_TRUE(stopped.Wait());
    EXPECT_EQ(hangUps, 2);
}

} // namespace
} // namespace Sensor
