// Whatever a client sends over HTTP, it gets the answer that it deserves, and the sensor stays as it was.

#include "Tests/EndToEnd/HttpClient.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Net/LineClient.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Tests {
namespace {

using Net::LineClient;

class HostileHttpTest : public testing::Test {
protected:
    /// What is to be answered, and to what.
    using Cases = std::vector<std::pair<const char*, std::string>>;

    static inline const std::string Service = "/controls/modbus";
    static inline const std::string JsonType = "Content-Type: application/json\r\n";

    HostileHttpTest() {
        sensor.Process().WaitForLine("Service modbus (Modbus TCP): Running");
        const std::string line = sensor.Process().WaitForLine("HTTP: http://127.0.0.1:").value_or("HTTP: :0/");
        http = std::make_unique<HttpClient>(line.substr(6));
        port = static_cast<std::uint16_t>(std::stoi(line.substr(line.rfind(':') + 1)));
        before = State();
    }

    /// What clients could have changed.
    nlohmann::json State() const {
        const HttpAnswer service = http->Get(Service);
        return {service.Field("etag"), service.body["parameters"], service.body["enabled"]};
    }
    /// After whatever was done to it.
    void ExpectItIsAsBefore() const {
        EXPECT_EQ(http->Get("/healthz").status, 200);
        EXPECT_EQ(State(), before);
    }

    static std::string Request(const std::string& method, const std::string& target, const std::string& fields = "",
                               const std::string& body = "", const std::string& host = "127.0.0.1") {
        return method + " " + target + " HTTP/1.1\r\nHost: " + host + "\r\n" + fields + "\r\n" + body;
    }
    static std::string WithBody(const std::string& method, const std::string& target, const std::string& body,
                                const std::string& fields = "") {
        return Request(method, target, fields + JsonType + "Content-Length: " + std::to_string(body.size()) + "\r\n",
                       body);
    }

    /// The statuses of all that is answered until the connection ends, such as "400" or "200 404".
    std::string StatusesOf(const std::string& bytes) const {
        LineClient client(port);
        client.Send(bytes);
        client.HalfClose();
        return StatusesIn(client.Rest());
    }
    static std::string StatusesIn(std::string_view answers) {
        constexpr std::string_view Begin = "HTTP/1.1 ";
        std::string statuses;
        for (std::size_t at = answers.find(Begin); at != std::string_view::npos; at = answers.find(Begin, at + 1)) {
            const std::string_view status = answers.substr(at + Begin.size(), 3);
            if (std::ranges::all_of(status, [](char c) { return c >= '0' && c <= '9'; })) {
                statuses += (statuses.empty() ? "" : " ") + std::string(status);
            }
        }
        return statuses;
    }

    static std::string Repeated(std::string_view text, std::size_t count) {
        std::string all;
        for (std::size_t i = 0; i < count; ++i) {
            all += text;
        }
        return all;
    }

