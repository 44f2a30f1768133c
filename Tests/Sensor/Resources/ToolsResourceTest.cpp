#include "Sensor/Resources/ToolsResource.h"

#include "Tests/Sensor/Resources/SensorFixture.h"
#include "VorCommon/ArchiveFile.h"

#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace Sensor::Resources {
namespace {

using Json = nlohmann::json;
using VorCommon::ArchiveFile;
using VorCommon::PersistDomain;

constexpr const char* Max = "/sensor/tools/profile-max";
constexpr const char* LoadedChanges = "/sensor/jobs/loaded/changes";

class ToolsResourceTest : public SensorFixture {
protected:
    VorRest::Answer Update(const Json& body, const std::string& path = Max) {
        return Ask({VorRest::Verb::Update, path, VorApi::VorDataTree::FromJson(body)});
    }
    /// The decisions on the values of one more frame.
    Json Decisions() {
        MakeFrames(1);
        Json decisions = Json::object();
        const Json scan = Read("/sensor/scan").ToJson();
        for (const Json& value : scan.at("values")) {
            decisions[value.at("source")] = value.at("decision");
        }
        return decisions;
    }
    bool IsModified() { return host.Persistence().IsModified(PersistDomain::Job); }
    std::string Tag(const std::string& path = Max) const { return revisions->TagOf(path).value_or("none"); }
    void Save() { ASSERT_EQ(StatusIn(Invoke("/sensor/jobs/test/commands/save")), yOK); }
    void LoadJob() { ASSERT_EQ(StatusIn(Invoke("/sensor/jobs/test/commands/load")), yOK); }
    ArchiveFile File() const { return ArchiveFile(folder.File("jobs/test.vrjob")); }
    void Store(const std::string& text) const {
        File().Write(
            {{"sensor/tools.json", std::make_shared<const std::vector<unsigned char>>(text.begin(), text.end())}});
    }
};

TEST_F(ToolsResourceTest, TheToolsAreListed) {
    std::vector<std::string> paths;
    for (const auto& relation : Ask({.path = "/sensor/tools"}).relations) {
        EXPECT_EQ(relation.name, "item");
        EXPECT_EQ(relation.kind, VorApi::ResponseInfoEx::Relation::Kind::Embed);
        paths.push_back(relation.path);
    }
    EXPECT_EQ(paths, (std::vector<std::string>{Max, "/sensor/tools/profile-min", "/sensor/tools/profile-mean",
                                               "/sensor/tools/profile-width", "/sensor/tools/profile-points"}));
    EXPECT_EQ(StatusIn(Ask({.path = "/sensor/tools/profile-text"})), yERROR_NOT_FOUND);
}

TEST_F(ToolsResourceTest, AToolHasItsLimitsWithUnitAndRange) {
    const Json document = Read(Max, true).ToJson();
    const Json schema = document.at("_schema").at("properties");
    EXPECT_EQ(Read(Max).ToJson(), (Json{{"id", "profile-max"},
                                        {"source", "profile/max"},
                                        {"displayName", "Maximum Height"},
                                        {"unit", "mm"},
                                        {"decimals", 3},
                                        {"low", -1e9},
                                        {"high", 1e9}}));
    EXPECT_EQ(schema.at("low"), (Json{{"type", "number"},
                                      {"title", "Least accepted value"},
                                      {"units", "mm"},
                                      {"minimum", -1e9},
                                      {"maximum", 1e9},
                                      {"default", -1e9}}));
    EXPECT_EQ(schema.at("high").at("default"), 1e9);
    EXPECT_FALSE(Read("/sensor/tools/profile-points", true).ToJson()["_schema"]["properties"]["low"].contains("units"));
}

TEST_F(ToolsResourceTest, AnUpdateTurnsDecisions) {
    EXPECT_EQ(Decisions().at("profile/max"), 1);
    EXPECT_FALSE(IsModified());
    EXPECT_EQ(StatusIn(Update({{"high", 0.5}, {"id", "other"}, {"unknown", 1}})), yOK);
    const Json decisions = Decisions();
    EXPECT_EQ(decisions.at("profile/max"), 0);
    EXPECT_EQ(decisions.at("profile/min"), 1);
    EXPECT_TRUE(IsModified());
    EXPECT_EQ(Read(Max).ToJson().at("high"), 0.5);
    EXPECT_EQ(Read(Max).ToJson().at("low"), -1e9) << "what isn't named stays";
    EXPECT_EQ(Read(Max).ToJson().at("id"), "profile-max");
    EXPECT_EQ(StatusIn(Update({{"high", 1000000000}})), yOK);
    EXPECT_EQ(Decisions().at("profile/max"), 1);
}

TEST_F(ToolsResourceTest, WhatIsWrongIsNamedAndChangesNothing) {
    Update({{"low", 1}, {"high", 2}});
    const std::string tag = Tag();
    const auto expectRefusal = [&](const Json& body, const std::string& text, const std::vector<std::string>& places) {
        const VorRest::Answer answer = Update(body);
        EXPECT_EQ(StatusIn(answer), yERROR_PARAMETER) << body;
        EXPECT_EQ(TextIn(answer), text);
        EXPECT_EQ(PlacesIn(answer), places) << body;
    };
    const std::string range = ": expected a number from -1000000000 to 1000000000 but got ";
    expectRefusal({{"low", 3}}, "low: expected at most 2.0, which is high, but got 3.0.", {"/low"});
    expectRefusal({{"high", 0.5}}, "high: expected at least 1.0, which is low, but got 0.5.", {"/high"});
    expectRefusal({{"low", 5}, {"high", 4}}, "low: expected at most 4.0, which is high, but got 5.0.", {"/low"});
    expectRefusal({{"low", nullptr}}, "low" + range + "null.", {"/low"});
    expectRefusal({{"low", "1"}, {"high", true}}, "low" + range + "a string.", {"/low", "/high"});
    expectRefusal({{"low", -1.5e9}, {"high", 3}}, "low" + range + "-1500000000.0.", {"/low"});
    expectRefusal({{"high", 18446744073709551615U}}, "high" + range + "18446744073709551615.", {"/high"});
    expectRefusal({{"high", Json::object()}}, "high" + range + "an object.", {"/high"});
    expectRefusal(Json::array({1}), "the document: expected an object but got an array.", {""});
    EXPECT_EQ(StatusIn(Update({{"low", 1}}, "/sensor/tools/profile-text")), yERROR_NOT_FOUND);
    EXPECT_EQ(StatusIn(Update({{"low", 1}}, "/sensor/tools")), yERROR_PARAMETER);
    EXPECT_EQ(Read(Max).ToJson().at("low"), 1);
    EXPECT_EQ(Read(Max).ToJson().at("high"), 2);
    EXPECT_EQ(Tag(), tag);
    EXPECT_EQ(StatusIn(Update({{"low", 5}, {"high", 5}})), yOK);
}

TEST_F(ToolsResourceTest, EachToolHasARevision) {
    Save();
    EXPECT_EQ(Tag(), "\"b0-1\"");
    EXPECT_EQ(Tag("/sensor/tools/profile%2Dmax/"), "\"b0-1\"");
    Update({{"high", 2}});
    EXPECT_EQ(Tag(), "\"b0-2\"");
    Update({{"high", 2}});
    Update(Json::object());
    EXPECT_EQ(Tag(), "\"b0-2\"") << "nothing has changed";
    EXPECT_EQ(Tag("/sensor/tools/profile-min"), "\"b0-1\"");
    for (const char* path : {"/sensor/tools", "/sensor/tools/profile-text", "/sensor/tools/profile-max/x",
                             "/sensor/other/profile-max", "/sensor", "/tools/profile-max"}) {
        EXPECT_EQ(Tag(path), "none") << path;
    }
    LoadJob();
    EXPECT_EQ(Tag(), "\"b0-3\"") << "the job has no limits";
    LoadJob();
    EXPECT_EQ(Tag(), "\"b0-3\"");
}

TEST_F(ToolsResourceTest, ClientsAreNotifiedOfChanges) {
    const auto stream = streams
                            ->Open({"/events", {{"topic", "notice:/sensor/tools"}}}, {},
                                   Http::Responder(std::make_shared<NoConnection>()))
                            .stream;
    // Returns the data of the notices since the last call.
    const auto notices = [&] {
        loop.RunReady();
        std::string text;
        stream->Read(text);
        std::vector<Json> data;
        for (auto at = text.find("event: notice"); at != std::string::npos; at = text.find("event: notice", at + 1)) {
            const auto begin = text.find("data: ", at) + 6;
            data.push_back(Json::parse(text.substr(begin, text.find('\n', begin) - begin)));
        }
        return data;
    };
    Save();
    notices();
    Update({{"high", 2}});
    EXPECT_EQ(notices(), (std::vector<Json>{{{"code", "changed"}, {"path", Max}, {"revision", "b0-2"}}}));
    Update({{"high", 2}});
    EXPECT_EQ(notices(), std::vector<Json>());
    LoadJob();
    EXPECT_EQ(notices(), (std::vector<Json>{{{"code", "reload"}, {"path", "/sensor/tools"}}}));
    LoadJob();
    EXPECT_EQ(notices(), std::vector<Json>());
    directory.reset();
    host.Tools().SetLimits("profile-max", {.low = 1});
    EXPECT_EQ(notices(), std::vector<Json>());
}

TEST_F(ToolsResourceTest, TheChangesOfTheJobNameEachLimit) {
    Save();
    EXPECT_EQ(Read(LoadedChanges).ToJson().at("count"), 0);
    Update({{"low", 1}, {"high", 2.5}});
    Json changes = Read(LoadedChanges).ToJson().at("changes");
    ASSERT_EQ(changes.size(), 3U) << changes;
    EXPECT_EQ(changes.at(0), (Json{{"service", ""},
                                   {"entry", "sensor/tools.json"},
                                   {"pointer", "/tools/profile-max/high"},
                                   {"before", ""},
                                   {"after", "2.5"}}));
    EXPECT_EQ(changes.at(1).at("pointer"), "/tools/profile-max/low");
    EXPECT_EQ(changes.at(2).at("pointer"), "/version");
    Save();
    EXPECT_EQ(Read(LoadedChanges).ToJson().at("count"), 0);
    EXPECT_FALSE(IsModified());
    Update({{"low", -1e9}});
    changes = Read(LoadedChanges).ToJson().at("changes");
    ASSERT_EQ(changes.size(), 1U) << changes;
    EXPECT_EQ(changes.at(0).at("pointer"), "/tools/profile-max/low");
    EXPECT_EQ(changes.at(0).at("before"), "1.0");
    EXPECT_EQ(changes.at(0).at("after"), "");
    LoadJob();
    EXPECT_EQ(Read(Max).ToJson().at("low"), 1);
    EXPECT_FALSE(IsModified());
}

TEST_F(ToolsResourceTest, LimitsOfAnotherVersionAreReplacedByASave) {
    Save();
    Store(R"({"version":"2","tools":{"profile-max":{"high":0.5}}})");
    LoadJob();
    EXPECT_TRUE(log.Contains(Vor::UserError,
                             "The limits of the tools weren't loaded, so every value is accepted. Entry "
                             "'sensor/tools.json': version: expected the text \"1\"."));
    EXPECT_TRUE(IsModified());
    EXPECT_EQ(Decisions().at("profile/max"), 1);
    EXPECT_NE(Read(LoadedChanges).ToJson().at("count"), 0);
    Save();
    EXPECT_EQ(Read(LoadedChanges).ToJson().at("count"), 0);
    LoadJob();
    EXPECT_FALSE(IsModified());
}

TEST_F(ToolsResourceTest, WhatIsntJsonLeavesTheLoadedJob) {
    Save();
    Update({{"high", 0.5}});
    Store("{");
    EXPECT_NE(StatusIn(Invoke("/sensor/jobs/test/commands/load")), yOK);
    EXPECT_EQ(Read(Max).ToJson().at("high"), 0.5);
}

TEST_F(ToolsResourceTest, ARestoredSensorHasNoLimits) {
    Update({{"high", 0.5}});
    host.Persistence().Restore("fresh", [](VorCommon::IPersistStore& store) { store.Write("/x", "x", 1); });
    EXPECT_EQ(Read(Max).ToJson().at("high"), 1e9);
    EXPECT_EQ(Decisions().at("profile/max"), 1);
}

} // namespace
} // namespace Sensor::Resources
