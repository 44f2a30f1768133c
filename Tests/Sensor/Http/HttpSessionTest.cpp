// The protocol of a connection without its socket.

#include "Sensor/Http/HttpSession.h"

#include "Tests/Sensor/Http/FakeHandler.h"
#include "Tests/Sensor/Http/ResponseReader.h"
#include "Vor/Logging.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <malloc.h>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

using namespace std::chrono_literals;

class HttpSessionTest : public testing::Test {
protected:
    using Clock = Net::ITcpSession::Clock;

    static inline Clock::time_point testTime;

    static inline const std::string GetA = "GET /a HTTP/1.1\r\nHost: sensor\r\n\r\n";
    static inline const std::string PostA = "POST /a HTTP/1.1\r\nHost: sensor\r\nContent-Length: 5\r\n\r\nhello";

    static std::string Get(const std::string& target, const std::string& fields = "") {
        return "GET " + target + " HTTP/1.1\r\nHost: sensor\r\n" + fields + "\r\n";
    }
    static std::string Repeated(const std::string& text, std::size_t count) {
        std::string all;
        for (std::size_t i = 0; i < count; ++i) {
            all += text;
        }
        return all;
    }

    HttpSessionTest() { Connect(); }

    void Connect() {
        session = std::make_unique<HttpSession>(settings, handler, wakeup, [] { return testTime; });
        session->SetPeer({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 127, 0, 0, 1});
        session->Process();
    }

    /// Does what is done after a wakeup or a time-out; returns all that the session sends.
    std::string Sent(std::size_t mostAtOnce = std::string::npos) {
        std::string sent;
        session->Process();
        while (!session->Replies().empty()) {
            const auto replies = session->Replies().first(std::min(mostAtOnce, session->Replies().size()));
            sent.append(replies.begin(), replies.end());
            session->Sent(replies.size());
            session->Process();
        }
        return sent;
    }
    /// What the session sends when it receives the bytes, in pieces of `step`. As with a socket, bytes for which there
    /// is no room wait.
    std::string Ask(std::string_view bytes, std::size_t step = std::string::npos) {
        std::string sent;
        while (!bytes.empty()) {
            const auto space = session->ReceiveSpace();
            const std::size_t size = std::min({step, space.size(), bytes.size()});
            if (size == 0) {
                break;
            }
            std::copy_n(bytes.begin(), size, space.begin());
            session->Received(size);
            bytes.remove_prefix(size);
            sent += Sent(step);
        }
        unread = bytes.size();
        return sent;
    }
    unsigned StatusOf(const std::string& bytes) {
        const std::string sent = Ask(bytes);
        return ResponseReader(sent).Next().status;
    }

    bool HasLeft(std::chrono::milliseconds time) { return session->Deadline() == testTime + time; }
    std::string Expired(std::chrono::milliseconds time) {
        EXPECT_TRUE(HasLeft(time));
        testTime += time;
        return session->Expire() ? Sent() : "closed";
    }

    HttpSessionSettings settings;
    FakeHandler handler;
    const std::shared_ptr<Net::Wakeup> wakeup = std::make_shared<Net::Wakeup>();
    std::unique_ptr<HttpSession> session;
    std::size_t unread = 0;
};

TEST_F(HttpSessionTest, CountsItsAnswers) {
    RequestCounts counts;
    settings.counts = &counts;
    Connect();
    Ask(GetA + GetA + PostA + "HEAD /a HTTP/1.1\r\nHost: sensor\r\n\r\n" + "BREW /a HTTP/1.1\r\nHost: sensor\r\n\r\n");
    Connect();
    Ask("GET /a HTTP/1.1\r\n\r\n");
    Connect();
    Ask("\x16\x03\x01 what is this?\r\n\r\n");
    std::map<std::string, std::uint64_t> counted;
    for (const auto& [key, count] : counts.Read()) {
        counted[std::string(key.first) + (key.second == 200 ? " done" : " refused")] += count;
    }
    EXPECT_EQ(counted.at("GET done"), 2U);
    EXPECT_EQ(counted.at("POST done"), 1U);
    EXPECT_EQ(counted.at("HEAD done"), 1U);
    EXPECT_EQ(counted.at("GET refused"), 1U) << "it has no host";
    EXPECT_GE(counted.at("other refused"), 1U);
}

