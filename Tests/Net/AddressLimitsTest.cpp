// One address can't keep the others out.

#include "Net/TcpServer.h"
#include "Tests/Net/EchoServer.h"
#include "Tests/Support/Threads.h"
#include "Vor/Logging.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Net {
namespace {

constexpr const char* Attacker = "127.0.0.1";
constexpr const char* Other = "127.0.0.2";

/// Clients of loopback addresses are counted, each as one of its own.
class AddressLimitsTest : public TcpServerTest {
protected:
    std::unique_ptr<LineClient> From(const char* source) { return std::make_unique<LineClient>(port, 0, source); }

    /// A client that has received a reply; null when it was refused.
    std::unique_ptr<LineClient> ServedFrom(const char* source) {
        auto client = From(source);
        client->SendSome("hello\n");
        return client->Line() == "hello" ? std::move(client) : nullptr;
    }

    /// 500 connections of one address, which are still open. Expects that after each 100 another one is served.
    std::vector<std::unique_ptr<LineClient>> AttackWhileAnotherIsServed() {
        std::vector<std::unique_ptr<LineClient>> attack;
        for (int i = 0; i < 500; ++i) {
            attack.push_back(From(Attacker));
            if (i % 100 == 99) {
                const auto other = ServedFrom(Other);
                EXPECT_TRUE(other != nullptr && other->Ask("again") == "again") << "connection " << i;
            }
        }
        return attack;
    }
};

TEST_F(AddressLimitsTest, LetsAnotherAddressInWhileOneAttacks) {
    Open({.uncounted = {}});
    for (int round = 0; round < 4; ++round) {
        auto attack = AttackWhileAnotherIsServed();
        EXPECT_TRUE(WaitForConnections(16));
        EXPECT_TRUE(Tests::WaitUntil([&] { return counters.refused == 484u * (round + 1); }));
        attack.clear();
        EXPECT_TRUE(WaitForConnections(0));
    }
}

TEST_F(AddressLimitsTest, LetsAnotherAddressInWhileOneHasAllPlaces) {
    Open({.maxConnectionsPerAddress = 0, .uncounted = {}});
    for (int round = 0; round < 4; ++round) {
        auto attack = AttackWhileAnotherIsServed();
        attack.clear();
        EXPECT_TRUE(WaitForConnections(0));
    }
    EXPECT_GT(counters.refused, 0U);
}

TEST_F(AddressLimitsTest, RefusesOneTooManyOfAnAddressAndSaysSo) {
    Open({.maxConnections = 4, .maxConnectionsPerAddress = 2, .uncounted = {}});
    const Vor::LogCapture log;
    const auto first = ServedFrom(Attacker);
    const auto second = ServedFrom(Attacker);
    EXPECT_EQ(ServedFrom(Attacker), nullptr);
    EXPECT_EQ(counters.refused, 1u);
    EXPECT_EQ(
        log.Count("A client from 127.0.0.1 is refused: its address has 2 connections, as many as one address may have"),
        1u);
    const auto third = ServedFrom(Other);
    EXPECT_NE(third, nullptr);
    EXPECT_EQ(first->Ask("again"), "again");
    Update({.maxConnections = 4, .maxConnectionsPerAddress = 3, .uncounted = {}});
    EXPECT_NE(ServedFrom(Attacker), nullptr);
}

TEST_F(AddressLimitsTest, CountsNoUncountedAddress) {
    Open({.maxConnections = 4, .maxConnectionsPerAddress = 2, .uncounted = ParseNetworks({Attacker})});
    std::vector<std::unique_ptr<LineClient>> clients;
    for (int i = 0; i < 4; ++i) {
        clients.push_back(ServedFrom(Attacker));
        EXPECT_NE(clients.back(), nullptr);
    }
    const Vor::LogCapture log;
    EXPECT_EQ(ServedFrom(Other), nullptr) << "these connections keep their places";
    EXPECT_EQ(log.Count("A client from 127.0.0.2 is refused: there are 4 connections, as many as there may be"), 1u);
    for (const auto& client : clients) {
        EXPECT_EQ(client->Ask("again"), "again");
    }
}

TEST_F(AddressLimitsTest, GivesThePlaceOfTheLongestSilentConnectionToAnAddressWithoutOne) {
    Open({.maxConnections = 4, .maxConnectionsPerAddress = 0, .uncounted = {}});
    const auto bystander = ServedFrom("127.0.0.3");
    const auto busy = ServedFrom(Attacker);
    const auto silent = ServedFrom(Attacker);
    const auto late = ServedFrom(Attacker);
    EXPECT_EQ(busy->Ask("again"), "again");
    const auto other = ServedFrom(Other);
    ASSERT_NE(other, nullptr);
    EXPECT_TRUE(silent->WaitForClose());
    for (const auto* client : {&bystander, &busy, &late, &other}) {
        EXPECT_EQ((*client)->Ask("again"), "again");
    }
    EXPECT_EQ(ServedFrom(Other), nullptr) << "it has one";
    EXPECT_EQ(counters.refused, 1u);
    EXPECT_EQ(counters.connected, 4u);
}

TEST_F(AddressLimitsTest, FreesNoPlaceWhereEachAddressHasOne) {
    Open({.maxConnections = 2, .maxConnectionsPerAddress = 0, .uncounted = {}});
    const auto first = ServedFrom("127.0.0.3");
    const auto second = ServedFrom("127.0.0.4");
    EXPECT_EQ(ServedFrom(Other), nullptr);
    EXPECT_EQ(first->Ask("again"), "again");
    EXPECT_EQ(second->Ask("again"), "again");
}

TEST_F(AddressLimitsTest, SaysThatANetworkMayNotRead) {
    Open({.readers = {}});
    const Vor::LogCapture log;
    EXPECT_EQ(ServedFrom(Other), nullptr);
    EXPECT_EQ(log.Count("A client from 127.0.0.2 is refused: its network may not read"), 1u);
}

} // namespace
} // namespace Net
