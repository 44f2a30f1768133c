#include "Sensor/Scan/Scanner.h"

#include "Sensor/Scan/RecordingParser.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/Signal.h"
#include "Tests/Support/Threads.h"
#include "Vor/Exception.h"
#include "VorCore/ResultHub.h"
#include "VorMsg/ResultSet.h"
#include "VorMsg/VvStampMsg.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Scan {
namespace {

constexpr std::chrono::seconds Deadline{20};

/// Records the stamps of the result sets of a hub.
class StampLog {
public:
    explicit StampLog(VorCore::ResultHub& hub)
        : hub(hub)
        , id(hub.AddResultHandler([this](void* set) { Append(set); })) {}
    ~StampLog() { hub.RemoveResultHandler(id); }

    bool WaitForCount(std::size_t count) {
        std::unique_lock guard(mutex);
        return changed.wait_for(guard, Deadline, [&] { return stamps.size() >= count; });
    }

    std::vector<yStamp> Stamps() {
        const std::lock_guard guard(mutex);
        return stamps;
    }

private:
    void Append(void* set) {
        void* item = ResultSet_At(set, ResultSet_Count(set) - 1);
        const std::lock_guard guard(mutex);
        stamps.push_back(*VvMsg_StampAt(yMsgInfo_Message(ResultItem_MsgInfo(item)), 0));
        changed.notify_all();
    }

    /// Guards `stamps`.
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<yStamp> stamps;
    VorCore::ResultHub& hub;
    VorCore::ResultHub::CallbackId id;
};

Recording TwoFrames() {
    return RecordingParser::Parse("frame,x,z\n0,0,1\n1,0,2\n", "part.csv");
}

TEST(Scanner, RepeatsTheRecordingWithoutEnd) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    StampLog log(hub);
    Scanner scanner(recording, hub, {.frameRate = 2000});
    scanner.Start();
    ASSERT_TRUE(log.WaitForCount(5));
    scanner.Stop();
    const auto stamps = log.Stamps();
    for (std::size_t index = 0; index < stamps.size(); ++index) {
        EXPECT_EQ(stamps[index].frameIndex, index);
        EXPECT_EQ(stamps[index].encoder, static_cast<std::int64_t>(index) * 1000);
    }
}

TEST(Scanner, OnceStandsStillBehindTheLastFrame) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    StampLog log(hub);
    Tests::Signal ended;
    Scanner scanner(recording, hub, {.frameRate = 2000, .once = true, .ended = [&] { ended.Set(); }});
    scanner.Start();
    ASSERT_TRUE(ended.Wait());
    ASSERT_TRUE(hub.Drain(20000000));
    EXPECT_EQ(log.Stamps().size(), 2U);
    scanner.Stop();
    EXPECT_EQ(log.Stamps().size(), 2U);
}

TEST(Scanner, NothingComesAfterStop) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    StampLog log(hub);
    Scanner scanner(recording, hub, {.frameRate = 5000});
    scanner.Start();
    ASSERT_TRUE(log.WaitForCount(3));
    scanner.Stop();
    ASSERT_TRUE(hub.Drain(20000000));
    const std::size_t count = log.Stamps().size();
    ASSERT_TRUE(hub.Drain(20000000));
    EXPECT_EQ(log.Stamps().size(), count);
}

TEST(Scanner, StopDoesntWaitForTheNextFrame) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    StampLog log(hub);
    Scanner scanner(recording, hub, {.frameRate = 0.001});
    scanner.Start();
    ASSERT_TRUE(log.WaitForCount(1));
    const auto before = std::chrono::steady_clock::now();
    scanner.Stop();
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
}

TEST(Scanner, ASecondScanBeginsWithTheFirstFrame) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    Scanner scanner(recording, hub, {.frameRate = 1000});
    scanner.Start();
    scanner.Start();
    scanner.Stop();
    scanner.Stop();
    ASSERT_TRUE(hub.Drain(20000000));
    StampLog log(hub);
    scanner.Start();
    ASSERT_TRUE(log.WaitForCount(1));
    EXPECT_EQ(log.Stamps().front().frameIndex, 0U);
}

TEST(Scanner, KeepsTheRateOverManyFrames) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    StampLog log(hub);
    Scanner scanner(recording, hub, {.frameRate = 1000});
    scanner.Start();
    ASSERT_TRUE(log.WaitForCount(501));
    scanner.Stop();
    // No frame is early, and a late one doesn't delay the next ones.
    const auto stamps = log.Stamps();
    std::uint64_t leastLag = UINT64_MAX;
    for (std::size_t index = 0; index <= 500; ++index) {
        ASSERT_GE(stamps[index].time, index * 1000);
        if (index > 400) {
            leastLag = std::min(leastLag, stamps[index].time - index * 1000);
        }
    }
    EXPECT_LT(leastLag, 20000U);
}