TEST_F(HttpSessionTest, AnswersRequestsInAnyPieces) {
    const std::string bytes =
        GetA + PostA + "\r\n" + Get("/nothing") +
        "PUT /b HTTP/1.1\r\nHost: sensor\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nhe\r\n0\r\n\r\n" +
        Get("/c", "Connection: close\r\n");
    for (std::size_t step = 1; step <= bytes.size(); ++step) {
        Connect();
        const std::string sent = Ask(bytes, step);
        ResponseReader reader(sent);
        EXPECT_EQ(reader.Next().body, "GET /a\n");
        EXPECT_EQ(reader.Next().body, "POST /a\nhello");
        EXPECT_EQ(reader.Next().status, 204U);
        EXPECT_EQ(reader.Next().body, "PUT /b\nhe");
        EXPECT_EQ(reader.Next().body, "GET /c\n");
        ASSERT_TRUE(reader.AtEnd()) << step;
        ASSERT_TRUE(session->HasFinished()) << step;
    }
}

TEST_F(HttpSessionTest, SaysWhoAsks) {
    Ask(GetA);
    EXPECT_EQ(handler.handled.at(0).peerAddress, "127.0.0.1");
    EXPECT_TRUE(handler.handled.at(0).peerIsLoopback);
    session->SetPeer({0xFD, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7});
    Ask(GetA);
    EXPECT_EQ(handler.handled.at(1).peerAddress, "fd00::7");
    EXPECT_FALSE(handler.handled.at(1).peerIsLoopback);
}

TEST_F(HttpSessionTest, AnswersHeadWithTheLengthAlone) {
    const std::string sent = Ask("HEAD /long HTTP/1.1\r\nHost: sensor\r\n\r\n" + GetA);
    ResponseReader reader(sent);
    EXPECT_EQ(reader.Next(true).fields.Find("Content-Length"), std::to_string(FakeHandler::LongSize));
    EXPECT_EQ(reader.Next().body, "GET /a\n");
}

TEST_F(HttpSessionTest, SendsALongBodyFromWhereItIs) {
    const auto space = session->ReceiveSpace();
    const std::string request = Get("/long");
    std::copy(request.begin(), request.end(), space.begin());
    session->Received(request.size());
    session->Process();
    session->Sent(session->Replies().size());
    EXPECT_EQ(session->Replies().data(), reinterpret_cast<const unsigned char*>(handler.longBody->data()));
    EXPECT_EQ(session->Replies().size(), handler.longBody->size());
    EXPECT_EQ(Sent(1000), *handler.longBody);
    EXPECT_EQ(handler.longBody.use_count(), 1) << "what was sent isn't kept";
}

TEST_F(HttpSessionTest, KeepsTheConnectionsOfOldClientsWhenTheyAsk) {
    const std::string sent = Ask("GET /a HTTP/1.0\r\nConnection: keep-alive\r\n\r\nGET /b HTTP/1.0\r\n\r\n");
    ResponseReader reader(sent);
    EXPECT_EQ(reader.Next().fields.Find("Connection"), "keep-alive");
    EXPECT_EQ(reader.Next().fields.Find("Connection"), "close");
    EXPECT_TRUE(session->HasFinished());
}

TEST_F(HttpSessionTest, AnswersInTheOrderOfTheRequests) {
    EXPECT_EQ(Ask(Get("/later/0") + Get("/later/1") + Get("/later/2") + GetA), "");
    ASSERT_EQ(handler.WaitingCount(), 3U);
    EXPECT_TRUE(session->IsWorking());
    handler.AnswerWaiting(2);
    EXPECT_TRUE(session->WantsWakeup());
    EXPECT_EQ(Sent(), "");
    EXPECT_FALSE(session->WantsWakeup());
    handler.AnswerWaiting(0);
    std::string sent = Sent();
    EXPECT_EQ(ResponseReader(sent).Next().body, "GET /later/0\n");
    handler.AnswerWaiting(0);
    sent = Sent();
    ResponseReader reader(sent);
    EXPECT_EQ(reader.Next().body, "GET /later/1\n");
    EXPECT_EQ(reader.Next().body, "GET /later/2\n");
    EXPECT_EQ(reader.Next().body, "GET /a\n");
    EXPECT_TRUE(reader.AtEnd());
    EXPECT_FALSE(session->IsWorking());
}

