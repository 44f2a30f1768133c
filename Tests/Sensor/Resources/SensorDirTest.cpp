#include "Sensor/Resources/SensorDir.h"

#include "Sensor/Scan/ProfileMeasurement.h"
#include "Tests/Sensor/Resources/SensorFixture.h"
#include "VorApi/DocumentResourceBase.h"

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
    Json ReadQuery(const std::string& path, VorApi::RequestInfoEx::Query query) {
        const VorRest::Answer answer = Ask({.path = path, .query = std::move(query)});
        if (answer.failure != nullptr) {
            std::rethrow_exception(answer.failure);
        }
        return answer.document.ToJson();
    }
    /// The numbers of the entries that a client gets, and "more" if there are more.
    Json NumbersOf(VorApi::RequestInfoEx::Query query) {
        const Json log = ReadQuery("/sensor/log", std::move(query));
        Json numbers = Json::array();
        for (const Json& item : log.at("items")) {
            numbers.push_back(item.at("number"));
        }
        if (log.at("more") == true) {
            numbers.push_back("more");
        }
        return numbers;
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

TEST_F(SensorDirTest, TheEntrySaysWhoAnswersAndLinksToAll) {
    EXPECT_EQ(Read("/").ToJson(), (Json{{"name", "vorsensor"}, {"version", VOR_VERSION}, {"boot", "b0"}}));
    EXPECT_EQ(LinksOf("/"),
              (std::vector<std::string>{"vor:controlTypes /controlTypes", "vor:controls /controls",
                                        "vor:sensor /sensor", "vor:events /events", "vor:healthz /healthz",
                                        "vor:metrics /metrics", "service-desc /openapi.json"}));
}

TEST_F(SensorDirTest, RefusedTopicsAreNamedWithTheirPlaces) {
    const Json update{{"add", "notice"}, {"remove", 7}};
    EXPECT_EQ(
        PlacesIn(
            Ask({.verb = VorRest::Verb::Update, .path = "/events/any", .body = VorApi::VorDataTree::FromJson(update)})),
        (std::vector<std::string>{"/add", "/remove"}));
}

TEST_F(SensorDirTest, HealthIsAnAnswer) {
    EXPECT_EQ(Read("/healthz").ToJson(), (Json{{"status", "ok"}}));
}

TEST_F(SensorDirTest, WhatIsALongDocumentIsntMadeForALinkToIt) {
    for (const char* path : {"/sensor/log", "/sensor/scan", "/sensor/scan/history", "/sensor/io"}) {
        const auto match = host.Router().Find(path);
        ASSERT_TRUE(match.has_value()) << path;
        auto* const document = dynamic_cast<VorApi::DocumentResourceBase*>(&match->resource);
        ASSERT_NE(document, nullptr) << path;
        // With this query its making would fail.
        EXPECT_TRUE(
            document->HasDocument(VorApi::RequestInfoEx({}, false, {{"n", "x"}, {"points", "x"}, {"edges", "x"}})))
            << path;
    }
}

TEST_F(SensorDirTest, EachDocumentHasASchemaOfItsMembers) {
    for (const char* path :
         {"/", "/healthz", "/sensor", "/events", "/sensor/problems", "/sensor/log", "/sensor/sources",
          "/sensor/tools/profile-max", "/sensor/scan", "/sensor/scan/history", "/sensor/io"}) {
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
    EXPECT_EQ(document["frameRate"], 0);
    EXPECT_EQ(document["alignment"], "notAligned");
    EXPECT_EQ(document["encoder"], 0);
    EXPECT_EQ(document["laser"], false);
    EXPECT_GT(document["memory"], 1'000'000);
    EXPECT_EQ(document["dataFolder"], folder.Path().string());
    EXPECT_EQ(document["job"], "test.vrjob");
    EXPECT_EQ(document["jobModified"], false);
    EXPECT_EQ(document["unsaved"], Json::array());
    EXPECT_EQ(document["problems"], (Json{{"failures", 0}, {"warnings", 0}}));
    EXPECT_EQ(document["services"].size(), 2U);
    EXPECT_EQ(document["services"][0], (Json{{"id", "a"},
                                             {"displayName", "a service"},
                                             {"enabled", false},
                                             {"status", "Stopped"},
                                             {"address", ""},
                                             {"failure", ""},
                                             {"path", "/controls/a"}}));
    EXPECT_EQ(
        LinksOf("/sensor"),
        (std::vector<std::string>{"vor:service[] /controls/a", "vor:service[] /controls/b",
                                  "vor:operations /sensor/operations", "vor:jobs /sensor/jobs",
                                  "vor:sensorProblems /sensor/problems", "vor:log /sensor/log", "vor:scan /sensor/scan",
                                  "vor:sources /sensor/sources", "vor:io /sensor/io", "vor:tools /sensor/tools"}));
}

TEST_F(SensorDirTest, ProblemsSayWhoseTheyAre) {
    EXPECT_EQ(Read("/sensor/problems").ToJson(), (Json{{"items", Json::array()}}));
    service.lock()->onStart = [] { Vor::Throw(yERROR_CONFLICT, "port 502 is taken"); };
    host.Services().GetInstance("a").Enable(true);
    host.Problems().Add(0, "Temperature", "Warm");
    const Json items = Read("/sensor/problems").ToJson().at("items");
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0]["id"], 1);
    EXPECT_EQ(items[0]["severity"], "failure");
    EXPECT_EQ(items[0]["source"], "/controls/a");
    EXPECT_EQ(items[0]["title"], "Protocol");
    EXPECT_EQ(items[0]["text"], "Could not start service: port 502 is taken");
    EXPECT_NE(items[0]["help"], "");
    EXPECT_EQ(items[1]["severity"], "warning");
    EXPECT_EQ(items[1]["source"], "");
    EXPECT_EQ(items[1]["text"], "Warm");
    EXPECT_EQ(LinksOf("/sensor/problems"), std::vector<std::string>{"vor:service[] /controls/a"});
}

