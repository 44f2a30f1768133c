// Clients with sockets.

#include "Sensor/Http/HttpServer.h"

#include "Tests/Net/LineClient.h"
#include "Tests/Sensor/Http/FakeHandler.h"
#include "Tests/Sensor/Http/ResponseReader.h"
#include "Tests/Support/Threads.h"
#include "Vor/Exception.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

using namespace std::chrono_literals;
using Net::LineClient;

class HttpServerTest : public testing::Test {
protected:
    static inline const std::string GetLast = "GET /a HTTP/1.1\r\nHost: sensor\r\nConnection: close\r\n\r\n";

    static std::string Get(const std::string& target) { return "GET " + target + " HTTP/1.1\r\nHost: sensor\r\n\r\n"; }

    /// Closes its connection with a reset.
    class ResettingClient : public LineClient {
    public:
        using LineClient::LineClient;
        ~ResettingClient() {
            const linger reset{1, 0};
            setsockopt(fd, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
        }
    };

    HttpServerTest() {
        settings.port = 0;
        Open();
    }

    void Open() {
        server = nullptr;
        server = std::make_unique<HttpServer>(thread, settings, handler);
        port = server->Port();
    }

    /// The only response to the bytes, of which nothing follows.
    ReceivedResponse Ask(const std::string& bytes) {
        LineClient client(port);
        client.Send(bytes);
        client.HalfClose();
        const std::string sent = client.Rest();
        ResponseReader reader(sent);
        ReceivedResponse response = reader.Next();
        EXPECT_TRUE(reader.AtEnd());
        return response;
    }
    void ExpectItServes() { EXPECT_EQ(Ask(GetLast).body, "GET /a\n"); }
    bool WaitForConnections(std::uint64_t count) {
        return Tests::WaitUntil([&] { return server->Counters().connected == count; });
    }

    FakeHandler handler;
    Net::NetThread thread{"TestHttp"};
    HttpServerSettings settings;
    std::unique_ptr<HttpServer> server;
    std::uint16_t port = 0;
};

TEST_F(HttpServerTest, SaysWhereItListens) {
    EXPECT_EQ(server->Url(), "http://127.0.0.1:" + std::to_string(port));
    settings.port = port;
    const HttpServerSettings taken = settings;
    EXPECT_THROW(HttpServer(thread, taken, handler), Vor::Exception);
    ExpectItServes();
}

TEST_F(HttpServerTest, AnswersHoweverARequestIsCut) {
    const std::string post =
        "POST /a HTTP/1.1\r\nHost: sensor\r\nTransfer-Encoding: chunked\r\nConnection: close\r\n\r\n"
        "2\r\nhe\r\n3;x\r\nllo\r\n0\r\n\r\n";
    for (std::size_t cut = 1; cut < post.size(); ++cut) {
        LineClient client(port);
        client.Send(post.substr(0, cut));
        ExpectItServes(); // so the first part was read
        client.Send(post.substr(cut));
        const std::string sent = client.Rest();
        ASSERT_EQ(ResponseReader(sent).Next().body, "POST /a\nhello") << cut;
    }
}

TEST_F(HttpServerTest, AnswersFiveHundredPipelinedRequests) {
    std::string requests;
    for (int i = 0; i < 500; ++i) {
        requests += i % 7 == 0 ? "PUT /" + std::to_string(i) + " HTTP/1.1\r\nHost: a\r\nContent-Length: 1\r\n\r\nx"
                               : Get("/" + std::to_string(i));
    }
    LineClient client(port);
    client.Send(requests);
    client.HalfClose();
    const std::string sent = client.Rest();
    ResponseReader reader(sent);
    for (int i = 0; i < 500; ++i) {
        ASSERT_EQ(reader.Next().body,
                  i % 7 == 0 ? "PUT /" + std::to_string(i) + "\nx" : "GET /" + std::to_string(i) + "\n");
    }
    EXPECT_TRUE(reader.AtEnd());
}

TEST_F(HttpServerTest, AnswersFromOtherThreads) {
    std::atomic<bool> ends = false;
    std::thread answering([&] {
        while (!ends) {
            if (handler.WaitingCount() > 0) {
                handler.AnswerWaiting(0);
            } else {
                std::this_thread::yield();
            }
        }
    });
    std::vector<std::thread> clients;
    clients.reserve(8);
    for (int i = 0; i < 8; ++i) {
        clients.emplace_back([this, i] {
            LineClient client(port);
            std::string requests;
            for (int j = 0; j < 50; ++j) {
                requests += Get("/later/" + std::to_string(i) + "/" + std::to_string(j));
            }
            client.Send(requests);
            client.HalfClose();
            const std::string sent = client.Rest();
            ResponseReader reader(sent);
            for (int j = 0; j < 50; ++j) {
                EXPECT_EQ(reader.Next().body, "GET /later/" + std::to_string(i) + "/" + std::to_string(j) + "\n");
            }
        });
    }
    for (std::thread& client : clients) {
        client.join();
    }
    ends = true;
    answering.join();
}

TEST_F(HttpServerTest, StreamsFromOtherThreads) {
    LineClient client(port);
    client.Send(Get("/stream"));
    ASSERT_TRUE(Tests::WaitUntil([&] {
        const std::lock_guard guard(handler.mutex);
        return handler.streamers.size() == 1;
    }));
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        expected += std::to_string(i) + "\n";
    }
    std::thread writing([&] {
        for (int i = 0; i < 1000; ++i) {
            handler.Stream(std::to_string(i) + "\n");
        }
        handler.source->End();
        handler.WakeStreams();
    });
    const std::string sent = client.Rest();
    writing.join();
    EXPECT_EQ(ResponseReader(sent).Next().body, expected);
}

