#include "Sensor/Resources/SensorDir.h"

#include "Sensor/Http/ResponderTarget.h"
#include "Tests/Sensor/Resources/SensorFixture.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include <nlohmann/json.hpp>

namespace Sensor::Resources {
namespace {

using Json = nlohmann::json;
using Tests::StatusOf;

class SensorDirTest : public SensorFixture {
protected:
    /// Relations as "name path".
    std::vector<std::string> LinksOf(const std::string& path) {
        std::vector<std::string> links;
        for (const auto& relation : Ask({VorRest::Verb::Read, path}).relations) {
            EXPECT_EQ(relation.kind, VorApi::ResponseInfoEx::Relation::Kind::Link);
            links.push_back(relation.name + (relation.asArray ? "[] " : " ") + relation.path);
        }
        return links;
    }
    yStatus UpdateStatus(const std::string& path, const Json& body) {
        const VorRest::Answer answer = Ask({VorRest::Verb::Update, path, VorApi::VorDataTree::FromJson(body)});
        return StatusOf([&] {
            if (answer.failure != nullptr) {
                std::rethrow_exception(answer.failure);
            }
        });
    }
};

class NoConnection : public Http::Responder::Target {
public:
    void Respond(Http::HttpResponse) override {}
    bool IsWanted() const override { return false; }
    void Wake() override {}
};

TEST_F(SensorDirTest, TheEntrySaysWhoAnswersAndLinksToAll) {
    EXPECT_EQ(Read("/").ToJson(), (Json{{"name", "vorsensor"}, {"version", VOR_VERSION}, {"boot", "b0"}}));
    EXPECT_EQ(LinksOf("/"),
              (std::vector<std::string>{"vor:controlTypes /controlTypes", "vor:controls /controls",
                                        "vor:sensor /sensor", "vor:events /events", "vor:healthz /healthz"}));
}

TEST_F(SensorDirTest, HealthIsAnAnswer) {
    EXPECT_EQ(Read("/healthz").ToJson(), (Json{{"status", "ok"}}));
}

TEST_F(SensorDirTest, EachDocumentHasASchemaOfItsMembers) {
    for (const char* path : {"/", "/healthz", "/sensor", "/events"}) {
        const VorApi::VorDataTree document = Read(path, true);
        std::vector<std::string> members = Read(path).Names();
        std::vector<std::string> described = document["_schema"]["properties"].Names();
        std::ranges::sort(members);
        std::ranges::sort(described);
        EXPECT_EQ(members, described) << path;
        EXPECT_FALSE(members.empty()) << path;
    }
    EXPECT_EQ(Read("/sensor", true)["_schema"]["properties"]["upTime"]["units"].AsText(), "s");
}

TEST_F(SensorDirTest, TheSensorShowsItsState) {
    loop.Advance(std::chrono::seconds(5));
    const Json document = Read("/sensor").ToJson();
    EXPECT_EQ(document["name"], "vorsensor");
    EXPECT_EQ(document["version"], VOR_VERSION);
    EXPECT_EQ(document["boot"], "b0");
    EXPECT_EQ(document["upTime"], 5);
    EXPECT_EQ(document["runState"], "ready");
    EXPECT_EQ(document["frame"], 0);
    EXPECT_EQ(document["triggerMode"], "software");
    EXPECT_EQ(document["job"], "test.vrjob");
    EXPECT_EQ(document["jobModified"], false);
    EXPECT_EQ(document["problems"], (Json{{"failures", 0}, {"warnings", 0}}));
    EXPECT_EQ(document["services"].size(), 2U);
    EXPECT_EQ(document["services"][0], (Json{{"id", "a"},
                                             {"displayName", "a service"},
                                             {"enabled", false},
                                             {"status", "Stopped"},
                                             {"address", ""},
                                             {"failure", ""},
                                             {"path", "/controls/a"}}));
    EXPECT_EQ(LinksOf("/sensor"), (std::vector<std::string>{"vor:service[] /controls/a", "vor:service[] /controls/b"}));
}

TEST_F(SensorDirTest, TheSensorShowsWhatHasHappened) {
    service.lock()->onStart = [] { Vor::Throw(yERROR_CONFLICT, "port 502 is taken"); };
    host.Services().GetInstance("a").Enable(true);
    host.Services().GetInstance("b").BeginUpdateParameters();
    host.Services().GetInstance("b").EndUpdateParameters();
    host.Problems().Add(0, "Temperature", "Warm");
    sensor.Core().Start(true, false);
    const Json document = Read("/sensor").ToJson();
    EXPECT_EQ(document["runState"], "scanning");
    EXPECT_EQ(document["jobModified"], true);
    EXPECT_EQ(document["problems"], (Json{{"failures", 1}, {"warnings", 1}}));
    EXPECT_EQ(document["services"][0]["enabled"], true);
    EXPECT_EQ(document["services"][0]["status"], "Failed To Start");
    EXPECT_EQ(document["services"][0]["failure"], "port 502 is taken");
}

TEST_F(SensorDirTest, EventsListTheTopics) {
    EXPECT_EQ(Read("/events").ToJson(), (Json{{"topics", {"notice", "state", "metrics:a", "metrics:b"}}}));
    EXPECT_EQ(Read("/events/").ToJson(), Read("/events").ToJson());
    EXPECT_EQ(StatusOf([&] { Read("/events/0123"); }), yERROR_NOT_FOUND);
    EXPECT_EQ(UpdateStatus("/events", {{"add", {"state"}}}), yERROR_READ_ONLY);
    EXPECT_EQ(UpdateStatus("/events/0123", {{"add", {"state"}}}), yERROR_NOT_FOUND);
}

TEST_F(SensorDirTest, TheTopicsOfAStreamAreChangedAtItsPath) {
    const auto stream =
        streams->Open({"/events", {{"topic", "notice"}}}, {}, Http::Responder(std::make_shared<NoConnection>())).stream;
    std::string text;
    stream->Read(text);
    const Json hello = Json::parse(text.substr(text.find("data: ") + 6));
    const std::string path = hello["_links"]["self"]["href"];
    EXPECT_EQ(Read(path).ToJson(), (Json{{"topics", {"notice"}}}));
    EXPECT_EQ(UpdateStatus(path, {{"add", {"state", "metrics:a"}}, {"remove", {"notice"}}}), yOK);
    EXPECT_EQ(Read(path).ToJson(), (Json{{"topics", {"state", "metrics:a"}}}));
    EXPECT_EQ(UpdateStatus(path, {{"add", {"weather"}}}), yERROR_FORMAT);
    EXPECT_EQ(UpdateStatus(path, {{"add", "state"}}), yERROR_PARAMETER);
    EXPECT_EQ(UpdateStatus(path, Json::array()), yERROR_PARAMETER);
    EXPECT_EQ(Read(path).ToJson(), (Json{{"topics", {"state", "metrics:a"}}}));
}

TEST_F(SensorDirTest, ItsRoutesEndWithIt) {
    directory.reset();
    EXPECT_EQ(StatusOf([&] { Read("/sensor"); }), yERROR_NOT_FOUND);
    EXPECT_EQ(StatusOf([&] { Read("/"); }), yERROR_NOT_FOUND);
    EXPECT_NO_THROW(Read("/controls"));
}

} // namespace
} // namespace Sensor::Resources
