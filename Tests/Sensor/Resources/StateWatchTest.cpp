#include "Sensor/Resources/StateWatch.h"

#include "Tests/Sensor/Resources/SensorFixture.h"

#include <chrono>
#include <utility>

namespace Sensor::Resources {
namespace {

using Json = nlohmann::json;

class StateWatchTest : public SensorFixture {
protected:
    /// What has changed meanwhile, in one list.
    Json Changes() {
        loop.Advance(std::chrono::seconds(1));
        return std::exchange(changes, Json::array());
    }

    Json changes = Json::array();
    StateWatch watch{Environ(), [this](const Json& changed) { changes.push_back(changed); }};
};

TEST_F(StateWatchTest, NothingChangesByTimeAlone) {
    EXPECT_EQ(Changes(), Json::array());
}

TEST_F(StateWatchTest, NamesWhatHasChanged) {
    MakeFrames(2);
    EXPECT_EQ(Changes(), Json::parse(R"([{"runState":"scanning","laser":true}])"));
    MakeFrames(2);
    EXPECT_EQ(Changes(), Json::array());
    host.Problems().Add(1, "Temperature", "Hot");
    sensor.Core().Stop(false, false);
    EXPECT_EQ(Changes(), Json::parse(R"([{"runState":"ready","laser":false,"problems":{"failures":1,"warnings":0}}])"));
}

TEST_F(StateWatchTest, NamesTheServicesThatHaveChanged) {
    host.Services().GetInstance("b").Enable(true);
    const Json changed = Changes();
    ASSERT_EQ(changed.size(), 1U);
    ASSERT_EQ(changed[0]["services"].size(), 1U) << changed;
    EXPECT_EQ(changed[0]["services"][0]["id"], "b");
    EXPECT_EQ(changed[0]["services"][0]["enabled"], true);
}

} // namespace
} // namespace Sensor::Resources