TEST_F(HttpServerTest, EndsWhileAnswersAreUnderWay) {
    LineClient waiting(port);
    LineClient streaming(port);
    waiting.Send(Get("/later"));
    streaming.Send(Get("/stream"));
    ASSERT_TRUE(Tests::WaitUntil([&] {
        const std::lock_guard guard(handler.mutex);
        return handler.waiting.size() == 1 && handler.streamers.size() == 1;
    }));
    server = nullptr;
    EXPECT_TRUE(handler.source->isStreamGone);
    handler.AnswerWaiting(0);
    handler.Stream("nobody");
    EXPECT_EQ(waiting.Rest(), "");
    Open();
    ExpectItServes();
}

TEST_F(HttpServerTest, NoticesThatAClientDoesNotWait) {
    LineClient client(port);
    client.Send(Get("/later"));
    ASSERT_TRUE(Tests::WaitUntil([&] { return handler.WaitingCount() == 1; }));
    const Responder responder = handler.waiting.at(0).first;
    EXPECT_TRUE(responder.IsWanted());
    client.HalfClose();
    EXPECT_TRUE(Tests::WaitUntil([&] { return !responder.IsWanted(); }));
    handler.AnswerWaiting(0);
    EXPECT_EQ(StatusesOf(client.Rest()), std::vector<unsigned>{200});
}

TEST_F(HttpServerTest, NoticesThatTheClientOfAStreamHasGone) {
    {
        LineClient client(port);
        client.Send(Get("/stream"));
        client.Line();
    }
    EXPECT_TRUE(Tests::WaitUntil([&] { return handler.source->isStreamGone.load(); }));
    EXPECT_TRUE(WaitForConnections(0));
}

// Hostile clients

TEST_F(HttpServerTest, RefusesAHeaderThatDoesNotEnd) {
    settings.session.headerTimeOut = 50ms;
    Open();
    LineClient client(port);
    client.Send("GET / HTTP/1.1\r\n");
    EXPECT_EQ(StatusesOf(client.Rest()), std::vector<unsigned>{408});
}

TEST_F(HttpServerTest, RefusesASilentBody) {
    settings.session.bodyTimeOut = 50ms;
    Open();
    LineClient client(port);
    client.Send("POST /a HTTP/1.1\r\nHost: a\r\nContent-Length: 5\r\n\r\nhell");
    EXPECT_EQ(StatusesOf(client.Rest()), std::vector<unsigned>{408});
}

TEST_F(HttpServerTest, ClosesASilentConnection) {
    settings.session.idleTimeOut = 50ms;
    Open();
    EXPECT_EQ(LineClient(port).Rest(), "");
    EXPECT_TRUE(WaitForConnections(0));
}

TEST_F(HttpServerTest, ItsRefusalReachesAClientThatGoesOnSending) {
    LineClient client(port);
    client.Send("POST /a HTTP/1.1\r\nHost: a\r\nContent-Length: 3000000\r\n\r\n");
    for (int i = 0; i < 30; ++i) {
        client.Send(std::string(100000, 'x'));
    }
    EXPECT_EQ(StatusesOf(client.Rest()), std::vector<unsigned>{413});
}

TEST_F(HttpServerTest, ClosesAConnectionThatTheClientKeepsAfterItsLastAnswer) {
    settings.session.lingerTimeOut = 50ms;
    Open();
    LineClient client(port);
    client.Send(GetLast);
    EXPECT_EQ(StatusesOf(client.Rest()), std::vector<unsigned>{200});
    EXPECT_TRUE(WaitForConnections(0));
}