TEST_F(HttpSessionTest, HandlesEightRequestsAtATime) {
    const std::string requests = Repeated(Get("/later"), 2000);
    EXPECT_EQ(Ask(requests), "");
    EXPECT_EQ(handler.WaitingCount(), 8U);
    EXPECT_GT(unread, requests.size() / 2) << "the rest isn't even received";
    handler.AnswerWaiting(0);
    EXPECT_FALSE(Sent().empty());
    EXPECT_EQ(handler.WaitingCount(), 8U);
    EXPECT_EQ(handler.handled.size(), 9U);
}

TEST_F(HttpSessionTest, HandlesAChangeAlone) {
    Ask(Get("/later/1") + "POST /later/2 HTTP/1.1\r\nHost: a\r\nContent-Length: 0\r\n\r\n" + Get("/later/3"));
    ASSERT_EQ(handler.WaitingCount(), 1U) << "the change waits for what is read before it";
    handler.AnswerWaiting(0);
    Sent();
    ASSERT_EQ(handler.WaitingCount(), 1U) << "what is read behind it waits for the change";
    handler.AnswerWaiting(0);
    Sent();
    ASSERT_EQ(handler.WaitingCount(), 1U);
    EXPECT_EQ(handler.waiting.at(0).second, "GET /later/3\n");
}

TEST_F(HttpSessionTest, HandlesARequestWithABodyAlone) {
    const std::string withBody = "GET /b HTTP/1.1\r\nHost: a\r\nExpect: 100-continue\r\nContent-Length: 5\r\n\r\n";
    EXPECT_EQ(Ask(Get("/later") + withBody), "") << "whatever its method is";
    EXPECT_EQ(handler.checked.size(), 1U);
    handler.AnswerWaiting(0);
    const std::string sent = Sent();
    ResponseReader reader(sent);
    EXPECT_EQ(reader.Next().body, "GET /later\n");
    EXPECT_EQ(reader.Left(), "HTTP/1.1 100 Continue\r\n\r\n");
}

TEST_F(HttpSessionTest, AsksForABodyBehindAnAnswerThatIsNotSentYet) {
    const std::string header = "POST /b HTTP/1.1\r\nHost: a\r\nExpect: 100-continue\r\nContent-Length: 5\r\n\r\n";
    const std::string sent = Ask(Get("/long") + header);
    ResponseReader reader(sent);
    EXPECT_EQ(reader.Next().body, *handler.longBody);
    EXPECT_EQ(reader.Left(), "HTTP/1.1 100 Continue\r\n\r\n");
}

TEST_F(HttpSessionTest, AsksForABodyWhenTheHeaderIsAccepted) {
    const std::string header = "POST /b HTTP/1.1\r\nHost: a\r\nExpect: 100-continue\r\nContent-Length: 5\r\n\r\n";
    EXPECT_EQ(Ask(Get("/later") + header), "");
    EXPECT_EQ(handler.checked.size(), 1U);
    handler.AnswerWaiting(0);
    std::string sent = Sent();
    ResponseReader reader(sent);
    EXPECT_EQ(reader.Next().body, "GET /later\n");
    EXPECT_EQ(reader.Left(), "HTTP/1.1 100 Continue\r\n\r\n") << "behind the answer before it";
    EXPECT_EQ(handler.checked.back(), "POST /b");
    EXPECT_EQ(handler.handled.size(), 1U);
    sent = Ask("hello");
    EXPECT_EQ(ResponseReader(sent).Next().body, "POST /b\nhello");
}

TEST_F(HttpSessionTest, DoesNotAskForABodyThatIsRefused) {
    const std::string fields = " HTTP/1.1\r\nHost: a\r\nExpect: 100-continue\r\nContent-Length: ";
    EXPECT_EQ(StatusOf("POST /forbidden" + fields + "5\r\n\r\n"), 403U);
    EXPECT_TRUE(session->HasFinished());
    Connect();
    EXPECT_EQ(StatusOf("POST /b" + fields + "10000000\r\n\r\n"), 413U);
    EXPECT_TRUE(session->HasFinished());
    EXPECT_TRUE(handler.handled.empty());
}

