#include "Tests/Net/EchoServer.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

namespace Net {
namespace {

using namespace std::chrono_literals;

class ClientLogTest : public TcpServerTest {
protected:
    /// The entries about clients, with the port of each client as "PORT".
    std::vector<std::string> Entries() const {
        std::vector<std::string> texts;
        for (const Vor::LogRecord& record : log.Records()) {
            if (record.text.starts_with("Client 127.0.0.1:") && record.level == Vor::LevelInfo) {
                texts.push_back("Client PORT" + record.text.substr(record.text.find(' ', 7)));
            }
        }
        return texts;
    }

    /// Waits until no client is connected, and expects an entry for its connection and one for its end.
    void ExpectEnd(const std::string& reason) {
        EXPECT_TRUE(WaitForConnections(0));
        EXPECT_EQ(Entries(),
                  (std::vector<std::string>{"Client PORT has connected", "Client PORT has left: " + reason}));
    }

    Vor::LogCapture log;
};

TEST_F(ClientLogTest, ContainsTheClientsOwnEnd) {
    Open();
    Client();
    ExpectEnd("it has closed the connection");
}

TEST_F(ClientLogTest, ContainsAnIdleClient) {
    Open({.idleTimeOut = 50ms});
    const auto client = Client();
    ExpectEnd("it was idle for 50 ms");
}

TEST_F(ClientLogTest, ContainsTheEndOfASession) {
    Open();
    Client()->Ask("end");
    ExpectEnd("its session has ended");
}

TEST_F(ClientLogTest, ContainsANetworkThatMayNoLongerRead) {
    Open();
    const auto client = Client();
    Update({.readers = {}});
    ExpectEnd("its network may no longer read");
}

TEST_F(ClientLogTest, ContainsTheEndOfTheServer) {
    Open();
    const auto client = Client();
    server.reset();
    ExpectEnd("the server ends");
}

/// During its lifetime the process can open `count` more files.
class OpenFileLimit {
public:
    explicit OpenFileLimit(int count) {
        getrlimit(RLIMIT_NOFILE, &former);
        const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
        close(next);
        rlimit lowered = former;
        lowered.rlim_cur = static_cast<rlim_t>(next + count);
        setrlimit(RLIMIT_NOFILE, &lowered);
    }
    ~OpenFileLimit() { setrlimit(RLIMIT_NOFILE, &former); }
    OpenFileLimit(const OpenFileLimit&) = delete;
    OpenFileLimit& operator=(const OpenFileLimit&) = delete;

private:
    rlimit former{};
};

#if !defined(__SANITIZE_ADDRESS__) // which needs descriptors of its own to check the exception
TEST_F(ClientLogTest, NothingOfAServerStaysForWhichThereAreNotEnoughDescriptors) {
    Open();
    server.reset();
    {
        const OpenFileLimit limit(1);
        EXPECT_THROW(Open({.port = port}), Vor::Exception);
    }
    Open({.port = port});
    EXPECT_EQ(Client()->Ask("again"), "again");
}
#endif

TEST_F(ClientLogTest, TellsTheUserOnceThatThereAreNoMoreDescriptorsAndOnceThatThereAre) {
    Open();
    const std::string place = "127.0.0.1:" + std::to_string(port);
    const auto served = Client();
    std::unique_ptr<LineClient> waiting;
    {
        const OpenFileLimit limit(1);
        waiting = std::make_unique<LineClient>(port);
        waiting->Send("hello\n");
        const std::string failure = "Clients can't connect to " + place + ": Too many open files.";
        EXPECT_TRUE(log.WaitFor(failure));
        EXPECT_EQ(served->Ask("again"), "again");
        // The server tries again meanwhile.
        const auto end = std::chrono::steady_clock::now() + 300ms;
        EXPECT_TRUE(Tests::WaitUntil([&] { return std::chrono::steady_clock::now() > end; }));
        EXPECT_EQ(log.Count(Vor::UserError, failure), 1U);
    }
    EXPECT_EQ(waiting->Line(), "hello");
    EXPECT_EQ(log.Count(Vor::UserInfo, "Clients can connect to " + place + " again."), 1U);
}

} // namespace
} // namespace Net
