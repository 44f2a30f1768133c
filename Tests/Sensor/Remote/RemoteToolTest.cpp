#include "Sensor/Remote/RemoteTool.h"

#include "Sensor/Remote/RemoteError.h"
#include "Sensor/StartError.h"
#include "Tests/Sensor/Remote/AnswerServer.h"

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Remote {
namespace {

using nlohmann::json;

constexpr const char* Service = R"({"enabled":true,"n":1,"_schema":{"type":"object","properties":{
    "enabled":{"type":"boolean"},"n":{"type":"integer"}}}})";

class RemoteToolTest : public testing::Test {
protected:
    /// What the command prints.
    std::string Run(RemoteCommand command, std::vector<std::string> answers) {
        server.emplace(std::move(answers));
        std::ostringstream out;
        RemoteTool(HttpClient(ServerAddress::Parse(server->Url())), out).Run(command);
        return out.str();
    }

    /// The exit status, the text and the places of a command that fails.
    std::string Failure(const RemoteCommand& command, const std::vector<std::string>& answers) {
        try {
            Run(command, answers);
        } catch (const RemoteError& error) {
            std::string text = std::to_string(error.ExitStatus()) + ' ' + error.what();
            for (const std::string& place : error.Places()) {
                text += '|' + place;
            }
            return text;
        } catch (const StartError& error) {
            return std::string("refused: ") + error.what();
        }
        return "";
    }

    static RemoteCommand Get(const std::string& path) { return {.action = RemoteCommand::Action::Get, .path = path}; }
    static RemoteCommand Set(const std::string& path, const std::vector<std::string>& settings) {
        return {.action = RemoteCommand::Action::Set, .path = path, .settings = settings};
    }
    static std::string Problem(const std::string& status, const std::string& document) {
        return AnswerServer::Whole(status, "application/problem+json", document);
    }

    std::optional<AnswerServer> server;
};

TEST_F(RemoteToolTest, PrintsADocument) {
    EXPECT_EQ(Run(Get("/a"), {AnswerServer::Success(R"({"b":1,"_links":{"self":2}})")}), "{\n    \"b\": 1\n}\n");
    EXPECT_TRUE(server->Requests().at(0).starts_with("GET /a HTTP/1.1\r\n"));
    RemoteCommand command = Get("/a?n=1");
    command.withLinks = true;
    EXPECT_EQ(Run(command, {AnswerServer::Success(R"({"_links":2})")}), "{\n    \"_links\": 2\n}\n");
    EXPECT_TRUE(server->Requests().at(0).starts_with("GET /a?n=1 HTTP/1.1\r\n"));
}

TEST_F(RemoteToolTest, PrintsTheStatus) {
    const std::vector<std::string> answers = {AnswerServer::Success(R"({"name":"s","job":"j"})"),
                                              AnswerServer::Success(R"({"items":[{"title":"T"}]})")};
    const std::string text = Run({}, answers);
    EXPECT_NE(text.find("Job:   j\n"), std::string::npos) << text;
    EXPECT_NE(text.find("T"), std::string::npos) << text;
    EXPECT_TRUE(server->Requests().at(0).starts_with("GET /sensor HTTP/1.1\r\n"));
    EXPECT_TRUE(server->Requests().at(1).starts_with("GET /sensor/problems HTTP/1.1\r\n"));
    EXPECT_EQ(Run({.json = true}, {answers.front()}), "{\n    \"job\": \"j\",\n    \"name\": \"s\"\n}\n");
}

TEST_F(RemoteToolTest, ChangesMembersOfTheDocumentThatItHasRead) {
    EXPECT_EQ(Run(Set("/controls/a", {"n=2", "enabled=false"}),
                  {AnswerServer::Success(Service, "ETag: \"x-1\"\r\n"),
                   AnswerServer::Success(R"({"enabled":false,"n":3})", "ETag: \"x-2\"\r\n")}),
              "n=3\nenabled=false\n");
    const auto& requests = server->Requests();
    EXPECT_TRUE(requests.at(0).starts_with("GET /controls/a?schema=1 HTTP/1.1\r\n")) << requests.at(0);
    EXPECT_TRUE(requests.at(1).starts_with("PATCH /controls/a HTTP/1.1\r\n")) << requests.at(1);
    EXPECT_NE(requests.at(1).find("\r\nIf-Match: \"x-1\"\r\n"), std::string::npos) << requests.at(1);
    EXPECT_NE(requests.at(1).find("\r\nContent-Type: application/merge-patch+json\r\n"), std::string::npos);
    EXPECT_TRUE(requests.at(1).ends_with(R"({"enabled":false,"n":2})")) << requests.at(1);
}