TEST_F(HttpSessionTest, ChecksTheHeaderOfEachRequestFirst) {
    EXPECT_EQ(StatusOf(Get("/forbidden") + GetA), 403U);
    EXPECT_EQ(handler.checked, std::vector<std::string>{"GET /forbidden"});
    EXPECT_TRUE(handler.handled.empty());
    EXPECT_TRUE(session->HasFinished());
}

TEST_F(HttpSessionTest, RefusesWithAProblemBehindTheAnswersBeforeIt) {
    EXPECT_EQ(Ask(Get("/later") + "BREW / HTTP/1.1\r\nHost: a\r\n\r\n" + GetA), "");
    handler.AnswerWaiting(0);
    const std::string sent = Sent();
    ResponseReader reader(sent);
    EXPECT_EQ(reader.Next().body, "GET /later\n");
    const ReceivedResponse refusal = reader.Next();
    EXPECT_EQ(refusal.status, 501U);
    EXPECT_EQ(refusal.fields.Find("Content-Type"), "application/problem+json");
    EXPECT_EQ(refusal.body, R"({"type":"/problems/not-implemented","title":"Not implemented","status":501,)"
                            R"("detail":"The method is none of GET, HEAD, POST, PUT, PATCH, DELETE and OPTIONS."})");
    EXPECT_TRUE(refusal.closes);
    EXPECT_TRUE(reader.AtEnd());
    EXPECT_TRUE(session->HasFinished());
    EXPECT_EQ(Ask(GetA), "") << "what comes behind a refusal is dropped";
    EXPECT_EQ(handler.handled.size(), 1U);
}

TEST_F(HttpSessionTest, RefusesHeadWithoutABody) {
    const std::string sent = Ask("HEAD / HTTP/1.1\r\n\r\n");
    ResponseReader reader(sent);
    EXPECT_EQ(reader.Next(true).status, 400U);
    EXPECT_TRUE(reader.AtEnd());
}

TEST_F(HttpSessionTest, EndsWhenTheClientSendsMuchBehindItsLastRequest) {
    Ask("nonsense\n");
    EXPECT_TRUE(session->HasFinished());
    const std::string some(10000, 'x');
    for (int i = 0; i < 400; ++i) {
        Ask(some);
    }
    EXPECT_FALSE(session->Broken());
    for (int i = 0; i < 50; ++i) {
        Ask(some);
    }
    EXPECT_TRUE(session->Broken());
    EXPECT_TRUE(session->ReceiveSpace().empty());
}

TEST_F(HttpSessionTest, AnswersItsLastRequestWhateverComesBehindIt) {
    Ask(Get("/later", "Connection: close\r\n"));
    for (int i = 0; i < 500; ++i) {
        Ask(std::string(10000, 'x'));
    }
    EXPECT_FALSE(session->Broken());
    handler.AnswerWaiting(0);
    EXPECT_EQ(StatusesOf(Sent()), std::vector<unsigned>{200});
    EXPECT_TRUE(session->Broken());
}

TEST_F(HttpSessionTest, AnswersForAHandlerThatFails) {
    const Vor::LogCapture log;
    const std::string sent = Ask(Get("/throw") + Get("/dropped") + GetA + Get("/throw-in-check"));
    EXPECT_EQ(StatusesOf(sent), (std::vector<unsigned>{500, 500, 200, 500}));
    EXPECT_EQ(sent.find("thrown"), std::string::npos) << "nothing of the inside is sent";
    EXPECT_TRUE(session->HasFinished());
}

TEST_F(HttpSessionTest, CountsTheFirstAnswerOnly) {
    Ask(Get("/later"));
    const Responder responder = handler.waiting.at(0).first;
    EXPECT_TRUE(responder.IsWanted());
    handler.AnswerWaiting(0);
    EXPECT_FALSE(responder.IsWanted());
    responder.Respond({.status = 500});
    EXPECT_EQ(StatusesOf(Sent()), std::vector<unsigned>{200});
    responder.Respond({.status = 500});
    EXPECT_EQ(Sent(), "");
}