TEST_F(SensorDirTest, TheLogComesLatestFirst) {
    Vor::LogUser(Vor::UserInfo, "HTTP", "First.");
    Vor::LogUser(Vor::UserError, "Disk", "Second: \xff");
    const Json log = Read("/sensor/log").ToJson();
    EXPECT_EQ(log["more"], false);
    ASSERT_EQ(log["items"].size(), 2U);
    EXPECT_EQ(log["items"][0]["number"], 2);
    EXPECT_EQ(log["items"][0]["level"], "error");
    EXPECT_EQ(log["items"][0]["title"], "Disk");
    EXPECT_EQ(log["items"][0]["text"], "Second: \\xff");
    EXPECT_EQ(log["items"][0]["time"].get<std::string>().size(), 24U);
    EXPECT_EQ(log["items"][1]["number"], 1);
    EXPECT_EQ(log["items"][1]["level"], "info");
}

TEST_F(SensorDirTest, AClientAsksForEntriesOfTheLog) {
    for (int i = 1; i <= 150; ++i) {
        Vor::LogUser(i % 2 == 0 ? Vor::UserWarning : Vor::UserInfo, i % 50 == 0 ? "Round" : "Any", "Entry %d.", i);
    }
    Vor::LogUser(Vor::UserError, "Last", "The end.");
    EXPECT_EQ(NumbersOf({}).size(), 101U) << "a hundred, and more";
    EXPECT_EQ(NumbersOf({{"n", "3"}}), (Json{151, 150, 149, "more"}));
    EXPECT_EQ(NumbersOf({{"n", "3"}, {"before", "149"}}), (Json{148, 147, 146, "more"}));
    EXPECT_EQ(NumbersOf({{"before", "3"}}), (Json{2, 1}));
    EXPECT_EQ(NumbersOf({{"before", "1"}}), Json::array());
    EXPECT_EQ(NumbersOf({{"n", "2"}, {"before", "3"}}), (Json{2, 1}));
    EXPECT_EQ(NumbersOf({{"n", "1000"}}).size(), 151U);
    EXPECT_EQ(NumbersOf({{"level", "warning"}, {"n", "3"}}), (Json{151, 150, 148, "more"}));
    EXPECT_EQ(NumbersOf({{"level", "error"}}), Json{151});
    EXPECT_EQ(NumbersOf({{"level", "info"}, {"q", "ROUND"}}), (Json{150, 100, 50}));
    EXPECT_EQ(NumbersOf({{"q", "entry 14"}, {"n", "2"}}), (Json{149, 148, "more"}));
    EXPECT_EQ(NumbersOf({{"q", "nobody wrote this"}}), Json::array());
    EXPECT_EQ(NumbersOf({{"q", ""}}).size(), 101U);
    EXPECT_EQ(NumbersOf({{"other", "x"}}).size(), 101U);
}

