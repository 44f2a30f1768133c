#include "Tests/Services/Modbus/ModbusServer.h"

#include "Tests/Services/Modbus/Bytes.h"
#include "Tests/Services/Modbus/RawClient.h"
#include "Tests/Support/Threads.h"
#include "Vor/Exception.h"

#include <atomic>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace Services::Modbus {
namespace {

using Common::ServiceCounters;
using Net::ParseNetworks;
using Net::TcpServerSettings;

const Bytes ReplyTo77(Bytes{0, 9, 0, 0, 0, 5, 1, 3, 2, 0, 77});

bool WaitForCount(const std::atomic<std::uint64_t>& counter, std::uint64_t value) {
    return Tests::WaitUntil([&] { return counter == value; });
}

const Bytes WriteOne = {0, 9, 0, 0, 0, 6, 1, 6, 0, 7, 0, 1};
const Bytes MayNotWrite = {0, 9, 0, 0, 0, 3, 1, 0x86, 1};

class ModbusServerTest : public testing::Test {
protected:
    void Open(const TcpServerSettings& settings = {}) {
        server = std::make_unique<ModbusServer>(registers, counters, settings);
        port = server->Port();
    }
    void Update(const TcpServerSettings& settings, unsigned char unit = 0) { server->Update(settings, unit); }

    /// A client that has received a reply.
    std::unique_ptr<RawClient> Client() {
        auto client = std::make_unique<RawClient>(port);
        EXPECT_EQ(client->Ask(ReadRequest(9, 77, 1)), ReplyTo77);
        return client;
    }

    AddressRegisters registers;
    ServiceCounters counters;
    std::unique_ptr<ModbusServer> server;
    std::uint16_t port = 0;
};

TEST_F(ModbusServerTest, AnswersARequestCutAtEveryLength) {
    Open();
    RawClient client(port);
    const Bytes request = ReadRequest(9, 77, 1);
    for (std::size_t cut = 1; cut < request.size(); ++cut) {
        const auto middle = request.begin() + static_cast<std::ptrdiff_t>(cut);
        client.Send(Bytes(request.begin(), middle));
        EXPECT_EQ(Client()->Ask(ReadRequest(9, 77, 1)), ReplyTo77) << "the others are served meanwhile";
        client.Send(Bytes(middle, request.end()));
        EXPECT_EQ(client.ReceiveReply(), ReplyTo77) << cut;
    }
}

TEST_F(ModbusServerTest, AnswersPipelinedRequestsInOrder) {
    Open();
    RawClient client(port);
    Bytes requests;
    for (unsigned i = 0; i < 1000; ++i) {
        requests = requests + ReadRequest(i, i, 1);
    }
    client.Send(requests);
    for (unsigned i = 0; i < 1000; ++i) {
        const auto high = static_cast<unsigned char>(i >> 8);
        const auto low = static_cast<unsigned char>(i);
        ASSERT_EQ(client.ReceiveReply(), (Bytes{high, low, 0, 0, 0, 5, 1, 3, 2, high, low}));
    }
}

TEST_F(ModbusServerTest, ClosesTheConnectionAfterAnotherProtocolOrABadLength) {
    Open();
    for (const Bytes& bad : {Bytes{'G', 'E', 'T', ' ', '/', '\r'}, Bytes{0, 1, 0, 0, 0, 1}, Bytes{0, 1, 0, 0, 1, 0}}) {
        RawClient client(port);
        client.Send(ReadRequest(9, 77, 1) + bad);
        EXPECT_EQ(client.ReceiveReply(), ReplyTo77);
        EXPECT_TRUE(client.WaitForClose());
    }
    EXPECT_EQ(Client()->Ask(ReadRequest(9, 77, 1)), ReplyTo77);
}

TEST_F(ModbusServerTest, TakesAnotherUnitAtOnce) {
    Open();
    const auto client = Client();
    Update({.port = port}, 5);
    EXPECT_EQ(client->Ask(ReadRequest(9, 77, 1)), (Bytes{0, 9, 0, 0, 0, 3, 1, 0x83, 11}));
}

TEST_F(ModbusServerTest, CountsConnectionsRequestsAndExceptions) {
    Open({.maxConnections = 2});
    const auto first = Client();
    auto second = Client();
    EXPECT_EQ(counters.connected, 2u);
    EXPECT_TRUE(RawClient(port).WaitForClose());
    EXPECT_TRUE(WaitForCount(counters.refused, 1));
    EXPECT_EQ(counters.requests, 2u);
    EXPECT_EQ(counters.failed, 0u);
    EXPECT_EQ(first->Ask({0, 9, 0, 0, 0, 2, 1, 44}), (Bytes{0, 9, 0, 0, 0, 3, 1, 0xAC, 1}));
    EXPECT_EQ(counters.requests, 3u);
    EXPECT_EQ(counters.failed, 1u);
    second.reset();
    EXPECT_TRUE(WaitForCount(counters.connected, 1));
    server.reset();
    EXPECT_EQ(counters.connected, 0u);
    EXPECT_EQ(counters.requests, 3u);
}

TEST_F(ModbusServerTest, LetsAClientThatMayNotWriteRead) {
    Open({.writers = ParseNetworks({"10.0.0.0/8"})});
    const auto client = Client();
    EXPECT_EQ(client->Ask(WriteOne), MayNotWrite);
    EXPECT_EQ(client->Ask(ReadRequest(9, 77, 1)), ReplyTo77);
}

} // namespace
} // namespace Services::Modbus
