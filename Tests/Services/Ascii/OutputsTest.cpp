#include "Services/Ascii/Outputs.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Results.h"
#include "Vor/Exception.h"

#include <functional>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace Services::Ascii {
namespace {

using Tests::Results;

const std::vector<OutputDefinition> Definitions = {
    {.id = "0", .isBlock = true, .kind = ValueKind::Measurement, .dataSource = "max"},
    {.id = "5", .isBlock = true, .kind = ValueKind::Value, .dataSource = "min"},
    {.id = "5", .dataSource = "text"},
    {.id = "height", .dataSource = "max"},
    {.id = "stamp", .dataSource = "stamp"}};

class OutputsTest : public testing::Test {
protected:
    OutputsTest() { outputs.Replace(Definitions); }

    std::string Values(const std::vector<Argument>& ids = {}) {
        std::string line = "OK";
        outputs.AppendValues(line, ids);
        return line;
    }
    std::string Lines(PushQueue& queue) {
        std::string place(65536, '\0');
        place.resize(queue.MoveTo(std::span(reinterpret_cast<unsigned char*>(place.data()), place.size())));
        return place;
    }
    Common::ServiceCounters counters;
    Outputs outputs{counters};
};

TEST_F(OutputsTest, ShowsInvalidValuesBeforeTheFirstFrame) {
    EXPECT_EQ(Values(), "OK,INVALID,INVALID,INVALID");
    EXPECT_EQ(Values({{"height"}}), "OK,INVALID");
}

TEST_F(OutputsTest, ShowsTheValuesOfTheLastFrame) {
    EXPECT_FALSE(outputs.Process(Results().Measurement("max", 1.5).Measurement("min", -1).Get()));
    EXPECT_EQ(Values(), "OK,1.500,1,-1.000");
    outputs.Process(Results().Measurement("max", 2.5, 0).Get());
    EXPECT_EQ(Values(), "OK,2.500,0,-1.000") << "a source without a result in the frame keeps its value";
    outputs.Process(Results().Nothing("max", ResultInfo_TypeMeasurement).Get());
    EXPECT_EQ(Values(), "OK,INVALID,INVALID,-1.000");
}

TEST_F(OutputsTest, FindsBlocksByNumberAndOthersByName) {
    outputs.Process(Results().Measurement("max", 1.5).Measurement("min", -1).Text("text", "t").Get());
    EXPECT_EQ(Values({{"height"}, {"0"}, {"5"}}), "OK,1.500,1.500,1,-1.000");
    EXPECT_EQ(Values({{"5", true}}), "OK,\"t\"") << "in quotation marks it is a name";
    EXPECT_EQ(Values({{"height", true}, {"height"}}), "OK,1.500,1.500") << "one output may be named twice";
}

TEST_F(OutputsTest, RefusesAnOutputThatThereIsNot) {
    for (const Argument& id : std::vector<Argument>{{"1"}, {"Height"}, {"00"}, {"0", true}, {""}}) {
        EXPECT_EQ(Tests::StatusOf([&] { Values({{"0"}, id}); }), yERROR_NOT_FOUND) << id.text;
    }
}

TEST_F(OutputsTest, ShowsTheNamesWhenThereIsNoBlock) {
    outputs.Replace({{.id = "b", .dataSource = "max"}, {.id = "a", .dataSource = "min"}});
    outputs.Process(Results().Measurement("max", 1).Measurement("min", 2).Get());
    EXPECT_EQ(Values(), "OK,1.000,2.000");
    outputs.Replace({});
    EXPECT_EQ(Values(), "OK");
}

TEST_F(OutputsTest, KeepsValuesWhenOutputsAreReplaced) {
    outputs.Process(Results().Measurement("max", 1.5).Measurement("min", -1).Get());
    outputs.Replace({{.id = "9", .isBlock = true, .kind = ValueKind::Decision, .dataSource = "max"},
                     {.id = "10", .isBlock = true, .kind = ValueKind::Value, .dataSource = "new"}});
    EXPECT_EQ(Values(), "OK,1,INVALID");
    outputs.Replace(Definitions);
    EXPECT_EQ(Values(), "OK,1.500,1,INVALID") << "what no output showed meanwhile is forgotten";
}

TEST_F(OutputsTest, WritesInAnotherFormatAtOnce) {
    outputs.Process(Results().Measurement("max", 1.5).Get());
    EXPECT_EQ(Values({{"0"}}), "OK,1.500,1");
    outputs.SetFormat({.delimiter = ";", .decimalSeparator = ',', .decimals = 1, .invalidText = "-"});
    EXPECT_EQ(Values(), "OK;1,5;1;-");
}

TEST_F(OutputsTest, ForgetsValuesWhenReset) {
    outputs.Process(Results().Measurement("max", 1.5).Get());
    outputs.Reset();
    EXPECT_EQ(Values(), "OK,INVALID,INVALID,INVALID");
}

TEST_F(OutputsTest, TellsTheStampOfTheLastFrame) {
    std::string line = "OK";
    EXPECT_EQ(Tests::StatusOf([&] { outputs.AppendStamp(line); }), yERROR_NOT_FOUND)
        << "nothing is known to be a stamp";
    yStamp stamp;
    stamp.frameIndex = 3;
    outputs.Process(Results().Stamp("stamp", stamp).Get());
    outputs.AppendStamp(line);
    EXPECT_EQ(line, "OK,3,0,0,0,0");
    outputs.Replace({{.id = "0", .isBlock = true, .kind = ValueKind::Stamp, .dataSource = "other"}});
    line = "OK";
    outputs.AppendStamp(line);
    EXPECT_EQ(line, "OK,INVALID,INVALID,INVALID,INVALID,INVALID");
}

TEST_F(OutputsTest, ListsOutputsWithTheirSources) {
    std::string line = "OK";
    outputs.AppendList(line);
    EXPECT_EQ(line, "OK,0,\"max\",5,\"min\",\"5\",\"text\",\"height\",\"max\",\"stamp\",\"stamp\"");
}

TEST_F(OutputsTest, TellsEachFrameToItsSubscribers) {
    const auto all = std::make_shared<PushQueue>(1000);
    const auto some = std::make_shared<PushQueue>(1000);
    outputs.Subscribe(all, {});
    EXPECT_TRUE(outputs.Process(Results().Measurement("max", 1).Get()));
    outputs.Subscribe(some, {{"height"}, {"5"}});
    EXPECT_TRUE(outputs.Process(Results().Measurement("max", 2).Get()));
    EXPECT_EQ(Lines(*all), "DATA,1,1.000,1,INVALID\r\nDATA,2,2.000,1,INVALID\r\n");
    EXPECT_EQ(Lines(*some), "DATA,2,2.000,INVALID\r\n");
    outputs.Unsubscribe(all.get());
    EXPECT_TRUE(outputs.Process(Results().Measurement("max", 3).Get()));
    EXPECT_EQ(Lines(*all), "");
    EXPECT_EQ(Lines(*some), "DATA,3,3.000,INVALID\r\n");
}

TEST_F(OutputsTest, ForgetsASubscriberThatIsGone) {
    outputs.Subscribe(std::make_shared<PushQueue>(1000), {});
    EXPECT_FALSE(outputs.Process(Results().Measurement("max", 1).Get()));
}

TEST_F(OutputsTest, DropsFramesForASlowSubscriberOnly) {
    const auto slow = std::make_shared<PushQueue>(40);
    const auto quick = std::make_shared<PushQueue>(1000);
    outputs.Subscribe(slow, {{"height"}});
    outputs.Subscribe(quick, {{"height"}});
    for (int frame = 0; frame < 4; ++frame) {
        outputs.Process(Results().Measurement("max", frame).Get());
    }
    EXPECT_EQ(Lines(*slow), "DATA,1,0.000\r\nDATA,2,1.000\r\n");
    EXPECT_EQ(Lines(*quick), "DATA,1,0.000\r\nDATA,2,1.000\r\nDATA,3,2.000\r\nDATA,4,3.000\r\n");
    EXPECT_EQ(slow->Dropped(), 2u);
    EXPECT_EQ(counters.linesDropped, 2u);
}

TEST_F(OutputsTest, FollowsReplacedOutputsInItsSubscriptions) {
    const auto queue = std::make_shared<PushQueue>(1000);
    const auto all = std::make_shared<PushQueue>(1000);
    outputs.Subscribe(queue, {{"height"}, {"5"}});
    outputs.Subscribe(all, {});
    outputs.Replace({{.id = "height", .dataSource = "min"}});
    outputs.Process(Results().Measurement("min", 4).Get());
    EXPECT_EQ(Lines(*queue), "DATA,1,4.000,INVALID\r\n") << "an output that is taken away has no value";
    EXPECT_EQ(Lines(*all), "DATA,1,4.000\r\n");
}

TEST_F(OutputsTest, RefusesALineThatWouldBeTooLong) {
    std::vector<OutputDefinition> many;
    for (int i = 0; i < 20000; ++i) {
        many.push_back({.id = std::to_string(i), .isBlock = true, .kind = ValueKind::Value, .dataSource = "max"});
    }
    outputs.Replace(many);
    EXPECT_EQ(Tests::StatusOf([&] { Values(); }), yERROR_SIZE);
    EXPECT_EQ(Values({{"19999"}}), "OK,INVALID");
    std::string line;
    EXPECT_EQ(Tests::StatusOf([&] { outputs.AppendList(line); }), yERROR_SIZE);
    const auto queue = std::make_shared<PushQueue>(100000);
    EXPECT_EQ(Tests::StatusOf([&] { outputs.Subscribe(queue, {}); }), yERROR_SIZE);
    outputs.Replace({});
    outputs.Subscribe(queue, {});
    outputs.Replace(many);
    EXPECT_FALSE(outputs.Process(Results().Measurement("max", 1).Get()));
    EXPECT_EQ(counters.linesDropped, 1u) << "a frame whose line has become too long is dropped";
}

TEST_F(OutputsTest, ShowsOneFrameWhileAnotherComes) {
    std::thread writer([&] {
        for (int i = 0; i < 2000; ++i) {
            outputs.Process(Results().Measurement("max", i).Measurement("min", i).Get());
        }
    });
    for (int i = 0; i < 500; ++i) {
        const std::string line = Values({{"height"}, {"5"}});
        const std::size_t middle = line.find(',', 3);
        EXPECT_EQ(line.substr(3, middle - 3), line.substr(middle + 1));
    }
    writer.join();
}

} // namespace
} // namespace Services::Ascii
