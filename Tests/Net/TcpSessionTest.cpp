// What a session may do beside answering at once.

#include "Net/ITcpSession.h"
#include "Net/WrappedSession.h"
#include "Tests/Net/EchoServer.h"
#include "Vor/Logging.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Net {
namespace {

using namespace std::chrono_literals;

class TcpSessionTest : public TcpServerTest {
protected:
    /// Serves clients with sessions of this class.
    template <class Session, class... Args>
    void Serve(const TcpServerSettings& settings, Args&... args) {
        Open(settings, [&args...](bool mayWrite) { return std::make_unique<Session>(mayWrite, args...); });
    }
};

/// A text that one thread writes and another one reads once.
class Letterbox {
public:
    void Put(const std::string& value) {
        const std::lock_guard lock(mutex);
        text = value;
    }
    std::optional<std::string> MoveOut() {
        const std::lock_guard lock(mutex);
        return std::exchange(text, std::nullopt);
    }

private:
    std::mutex mutex; ///< guards the text
    std::optional<std::string> text;
};

/// Answers the line "ask" with a text from the letterbox, when there is one. Lines after it wait.
class AskingSession : public EchoSession {
public:
    AskingSession(bool mayWrite, Letterbox& answers)
        : EchoSession(mayWrite)
        , answers(answers) {}

    std::size_t Process() override {
        if (asks) {
            const auto answer = answers.MoveOut();
            if (!answer) {
                return 0;
            }
            Reply(*answer + "\n");
            asks = false;
            return 1;
        }
        const std::string_view input(reinterpret_cast<const char*>(Input().data()), Input().size());
        if (input.substr(0, 4) == "ask\n") {
            Consume(4);
            asks = true;
            return 0;
        }
        return EchoSession::Process();
    }
    bool IsWorking() const override { return asks; }

private:
    Letterbox& answers;
    bool asks = false;
};

TEST_F(TcpSessionTest, AnswersLaterFromAnotherThread) {
    Letterbox answers;
    Serve<AskingSession>({}, answers);
    LineClient client(port);
    for (int i = 0; i < 100; ++i) {
        client.Send("ask\n");
        client.Send("behind\n");
        const auto other = Client();
        std::thread([&] {
            answers.Put(std::to_string(i));
            wakeup.Set();
        }).join();
        ASSERT_EQ(client.Line(), std::to_string(i));
        ASSERT_EQ(client.Line(), "behind");
    }
}

TEST_F(TcpSessionTest, StaysOpenWhileItWorks) {
    Letterbox answers;
    Serve<AskingSession>({.idleTimeOut = 200ms}, answers);
    LineClient client(port);
    client.Send("ask\n");
    client.HalfClose();
    const auto silent = Client();
    EXPECT_TRUE(silent->WaitForClose()) << "the time-out has passed";
    EXPECT_EQ(counters.connected, 1u) << "though the client is silent and has closed its side";
    answers.Put("late");
    wakeup.Set();
    EXPECT_EQ(client.Rest(), "late\n");
}

TEST_F(TcpSessionTest, MayGoBeforeItsAnswerComes) {
    Letterbox answers;
    Serve<AskingSession>({}, answers);
    {
        LineClient client(port);
        client.Send("ask\n");
        Client();
    }
    server.reset();
    answers.Put("nobody");
    wakeup.Set();
    Open();
    Client();
}

/// Is closed some time after its last request; "more" asks for a farewell, which needs more time.
class TimedSession : public EchoSession {
public:
    explicit TimedSession(bool mayWrite)
        : EchoSession(mayWrite) {}

    std::size_t Process() override {
        const std::size_t answered = EchoSession::Process();
        if (answered > 0) {
            deadline = Clock::now() + 20ms;
        }
        return answered;
    }
    std::optional<Clock::time_point> Deadline() const override { return deadline; }
    bool Expire() override {
        if (!saysFarewell) {
            return false;
        }
        Reply("farewell\n");
        deadline.reset();
        broken = true;
        return true;
    }

protected:
    void Answer(std::string_view line) override {
        saysFarewell = line == "more\n";
        EchoSession::Answer(line);
    }

private:
    std::optional<Clock::time_point> deadline = Clock::now() + 1h;
    bool saysFarewell = false;
};

TEST_F(TcpSessionTest, SetsItsOwnDeadline) {
    Serve<TimedSession>({.idleTimeOut = 1ms});
    const LineClient silent(port);
    LineClient client(port);
    ASSERT_TRUE(WaitForConnections(2));
    EXPECT_EQ(client.Ask("once"), "once");
    EXPECT_EQ(client.Rest(), "");
    EXPECT_EQ(counters.connected, 1u) << "the other one has an hour";
}

TEST_F(TcpSessionTest, MayReplyAtItsDeadline) {
    Serve<TimedSession>({});
    LineClient client(port);
    client.Send("more\n");
    EXPECT_EQ(client.Rest(), "more\nfarewell\n");
}

/// Says at its deadline that it stays, and has no later one.
class StubbornSession : public EchoSession {
public:
    StubbornSession(bool mayWrite, std::atomic<unsigned>& expired)
        : EchoSession(mayWrite)
        , expired(expired) {}