    VirtualSensor sensor{{"--no-scan"}};
    std::unique_ptr<HttpClient> http;
    std::uint16_t port = 0;
    nlohmann::json before;
};

TEST_F(HostileHttpTest, WhatIsNoRequestIsRefusedAndNothingBehindItIsRead) {
    const std::string hidden = Request("DELETE", Service) + Request("GET", "/");
    for (const auto& [status, bytes] : Cases{
             {"400", "\x16\x03\x01\x02\x01\x01\x01\xFC\x03\x03 hello\r\n\r\n"},
             {"400", "GET /\r\n\r\n"},
             {"400", "GET / HTTP/1.1\r\n\r\n"},
             {"400", "GET / HTTP/1.1\nHost: 127.0.0.1\n\n"},
             {"400", Request("GET", "/", "Host: 127.0.0.1\r\n")},
             {"400", Request("GET", "/", "X : y\r\n")},
             {"501", Request("TRACE", "/")},
             {"501", Request("CONNECT", "127.0.0.1:1")},
             {"505", "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n"},
             {"414", "GET /" + std::string(9000, 'a')},
             {"431", Request("GET", "/", "X: " + std::string(17000, 'a') + "\r\n")},
             {"431", Request("GET", "/", Repeated("X: y\r\n", 10000))},
             {"400", Request("POST", Service, "Content-Length: 0\r\nContent-Length: 60\r\n")},
             {"400", Request("POST", Service, "Content-Length: 0\r\nTransfer-Encoding: chunked\r\n")},
             {"501", Request("POST", Service, "Transfer-Encoding: gzip, chunked\r\n", "0\r\n\r\n")},
             {"417", Request("GET", "/", "Expect: a miracle\r\n")},
             {"413", Request("PATCH", Service, JsonType + "Content-Length: 99999999\r\nExpect: 100-continue\r\n")},
         }) {
        EXPECT_EQ(StatusesOf(bytes + hidden), status) << bytes.substr(0, 100);
    }
    ExpectItIsAsBefore();
}

TEST_F(HostileHttpTest, APageOfTheWebReachesNothing) {
    const std::string origin = "Origin: http://evil.example\r\n";
    const std::string change = R"({"enabled":false})";
    for (const auto& [status, bytes] : Cases{
             {"421", Request("GET", "/", "", "", "evil.example")},
             {"421", Request("GET", "/", "", "", "127.0.0.1.evil.example")},
             {"421", Request("GET", "/", "", "", "localhost.:80")},
             {"421", Request("GET", "/", "", "", "2130706433")},
             {"421", Request("GET", "http://evil.example/")},
             {"421", WithBody("PATCH", "http://user@127.0.0.1" + Service, change)},
             {"403", WithBody("PATCH", Service, change, origin)},
             {"403", WithBody("PATCH", Service, change, "Origin: null\r\n")},
             {"403", WithBody("PATCH", Service, change, "Origin: http://127.0.0.1:1\r\n")},
             {"403", Request("DELETE", Service, origin)},
             {"403", Request("PUT", Service, origin)},
             {"415", Request("PATCH", Service, "Content-Length: 17\r\n", change)},
             {"415", Request("PATCH", Service, "Content-Type: text/plain\r\nContent-Length: 17\r\n", change)},
         }) {
        EXPECT_EQ(StatusesOf(bytes + Request("GET", "/")), status) << bytes.substr(0, 100);
    }
    ExpectItIsAsBefore();
}

TEST_F(HostileHttpTest, TargetsLeadNowhereElse) {
    for (const auto& [status, target] : Cases{
             {"404", "/.."},
             {"404", "/../../../etc/passwd"},
             {"404", "/%2e%2e/%2e%2e/etc/passwd"},
             {"404", "/controls/../sensor"},
             {"404", "/controls/modbus/../ascii"},
             {"404", "/controls/modbus%2Fmetrics"},
             {"404", "/controls//modbus"},
             {"404", "/problems/..%2Fsensor"},
             {"404", "/" + std::string(8000, 'a')},
             {"404", Repeated("/a", 4000)},
             {"400", "*"},
             {"400", "/controls/%"},
             {"400", "/controls/%zz"},
             {"400", "/controls/modbus%00"},
             {"400", "/controls/%c3"},
             {"400", "/?topic=%ff"},
             {"400", "/?schema=2"},
             {"400", "/a#b"},
             {"200", "/controls?expand=" + Repeated("item,,", 1000)},
             {"200", "/?" + Repeated("a=b&", 1500)},
         }) {
        EXPECT_EQ(StatusesOf(Request("GET", target)).substr(0, 3), status) << target.substr(0, 100);
    }
    ExpectItIsAsBefore();
}

TEST_F(HostileHttpTest, BodiesThatAreNoneAreRefused) {
    const std::string name(500'000, 'n');
    for (const auto& [status, body] : Cases{
             {"400", ""},
             {"400", "{"},
             {"400", Repeated("[", 1'000'000)},
             {"400", Repeated("{\"a\":", 200'000)},
             {"400", "{\"parameters\":{\"port\":1e999999}}"},
             {"400", "{\"parameters\":{\"port\":1}} {}"},
             {"400", "{\"a\":\"\xC3\"}"},
             {"400", "{\"a\":\"\\ud800\"}"},
             {"400", std::string("{\"a\0\":1}", 8)},
             {"422", "[" + Repeated("0,", 500'000) + "0]"},
             {"422", "{\"parameters\":{\"port\":" + Repeated("9", 300) + "}}"},
             {"422", "{\"parameters\":{\"port\":-1}}"},
             {"422", "{\"parameters\":{\"port\":\"" + name + "\"}}"},
             {"422", "{\"parameters\":{\"port\":null}}"},
             {"422", "{\"" + name + "\":{" + Repeated("\"a\":null,", 50'000) + "\"b\":null}}"},
             {"422", "{\"enabled\":\"false\"}"},
             {"422", "{\"enabled\":false,\"parameters\":{\"port\":{}}}"},
         }) {
        EXPECT_EQ(StatusesOf(WithBody("PATCH", Service, body)), status) << body.substr(0, 100);
    }
    ExpectItIsAsBefore();
    for (const std::string& body : {"{\"" + name + "\":0}", "{" + Repeated("\"a\":[{}],", 100'000) + "\"b\":0}"}) {
        EXPECT_EQ(StatusesOf(WithBody("PATCH", Service, body)), "200") << body.substr(0, 100);
    }
    EXPECT_EQ(State()[0], before[0]) << "unknown members have no effect";
}

TEST_F(HostileHttpTest, AnArchiveComesWholeOrNotAtAll) {
    const std::string path = "/sensor/jobs/second/file";
    const auto put = [&](const std::string& target, const std::string& fields, const std::string& body) {
        return Request("PUT", target, fields, body);
    };
    const std::string chunks = "Transfer-Encoding: chunked\r\n";
    const std::string five = "Content-Length: 5\r\n";
    const nlohmann::json jobs = http->Get("/sensor/jobs").body;
    for (const auto& [status, bytes] : Cases{
             {"422", put(path, five, "hello")},
             {"422", put(path, chunks, "5\r\nhello\r\n0\r\n\r\n")},
             {"422", put(path, chunks, "0\r\n\r\n")},
             {"422", put(path, "", "")},
             {"422", put("/sensor/jobs/..%2Fsecond/file", five, "hello")},
             {"422", put("/sensor/jobs/" + std::string(300, 'a') + "/file", five, "hello")},
             {"400", put(path, five + five, "hello")},
             {"400", put(path, five + chunks, "5\r\nhello\r\n0\r\n\r\n")},
             {"400", put(path, chunks, "5\r\nhello, you\r\n0\r\n\r\n")},
             {"400", put(path, "Content-Range: bytes 0-4/9\r\n" + five, "hello")},
             {"413", put(path, "Content-Length: 67108865\r\n", "hello")},
             {"413", put(path, chunks, "4000001\r\nhello")},
             {"415", put(path, JsonType + five, "hello")},
             {"403", put(path, "Origin: http://evil.example\r\n" + five, "hello")},
             {"412", put(path, "If-Match: *\r\n" + five, "hello")},
             {"405", put(Service, five, "hello")},
             {"404", put("/sensor/jobs/second/files", five, "hello")},
         }) {
        EXPECT_EQ(StatusesOf(bytes).substr(0, 3), status) << bytes.substr(0, 200);
    }
    EXPECT_EQ(StatusesOf(put(path, "Content-Length: 6\r\n", "hello")), "") << "a client that goes isn't answered";
    EXPECT_EQ(StatusesOf(put(path, chunks, "6\r\nhello")), "");
    EXPECT_EQ(http->Get("/sensor/jobs").body, jobs);
    ExpectItIsAsBefore();
}

TEST_F(HostileHttpTest, OddFieldsAreWithoutEffect) {
    for (const auto& [status, fields] : Cases{
             {"412", "If-Match: \r\n"},
             {"412", "If-Match: W/" + before[0].get<std::string>() + "\r\n"},
             {"412", "If-Match: \"" + std::string(8000, 'x') + "\"\r\n"},
             {"412", "If-Match: " + Repeated("\"a\",", 2000) + "\r\n"},
             {"412", "If-Match: *, \"a\"\r\n"},
         }) {
        EXPECT_EQ(StatusesOf(WithBody("PATCH", Service, R"({"enabled":false})", fields)), status)
            << fields.substr(0, 100);
    }
    for (const auto& [status, fields] : Cases{
             {"406", "Accept: text/event-stream\r\n"},
             {"200", "Accept: " + Repeated("a/b;q=,", 2000) + "\r\n"},
             {"200", "Accept: \"\r\n"},
             {"200", "Range: bytes=0-0\r\nIf-None-Match: *\r\nUpgrade: websocket\r\nConnection: upgrade\r\n"},
             {"200", "Last-Event-ID: " + std::string(8000, '9') + "\r\n"},
         }) {
        EXPECT_EQ(StatusesOf(Request("GET", Service, fields)), status) << fields.substr(0, 100);
    }
    ExpectItIsAsBefore();
}

} // namespace
} // namespace Tests