TEST_F(SensorDirTest, AWrongQueryOfTheLogIsRefused) {
    EXPECT_FAILURE(NumbersOf({{"n", "0"}}), yERROR_FORMAT,
                   "The query has n=0, and a number from 1 to 1000 was expected.");
    for (const char* wrong : {"", "-1", "1001", "x", "1x", " 1", "1.0", "18446744073709551617"}) {
        EXPECT_EQ(StatusOf([&] { NumbersOf({{"n", wrong}}); }), yERROR_FORMAT) << wrong;
    }
    EXPECT_EQ(StatusOf([&] { NumbersOf({{"before", "0"}}); }), yERROR_FORMAT);
    EXPECT_FAILURE(NumbersOf({{"level", "debug"}}), yERROR_FORMAT,
                   "The query has level=debug, and info, warning or error was expected.");
}

TEST_F(SensorDirTest, TheSourcesAreThoseOfTheRecording) {
    const Json items = Read("/sensor/sources").ToJson().at("items");
    ASSERT_EQ(items.size(), 7U);
    EXPECT_EQ(items[0], (Json{{"source", "profile/max"},
                              {"displayName", "Maximum Height"},
                              {"tool", "profile-max"},
                              {"type", "measurement"},
                              {"unit", "mm"},
                              {"decimals", 3}}));
    EXPECT_EQ(items[4]["source"], "profile/points");
    EXPECT_EQ(items[4]["unit"], "");
    EXPECT_EQ(items[4]["decimals"], 0);
    EXPECT_EQ(items[5]["type"], "text");
    EXPECT_EQ(items[5]["tool"], "");
    EXPECT_EQ(items[6]["type"], "stamp");
    EXPECT_EQ(items[6]["tool"], "");
    EXPECT_EQ(
        LinksOf("/sensor/sources"),
        (std::vector<std::string>{"vor:tool[] /sensor/tools/profile-max", "vor:tool[] /sensor/tools/profile-min",
                                  "vor:tool[] /sensor/tools/profile-mean", "vor:tool[] /sensor/tools/profile-width",
                                  "vor:tool[] /sensor/tools/profile-points"}));
}

TEST_F(SensorDirTest, BeforeTheFirstFrameTheScanIsEmpty) {
    Json scan = Read("/sensor/scan").ToJson();
    for (const char* name : {"frame", "time", "encoder", "age"}) {
        EXPECT_EQ(scan.at(name), nullptr) << name;
    }
    for (const char* name : {"values", "x", "z"}) {
        EXPECT_EQ(scan.at(name), Json::array()) << name;
    }
    EXPECT_EQ(LinksOf("/sensor/scan"),
              (std::vector<std::string>{"vor:scanHistory /sensor/scan/history", "vor:sources /sensor/sources"}));
    const Json history = Read("/sensor/scan/history").ToJson();
    EXPECT_EQ(history.at("frames"), Json::array());
    EXPECT_EQ(history.at("columns").size(), 5U);
    EXPECT_EQ(history.at("columns").at(0).at("values"), Json::array());
}

TEST_F(SensorDirTest, TheScanHasTheLastFrame) {
    MakeFrames(3);
    const Json scan = Read("/sensor/scan").ToJson();
    EXPECT_EQ(scan.at("frame"), 2);
    EXPECT_EQ(scan.at("encoder"), 2000);
    EXPECT_TRUE(scan.at("time").is_number_unsigned());
    EXPECT_TRUE(scan.at("age").is_number_unsigned());
    const auto& points = recording.frames[2].points;
    const Scan::ProfileMeasurement measured = Scan::ProfileMeasurement::Of(points);
    ASSERT_EQ(scan.at("values").size(), 6U) << "without the stamp";
    EXPECT_EQ(scan.at("values").at(0), (Json{{"source", "profile/max"},
                                             {"displayName", "Maximum Height"},
                                             {"unit", "mm"},
                                             {"value", measured.max},
                                             {"decision", 1}}));
    EXPECT_EQ(scan.at("values").at(5).at("source"), "profile/text");
    EXPECT_EQ(scan.at("values").at(5).at("value").get<std::string>().find("frame 2: max "), 0U);
    EXPECT_EQ(scan.at("values").at(5).at("decision"), nullptr);
    ASSERT_EQ(scan.at("x").size(), points.size());
    EXPECT_EQ(scan.at("x").at(7), points[7].x);
    EXPECT_EQ(scan.at("z").at(7), points[7].z);

    const Json thinned = ReadQuery("/sensor/scan", {{"points", "10"}});
    EXPECT_LE(thinned.at("x").size(), 10U);
    EXPECT_EQ(std::ranges::max(thinned.at("z")), measured.max);
    EXPECT_EQ(std::ranges::min(thinned.at("z")), measured.min);
    EXPECT_EQ(ReadQuery("/sensor/scan", {{"points", "0"}}).at("z"), Json::array());
    EXPECT_FAILURE(ReadQuery("/sensor/scan", {{"points", "10001"}}), yERROR_FORMAT,
                   "The query has points=10001, and a number from 0 to 10000 was expected.");
}

