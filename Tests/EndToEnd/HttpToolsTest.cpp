// A client of HTTP changes limits of tools, which decide, are saved, and survive the end of the program.

#include "Tests/EndToEnd/HttpClient.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "VorCommon/ArchiveFile.h"

#include <chrono>
#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Tests {
namespace {

using Json = nlohmann::json;

class HttpToolsTest : public testing::Test {
protected:
    void Start() {
        sensor.emplace(VirtualSensor::Command(
            data.Path().string(), {"--modbus-port", "0", "--set", "ascii.port=0", "--trigger", "software"}));
        http.emplace(sensor->WaitForLine("HTTP: http://").value_or("HTTP: none/").substr(6));
        EXPECT_TRUE(sensor->WaitForLine("Scanning.")) << sensor->Output() << sensor->Errors();
        sensorPath = http->Get("/").Link("vor:sensor");
    }
    void Kill() {
        sensor->Signal(SIGKILL);
        EXPECT_EQ(sensor->WaitForExit(), 128 + SIGKILL);
    }
    Answer RunJobs(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "jobs");
        return RunToEnd(VirtualSensor::Command(data.Path().string(), arguments));
    }

    /// The tool of a data source, by the links.
    std::string ToolOf(const std::string& source) const {
        for (const std::string& path : http->Get(http->Get(sensorPath).Link("vor:tools")).Embedded("item")) {
            if (http->Get(path).body.at("source") == source) {
                return path;
            }
        }
        ADD_FAILURE() << "there is no tool of " << source;
        return "";
    }
    /// The decision on a data source in one more frame.
    Json Decision(const std::string& source) const {
        EXPECT_EQ(http->Ask("POST", sensorPath + "/commands/trigger").status, 200);
        const Json made = http->Get(sensorPath).body.at("frame").get<int>() - 1;
        const std::string path = http->Get(sensorPath).Link("vor:scan");
        Json scan = http->Get(path).body;
        for (const auto end = std::chrono::steady_clock::now() + Program::Deadline;
             scan.at("frame") != made && std::chrono::steady_clock::now() < end;) {
            scan = http->Get(path).body;
        }
        EXPECT_EQ(scan.at("frame"), made);
        for (const Json& value : scan.at("values")) {
            if (value.at("source") == source) {
                return value.at("decision");
            }
        }
        return "no such source";
    }
    Json Changes() const { return http->Get("/sensor/jobs/loaded/changes").body; }

    const TempFolder data;
    std::optional<Program> sensor;
    std::optional<HttpClient> http;
    std::string sensorPath;
};

TEST_F(HttpToolsTest, ALimitTurnsDecisionsAndIsThereAfterAKill) {
    Start();
    const std::string tool = ToolOf("profile/max");
    EXPECT_EQ(Decision("profile/max"), 1);
    const HttpAnswer changed = http->Ask("PATCH", tool, {{"high", 0.5}});
    EXPECT_EQ(changed.status, 200);
    EXPECT_EQ(changed.body.at("high"), 0.5);
    EXPECT_EQ(Decision("profile/max"), 0);
    EXPECT_EQ(Decision("profile/min"), 1);
    EXPECT_EQ(http->Get(sensorPath).body.at("unsaved"), Json::array({"job"}));
    EXPECT_EQ(Changes().at("changes").at(0).at("pointer"), "/tools/profile-max/high");
    EXPECT_EQ(http->Ask("POST", "/sensor/jobs/demo/commands/save").status, 200);
    EXPECT_EQ(Changes().at("count"), 0);
    EXPECT_EQ(http->Get(sensorPath).body.at("jobModified"), false);
    Kill();

    Start();
    EXPECT_EQ(http->Get(tool).body.at("high"), 0.5);
    EXPECT_EQ(Decision("profile/max"), 0);
    EXPECT_EQ(Changes().at("count"), 0);
    EXPECT_EQ(http->Get(sensorPath).body.at("jobModified"), false);
}

