#include "Sensor/Scan/ScanHistory.h"

#include "Sensor/Scan/RecordingParser.h"
#include "Sensor/Scan/ResultSetMaker.h"
#include "VorCore/ResultHub.h"
#include "VorMsg/ResultSet.h"
#include "yApi/yObject.h"
#include "yApi/yStamp.h"

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Scan {
namespace {

class ScanHistoryTest : public ::testing::Test {
protected:
    /// Publishes the frames of the recording over and over, and waits until they are there.
    void Publish(std::uint64_t count) {
        for (std::uint64_t i = 0; i < count; ++i, ++published) {
            const Vor::Object set =
                maker.Make(recording.frames[published % recording.frames.size()], published, published * 1000);
            hub.Publish(set.Get());
        }
        ASSERT_TRUE(hub.Drain(20'000'000));
    }

    const Recording recording =
        RecordingParser::Parse("frame,name,value\n0,a,1.5\n0,b,10\n1,a,2.5\n2,b,30\n", "values.csv");
    const ResultSetMaker maker{recording};
    VorCore::ResultHub hub;
    std::uint64_t published = 0;
    std::optional<ScanHistory> history{std::in_place, hub, 3};
};

TEST_F(ScanHistoryTest, IsEmptyBeforeTheFirstFrame) {
    EXPECT_EQ(history->FrameCount(), 0U);
    EXPECT_FALSE(history->LastSet());
    EXPECT_TRUE(history->Latest(10, {0}).empty());
}

TEST_F(ScanHistoryTest, HasTheSamplesOfEachFrame) {
    Publish(3);
    EXPECT_EQ(history->FrameCount(), 3U);
    const auto frames = history->Latest(10, {0, 1});
    ASSERT_EQ(frames.size(), 3U);
    EXPECT_EQ(frames[0].index, 0U);
    EXPECT_EQ(frames[1].time, 1000U);
    EXPECT_EQ(frames[0].samples[0].value, 1.5);
    EXPECT_EQ(frames[0].samples[0].decision, 1);
    EXPECT_EQ(frames[0].samples[1].value, 10);
    EXPECT_EQ(frames[1].samples[1].value, std::nullopt);
    EXPECT_EQ(frames[2].samples[0].value, std::nullopt);
    EXPECT_EQ(frames[2].samples[1].value, 30);
    EXPECT_EQ(history->Latest(10, {2})[0].samples[0].value, std::nullopt) << "a stamp is no measurement";
    const auto last = history->Latest(1, {1});
    ASSERT_EQ(last.size(), 1U);
    EXPECT_EQ(last[0].index, 2U);
    EXPECT_EQ(last[0].samples.size(), 1U);
    EXPECT_TRUE(history->Latest(0, {1}).empty());
    EXPECT_EQ(history->Latest(3, {}).size(), 3U);
}

TEST_F(ScanHistoryTest, HasTheDecisions) {
    ResultSetMaker strict(recording);
    strict.SetLimits({{.least = 2}, {}, {}});
    for (std::uint64_t i = 0; i < 2; ++i) {
        hub.Publish(strict.Make(recording.frames[i], i, 0).Get());
    }
    ASSERT_TRUE(hub.Drain(20'000'000));
    const auto frames = history->Latest(2, {0});
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[0].samples[0].decision, 0);
    EXPECT_EQ(frames[1].samples[0].decision, 1);
}

TEST_F(ScanHistoryTest, KeepsTheLatestFrames) {
    Publish(ScanHistory::Capacity + 7);
    const auto frames = history->Latest(10'000, {0, 1});
    ASSERT_EQ(frames.size(), ScanHistory::Capacity);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        ASSERT_EQ(frames[i].index, i + 7);
        ASSERT_EQ(frames[i].samples[0].value.has_value(), (i + 7) % 3 != 2);
    }
}

TEST_F(ScanHistoryTest, TheLastSetStaysUntilThereIsANewerOne) {
    Publish(2);
    const Vor::Object first = history->LastSet();
    ASSERT_TRUE(first);
    EXPECT_EQ(ScanHistory::StampOf(first.Get())->frameIndex, 1U);
    EXPECT_EQ(history->LastSet().Get(), first.Get());
    Publish(1);
    EXPECT_EQ(ScanHistory::StampOf(history->LastSet().Get())->frameIndex, 2U);
    EXPECT_EQ(ScanHistory::StampOf(first.Get())->frameIndex, 1U);
}

TEST_F(ScanHistoryTest, OtherSetsAreIgnored) {
    Vor::Object empty;
    ASSERT_EQ(ResultSet_Construct(empty.Out()), yOK);
    hub.Publish(empty.Get());
    const Recording other = RecordingParser::Parse("frame,name,value\n0,a,1\n", "other.csv");
    hub.Publish(ResultSetMaker(other).Make(other.frames[0], 0, 0).Get());
    ASSERT_TRUE(hub.Drain(20'000'000));
    EXPECT_EQ(history->FrameCount(), 0U);
    EXPECT_FALSE(history->LastSet());
}

TEST_F(ScanHistoryTest, NothingOfItIsLeftAtItsEnd) {
    const auto objects = yObject_LiveCount();
    Publish(5);
    history->LastSet();
    Publish(5);
    history.reset();
    EXPECT_EQ(hub.ResultHandlerCount(), 0U);
    EXPECT_EQ(yObject_LiveCount(), objects);
    Publish(1);
}

TEST_F(ScanHistoryTest, AReaderSeesWholeFramesWhileTheyAreReplaced) {
    std::atomic<bool> ended{false};
    std::jthread publisher([&] {
        for (std::uint64_t i = 0; i < 20 * ScanHistory::Capacity; ++i) {
            // Both values and the time of a frame are its number.
            const Frame frame{.points = {}, .values = {{0, static_cast<double>(i)}, {1, static_cast<double>(i)}}};
            hub.Publish(maker.Make(frame, i, i).Get());
            if (i % 64 == 0) {
                hub.Drain(20'000'000);
            }
        }
        hub.Drain(20'000'000);
        ended = true;
    });
    std::uint64_t last = 0;
    while (!ended) {
        std::uint64_t before = 0;
        for (const ScanHistory::Frame& frame : history->Latest(ScanHistory::Capacity, {0, 1})) {
            ASSERT_EQ(frame.time, frame.index);
            ASSERT_EQ(frame.samples[0].value, static_cast<double>(frame.index));
            ASSERT_EQ(frame.samples[1].value, static_cast<double>(frame.index));
            ASSERT_TRUE(frame.index > before || frame.index == 0);
            before = frame.index;
        }
        if (const Vor::Object& set = history->LastSet()) {
            const std::uint64_t index = ScanHistory::StampOf(set.Get())->frameIndex;
            ASSERT_GE(index, last);
            last = index;
        }
    }
    publisher.join();
    EXPECT_EQ(history->Latest(1, {0}).at(0).index, 20 * ScanHistory::Capacity - 1);
}

} // namespace
} // namespace Sensor::Scan