    std::optional<Clock::time_point> Deadline() const override { return deadline; }
    bool Expire() override {
        ++expired;
        return true;
    }

private:
    std::atomic<unsigned>& expired;
    const Clock::time_point deadline = Clock::now() + 1ms;
};

TEST_F(TcpSessionTest, IsClosedAtADeadlineThatItDoesNotMove) {
    std::atomic<unsigned> expired = 0;
    Serve<StubbornSession>({}, expired);
    EXPECT_TRUE(LineClient(port).WaitForClose());
    EXPECT_EQ(expired, 1u);
}

/// Sends numbers without a request, one after the other is sent.
class CountingSession : public EchoSession {
public:
    CountingSession(bool mayWrite, std::atomic<unsigned>& drained)
        : EchoSession(mayWrite)
        , drained(drained) {
        Next();
    }

    void Drained() override {
        ++drained;
        if (!broken) {
            Next();
        }
    }

private:
    void Next() {
        Reply(std::to_string(number) + "\n");
        broken = number == 10'000;
        ++number;
    }

    std::atomic<unsigned>& drained;
    unsigned number = 0;
};

TEST_F(TcpSessionTest, SendsMoreWhenItsOutputHasDrained) {
    std::atomic<unsigned> drained = 0;
    Serve<CountingSession>({}, drained);
    LineClient client(port);
    for (unsigned i = 0; i <= 10'000; ++i) {
        ASSERT_EQ(client.Line(), std::to_string(i));
    }
    EXPECT_TRUE(client.WaitForClose());
    EXPECT_GE(drained, 10'000u);
}

/// Sends without an end, as fast as the client reads.
class FountainSession : public EchoSession {
public:
    FountainSession(bool mayWrite, std::atomic<unsigned>& stops)
        : EchoSession(mayWrite)
        , stops(stops) {}

    bool ReadsAhead() const override { return true; }
    std::size_t Process() override {
        if (!Input().empty()) {
            Consume(Input().size());
            ++stops;
            broken = true;
            return 1;
        }
        if (!broken) {
            while (OutputSpace().size() >= line.size()) {
                Reply(line);
            }
        }
        return 0;
    }

private:
    const std::string line = std::string(99, 'x') + "\n";
    std::atomic<unsigned>& stops;
};

TEST_F(TcpSessionTest, ReadsWhileItSendsWhenItWants) {
    std::atomic<unsigned> stops = 0;
    Serve<FountainSession>({}, stops);
    LineClient deaf(port, 4096);
    LineClient client(port);
    EXPECT_EQ(client.Line(), std::string(99, 'x'));
    deaf.Send("s");
    EXPECT_TRUE(Tests::WaitUntil([&] { return stops == 1; })) << "though its client reads nothing";
    client.Send("s");
    EXPECT_TRUE(client.WaitForClose());
    EXPECT_TRUE(deaf.WaitForClose());
}

TEST_F(TcpSessionTest, LeavesOthersTheirTurnWhileItSendsWithoutEnd) {
    std::atomic<unsigned> stops = 0;
    bool isFirst = true;
    Open({}, [&](bool mayWrite) -> std::unique_ptr<ITcpSession> {
        if (std::exchange(isFirst, false)) {
            return std::make_unique<FountainSession>(mayWrite, stops);
        }
        return std::make_unique<EchoSession>(mayWrite);
    });
    LineClient greedy(port);
    EXPECT_EQ(greedy.Line(), std::string(99, 'x'));
    std::atomic<bool> ends = false;
    std::thread reader([&] {
        while (!ends) {
            greedy.Line();
        }
    });
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(LineClient(port).Ask("mine"), "mine");
    }
    ends = true;
    reader.join();
}

/// Replies "bye" and the client's address to the first line, and drops what comes then.
class FinishingSession : public EchoSession {
public:
    using EchoSession::EchoSession;