TEST_F(HttpToolsTest, NoEditorOverwritesTheLimitsOfAnotherUnseen) {
    Start();
    const std::string tool = ToolOf("profile/min");
    const std::string tag = http->Get(tool).Field("etag");
    const HttpAnswer first = http->Ask("PATCH", tool, {{"low", -5}}, {"If-Match: " + tag});
    EXPECT_EQ(first.status, 200);
    EXPECT_NE(first.Field("etag"), tag);
    const HttpAnswer second = http->Ask("PATCH", tool, {{"low", -6}}, {"If-Match: " + tag});
    EXPECT_EQ(second.status, 412);
    EXPECT_EQ(second.Field("etag"), first.Field("etag"));
    EXPECT_EQ(http->Get(tool).body.at("low"), -5);
}

TEST_F(HttpToolsTest, RefusedLimitsAreNamed) {
    Start();
    const std::string tool = ToolOf("profile/width");
    HttpAnswer refused = http->Ask("PATCH", tool, {{"low", 2}, {"high", 1}});
    EXPECT_EQ(refused.status, 422);
    EXPECT_EQ(refused.body.at("detail"), "low: expected at most 1.0, which is high, but got 2.0.");
    EXPECT_EQ(refused.body.at("errors").at(0).at("pointer"), "/low");
    refused = http->Ask("PATCH", tool, {{"low", nullptr}});
    EXPECT_EQ(refused.status, 422);
    EXPECT_EQ(refused.body.at("errors").at(0).at("pointer"), "/low");
    EXPECT_EQ(http->Ask("PATCH", "/sensor/tools", {{"low", 2}}).status, 405);
    EXPECT_EQ(http->Ask("PATCH", "/sensor/tools/profile-text", {{"low", 2}}).status, 404);
    EXPECT_EQ(http->Ask("DELETE", tool).status, 405);
    EXPECT_EQ(http->Get(tool).body.at("low"), -1e9);
    EXPECT_EQ(Changes().at("count"), 0);
}

TEST_F(HttpToolsTest, LimitsThatTheCommandLineSetsDecide) {
    Start();
    Kill();
    Answer set = RunJobs({"set", "demo", "tool.profile-max.low=1000", "tool.values-gap.high=2"});
    EXPECT_EQ(set.status, 0) << set.errors;
    EXPECT_NE(RunJobs({"show", "demo"}).output.find("Tool profile-max:\n  low = 1000.0\n"), std::string::npos);
    Start();
    EXPECT_EQ(Decision("profile/max"), 0);
    EXPECT_NE(sensor->Errors().find("The job has limits of tools that the sensor doesn't have, and keeps them: "
                                    "values-gap."),
              std::string::npos)
        << sensor->Errors();
    EXPECT_EQ(http->Ask("PATCH", ToolOf("profile/max"), {{"low", -1000000000}}).status, 200);
    EXPECT_EQ(Decision("profile/max"), 1);
    EXPECT_EQ(http->Ask("POST", "/sensor/jobs/demo/commands/save").status, 200);
    const std::string shown = RunJobs({"show", "demo"}).output;
    EXPECT_TRUE(shown.ends_with("Tool values-gap:\n  high = 2.0\n")) << shown;
    EXPECT_EQ(shown.find("Tool profile-max"), std::string::npos);
}

TEST_F(HttpToolsTest, AWrongEntryIsRefusedWithItsPlaceAndTheJobRuns) {
    Start();
    EXPECT_EQ(http->Ask("POST", "/sensor/jobs/demo/commands/copy", {{"name", "wrong"}}).status, 200);
    const std::string text = R"({"version":"1","tools":{"profile-max":{"low":2,"high":1}}})";
    VorCommon::ArchiveFile(data.File("jobs/wrong.vrjob"))
        .Write({{"sensor/tools.json", std::make_shared<const std::vector<unsigned char>>(text.begin(), text.end())}});
    EXPECT_EQ(http->Ask("PATCH", ToolOf("profile/max"), {{"high", 0.5}}).status, 200);
    EXPECT_EQ(http->Ask("POST", "/sensor/jobs/wrong/commands/load").status, 200);
    EXPECT_EQ(http->Get(sensorPath).body.at("job"), "wrong.vrjob");
    EXPECT_EQ(http->Get("/sensor/log?level=error&n=1").body.at("items").at(0).at("text"),
              "The limits of the tools weren't loaded, so every value is accepted. Entry 'sensor/tools.json': "
              "tools/profile-max/low: expected at most 1.0, which is high, but got 2.0.");
    EXPECT_EQ(http->Get(sensorPath).body.at("jobModified"), true);
}

} // namespace
} // namespace Tests
