#pragma once

#include "Net/BufferedSession.h"
#include "Net/TcpServer.h"
#include "Tests/Net/LineClient.h"
#include "Tests/Support/Threads.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

namespace Net {

/// Answers each line with itself, "may?" with whether the client may write, and ends at "end" and at a line that is
/// too long.
class EchoSession : public BufferedSession {
public:
    explicit EchoSession(bool mayWrite)
        : BufferedSession(1024, 4096)
        , mayWrite(mayWrite) {}

    void SetMayWrite(bool value) override { mayWrite = value; }

    std::size_t Process() override {
        std::size_t answered = 0;
        std::size_t begin = 0;
        const std::string_view input(reinterpret_cast<const char*>(Input().data()), Input().size());
        while (!broken && OutputSpace().size() >= 1024) {
            const std::size_t end = input.find('\n', begin);
            if (end == std::string_view::npos) {
                broken = ReceiveSpace().empty() && begin == 0;
                break;
            }
            Answer(input.substr(begin, end + 1 - begin));
            begin = end + 1;
            ++answered;
        }
        Consume(begin);
        return answered;
    }

    bool Broken() const override { return broken; }

protected:
    virtual void Answer(std::string_view line) {
        if (line == "may?\n") {
            Reply(mayWrite ? "yes\n" : "no\n");
        } else {
            Reply(line);
            broken = line == "end\n";
        }
    }

    void Reply(std::string_view text) { Append({reinterpret_cast<const unsigned char*>(text.data()), text.size()}); }

    bool mayWrite;
    bool broken = false;
};

/// A server for one test.
class TcpServerTest : public testing::Test {
protected:
    void Open(const TcpServerSettings& settings = {}) {
        Open(settings, [](bool mayWrite) { return std::make_unique<EchoSession>(mayWrite); });
    }
    void Open(const TcpServerSettings& settings, TcpServer::SessionMaker makeSession) {
        server = std::make_unique<TcpServer>(thread, counters, settings, std::move(makeSession), &wakeup);
        port = server->Port();
    }
    void Update(const TcpServerSettings& settings) {
        server->Update(settings, [] {});
    }

    /// A client that has received a reply.
    std::unique_ptr<LineClient> Client() {
        auto client = std::make_unique<LineClient>(port);
        EXPECT_EQ(client->Ask("hello"), "hello");
        return client;
    }

    bool WaitForConnections(std::uint64_t count) {
        return Tests::WaitUntil([&] { return counters.connected == count; });
    }

    NetThread thread{"TestNet"};
    Wakeup wakeup;
    TcpCounters counters;
    std::unique_ptr<TcpServer> server;
    std::uint16_t port = 0;
};

} // namespace Net
