#include "Net/TcpServer.h"

#include "Tests/Net/EchoServer.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "yApi/yStatus.h"

#include <arpa/inet.h>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Net {
namespace {

using namespace std::chrono_literals;

std::string FailureOf(NetThread& thread, const TcpServerSettings& settings) {
    TcpCounters counters;
    try {
        TcpServer server(thread, counters, settings, [](bool) { return nullptr; });
    } catch (const Vor::Exception& e) {
        return std::to_string(e.Status()) + " " + e.what();
    }
    return "no failure";
}

TEST_F(TcpServerTest, ListensOnAFreePortAndReportsWhere) {
    Open();
    EXPECT_NE(port, 0);
    EXPECT_EQ(server->Url(), "tcp://127.0.0.1:" + std::to_string(port));
    EXPECT_TRUE(server->IsListening());
    EXPECT_EQ(LineClient(port).Ask("hello"), "hello");
}

TEST_F(TcpServerTest, ListensOnIpV6) {
    try {
        Open({.address = "::1"});
    } catch (const Vor::Exception& e) {
        GTEST_SKIP() << "no IPv6 here: " << e.what();
    }
    EXPECT_EQ(server->Url(), "tcp://[::1]:" + std::to_string(port));
}

TEST_F(TcpServerTest, ReportsWhyItCannotListen) {
    Open();
    EXPECT_EQ(FailureOf(thread, {.port = port}), "-980 port " + std::to_string(port) + " on 127.0.0.1 is in use");
    EXPECT_EQ(FailureOf(thread, {.address = "0.0.0.0", .port = port}),
              "-980 port " + std::to_string(port) + " on 0.0.0.0 is in use");
    EXPECT_EQ(FailureOf(thread, {.address = "192.0.2.1"}), "-980 192.0.2.1 is not an address of this device");
    EXPECT_EQ(FailureOf(thread, {.address = "plc.local"}), "-997 \"plc.local\" is not an IP address");
    EXPECT_EQ(FailureOf(thread, {.address = ""}), "-997 \"\" is not an IP address");
}

TEST_F(TcpServerTest, ServesManyClients) {
    Open();
    std::vector<std::unique_ptr<LineClient>> clients;
    for (int i = 0; i < 32; ++i) {
        clients.push_back(Client());
    }
    EXPECT_EQ(counters.connected, 32u);
    for (const auto& client : clients) {
        EXPECT_EQ(client->Ask("again"), "again");
    }
}

TEST_F(TcpServerTest, AnswersARequestThatComesByteByByteWhileItServesOthers) {
    Open();
    LineClient client(port);
    for (const char byte : std::string("hello\n")) {
        EXPECT_EQ(Client()->Ask("other"), "other");
        client.Send({&byte, 1});
    }
    EXPECT_EQ(client.Line(), "hello");
}

TEST_F(TcpServerTest, AnswersPipelinedRequestsInTheirOrder) {
    Open();
    LineClient client(port);
    std::string requests;
    for (int i = 0; i < 1000; ++i) {
        requests += std::to_string(i) + "\n";
    }
    client.Send(requests);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(client.Line(), std::to_string(i));
    }
}

TEST_F(TcpServerTest, SendsTheRepliesOfASessionThatEndsThenCloses) {
    Open();
    LineClient client(port);
    client.Send("one\nend\nthree\n");
    EXPECT_EQ(client.Rest(), "one\nend\n");
    EXPECT_TRUE(WaitForConnections(0));
}

TEST_F(TcpServerTest, ClosesOneConnectionTooManyAtOnce) {
    Open({.maxConnections = 2});
    auto first = Client();
    const auto second = Client();
    EXPECT_TRUE(LineClient(port).WaitForClose());
    EXPECT_EQ(first->Ask("again"), "again");
    EXPECT_EQ(counters.connected, 2u);
    EXPECT_EQ(counters.refused, 1u);
    first->HalfClose();
    EXPECT_TRUE(first->WaitForClose());
    Client();
}

TEST_F(TcpServerTest, ClosesAClientForWhichThereIsNoSession) {
    bool throws = false;
    Open({}, [&](bool) -> std::unique_ptr<ITcpSession> {
        if (std::exchange(throws, true)) {
            throw std::runtime_error("no session");
        }
        return nullptr;
    });
    const Vor::LogCapture log;
    EXPECT_TRUE(LineClient(port).WaitForClose());
    EXPECT_TRUE(LineClient(port).WaitForClose());
    EXPECT_EQ(counters.connected, 0u);
    EXPECT_EQ(counters.refused, 1u) << "without an exception";
}

TEST_F(TcpServerTest, MovesToAnotherAddressAndClosesItsConnections) {
    Open();
    const auto client = Client();
    Update({.address = "0.0.0.0", .port = port});
    EXPECT_EQ(server->Url(), "tcp://0.0.0.0:" + std::to_string(port));
    EXPECT_TRUE(client->WaitForClose());
    Client();
}