    void SetPeer(const NetworkAddress& address) override { peer = AddressText(address); }
    void Received(std::size_t count) override {
        if (!finished) {
            EchoSession::Received(count);
        }
    }
    bool HasFinished() const override { return finished; }

protected:
    void Answer(std::string_view) override {
        Reply("bye " + peer + "\n");
        finished = true;
    }

private:
    std::string peer;
    bool finished = false;
};

TEST_F(TcpSessionTest, ItsLastReplyReachesAClientThatGoesOnSending) {
    Serve<FinishingSession>({});
    {
        LineClient client(port);
        client.Send("hello\n");
        for (int i = 0; i < 100; ++i) {
            client.Send(std::string(4096, 'x'));
        }
        EXPECT_EQ(client.Rest(), "bye 127.0.0.1\n");
        EXPECT_EQ(counters.connected, 1U) << "until the client closes its side";
    }
    EXPECT_TRUE(WaitForConnections(0));
}

/// Sends much; is aborted when it says so.
class AbortedSession : public EchoSession {
public:
    AbortedSession(bool mayWrite, std::atomic<bool>& aborts)
        : EchoSession(mayWrite)
        , aborts(aborts) {}

    bool ReadsAhead() const override { return true; }
    std::size_t Process() override {
        if (OutputSpace().size() > 0) {
            Reply(std::string(OutputSpace().size(), 'x'));
        }
        return 0;
    }
    bool IsAborted() const override { return aborts; }

private:
    std::atomic<bool>& aborts;
};

TEST_F(TcpSessionTest, IsResetWhenItIsAborted) {
    class Client : public LineClient {
    public:
        using LineClient::LineClient;
        /// Reads to the end; whether that was a reset.
        bool IsReset() {
            char bytes[4096];
            ssize_t got = 1;
            while (got > 0 && WaitForBytes()) {
                got = recv(fd, bytes, sizeof bytes, 0);
            }
            return got < 0 && errno == ECONNRESET;
        }
    };
    std::atomic<bool> aborts = false;
    Serve<AbortedSession>({}, aborts);
    Client deaf(port, 4096);
    ASSERT_TRUE(WaitForConnections(1));
    aborts = true;
    wakeup.Set();
    EXPECT_TRUE(WaitForConnections(0)) << "though its client reads nothing";
    EXPECT_TRUE(deaf.IsReset());
    server.reset(); // before the flag, which its session reads to the end
}

/// Notes that the client has closed its side.
class ListeningSession : public EchoSession {
public:
    ListeningSession(bool mayWrite, std::atomic<unsigned>& ends)
        : EchoSession(mayWrite)
        , ends(ends) {}

    void InputEnded() override { ++ends; }
    bool IsWorking() const override { return true; }

private:
    std::atomic<unsigned>& ends;
};

TEST_F(TcpSessionTest, IsToldOnceThatTheClientHasClosedItsSide) {
    std::atomic<unsigned> ends = 0;
    Serve<ListeningSession>({}, ends);
    LineClient client(port);
    EXPECT_EQ(client.Ask("hello"), "hello");
    EXPECT_EQ(ends, 0U);
    client.HalfClose();
    EXPECT_TRUE(Tests::WaitUntil([&] { return ends == 1; }));
    wakeup.Set();
    server.reset();
    EXPECT_EQ(ends, 1U);
}

/// Says no, without a request, and waits for the client to close the connection.
class RefusingSession : public EchoSession {
public:
    RefusingSession()
        : EchoSession(false) {
        Reply("no\n");
    }
    std::size_t Process() override { return 0; }
    void Received(std::size_t) override {}
    bool HasFinished() const override { return true; }
};

TEST_F(TcpSessionTest, SaysNoToClientsForWhomThereIsNoPlace) {
    server = std::make_unique<TcpServer>(
        thread, counters, TcpServerSettings{.maxConnections = 2},
        [](bool mayWrite) { return std::make_unique<EchoSession>(mayWrite); }, &wakeup,
        [] { return std::make_unique<RefusingSession>(); });
    port = server->Port();
    const auto first = Client();
    const auto second = Client();
    std::vector<std::unique_ptr<LineClient>> refused;
    for (std::size_t i = 0; i < TcpServer::MaxRefused; ++i) {
        refused.push_back(std::make_unique<LineClient>(port));
        refused.back()->Send("hello\n");
        EXPECT_EQ(refused.back()->Rest(), "no\n");
    }
    EXPECT_EQ(LineClient(port).Rest(), "") << "one more is closed at once";
    EXPECT_EQ(counters.connected, 2U);
    EXPECT_EQ(counters.refused, TcpServer::MaxRefused + 1);
    EXPECT_EQ(first->Ask("again"), "again");
    refused.clear();
    EXPECT_TRUE(Tests::WaitUntil([&] { return LineClient(port).Rest() == "no\n"; })) << "they have gone";
}

/// Counts how often it is processed.
class CountedSession : public EchoSession {
public:
    CountedSession(bool wantsWakeup, std::atomic<unsigned>& processed)
        : EchoSession(false)
        , wantsWakeup(wantsWakeup)
        , processed(processed) {}