TEST_F(SensorDirTest, TheHistoryHasTheValuesInColumns) {
    MakeFrames(4);
    const Json history = Read("/sensor/scan/history").ToJson();
    EXPECT_EQ(history.at("frames"), (Json{0, 1, 2, 3}));
    EXPECT_EQ(history.at("times").size(), 4U);
    ASSERT_EQ(history.at("columns").size(), 5U);
    const Json& means = history.at("columns").at(2);
    EXPECT_EQ(means.at("source"), "profile/mean");
    EXPECT_EQ(means.at("displayName"), "Mean Height");
    EXPECT_EQ(means.at("unit"), "mm");
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(means.at("values").at(i), Scan::ProfileMeasurement::Of(recording.frames[i].points).mean) << i;
    }
    EXPECT_EQ(means.at("decisions"), (Json{1, 1, 1, 1}));

    const Json part =
        ReadQuery("/sensor/scan/history",
                  {{"n", "2"}, {"source", "profile/width"}, {"source", "profile/max"}, {"source", "profile/max"}});
    EXPECT_EQ(part.at("frames"), (Json{2, 3}));
    ASSERT_EQ(part.at("columns").size(), 2U);
    EXPECT_EQ(part.at("columns").at(0).at("source"), "profile/max") << "in the order of the data sources";
    EXPECT_EQ(part.at("columns").at(1).at("source"), "profile/width");
    EXPECT_EQ(part.at("columns").at(1).at("values").size(), 2U);
}

TEST_F(SensorDirTest, AWrongQueryOfTheHistoryIsRefused) {
    for (const char* wrong : {"0", "1201", "", "all"}) {
        EXPECT_EQ(StatusOf([&] { ReadQuery("/sensor/scan/history", {{"n", wrong}}); }), yERROR_FORMAT) << wrong;
    }
    EXPECT_FAILURE(ReadQuery("/sensor/scan/history", {{"source", "profile/max"}, {"source", "weight"}}), yERROR_FORMAT,
                   "The query has source=weight, and the name of a measurement was expected.");
    EXPECT_EQ(StatusOf([&] { ReadQuery("/sensor/scan/history", {{"source", "profile/text"}}); }), yERROR_FORMAT);
}

TEST_F(SensorDirTest, AStreamOfTheScanHasNewFramesOnly) {
    const auto open = [&](const char* topic) {
        const auto stream =
            streams->Open({"/events", {{"topic", topic}}}, {}, Http::Responder(std::make_shared<NoConnection>()))
                .stream;
        std::string hello;
        stream->Read(hello);
        return stream;
    };
    // The frame of each event, beats left out.
    const auto frames = [](const std::shared_ptr<Http::IBodyStream>& stream) {
        std::string text;
        stream->Read(text);
        Json found = Json::array();
        constexpr std::string_view Begin = "event: scan\ndata: ";
        for (auto at = text.find(Begin); at != std::string::npos; at = text.find(Begin, at + 1)) {
            const auto data = at + Begin.size();
            found.push_back(Json::parse(text.substr(data, text.find('\n', data) - data)).at("frame"));
        }
        return found;
    };
    const auto slow = open("scan;rate=1;points=2");
    const auto usual = open("scan");
    loop.Advance(std::chrono::seconds(1));
    EXPECT_EQ(frames(slow), Json::array()) << "there is none yet";
    MakeFrames(2);
    loop.Advance(std::chrono::milliseconds(500));
    EXPECT_EQ(frames(slow), Json::array());
    EXPECT_EQ(frames(usual), Json{1}) << "the latest one";
    loop.Advance(std::chrono::milliseconds(500));
    EXPECT_EQ(frames(slow), Json{1});
    EXPECT_EQ(frames(usual), Json::array()) << "once";
    MakeFrames(1);
    loop.Advance(std::chrono::milliseconds(100));
    EXPECT_EQ(frames(usual), Json{2});
}