TEST_F(HttpSessionTest, AClientThatHasClosedItsSideDoesNotWaitButGetsItsAnswer) {
    Ask(Get("/later"));
    const Responder responder = handler.waiting.at(0).first;
    session->InputEnded();
    EXPECT_FALSE(responder.IsWanted());
    EXPECT_TRUE(session->IsWorking());
    handler.AnswerWaiting(0);
    EXPECT_EQ(StatusesOf(Sent()), std::vector<unsigned>{200});
    EXPECT_FALSE(session->IsWorking());
}

TEST_F(HttpSessionTest, AnswersAClientThatHasClosedItsSideThoughTheHandlerDoesNot) {
    const Vor::LogCapture log;
    Ask(Get("/later"));
    session->InputEnded();
    handler.waiting.clear();
    EXPECT_EQ(StatusesOf(Sent()), std::vector<unsigned>{500});
}

TEST_F(HttpSessionTest, RefusesAClientBeforeItAsks) {
    session = std::make_unique<HttpSession>(settings, handler, wakeup, [] { return testTime; });
    session->Refuse({.status = 503});
    const std::string sent = Sent();
    ResponseReader reader(sent);
    const ReceivedResponse refusal = reader.Next();
    EXPECT_EQ(refusal.status, 503U);
    EXPECT_TRUE(refusal.closes);
    EXPECT_TRUE(session->HasFinished());
    EXPECT_EQ(Ask(GetA + PostA), "");
    EXPECT_TRUE(handler.checked.empty());
    EXPECT_EQ(Expired(2s), "closed");
}

TEST_F(HttpSessionTest, LeavesRespondersThatDoNothingWhenTheClientHasGone) {
    Ask(Get("/later"));
    const Responder responder = handler.waiting.at(0).first;
    session.reset();
    EXPECT_FALSE(responder.IsWanted());
    responder.Respond({.stream = std::make_shared<FakeStream>(handler.source)});
    EXPECT_TRUE(handler.source->isStreamGone) << "at once";
    responder.Wake();
}

// Time

TEST_F(HttpSessionTest, ClosesAnIdleConnection) {
    EXPECT_EQ(Expired(60s), "closed");
    Connect();
    testTime += 50s;
    Ask(GetA);
    EXPECT_EQ(Expired(60s), "closed");
}

TEST_F(HttpSessionTest, RefusesASlowHeader) {
    for (const char* before : {"", "two requests before"}) {
        Connect();
        testTime += 5s;
        Ask(*before == '\0' ? "" : GetA + GetA);
        Ask(GetA.substr(0, 5));
        testTime += 9s;
        Ask(GetA.substr(5, 5));
        const std::string sent = Expired(1s);
        const ReceivedResponse refusal = ResponseReader(sent).Next();
        EXPECT_EQ(refusal.status, 408U);
        EXPECT_TRUE(refusal.closes);
        EXPECT_EQ(Expired(2s), "closed");
    }
}

TEST_F(HttpSessionTest, RefusesASlowBody) {
    Ask(PostA.substr(0, PostA.size() - 5));
    for (int i = 0; i < 4; ++i) {
        testTime += 7s;
        Ask("h");
    }
    EXPECT_EQ(StatusesOf(Expired(2s)), std::vector<unsigned>{408});
    EXPECT_TRUE(handler.handled.empty());
}

TEST_F(HttpSessionTest, GivesTheHandlerAsMuchTimeAsItTakes) {
    Ask(Get("/later") + GetA.substr(0, 5));
    EXPECT_EQ(session->Deadline(), std::nullopt);
    handler.AnswerWaiting(0);
    Sent();
    EXPECT_TRUE(HasLeft(10s)) << "for the rest of the next header";
}

TEST_F(HttpSessionTest, ClosesAConnectionWhoseClientReadsNothing) {
    const std::string request = Get("/long");
    std::copy(request.begin(), request.end(), session->ReceiveSpace().begin());
    session->Received(request.size());
    session->Process();
    EXPECT_TRUE(HasLeft(60s));
    testTime += 59s;
    session->Sent(10);
    EXPECT_EQ(Expired(60s), "closed");
}

