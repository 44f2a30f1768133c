#include "Sensor/Resources/ProblemList.h"

#include "Vor/MainLoop.h"
#include "VorCommon/ProblemsManager.h"
#include "VorCommon/ProblemsTracker.h"

#include <chrono>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Resources {
namespace {

using Json = nlohmann::json;

class ProblemListTest : public ::testing::Test {
protected:
    /// What was passed on meanwhile.
    Json Changes() {
        loop.Advance(std::chrono::seconds(1));
        return std::exchange(changes, Json::array());
    }

    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    VorCommon::ProblemsManager manager;
    Json changes = Json::array();
    ProblemList list{manager, [this](const Json& change) { changes.push_back(change); }};
};

TEST_F(ProblemListTest, AProblemIsRaisedAndCleared) {
    EXPECT_EQ(Changes(), Json::array());
    VorCommon::ProblemsTracker tracker(&manager, "mod/bus");
    tracker.Begin();
    tracker.Register(manager.Add(1, "Protocol", "Could not start service: port 502 is taken"));
    tracker.End();
    Json raised = Changes();
    ASSERT_EQ(raised.size(), 1U);
    const std::string since = raised[0]["since"];
    EXPECT_EQ(since.size(), 24U);
    EXPECT_EQ(since.back(), 'Z');
    EXPECT_FALSE(raised[0]["help"].get<std::string>().empty());
    raised[0].erase("since");
    raised[0].erase("help");
    EXPECT_EQ(raised[0], (Json{{"op", "raised"},
                               {"id", 1},
                               {"severity", "failure"},
                               {"source", "/controls/mod%2Fbus"},
                               {"title", "Protocol"},
                               {"text", "Could not start service: port 502 is taken"}}));
    EXPECT_EQ(Changes(), Json::array());
    EXPECT_EQ(list.Update().at(0).since, since);
    tracker.Begin();
    tracker.End();
    EXPECT_EQ(Changes(), Json::parse(R"([{"op":"cleared","id":1}])"));
    EXPECT_TRUE(list.Update().empty());
}

TEST_F(ProblemListTest, AProblemThatIsAddedAgainIsTheSame) {
    const auto first = manager.Add(1, "t", "same");
    const ListedProblem before = list.Update().at(0);
    EXPECT_EQ(Changes().size(), 1U);
    manager.Remove(first);
    manager.Add(1, "t", "same");
    EXPECT_EQ(Changes(), Json::array());
    EXPECT_EQ(list.Update().at(0).id, before.id);
    EXPECT_EQ(list.Update().at(0).since, before.since);
}

TEST_F(ProblemListTest, EqualProblemsAreSeparate) {
    const auto first = manager.Add(0, "t", "same");
    manager.Add(0, "t", "same");
    EXPECT_EQ(Changes().size(), 2U);
    EXPECT_EQ(list.Update().size(), 2U);
    manager.Remove(first);
    EXPECT_EQ(Changes().size(), 1U);
    EXPECT_EQ(list.Update().size(), 1U);
}

TEST_F(ProblemListTest, ProblemsDifferInAnyOfTheirMembers) {
    manager.Add(0, "t", "text");
    EXPECT_EQ(list.Update().at(0).severity, "warning");
    EXPECT_EQ(list.Update().at(0).source, "");
    EXPECT_EQ(list.Update().at(0).help, "");
    manager.Add(1, "t", "text");
    manager.Add(0, "u", "text");
    manager.Add(0, "t", "other");
    manager.SetOwner(manager.Add(0, "t", "text"), "modbus");
    const auto& problems = list.Update();
    ASSERT_EQ(problems.size(), 5U);
    for (std::size_t i = 0; i < problems.size(); ++i) {
        EXPECT_EQ(problems[i].id, i + 1) << "in order of their ids";
    }
    EXPECT_EQ(problems[4].source, "/controls/modbus");
}

TEST_F(ProblemListTest, AReadPassesOnWhatItFinds) {
    manager.Add(1, "t", "text");
    list.Update();
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_EQ(Changes().size(), 1U) << "and not again";
}

} // namespace
} // namespace Sensor::Resources
