#include "Sensor/Remote/HttpClient.h"

#include "Sensor/Remote/RemoteError.h"
#include "Sensor/StartError.h"
#include "Tests/Sensor/Remote/AnswerServer.h"

#include <chrono>
#include <string>

#include <gtest/gtest.h>

namespace Sensor::Remote {
namespace {

using namespace std::chrono_literals;

/// Why the server gives no answer; empty when it gives one.
std::string Failure(const HttpClient& client, const HttpQuestion& question = {.target = "/"}) {
    try {
        client.Ask(question);
    } catch (const RemoteError& error) {
        EXPECT_EQ(error.ExitStatus(), RemoteError::NoAnswer);
        return error.what();
    }
    return "";
}

TEST(ServerAddress, IsParsedFromAUrl) {
    const ServerAddress plain = ServerAddress::Parse("http://127.0.0.1:8080/");
    EXPECT_EQ(plain.host, "127.0.0.1");
    EXPECT_EQ(plain.port, "8080");
    EXPECT_EQ(plain.Url(), "http://127.0.0.1:8080");
    const ServerAddress named = ServerAddress::Parse("http://sensor-1.local");
    EXPECT_EQ(named.host, "sensor-1.local");
    EXPECT_EQ(named.port, "80");
    EXPECT_EQ(named.authority, "sensor-1.local");
    const ServerAddress six = ServerAddress::Parse("http://[::1]:1");
    EXPECT_EQ(six.host, "::1");
    EXPECT_EQ(six.port, "1");
    EXPECT_EQ(six.authority, "[::1]:1");
    EXPECT_EQ(ServerAddress::Parse("http://[fd00::7]").port, "80");
    for (const std::string url :
         {"", "http://", "http:///", "127.0.0.1:8080", "https://127.0.0.1:8080", "http://127.0.0.1:", "http://a:99999",
          "http://a:-1", "http://a:1x", "http://:80", "http://a b", "http://a/b", "http://a?b", "http://u@a",
          "http://a\r\nb", "http://[::1", "http://[]:1", "http://[::1]1", "http://::1"}) {
        try {
            ServerAddress::Parse(url);
            ADD_FAILURE() << url;
        } catch (const StartError& error) {
            EXPECT_EQ(error.what(), "--url " + url + ": expected http://HOST[:PORT], such as http://127.0.0.1:8080.");
        }
    }
}

TEST(HttpClient, SendsAQuestionAndReturnsTheAnswer) {
    AnswerServer server({AnswerServer::Success("{\"a\":1}", "ETag: \"b-1\"\r\n")});
    const HttpClient client(ServerAddress::Parse(server.Url()));
    const HttpReply reply = client.Ask({.method = "PATCH",
                                        .target = "/a b/\xC3\xB6?x=1#\r\nX: y",
                                        .body = "{}",
                                        .contentType = "application/merge-patch+json",
                                        .ifMatch = "\"b-0\""});
    EXPECT_EQ(reply.status, 200u);
    EXPECT_EQ(reply.contentType, "application/hal+json");
    EXPECT_EQ(reply.tag, "\"b-1\"");
    EXPECT_EQ(reply.body, "{\"a\":1}");
    const std::string& request = server.Requests().at(0);
    EXPECT_TRUE(request.starts_with("PATCH /a%20b/%C3%B6?x=1%23%0D%0AX:%20y HTTP/1.1\r\n")) << request;
    for (const std::string& field : {"Host: " + server.Url().substr(7), std::string("If-Match: \"b-0\""),
                                     std::string("Content-Type: application/merge-patch+json"),
                                     std::string("Connection: close"), std::string("Content-Length: 2")}) {
        EXPECT_NE(request.find("\r\n" + field + "\r\n"), std::string::npos) << field << '\n' << request;
    }
    EXPECT_TRUE(request.ends_with("\r\n\r\n{}"));
}

TEST(HttpClient, SaysThatNothingAnswers) {
    std::string url;
    {
        const AnswerServer gone({});
        url = gone.Url();
    }
    EXPECT_EQ(Failure(HttpClient(ServerAddress::Parse(url))),
              "Nothing answers at " + url + " (Connection refused). Expected a sensor that runs; --url says where.");
}

TEST(HttpClient, WaitsNoLongerThanItsLimit) {
    const AnswerServer silent({});
    EXPECT_EQ(Failure(HttpClient(ServerAddress::Parse(silent.Url()), {.answer = 10ms})),
              silent.Url() + " gave no whole answer within 10 ms.");
}

TEST(HttpClient, RefusesAnAnswerThatIsTooLong) {
    const std::string whole = AnswerServer::Success("0123456789");
    AnswerServer server({whole, whole, "HTTP/1.1 200 OK\r\n\r\n0123456789"});
    const ServerAddress address = ServerAddress::Parse(server.Url());
    EXPECT_EQ(HttpClient(address, {.body = 10}).Ask({.target = "/"}).body, "0123456789");
    const HttpClient client(address, {.body = 9});
    EXPECT_EQ(Failure(client), server.Url() + " gave an answer of more than 9 bytes.");
    EXPECT_EQ(Failure(client), server.Url() + " gave an answer of more than 9 bytes.") << "of no given length";
}

TEST(HttpClient, RefusesWhatIsNoHttp) {
    AnswerServer server({"SSH-2.0-x\r\n", "", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n12",
                         "HTTP/1.1 200 OK\r\nX: " + std::string(100'000, 'x')});
    const HttpClient client(ServerAddress::Parse(server.Url()));
    for (int i = 0; i < 4; ++i) {
        const std::string failure = Failure(client);
        EXPECT_TRUE(failure.starts_with(server.Url() + " gave no answer of HTTP (")) << failure;
        EXPECT_TRUE(failure.ends_with("). Expected a sensor.")) << failure;
    }
}

} // namespace
} // namespace Sensor::Remote