TEST_F(HttpServerTest, EndsEndlessBodies) {
    LineClient client(port);
    client.Send("POST /a HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\n");
    ASSERT_TRUE(WaitForConnections(1));
    const std::string chunk = "1000\r\n" + std::string(4096, 'x') + "\r\n";
    EXPECT_TRUE(Tests::WaitUntil([&] {
        client.SendSome(chunk);
        return server->Counters().connected == 0;
    }));
    ExpectItServes();
}

TEST_F(HttpServerTest, ServesOthersWhileClientsDoNotRead) {
    std::vector<std::unique_ptr<LineClient>> deaf;
    deaf.reserve(32);
    for (int i = 0; i < 32; ++i) {
        deaf.push_back(std::make_unique<LineClient>(port, 4096));
        deaf.back()->Send(i % 2 == 0 ? Get("/long") + Get("/long") : Get("/stream"));
    }
    ASSERT_TRUE(Tests::WaitUntil([&] {
        const std::lock_guard guard(handler.mutex);
        return handler.streamers.size() == 16;
    }));
    for (int i = 0; i < 100; ++i) {
        handler.Stream(std::string(std::size_t{1} << 18, 'x'));
        ExpectItServes();
    }
    EXPECT_LT(handler.source->bytesRead, std::size_t{16} << 20) << "what nobody reads stays where it is";
    EXPECT_TRUE(Tests::WaitUntil([&] { return handler.longBody.use_count() == 1 + 2 * 16; })) << "it isn't copied";
    deaf.clear();
    EXPECT_TRUE(WaitForConnections(0));
    EXPECT_EQ(handler.longBody.use_count(), 1);
}

TEST_F(HttpServerTest, ResetsAClientWhoseStreamIsCutAtOnce) {
    LineClient deaf(port, 4096);
    deaf.Send(Get("/stream"));
    ASSERT_TRUE(Tests::WaitUntil([&] {
        const std::lock_guard guard(handler.mutex);
        return handler.streamers.size() == 1;
    }));
    std::size_t read = 0;
    do { // until nothing more is sent
        read = handler.source->bytesRead;
        handler.Stream(std::string(std::size_t{1} << 18, 'x'));
        ExpectItServes();
    } while (handler.source->bytesRead > read);
    handler.source->isCut = true;
    handler.WakeStreams();
    EXPECT_TRUE(WaitForConnections(0));
    EXPECT_TRUE(handler.source->isStreamGone);
    EXPECT_LT(deaf.Rest().size(), handler.source->bytesRead) << "what it hasn't read is dropped";
}

TEST_F(HttpServerTest, SurvivesResetsAtEachMoment) {
    const std::string requests =
        Get("/a") + "POST /later HTTP/1.1\r\nHost: a\r\nContent-Length: 5\r\n\r\nhello" + Get("/long") + Get("/stream");
    for (std::size_t cut = 1; cut <= requests.size(); ++cut) {
        ResettingClient client(port, 4096);
        client.Send(requests.substr(0, cut));
        if (cut % 2 == 0) {
            ExpectItServes(); // so it was read
        }
        if (handler.WaitingCount() > 0) {
            handler.AnswerWaiting(0);
        }
    }
    EXPECT_TRUE(WaitForConnections(0));
    ExpectItServes();
}

TEST_F(HttpServerTest, ServesAsManyConnectionsAsItSays) {
    std::vector<std::unique_ptr<LineClient>> clients;
    clients.reserve(256);
    for (int i = 0; i < 256; ++i) {
        clients.push_back(std::make_unique<LineClient>(port));
    }
    ASSERT_TRUE(WaitForConnections(256));
    {
        LineClient client(port);
        client.Send(Get("/a"));
        const std::string sent = client.Rest();
        const ReceivedResponse refusal = ResponseReader(sent).Next();
        EXPECT_EQ(refusal.status, 503U) << "one more";
        EXPECT_EQ(refusal.fields.Find("Content-Type"), "application/problem+json");
        EXPECT_EQ(refusal.fields.Find("Retry-After"), "1");
        EXPECT_TRUE(refusal.closes);
    }
    EXPECT_TRUE(handler.handled.empty());
    for (const auto& client : clients) {
        client->Send(Get("/later"));
    }
    for (std::size_t i = 0; i < clients.size(); ++i) {
        ASSERT_TRUE(Tests::WaitUntil([&] { return handler.WaitingCount() > 0; }));
        handler.AnswerWaiting(0);
    }
    for (const auto& client : clients) {
        EXPECT_EQ(client->Line(), "HTTP/1.1 200 OK\r");
    }
    clients.resize(1);
    EXPECT_TRUE(WaitForConnections(1));
    ExpectItServes();
}

} // namespace
} // namespace Sensor::Http
