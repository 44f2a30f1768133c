// A client of HTTP drives the sensor and keeps what it has changed.

#include "Tests/EndToEnd/HttpClient.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "VorCommon/ArchiveFile.h"

#include <csignal>
#include <optional>

namespace Tests {
namespace {

using Json = nlohmann::json;

class HttpJobsTest : public testing::Test {
protected:
    /// A sensor with the test's data folder, once it scans.
    void Start(const std::vector<std::string>& arguments = {}) {
        std::vector<std::string> all{"--modbus-port", "0", "--set", "ascii.port=0"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        sensor.emplace(VirtualSensor::Command(data.Path().string(), all));
        http.emplace(sensor->WaitForLine("HTTP: http://").value_or("HTTP: none/").substr(6));
        EXPECT_TRUE(sensor->WaitForLine("Scanning.")) << sensor->Output() << sensor->Errors();
    }
    void Kill() {
        sensor->Signal(SIGKILL);
        EXPECT_EQ(sensor->WaitForExit(), 128 + SIGKILL);
    }

    /// A command of a document, by its links.
    std::string Command(const std::string& document, const std::string& id) const {
        for (const std::string& path : http->Get(http->Get(document).Link("vor:commands")).Embedded("item")) {
            if (http->Get(path).body.at("id") == id) {
                return path;
            }
        }
        ADD_FAILURE() << "there is no command " << id << " of " << document;
        return "";
    }
    std::string SensorPath() const { return http->Get("/").Link("vor:sensor"); }
    std::string JobPath(const std::string& name) const {
        for (const std::string& path : http->Get(http->Get(SensorPath()).Link("vor:jobs")).Embedded("item")) {
            if (http->Get(path).body.at("name") == name) {
                return path;
            }
        }
        ADD_FAILURE() << "there is no job " << name;
        return "";
    }
    HttpAnswer Run(const std::string& document, const std::string& id, const Json& arguments = nullptr) const {
        return http->Ask("POST", Command(document, id), arguments);
    }

    const TempFolder data;
    std::optional<Program> sensor;
    std::optional<HttpClient> http;
};

TEST_F(HttpJobsTest, WhatIsSavedIsThereAfterAKill) {
    Start();
    EXPECT_EQ(Run(SensorPath(), "stop").body.at("state"), "succeeded");
    EXPECT_EQ(http->Get(SensorPath()).body.at("runState"), "ready");

    const std::string changes = http->Get(JobPath("demo")).Link("vor:changes");
    EXPECT_EQ(http->Get(changes).body.at("count"), 0) << http->Get(changes).body;
    const std::string service = "/controls/modbus";
    EXPECT_EQ(http->Ask("PATCH", service, {{"parameters", {{"idleTimeout", 77}}}}).status, 200);
    const Json unsaved = http->Get(changes).body;
    EXPECT_EQ(unsaved.at("count"), 1) << unsaved;
    EXPECT_EQ(unsaved.at("changes").at(0).at("service"), "modbus");
    EXPECT_EQ(unsaved.at("changes").at(0).at("after"), "77");
    EXPECT_EQ(Run(JobPath("demo"), "save").status, 200);
    EXPECT_EQ(http->Get(changes).body.at("count"), 0);
    EXPECT_EQ(http->Get(SensorPath()).body.at("jobModified"), false);
    Kill();

    Start();
    EXPECT_EQ(http->Get(service).body.at("parameters").at("idleTimeout"), 77);
    EXPECT_EQ(http->Get(changes).body.at("count"), 0);
}

TEST_F(HttpJobsTest, TheSensorStartsWithTheJobThatAClientHasChosen) {
    Start();
    const HttpAnswer copied = Run(JobPath("demo"), "copy", {{"name", "second"}});
    EXPECT_EQ(copied.status, 200);
    EXPECT_EQ(Run(copied.Link("vor:job"), "setDefault").body.at("default"), true);
    EXPECT_EQ(Run(JobPath("second"), "load").body.at("notes").at(0).at("result"), "complete");
    EXPECT_TRUE(sensor->WaitForLine("Loaded job: second.vrjob"));
    EXPECT_EQ(http->Ask("DELETE", JobPath("second")).status, 409);
    EXPECT_EQ(http->Ask("DELETE", JobPath("demo")).status, 204);
    Kill();

    Start();
    EXPECT_EQ(http->Get(SensorPath()).body.at("job"), "second.vrjob");
    Kill();
    VorCommon::ArchiveFile(data.File("jobs/second.vrjob")).Remove();
    Start();
    EXPECT_EQ(http->Get(SensorPath()).body.at("job"), "demo.vrjob");
    EXPECT_NE(sensor->Errors().find("The job second, with which the sensor was to start, doesn't exist any more."),
              std::string::npos)
        << sensor->Errors();
}

TEST_F(HttpJobsTest, AJobSavedUnderAnotherNameIsTheOneThatRuns) {
    Start();
    EXPECT_EQ(http->Ask("PATCH", "/controls/modbus", {{"parameters", {{"idleTimeout", 78}}}}).status, 200);
    EXPECT_EQ(Run(JobPath("demo"), "saveAs", {{"name", "mine"}}).status, 200);
    EXPECT_EQ(http->Get(SensorPath()).body.at("job"), "mine.vrjob");
    EXPECT_EQ(Run(JobPath("demo"), "load").status, 200);
    EXPECT_NE(http->Get("/controls/modbus").body.at("parameters").at("idleTimeout"), 78);
    EXPECT_EQ(Run(JobPath("mine"), "load").status, 200);
    EXPECT_EQ(http->Get("/controls/modbus").body.at("parameters").at("idleTimeout"), 78);
}

TEST_F(HttpJobsTest, ATriggerIsAnsweredWithItsFrame) {
    Start({"--trigger", "software"});
    for (int frame = 1; frame <= 3; ++frame) {
        EXPECT_EQ(Run(SensorPath(), "trigger").status, 200);
        EXPECT_EQ(http->Get(SensorPath()).body.at("frame"), frame);
    }
    EXPECT_EQ(Run(SensorPath(), "stop").status, 200);
    const HttpAnswer refused = Run(SensorPath(), "trigger");
    EXPECT_EQ(refused.status, 409);
    EXPECT_EQ(refused.body.at("detail"), "The sensor isn't scanning.");
}

TEST_F(HttpJobsTest, AnAlignmentThatDoesntEndIsReadAsAnOperation) {
    Start({"--align", "never"});
    const HttpAnswer accepted = http->Ask("POST", Command(SensorPath(), "align"), nullptr, {"Prefer: respond-async"});
    EXPECT_EQ(accepted.status, 202);
    EXPECT_EQ(accepted.Field("preference-applied"), "respond-async");
    EXPECT_EQ(http->Get(accepted.Field("location")).body.at("state"), "running");
    const HttpAnswer busy = Run(SensorPath(), "stop");
    EXPECT_EQ(busy.status, 503);
    EXPECT_EQ(busy.Field("retry-after"), "1");
}

TEST_F(HttpJobsTest, ARestartIsAnsweredBeforeTheProgramEnds) {
    Start();
    const HttpAnswer accepted = Run(SensorPath(), "restart");
    EXPECT_EQ(accepted.status, 202);
    EXPECT_NE(accepted.Field("location"), "");
    EXPECT_EQ(sensor->WaitForExit(), 75);
}

} // namespace
} // namespace Tests