TEST_F(RemoteToolTest, ChangesAResourceWithoutATag) {
    EXPECT_EQ(Run(Set("/a", {"n=2"}), {AnswerServer::Success(Service), AnswerServer::Success("{}")}), "");
    EXPECT_EQ(server->Requests().at(1).find("If-Match"), std::string::npos);
}

TEST_F(RemoteToolTest, SaysWhatTheSensorRefuses) {
    EXPECT_EQ(Failure(Get("/a"), {Problem("404 Not Found", R"({"title":"Not found","status":404,"detail":"No a."})")}),
              "2 /a: Not found (404): No a.");
    const std::string refused = Problem(
        "422 Unprocessable Entity",
        R"({"title":"Unprocessable","detail":"n: no.","errors":[{"pointer":"/n","text":"n: no."},{"pointer":"/m","text":"m."}]})");
    EXPECT_EQ(Failure(Set("/a", {"n=2"}), {AnswerServer::Success(Service), refused}),
              "2 /a: Unprocessable (422): n: no.|/n: n: no.|/m: m.");
    EXPECT_EQ(Failure(Set("/a", {"n=2"}),
                      {AnswerServer::Success(Service), Problem("412 Precondition Failed", R"({"title":"Failed"})")}),
              "2 /a: Failed (412).|Somebody else has changed it meanwhile, and nothing was set. Try again.");
    EXPECT_EQ(Failure(Get("/a"), {Problem("503 Service Unavailable", R"({"title":"Busy","detail":"Wait."})")}),
              "1 /a: Busy (503): Wait.");
}

TEST_F(RemoteToolTest, SaysThatAnAnswerIsNoSensors) {
    EXPECT_EQ(Failure(Get("/a"), {AnswerServer::Whole("404 Nope", "text/html", "<html>")}),
              "2 /a: The answer is a failure (404).");
    EXPECT_EQ(Failure(Get("/a"), {Problem("500 Odd", "[")}), "1 /a: The answer is a failure (500).");
    EXPECT_EQ(Failure(Get("/a"), {Problem("400 Odd", R"({"title":1,"detail":[],"errors":[1,{"text":2}]})")}),
              "2 /a: The answer is a failure (400).|: |: ");
    EXPECT_EQ(Failure(Get("/a"), {AnswerServer::Whole("302 Found", "text/html", "", "Location: /b\r\n")}),
              "1 /a: The answer is a failure (302).");
    EXPECT_EQ(Failure(Get("/a"), {AnswerServer::Whole("200 OK", "application/octet-stream", "x")}),
              "2 /a: it isn't a document in JSON, but of the type \"application/octet-stream\"; curl can get that.");
    const std::string damaged = Failure(Get("/a"), {AnswerServer::Success("{")});
    EXPECT_TRUE(damaged.starts_with("1 /a: the answer of " + server->Url() + " isn't JSON (")) << damaged;
    const std::string deep = Failure(Get("/a"), {AnswerServer::Success(std::string(100'000, '['))});
    EXPECT_TRUE(deep.starts_with("1 /a: the answer of ")) << deep;
    EXPECT_EQ(Failure(Set("/a", {"n=2"}), {AnswerServer::Success("{}")}),
              "2 /a: it has no schema, so nothing in it can be set.");
    EXPECT_EQ(Failure(Set("/a", {"n=2"}), {AnswerServer::Success("[1]")}),
              "2 /a: it has no schema, so nothing in it can be set.");
}

TEST_F(RemoteToolTest, AsksForNothingThatItCannotSay) {
    EXPECT_EQ(Failure(Get("a"), {}), "refused: a: expected the path of a resource, such as /controls/modbus.");
    EXPECT_EQ(Failure(Set("/a?b=1", {"n=2"}), {}), "refused: /a?b=1: expected the path of a resource without a query.");
    EXPECT_EQ(Failure(Set("/a", {"n"}), {}),
              "refused: set n: expected MEMBER=VALUE, such as enabled=true or parameters.port=502.");
    EXPECT_EQ(Failure(Set("/a", {"n=x"}), {AnswerServer::Success(Service)}), "refused: set n=x: expected an integer.");
    EXPECT_EQ(server->Requests().size(), 1u) << "nothing is sent that would be refused";
}

} // namespace
} // namespace Sensor::Remote