    bool WantsWakeup() const override { return wantsWakeup; }
    std::size_t Process() override {
        ++processed;
        return EchoSession::Process();
    }

private:
    const bool wantsWakeup;
    std::atomic<unsigned>& processed;
};

TEST_F(TcpSessionTest, IsNotProcessedForAWakeupThatItDoesNotWant) {
    std::atomic<unsigned> unwanted = 0;
    std::atomic<unsigned> wanted = 0;
    bool isFirst = true;
    Open({}, [&](bool) {
        const bool wants = !std::exchange(isFirst, false);
        return std::make_unique<CountedSession>(wants, wants ? wanted : unwanted);
    });
    const auto first = Client();
    const auto second = Client();
    const auto read = [this](const auto& count) { return thread.Call([&] { return count.load(); }); };
    const unsigned unwantedBefore = read(unwanted);
    const unsigned wantedBefore = read(wanted);
    wakeup.Set();
    EXPECT_TRUE(Tests::WaitUntil([&] { return wanted > wantedBefore; }));
    EXPECT_EQ(read(unwanted), unwantedBefore);
}

class ThrowingSession : public EchoSession {
public:
    explicit ThrowingSession(bool mayWrite)
        : EchoSession(mayWrite) {}

protected:
    void Answer(std::string_view line) override {
        if (line == "throw\n") {
            throw std::runtime_error("thrown");
        }
        if (line == "throw int\n") {
            throw 7;
        }
        EchoSession::Answer(line);
    }
};

TEST_F(TcpSessionTest, IsClosedWhenItThrows) {
    Serve<ThrowingSession>({});
    const auto other = Client();
    for (const char* request : {"throw\n", "throw int\n"}) {
        const Vor::LogCapture log;
        LineClient client(port);
        client.Send(request);
        EXPECT_TRUE(client.WaitForClose());
        EXPECT_TRUE(WaitForConnections(1));
    }
    EXPECT_EQ(other->Ask("again"), "again");
}

/// Turns the bits of each byte on the wire.
class TurningSession : public WrappedSession {
public:
    explicit TurningSession(std::unique_ptr<ITcpSession> inner)
        : WrappedSession(std::move(inner)) {}

    static std::string Turned(std::string text) {
        for (char& character : text) {
            character = static_cast<char>(~character);
        }
        return text;
    }

    void Received(std::size_t count) override {
        for (unsigned char& byte : ReceiveSpace().first(count)) {
            byte = static_cast<unsigned char>(~byte);
        }
        Inner().Received(count);
    }
    std::size_t Process() override {
        const std::size_t answered = Inner().Process();
        if (output.empty()) {
            for (const unsigned char byte : Inner().Replies()) {
                output.push_back(static_cast<unsigned char>(~byte));
            }
            Inner().Sent(output.size());
        }
        return answered;
    }
    std::span<const unsigned char> Replies() const override { return output; }
    void Sent(std::size_t count) override {
        output.erase(output.begin(), output.begin() + static_cast<std::ptrdiff_t>(count));
    }

private:
    std::vector<unsigned char> output; ///< no longer than the replies of the inner session
};

TEST_F(TcpSessionTest, MayBeWrapped) {
    Open({}, [](bool mayWrite) { return std::make_unique<TurningSession>(std::make_unique<EchoSession>(mayWrite)); });
    LineClient client(port);
    std::string requests;
    for (int i = 0; i < 1000; ++i) {
        requests += std::to_string(i) + "\n";
    }
    requests += "may?\n";
    client.Send(TurningSession::Turned(requests + "end\n"));
    requests.replace(requests.size() - 5, 5, "yes\n");
    EXPECT_EQ(TurningSession::Turned(client.Rest()), requests + "end\n");
    EXPECT_TRUE(WaitForConnections(0));
}

TEST_F(TcpSessionTest, PassesTheRestOnWhenItIsWrapped) {
    Open({.idleTimeOut = 1ms},
         [](bool mayWrite) { return std::make_unique<WrappedSession>(std::make_unique<TimedSession>(mayWrite)); });
    LineClient client(port);
    client.Send("more\n");
    EXPECT_EQ(client.Rest(), "more\nfarewell\n");
}

} // namespace
} // namespace Net
