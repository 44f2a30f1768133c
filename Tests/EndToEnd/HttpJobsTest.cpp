// A client of HTTP drives the sensor and keeps what it has changed.

#include "Tests/EndToEnd/HttpClient.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Net/LineClient.h"
#include "Tests/Support/TempFolder.h"
#include "Tests/Support/Threads.h"
#include "VorCommon/ArchiveFile.h"

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

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

TEST_F(HttpJobsTest, AJobIsExportedAndImportedUnderAnotherName) {
    Start();
    EXPECT_EQ(http->Ask("PATCH", "/controls/modbus", {{"parameters", {{"idleTimeout", 79}}}}).status, 200);
    EXPECT_EQ(Run(JobPath("demo"), "save").status, 200);
    const TempFolder elsewhere;
    const std::string file = elsewhere.File("job");
    http->Download(http->Get(JobPath("demo")).Link("vor:file"), file);

    const HttpAnswer imported = http->Upload("/sensor/jobs/imported/file", file, {"If-None-Match: *"});
    EXPECT_EQ(imported.status, 201) << imported.body;
    EXPECT_EQ(imported.Field("location"), JobPath("imported"));
    EXPECT_EQ(http->Upload("/sensor/jobs/imported/file", file, {"If-None-Match: *"}).status, 412);
    EXPECT_EQ(http->Upload("/sensor/jobs/imported/file", file).status, 200);
    EXPECT_EQ(http->Upload("/sensor/jobs/demo/file", file).status, 409) << "it is loaded";
    EXPECT_EQ(http->Upload("/sensor/jobs/imported/file", file, {"Origin: http://elsewhere"}).status, 403);
    EXPECT_EQ(Run(JobPath("imported"), "load").status, 200);
    EXPECT_EQ(Run(JobPath("imported"), "setDefault").status, 200);
    EXPECT_EQ(http->Ask("DELETE", JobPath("demo")).status, 204);
    EXPECT_EQ(http->Get("/controls/modbus").body.at("parameters").at("idleTimeout"), 79);
    EXPECT_EQ(http->Get("/sensor/jobs/loaded/changes").body.at("count"), 0);
    Kill();

    Start();
    EXPECT_EQ(http->Get(SensorPath()).body.at("job"), "imported.vrjob");
    EXPECT_EQ(http->Get("/controls/modbus").body.at("parameters").at("idleTimeout"), 79);
}

TEST_F(HttpJobsTest, ADamagedArchiveIsRefusedWithThePlace) {
    Start();
    EXPECT_EQ(Run(JobPath("demo"), "copy", {{"name", "second"}}).status, 200);
    const TempFolder elsewhere;
    const std::string file = elsewhere.File("job");
    http->Download("/sensor/jobs/second/file", file);
    const std::string whole = ReadWholeFile(file);
    const std::string target = "/sensor/jobs/second/file";

    WriteWholeFile(file, whole.substr(0, whole.size() / 2));
    const HttpAnswer cut = http->Upload(target, file);
    EXPECT_EQ(cut.status, 422);
    EXPECT_EQ(cut.body.at("errors").at(0).at("pointer"), "") << cut.body;

    WriteWholeFile(file, whole);
    const std::string config = R"({"version":"1","vor:control":[]})";
    VorCommon::ArchiveFile(file).Write(
        {{"controls/ascii/config.json",
          std::make_shared<const std::vector<unsigned char>>(config.begin(), config.end())}});
    const HttpAnswer wrong = http->Upload(target, file);
    EXPECT_EQ(wrong.status, 422);
    EXPECT_EQ(wrong.body.at("errors").at(0).at("pointer"), "/controls~1ascii~1config.json") << wrong.body;

    // Larger than an archive may be: the file has holes, and curl asks before it sends.
    std::filesystem::resize_file(file, (std::uintmax_t{64} << 20) + 1);
    EXPECT_EQ(http->Upload(target, file).status, 413);
    EXPECT_EQ(Run(JobPath("second"), "load").status, 200) << "it is as it was";
}

TEST_F(HttpJobsTest, AnUploadThatTheProgramDidntEndIsGone) {
    Start();
    const TempFolder elsewhere;
    http->Download("/sensor/jobs/demo/file", elsewhere.File("job"));
    {
        Net::LineClient client(http->Port());
        client.Send("PUT /sensor/jobs/second/file HTTP/1.1\r\nHost: localhost\r\nContent-Length: 9999999\r\n\r\n" +
                    std::string(200'000, 'x'));
        const std::string received = data.File("jobs/.uploads/1/received");
        EXPECT_TRUE(WaitUntil([&] { return std::filesystem::exists(received); }));
        Kill();
        EXPECT_TRUE(std::filesystem::exists(received));
    }
    Start();
    EXPECT_FALSE(std::filesystem::exists(data.File("jobs/.uploads")));
    EXPECT_EQ(http->Get("/sensor/jobs/second").status, 404);
    EXPECT_EQ(http->Upload("/sensor/jobs/second/file", elsewhere.File("job")).status, 201);
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