TEST_F(HttpSessionTest, ReadsNoFurtherForAClientThatReadsNothing) {
    constexpr std::size_t Much = std::size_t{1} << 20;
    const std::string requests = Repeated(GetA, Much / GetA.size());
    std::size_t read = 0;
    while (!session->ReceiveSpace().empty() && read < requests.size()) {
        const auto space = session->ReceiveSpace();
        const std::size_t size = std::min(space.size(), requests.size() - read);
        std::copy_n(requests.begin() + static_cast<std::ptrdiff_t>(read), size, space.begin());
        session->Received(size);
        session->Process();
        read += size;
    }
    EXPECT_LT(read, Much / 2);
    EXPECT_LT(session->Replies().size(), Much / 4);
}

// Streams

TEST_F(HttpSessionTest, StreamsInChunks) {
    std::string sent = Ask(Get("/stream"));
    EXPECT_TRUE(sent.find("\r\nTransfer-Encoding: chunked\r\n") != std::string::npos) << "the header comes at once";
    EXPECT_TRUE(sent.ends_with("\r\n\r\n"));
    EXPECT_TRUE(session->IsSubscribed());
    EXPECT_FALSE(session->IsWorking());
    EXPECT_FALSE(session->HasFinished());
    EXPECT_EQ(session->Deadline(), std::nullopt);
    EXPECT_EQ(Sent(), "");
    handler.Stream("hello");
    EXPECT_TRUE(session->WantsWakeup());
    sent += Sent();
    EXPECT_TRUE(sent.ends_with("\r\n\r\n5\r\nhello\r\n"));
    handler.Stream(std::string(100, 'x'));
    sent += Sent(7);
    handler.Stream("last");
    handler.source->End();
    sent += Sent();
    ResponseReader reader(sent);
    const ReceivedResponse response = reader.Next();
    EXPECT_EQ(response.body, "hello" + std::string(100, 'x') + "last");
    EXPECT_EQ(response.fields.Find("Content-Type"), "text/event-stream");
    EXPECT_TRUE(reader.AtEnd());
    EXPECT_TRUE(session->HasFinished());
    EXPECT_TRUE(handler.source->isStreamGone);
}

TEST_F(HttpSessionTest, StreamsToOldClientsUntilTheConnectionCloses) {
    std::string sent = Ask("GET /stream HTTP/1.0\r\nConnection: keep-alive\r\n\r\n");
    handler.Stream("hello");
    sent += Sent();
    handler.source->End();
    handler.WakeStreams();
    sent += Sent();
    EXPECT_EQ(ResponseReader(sent).Next(false, true).body, "hello");
    EXPECT_TRUE(session->HasFinished());
}

TEST_F(HttpSessionTest, ReadsAStreamAsFastAsItsClient) {
    Ask(Get("/stream"));
    handler.Stream("first");
    session->Process();
    handler.Stream("second");
    session->Process();
    EXPECT_EQ(handler.source->bytesRead, 5U) << "the first one isn't sent";
    EXPECT_TRUE(HasLeft(60s));
    EXPECT_EQ(Sent(), "5\r\nfirst\r\n6\r\nsecond\r\n");
}

TEST_F(HttpSessionTest, DoesNotKeepTheMemoryOfALargePiece) {
    constexpr std::size_t Large = std::size_t{1} << 20;
    handler.source->maxPiece = Large;
    Ask(Get("/stream"));
    handler.Stream(std::string(Large, 'x'));
    EXPECT_GT(Sent().size(), Large);
    handler.Stream(std::string(100, 'x'));
    session->Process();
    void* const buffer = const_cast<unsigned char*>(session->Replies().data());
    EXPECT_LT(malloc_usable_size(buffer), Large / 8);
}