TEST(Scanner, ASecondScanCountsFramesAndTimeFromItsStart) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    StampLog log(hub);
    Scanner scanner(recording, hub, {.frameRate = 1000, .once = true});
    for (int round = 0; round < 2; ++round) {
        const auto before = std::chrono::steady_clock::now();
        scanner.Start();
        ASSERT_TRUE(log.WaitForCount(static_cast<std::size_t>(round) * 2 + 2));
        scanner.Stop();
        const auto passed =
            std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - before).count();
        const auto stamps = log.Stamps();
        for (std::size_t index = 0; index < 2; ++index) {
            const yStamp& stamp = stamps[static_cast<std::size_t>(round) * 2 + index];
            EXPECT_EQ(stamp.frameIndex, index);
            EXPECT_LE(stamp.time, static_cast<std::uint64_t>(passed));
        }
    }
}

TEST(Scanner, TellsTheStateOfItsScan) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    StampLog log(hub);
    Scanner scanner(recording, hub, {.frameRate = 1000, .once = true});
    EXPECT_FALSE(scanner.State().scanning);
    EXPECT_EQ(scanner.State().encoder, 0);
    EXPECT_EQ(scanner.State().time, 0U);
    scanner.Start();
    ASSERT_TRUE(log.WaitForCount(2));
    const ScannerState running = scanner.State();
    EXPECT_TRUE(running.scanning);
    EXPECT_EQ(running.encoder, 1000);
    EXPECT_GE(running.time, 1000U);
    scanner.Stop();
    const ScannerState standing = scanner.State();
    EXPECT_FALSE(standing.scanning);
    EXPECT_EQ(standing.encoder, 1000);
    EXPECT_GE(standing.time, running.time);
    EXPECT_EQ(scanner.State().time, standing.time);
}

TEST(Scanner, NoFrameComesByTimeInTriggeredMode) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    StampLog log(hub);
    Scanner scanner(recording, hub, {.frameRate = 100000, .trigger = TriggerMode::Software});
    scanner.Start();
    EXPECT_EQ(Tests::CountThreads("Scanner"), 0U);
    scanner.Stop();
    ASSERT_TRUE(hub.Drain(20000000));
    EXPECT_TRUE(log.Stamps().empty());
}

TEST(Scanner, EachTriggerMakesTheNextFrameOfTheRecording) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    StampLog log(hub);
    Scanner scanner(recording, hub, {.trigger = TriggerMode::Software});
    scanner.Start();
    for (std::size_t count = 1; count <= 3; ++count) {
        scanner.Trigger();
        ASSERT_TRUE(hub.Drain(20000000));
        ASSERT_EQ(log.Stamps().size(), count);
        EXPECT_EQ(log.Stamps().back().frameIndex, count - 1);
        EXPECT_EQ(scanner.State().encoder, static_cast<std::int64_t>(count - 1) * 1000);
    }
    const auto stamps = log.Stamps();
    EXPECT_LE(stamps[0].time, stamps[1].time);
    EXPECT_LE(stamps[1].time, stamps[2].time);
    EXPECT_LE(stamps[2].time, scanner.State().time);
}

TEST(Scanner, ATriggeredScanStandsStillBehindTheLastFrameUntilItIsStartedAgain) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    StampLog log(hub);
    int ended = 0;
    Scanner scanner(recording, hub, {.once = true, .ended = [&] { ++ended; }, .trigger = TriggerMode::Software});
    for (int round = 1; round <= 2; ++round) {
        scanner.Start();
        scanner.Trigger();
        EXPECT_EQ(ended, round - 1);
        scanner.Trigger();
        EXPECT_EQ(ended, round);
        EXPECT_FAILURE(scanner.Trigger(), yERROR_STATE,
                       "The scan stands still behind the last frame of the recording.");
        scanner.Stop();
    }
    ASSERT_TRUE(hub.Drain(20000000));
    const auto stamps = log.Stamps();
    ASSERT_EQ(stamps.size(), 4U);
    EXPECT_EQ(stamps[2].frameIndex, 0U);
    EXPECT_EQ(stamps[3].frameIndex, 1U);
    EXPECT_EQ(ended, 2);
}

TEST(Scanner, RefusesATriggerWithoutAScanOrWhenFramesComeByTime) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    StampLog log(hub);
    Scanner triggered(recording, hub, {.trigger = TriggerMode::Software});
    EXPECT_FAILURE(triggered.Trigger(), yERROR_STATE, "The sensor isn't scanning.");
    triggered.Start();
    triggered.Stop();
    EXPECT_FAILURE(triggered.Trigger(), yERROR_STATE, "The sensor isn't scanning.");
    Scanner timed(recording, hub, {.frameRate = 0.001});
    EXPECT_FAILURE(timed.Trigger(), yERROR_STATE, "The sensor isn't in triggered mode, its frames come by time.");
    ASSERT_TRUE(hub.Drain(20000000));
    EXPECT_TRUE(log.Stamps().empty());
}

TEST(Scanner, RefusesARateThatIsntAboveZero) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    EXPECT_THROW(Scanner(recording, hub, {.frameRate = 0}), Vor::Exception);
    EXPECT_THROW(Scanner(Recording(), hub, {}), Vor::Exception);
}

} // namespace
} // namespace Sensor::Scan