TEST_F(TcpServerTest, StaysWhereItIsWhenItCannotMove) {
    TcpCounters othersCounters;
    const TcpServer other(thread, othersCounters, {}, [](bool) { return nullptr; });
    Open();
    const auto client = Client();
    bool applied = false;
    EXPECT_THROW(server->Update({.port = other.Port()}, [&] { applied = true; }), Vor::Exception);
    EXPECT_FALSE(applied);
    EXPECT_TRUE(server->IsListening());
    EXPECT_EQ(server->Port(), port);
    EXPECT_EQ(client->Ask("again"), "again");
    Client();
}

TEST_F(TcpServerTest, AppliesSettingsOnItsThread) {
    Open();
    const auto client = Client();
    bool isOnThread = false;
    server->Update({}, [&] { isOnThread = thread.IsCurrent(); });
    EXPECT_TRUE(isOnThread);
    EXPECT_EQ(client->Ask("again"), "again") << "port 0 is the port that it has";
}

TEST_F(TcpServerTest, EndsWithConnectionsOpenAndFreesItsPort) {
    Open();
    const auto client = Client();
    LineClient half(port);
    half.Send("hal");
    const auto begin = std::chrono::steady_clock::now();
    server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 200ms);
    EXPECT_EQ(counters.connected, 0u);
    EXPECT_TRUE(client->WaitForClose());
    EXPECT_FALSE(LineClient(port).Connected());
    Open({.port = port});
    Client();
}

TEST_F(TcpServerTest, SharesItsThreadWithAnotherServer) {
    Open();
    TcpCounters othersCounters;
    auto other = std::make_unique<TcpServer>(thread, othersCounters, TcpServerSettings{},
                                             [](bool mayWrite) { return std::make_unique<EchoSession>(mayWrite); });
    const auto client = Client();
    LineClient othersClient(other->Port());
    EXPECT_EQ(othersClient.Ask("other"), "other");
    EXPECT_EQ(counters.connected, 1u);
    EXPECT_EQ(othersCounters.connected, 1u);
    other.reset();
    EXPECT_TRUE(othersClient.WaitForClose());
    EXPECT_EQ(client->Ask("again"), "again");
}

TEST_F(TcpServerTest, AllowsWritesToLoopbackOnlyByDefault) {
    const TcpServerSettings settings;
    Open();
    EXPECT_EQ(Client()->Ask("may?"), "yes");
    for (const auto& [text, may] : {std::pair{"::ffff:127.0.0.1", true},
                                    {"::ffff:127.255.0.9", true},
                                    {"::1", true},
                                    {"::ffff:10.0.0.1", false},
                                    {"::2", false},
                                    {"fe80::1", false}}) {
        NetworkAddress address;
        ASSERT_EQ(inet_pton(AF_INET6, text, address.data()), 1);
        EXPECT_EQ(Contain(settings.writers, address), may) << text;
        EXPECT_TRUE(Contain(settings.readers, address)) << text;
    }
}

TEST_F(TcpServerTest, ClosesAClientThatMayNotReadAtOnce) {
    Open({.readers = ParseNetworks({"127.0.0.2", "10.0.0.0/8", "::/0"})});
    EXPECT_TRUE(LineClient(port).WaitForClose());
    EXPECT_EQ(counters.refused, 1u);
    EXPECT_EQ(counters.connected, 0u);
    Update({.readers = ParseNetworks({"127.0.0.1"})});
    Client();
    EXPECT_EQ(counters.refused, 1u);
}

TEST_F(TcpServerTest, CountsAMappedClientAsIpV4) {
    try {
        Open({.address = "::", .readers = ParseNetworks({"127.0.0.1"}), .writers = ParseNetworks({"127.0.0.1"})});
    } catch (const Vor::Exception& e) {
        GTEST_SKIP() << "no IPv6 here: " << e.what();
    }
    EXPECT_EQ(Client()->Ask("may?"), "yes");
}

TEST_F(TcpServerTest, AppliesOtherNetworksToTheConnectionsThatAreThere) {
    Open();
    const auto client = Client();
    const auto other = Client();
    Update({.writers = {}});
    EXPECT_EQ(client->Ask("may?"), "no");
    Update({.writers = ParseNetworks({"127.0.0.1"})});
    EXPECT_EQ(client->Ask("may?"), "yes");
    Update({.readers = {}});
    EXPECT_TRUE(client->WaitForClose());
    EXPECT_TRUE(other->WaitForClose());
    EXPECT_EQ(counters.connected, 0u);
    EXPECT_EQ(counters.refused, 0u) << "they were not refused when they connected";
}

} // namespace
} // namespace Net