TEST_F(HttpSessionTest, IsAbortedWhenItsStreamIsCut) {
    Ask(Get("/stream"));
    handler.Stream("unread");
    session->Process();
    EXPECT_FALSE(session->IsAborted());
    EXPECT_TRUE(session->ReadsAhead()) << "so that this is noticed although the client doesn't read";
    handler.source->isCut = true;
    handler.WakeStreams();
    EXPECT_TRUE(session->WantsWakeup());
    EXPECT_EQ(Sent(), "");
    EXPECT_TRUE(session->IsAborted());
    EXPECT_TRUE(handler.source->isStreamGone);
    EXPECT_EQ(session->EndReason(), "it hasn't read what it was sent");
}

TEST_F(HttpSessionTest, DropsTheStreamWhenTheClientHasGone) {
    Ask(Get("/stream"));
    session.reset();
    EXPECT_TRUE(handler.source->isStreamGone);
    handler.Stream("nobody");
}

TEST_F(HttpSessionTest, DropsWhatComesBehindARequestForAStream) {
    Ask(Get("/later") + Get("/stream") + GetA + PostA);
    handler.AnswerWaiting(0);
    std::string sent = Sent();
    handler.Stream("hello");
    sent += Ask(GetA);
    ResponseReader reader(sent);
    EXPECT_EQ(reader.Next().status, 200U);
    EXPECT_TRUE(reader.Left().ends_with("\r\n\r\n5\r\nhello\r\n"));
    handler.source->End();
    handler.WakeStreams();
    EXPECT_EQ(Sent(), "0\r\n\r\n");
    EXPECT_TRUE(session->HasFinished());
}

TEST_F(HttpSessionTest, AnswersHeadOfAStreamWithoutIt) {
    const std::string sent = Ask("HEAD /stream HTTP/1.1\r\nHost: a\r\n\r\n" + GetA);
    ResponseReader reader(sent);
    EXPECT_EQ(reader.Next(true).fields.Find("Content-Type"), "text/event-stream");
    EXPECT_EQ(reader.Next().body, "GET /a\n");
    EXPECT_TRUE(handler.source->isStreamGone);
}

// Hostile clients

TEST_F(HttpSessionTest, RefusesTenThousandFields) {
    EXPECT_EQ(StatusOf("GET / HTTP/1.1\r\n" + Repeated("X: y\r\n", 10000)), 431U);
}

TEST_F(HttpSessionTest, RefusesAnEndlessBody) {
    const std::string begin = "POST / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\n";
    std::string sent = Ask(begin);
    const std::string chunk = "1000\r\n" + std::string(4096, 'x') + "\r\n";
    for (int i = 0; i < 1000; ++i) {
        sent += Ask(chunk);
    }
    EXPECT_EQ(StatusesOf(sent), std::vector<unsigned>{413});
    EXPECT_TRUE(handler.handled.empty());
}

TEST_F(HttpSessionTest, TakesNothingOfABodyForARequest) {
    const std::string hidden = "GET /hidden HTTP/1.1\r\nHost: a\r\n\r\n";
    for (const std::string& fields :
         {std::string("Content-Length: 0\r\nTransfer-Encoding: chunked\r\n"),
          std::string("Transfer-Encoding: chunked\r\nContent-Length: 0\r\n"),
          std::string("Content-Length: 0\r\nContent-Length: 34\r\n"), std::string("Transfer-Encoding: xchunked\r\n"),
          std::string("Transfer-Encoding : chunked\r\n"), std::string("X: y\r\n Transfer-Encoding: chunked\r\n")}) {
        Connect();
        std::string request = "POST / HTTP/1.1\r\nHost: a\r\n";
        request.append(fields).append("\r\n").append(hidden);
        const auto statuses = StatusesOf(Ask(request));
        ASSERT_EQ(statuses.size(), 1U) << fields;
        EXPECT_GE(statuses[0], 400U) << fields;
    }
    EXPECT_TRUE(handler.handled.empty());
}

TEST_F(HttpSessionTest, PassesTargetsOnAsTheyAre) {
    for (const char* target : {"/%zz", "/a/../../etc", "//", "/%00", "*", "http://a/b", "/\xFF", "/a?b=%", "a"}) {
        const std::string sent = Ask(Get(target));
        EXPECT_EQ(ResponseReader(sent).Next().status, 200U);
        EXPECT_EQ(handler.handled.back().target, target);
    }
}

} // namespace
} // namespace Sensor::Http
