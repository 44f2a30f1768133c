// Clients that are slow, silent or greedy cost themselves only.

#include "Net/TcpServer.h"
#include "Tests/Net/EchoServer.h"
#include "Tests/Support/Threads.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace Net {
namespace {

using namespace std::chrono_literals;

const std::string Long = std::string(900, 'x') + "\n";

class HostileClientsTest : public TcpServerTest {
protected:
    /// Sends requests and reads no reply until the kernel's buffers on both sides are full.
    void Fill(LineClient& client, const std::function<void()>& between) {
        std::size_t sent = 0;
        for (int refusals = 0; refusals < 50;) {
            const std::size_t some = client.SendSome(Long);
            sent += some;
            refusals = some == 0 ? refusals + 1 : 0;
            ASSERT_LT(sent, 64u * 1024 * 1024) << "it is read from although it reads nothing";
            between();
        }
    }
};

TEST_F(HostileClientsTest, ASlowReaderIsNotReadFromAndTheOthersAreServed) {
    Open();
    LineClient slow(port, 4096);
    Fill(slow, [&] { ASSERT_EQ(LineClient(port).Ask("other"), "other"); });
    EXPECT_EQ(slow.Line() + "\n", Long) << "it gets its replies as soon as it reads them";
}

TEST_F(HostileClientsTest, AClientThatNeverReadsIsClosed) {
    Open({.idleTimeOut = 50ms});
    LineClient deaf(port, 4096);
    ASSERT_TRUE(WaitForConnections(1));
    EXPECT_TRUE(Tests::WaitUntil([&] {
        deaf.SendSome(Long);
        return counters.connected == 0;
    }));
}

TEST_F(HostileClientsTest, AClientThatHasClosedItsSideGetsAllReplies) {
    Open();
    LineClient client(port);
    client.Send("one\ntwo\nthr");
    client.HalfClose();
    EXPECT_EQ(client.Rest(), "one\ntwo\n");
    EXPECT_TRUE(WaitForConnections(0));
}

TEST_F(HostileClientsTest, ASilentClientIsClosed) {
    Open({.idleTimeOut = 200ms});
    LineClient silent(port);
    const auto talked = Client();
    EXPECT_TRUE(silent.WaitForClose());
    EXPECT_TRUE(talked->WaitForClose());
    EXPECT_TRUE(WaitForConnections(0));
}

TEST_F(HostileClientsTest, AClientThatNeverEndsItsRequestIsClosed) {
    Open({.idleTimeOut = 50ms});
    LineClient client(port);
    const auto drip = [&] {
        client.SendSome("x");
        return counters.connected == 0;
    };
    ASSERT_TRUE(WaitForConnections(1));
    EXPECT_TRUE(Tests::WaitUntil(drip)) << "bytes alone are no request";
}

TEST_F(HostileClientsTest, ASilentClientStaysWithoutATimeOut) {
    Open({.idleTimeOut = 0ms});
    const auto silent = Client();
    Update({.idleTimeOut = 0ms});
    EXPECT_EQ(counters.connected, 1u);
    Update({.idleTimeOut = 1ms});
    EXPECT_TRUE(silent->WaitForClose()) << "a new time-out holds for the connections that are there";
}

TEST_F(HostileClientsTest, ABusyClientOutlivesTheTimeOut) {
    Open({.idleTimeOut = 1s});
    const auto silent = Client();
    const auto busy = Client();
    EXPECT_TRUE(Tests::WaitUntil([&] {
        EXPECT_EQ(busy->Ask("again"), "again");
        return counters.connected == 1;
    }));
    EXPECT_TRUE(silent->WaitForClose());
    EXPECT_EQ(busy->Ask("again"), "again");
}

TEST_F(HostileClientsTest, ARequestWithoutAnEndIsBounded) {
    Open();
    LineClient client(port);
    client.SendSome(std::string(100'000, 'x'));
    EXPECT_TRUE(client.WaitForClose());
    Client();
}

TEST_F(HostileClientsTest, AFloodOfConnectionsLeavesTheServedOnesAlone) {
    Open({.maxConnections = 4});
    const auto served = Client();
    for (int round = 0; round < 20; ++round) {
        std::vector<std::unique_ptr<LineClient>> flood;
        for (int i = 0; i < 20; ++i) {
            flood.push_back(std::make_unique<LineClient>(port));
        }
        ASSERT_EQ(served->Ask("again"), "again");
        EXPECT_TRUE(Tests::WaitUntil([&] { return counters.refused > 0; }));
        EXPECT_LE(counters.connected, 4u);
    }
    EXPECT_TRUE(WaitForConnections(1));
    Client();
}

TEST_F(HostileClientsTest, AFloodOfRequestsLeavesOthersTheirTurn) {
    Open();
    std::atomic<bool> ends = false;
    std::vector<std::thread> floods;
    for (int i = 0; i < 3; ++i) {
        floods.emplace_back([&] {
            LineClient client(port);
            while (!ends) {
                client.SendSome("a\nb\nc\nd\n");
                client.Line();
            }
        });
    }
    const auto client = Client();
    for (int i = 0; i < 500; ++i) {
        EXPECT_EQ(client->Ask("mine"), "mine");
    }
    ends = true;
    for (std::thread& flood : floods) {
        flood.join();
    }
}

} // namespace
} // namespace Net