TEST_F(SensorDirTest, AStreamOfTheScanIsAskedForPossibleRatesAndPoints) {
    Http::HttpRequest local;
    local.peerIsLoopback = true;
    const auto open = [&](const std::string& topic) {
        return streams->Open({"/events", {{"topic", topic}}}, local, Http::Responder(std::make_shared<NoConnection>()));
    };
    EXPECT_FAILURE(open("scan;rate=26"), yERROR_FORMAT,
                   "The query has rate=26, and a number from 1 to 25 was expected.");
    for (const char* topic : {"scan;rate=0", "scan;rate=", "scan;rate=x", "scan;points=2001", "scan;points=-1"}) {
        EXPECT_EQ(StatusOf([&] { open(topic); }), yERROR_FORMAT) << topic;
    }
    std::vector<Http::HttpResponse> opened;
    for (int points = 0; points < 16; ++points) {
        opened.push_back(open("scan;points=" + std::to_string(points)));
        opened.push_back(open("scan;points=" + std::to_string(points)));
    }
    EXPECT_FAILURE(open("scan;points=16"), yERROR_BUSY,
                   "There are 16 streams of the scan with other rates or points already, which is the limit.");
    EXPECT_EQ(StatusOf([&] { opened.push_back(open("scan;points=15")); }), yOK);
    opened.clear();
    loop.Advance(std::chrono::seconds(1));
    EXPECT_EQ(StatusOf([&] { opened.push_back(open("scan;points=16")); }), yOK) << "the places are free again";
    MakeFrames(1);
    directory.reset();
    loop.Advance(std::chrono::seconds(1));
}

TEST_F(SensorDirTest, ProblemsAndEntriesOfTheLogAreEvents) {
    const auto stream = streams
                            ->Open({"/events", {{"topic", "problems"}, {"topic", "log"}}}, {},
                                   Http::Responder(std::make_shared<NoConnection>()))
                            .stream;
    std::string text;
    stream->Read(text);
    host.Problems().Add(1, "Temperature", "Hot");
    Vor::LogUser(Vor::UserWarning, "Temperature", "It is %d degrees.", 80);
    text.clear();
    loop.Advance(std::chrono::milliseconds(500));
    stream->Read(text);
    EXPECT_NE(text.find("event: problems\nid: b0:1\ndata: {"), std::string::npos) << text;
    EXPECT_NE(text.find("\"text\":\"Hot\""), std::string::npos) << text;
    EXPECT_NE(text.find("event: log\ndata: {\"level\":\"warning\",\"number\":1,\"text\":\"It is 80 degrees.\""),
              std::string::npos)
        << text;
    text.clear();
    loop.Advance(std::chrono::milliseconds(400));
    stream->Read(text);
    EXPECT_EQ(text, "") << "each once";
}

TEST_F(SensorDirTest, TheSensorShowsWhatHasHappened) {
    service.lock()->onStart = [] { Vor::Throw(yERROR_CONFLICT, "port 502 is taken"); };
    host.Services().GetInstance("a").Enable(true);
    host.Services().GetInstance("b").BeginUpdateParameters();
    host.Services().GetInstance("b").EndUpdateParameters();
    host.Problems().Add(0, "Temperature", "Warm");
    VorScan::IScanner& scanner = Scanner();
    scanner.CommandTarget()->InvokeCommand("align", *scanner.CommandTarget()->GetCommandParams("align"));
    EXPECT_EQ(Read("/sensor")["alignment"].AsText(), "aligning");
    loop.Advance(std::chrono::seconds(2));
    MakeFrames(3);
    const Json document = Read("/sensor").ToJson();
    EXPECT_EQ(document["runState"], "scanning");
    EXPECT_EQ(document["alignment"], "aligned");
    EXPECT_EQ(document["encoder"], 2000);
    EXPECT_EQ(document["laser"], true);
    EXPECT_EQ(document["jobModified"], true);
    EXPECT_EQ(document["unsaved"], Json{"job"});
    EXPECT_EQ(document["problems"], (Json{{"failures", 1}, {"warnings", 1}}));
    EXPECT_EQ(document["services"][0]["enabled"], true);
    EXPECT_EQ(document["services"][0]["status"], "Failed To Start");
    EXPECT_EQ(document["services"][0]["failure"], "port 502 is taken");
}

TEST_F(SensorDirTest, EventsListTheTopics) {
    EXPECT_EQ(Read("/events").ToJson(),
              (Json{{"topics", {"notice", "state", "problems", "log", "scan", "io", "metrics:a", "metrics:b"}}}));
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
