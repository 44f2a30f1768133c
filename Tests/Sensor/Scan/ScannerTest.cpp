#include "Sensor/Scan/Scanner.h"
#include "Sensor/Scan/RecordingParser.h"
#include "Tests/Support/Signal.h"
#include "Vor/Exception.h"
#include "VorCore/ResultHub.h"
#include "VorMsg/ResultSet.h"
#include "VorMsg/VvStampMsg.h"

#include <chrono>
#include <condition_variable>
#include <gtest/gtest.h>
#include <mutex>
#include <vector>

namespace Sensor::Scan {
namespace {

constexpr std::chrono::seconds Deadline{20};

/// The stamps of what a hub delivers.
class StampLog {
public:
    explicit StampLog(VorCore::ResultHub& hub)
        : hub(hub)
        , id(hub.AddResultHandler([this](void* set) { Take(set); })) {}
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
    void Take(void* set) {
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
    // No frame comes before its time, and a late one doesn't make those behind it late.
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

TEST(Scanner, RefusesARateThatIsntAboveZero) {
    const Recording recording = TwoFrames();
    VorCore::ResultHub hub;
    EXPECT_THROW(Scanner(recording, hub, {.frameRate = 0}), Vor::Exception);
    EXPECT_THROW(Scanner(Recording(), hub, {}), Vor::Exception);
}

} // namespace
} // namespace Sensor::Scan
