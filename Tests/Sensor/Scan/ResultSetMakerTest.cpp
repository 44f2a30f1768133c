#include "Sensor/Scan/ResultSetMaker.h"

#include "Sensor/Scan/RecordingParser.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/Failure.h"
#include "Vor/Exception.h"
#include "VorMsg/ResultSet.h"
#include "VorMsg/VvMeasureMsg.h"
#include "VorMsg/VvNullMsg.h"
#include "VorMsg/VvStampMsg.h"
#include "VorMsg/VvStringMsg.h"
#include "yApi/yTime.h"

#include <atomic>
#include <filesystem>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Scan {
namespace {

Recording RecordingOf(std::string_view text) {
    return RecordingParser::Parse(text, "part.csv");
}

void* MessageAt(const Vor::Object& set, std::size_t index) {
    return yMsgInfo_Message(ResultItem_MsgInfo(ResultSet_At(set.Get(), index)));
}

void* InfoAt(const Vor::Object& set, std::size_t index) {
    return ResultItem_ResultInfo(ResultSet_At(set.Get(), index));
}

double ValueAt(const Vor::Object& set, std::size_t index) {
    void* message = MessageAt(set, index);
    EXPECT_TRUE(yObject_Is(message, yType_VvMeasureMsg)) << index;
    return yObject_Is(message, yType_VvMeasureMsg) ? VvMeasureMsg_Value(message) : 0;
}

std::string TextAt(const Vor::Object& set, std::size_t index) {
    void* message = MessageAt(set, index);
    EXPECT_TRUE(yObject_Is(message, yType_VvStringMsg)) << index;
    return {VvStringMsg_Value(message), VvStringMsg_Length(message)};
}

yStamp StampOf(const Vor::Object& set) {
    void* message = MessageAt(set, ResultSet_Count(set.Get()) - 1);
    EXPECT_EQ(VvMsg_StampCount(message), 1U);
    return *VvMsg_StampAt(message, 0);
}

TEST(ResultSetMaker, AProfileHasItsSevenSourcesInOrder) {
    const Recording recording = RecordingOf("frame,x,z\n0,0,1\n");
    const std::vector<std::string> expected = {"profile/max",    "profile/min",  "profile/mean", "profile/width",
                                               "profile/points", "profile/text", "profile/stamp"};
    EXPECT_EQ(ResultSetMaker::DataSources(recording), expected);

    const Vor::Object set = ResultSetMaker(recording).Make(recording.frames[0], 0, 0);
    ASSERT_EQ(ResultSet_Count(set.Get()), expected.size());
    for (std::size_t index = 0; index < expected.size(); ++index) {
        EXPECT_EQ(ResultInfo_Source(InfoAt(set, index)), expected[index]);
        EXPECT_EQ(ResultInfo_NumericId(InfoAt(set, index)), ResultInfo_IdOfText(expected[index]));
        EXPECT_EQ(ResultInfo_Type(InfoAt(set, index)), index < 5    ? ResultInfo_TypeMeasurement
                                                       : index == 5 ? ResultInfo_TypeString
                                                                    : ResultInfo_TypeStamp);
    }
    EXPECT_FALSE(ResultSet_FromSimulation(set.Get()));
}

TEST(ResultSetMaker, AProfileGivesTheMeasuredValues) {
    const Recording recording = RecordingOf("frame,x,z\n0,-2,1.5\n0,4,-0.25\n0,5,2\n0,9,-1\n");
    const Vor::Object set = ResultSetMaker(recording).Make(recording.frames[0], 7, 0);

    EXPECT_EQ(ValueAt(set, 0), 2.0);
    EXPECT_EQ(ValueAt(set, 1), -1.0);
    EXPECT_EQ(ValueAt(set, 2), 0.5625);
    EXPECT_EQ(ValueAt(set, 3), 7.0);
    EXPECT_EQ(ValueAt(set, 4), 4.0);
    EXPECT_EQ(TextAt(set, 5), "frame 7: max 2.000 mm");
}

TEST(ResultSetMaker, TheTextRoundsToThreeDecimals) {
    const Recording recording = RecordingOf("frame,x,z\n0,0,-3.14159\n1,0,1e300\n2,0,-0.0004\n");
    const ResultSetMaker maker(recording);
    EXPECT_EQ(TextAt(maker.Make(recording.frames[0], 12, 0), 5), "frame 12: max -3.142 mm");
    EXPECT_EQ(TextAt(maker.Make(recording.frames[1], 0, 0), 5).size(), 13U + 301 + 4 + 3);
    EXPECT_EQ(TextAt(maker.Make(recording.frames[2], 13, 0), 5), "frame 13: max 0.000 mm");
}

TEST(ResultSetMaker, AProfileWithoutAPointAboveZeroHasNoWidth) {
    const Recording recording = RecordingOf("frame,x,z\n0,1,0\n0,2,-1\n");
    const Vor::Object set = ResultSetMaker(recording).Make(recording.frames[0], 0, 0);
    EXPECT_TRUE(yObject_Is(MessageAt(set, 3), yType_VvNullMsg));
    EXPECT_EQ(ValueAt(set, 4), 2.0);
}

TEST(ResultSetMaker, TheStampTellsFrameTimeAndEncoder) {
    const Recording recording = RecordingOf("frame,x,z\n0,0,0\n");
    const Vor::Object set = ResultSetMaker(recording).Make(recording.frames[0], 42, 123456);
    const yStamp stamp = StampOf(set);
    EXPECT_EQ(stamp.frameIndex, 42U);
    EXPECT_EQ(stamp.time, 123456U);
    EXPECT_EQ(stamp.encoder, 42000);
    EXPECT_EQ(stamp.encoderAtZ, 0);
    EXPECT_EQ(stamp.inputs, 0U);
}

TEST(ResultSetMaker, NamedValuesComeInFileOrderThenTheStamp) {
    const Recording recording = RecordingOf("frame,name,value\n0,width,1\n0,angle,2\n1,angle,3\n");
    EXPECT_EQ(ResultSetMaker::DataSources(recording),
              (std::vector<std::string>{"values/width", "values/angle", "values/stamp"}));
    const Vor::Object set = ResultSetMaker(recording).Make(recording.frames[0], 3, 0);
    ASSERT_EQ(ResultSet_Count(set.Get()), 3U);
    EXPECT_EQ(ValueAt(set, 0), 1.0);
    EXPECT_EQ(ValueAt(set, 1), 2.0);
    EXPECT_EQ(ResultInfo_Type(InfoAt(set, 1)), ResultInfo_TypeMeasurement);
    EXPECT_EQ(ResultInfo_Type(InfoAt(set, 2)), ResultInfo_TypeStamp);
    EXPECT_EQ(StampOf(set).encoder, 3000);
}

TEST(ResultSetMaker, ANameThatAFrameLacksIsANullMessage) {
    const Recording recording = RecordingOf("frame,name,value\n0,width,1\n0,angle,2\n1,angle,3\n");
    const Vor::Object set = ResultSetMaker(recording).Make(recording.frames[1], 1, 0);
    ASSERT_EQ(ResultSet_Count(set.Get()), 3U);
    EXPECT_TRUE(yObject_Is(MessageAt(set, 0), yType_VvNullMsg));
    EXPECT_EQ(ResultInfo_Type(InfoAt(set, 0)), ResultInfo_TypeMeasurement);
    EXPECT_EQ(ValueAt(set, 1), 3.0);
}

TEST(ResultSetMaker, TheDecisionFollowsTheLimits) {
    const Recording recording = RecordingOf("frame,x,z\n0,0,5\n");
    ResultSetMaker maker(recording);
    EXPECT_EQ(VvMeasureMsg_Decision(MessageAt(maker.Make(recording.frames[0], 0, 0), 0)), 1);
    std::vector<Limits> limits(7);
    limits[0] = {0, 4};
    maker.SetLimits(limits);
    const Vor::Object set = maker.Make(recording.frames[0], 0, 0);
    EXPECT_EQ(VvMeasureMsg_Decision(MessageAt(set, 0)), 0);
    EXPECT_EQ(VvMeasureMsg_Decision(MessageAt(set, 1)), 1);
    limits[0] = {4, 5};
    maker.SetLimits(limits);
    EXPECT_EQ(VvMeasureMsg_Decision(MessageAt(maker.Make(recording.frames[0], 0, 0), 0)), 1);
}

TEST(ResultSetMaker, LimitsOfOtherSourcesAreRefused) {
    ResultSetMaker maker(RecordingOf("frame,x,z\n0,0,5\n"));
    EXPECT_FAILURE(maker.SetLimits(std::vector<Limits>(6)), yERROR_SIZE,
                   "There are limits of 6 data sources, and of 7 were expected.");
}

TEST(ResultSetMaker, AllDecisionsOfAFrameAreByTheLimitsOfOneCall) {
    const Recording recording = RecordingOf("frame,x,z\n0,0,5\n");
    ResultSetMaker maker(recording);
    const std::vector<Limits> all(7);
    const std::vector<Limits> none(7, {100, 200});
    std::atomic<bool> ended{false};
    std::thread changes([&] {
        while (!ended) {
            maker.SetLimits(none);
            maker.SetLimits(all);
        }
    });
    for (int frame = 0; frame < 5000; ++frame) {
        const Vor::Object set = maker.Make(recording.frames[0], 0, 0);
        const int first = VvMeasureMsg_Decision(MessageAt(set, 0));
        for (const std::size_t other : {1U, 2U, 3U, 4U}) {
            EXPECT_EQ(VvMeasureMsg_Decision(MessageAt(set, other)), first) << frame;
        }
    }
    ended = true;
    changes.join();
}

TEST(ResultSetMaker, SetsShareTheInformationOfTheirSources) {
    const Recording recording = RecordingOf("frame,x,z\n0,0,5\n");
    const ResultSetMaker maker(recording);
    const Vor::Object first = maker.Make(recording.frames[0], 0, 0);
    const Vor::Object second = maker.Make(recording.frames[0], 1, 0);
    EXPECT_EQ(InfoAt(first, 0), InfoAt(second, 0));
    EXPECT_EQ(yObject_ShareCount(InfoAt(first, 0)), 3);
}

TEST(ResultSetMaker, LeavesNothingBehind) {
    const auto before = yObject_LiveCount();
    {
        const Recording recording = RecordingOf("frame,name,value\n0,width,1\n1,angle,2\n");
        const ResultSetMaker maker(recording);
        const Vor::Object set = maker.Make(recording.frames[0], 0, 0);
        EXPECT_GT(yObject_LiveCount(), before);
    }
    EXPECT_EQ(yObject_LiveCount(), before);
}

TEST(ResultSetMaker, MeasuresTheRealRecordings) {
    const std::filesystem::path file = Tests::RecordingsFolder() / "boxes.csv";
    if (!std::filesystem::exists(file)) {
        GTEST_SKIP() << "no recording " << file;
    }
    const Recording recording = RecordingParser::ReadFile(file);
    const Vor::Object set = ResultSetMaker(recording).Make(recording.frames[0], 0, 0);
    EXPECT_EQ(ValueAt(set, 0), 91.052);
    EXPECT_EQ(ValueAt(set, 1), -81.29);
    EXPECT_NEAR(ValueAt(set, 2), 3.020407202216, 1e-9);
    EXPECT_NEAR(ValueAt(set, 3), 189.826, 1e-9);
    EXPECT_EQ(ValueAt(set, 4), 361.0);
}

TEST(ResultSetMaker, AllItemsHaveTheTimeOfTheCallAsThatOfTheirPublication) {
    for (const char* text : {"frame,x,z\n0,0,1\n", "frame,name,value\n0,a,1\n"}) {
        const Recording recording = RecordingOf(text);
        const ResultSetMaker maker(recording);
        const std::uint64_t before = yTime_Monotonic();
        const Vor::Object set = maker.Make(recording.frames[0], 0, 0);
        const std::uint64_t after = yTime_Monotonic();
        const std::uint64_t published = yMsgInfo_Published(ResultItem_MsgInfo(ResultSet_At(set.Get(), 0)));
        EXPECT_GE(published, before);
        EXPECT_LE(published, after);
        for (std::size_t i = 1; i < ResultSet_Count(set.Get()); ++i) {
            EXPECT_EQ(yMsgInfo_Published(ResultItem_MsgInfo(ResultSet_At(set.Get(), i))), published) << i;
        }
    }
}

} // namespace
} // namespace Sensor::Scan
