// Bodies that are taken in pieces: by the parser, and from a connection without its socket.

#include "Sensor/Http/HttpSession.h"
#include "Sensor/Http/RequestParser.h"
#include "Tests/Sensor/Http/ResponseReader.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Http {
namespace {

using namespace std::chrono_literals;

/// What the receiver of a body, which it outlives, and the test share.
struct Taken {
    bool hasRoom = true;
    std::string text;
    std::size_t pieces = 0;
    std::size_t largest = 0;
    bool hasEnded = false;
    bool isGone = false;
    std::optional<Responder> responder;

    void GiveRoom() {
        hasRoom = true;
        responder->Wake();
    }
    void Answer(unsigned status, const std::string& body) const {
        responder->Respond({.status = status, .body = std::make_shared<const std::string>(body)});
    }
};

class Receiver : public IBodyReceiver {
public:
    explicit Receiver(std::shared_ptr<Taken> taken)
        : taken(std::move(taken)) {}
    ~Receiver() override { taken->isGone = true; }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    bool HasRoom() const override { return taken->hasRoom; }
    void Take(std::string piece) override {
        EXPECT_TRUE(taken->hasRoom && !taken->hasEnded && !piece.empty());
        taken->text += piece;
        taken->pieces += 1;
        taken->largest = std::max(taken->largest, piece.size());
    }
    void End() override {
        EXPECT_TRUE(taken->hasRoom && !taken->hasEnded);
        taken->hasEnded = true;
    }

private:
    const std::shared_ptr<Taken> taken;
};

/// Takes the bodies of PUT in pieces, and answers other requests with their target.
class Handler : public IHttpHandler {
public:
    std::optional<HttpResponse> CheckHeader(const HttpRequest& request) override {
        return request.target == "/forbidden" ? std::optional(HttpResponse{.status = 403}) : std::nullopt;
    }
    void Handle(HttpRequest request, Responder responder) override {
        responder.Respond({.body = std::make_shared<const std::string>(request.target)});
    }
    bool IsInPieces(const HttpRequest& request) const override { return request.method == "PUT"; }
    std::shared_ptr<IBodyReceiver> Receive(HttpRequest request, Responder responder) override {
        EXPECT_EQ(request.body, "");
        if (request.target == "/throw") {
            throw std::runtime_error("thrown");
        }
        taken->responder = std::move(responder);
        return std::make_shared<Receiver>(taken);
    }

    std::shared_ptr<Taken> taken = std::make_shared<Taken>();
};

class BodyPiecesTest : public testing::Test {
protected:
    using Clock = Net::ITcpSession::Clock;

    static constexpr std::size_t Much = std::size_t{3} << 20;
    static inline Clock::time_point testTime;

    static std::string Put(std::size_t size, const std::string& fields = "", const std::string& target = "/a") {
        return "PUT " + target + " HTTP/1.1\r\nHost: sensor\r\n" + fields + "Content-Length: " + std::to_string(size) +
               "\r\n\r\n";
    }
    static inline const std::string PutChunks = "PUT /a HTTP/1.1\r\nHost: sensor\r\nTransfer-Encoding: chunked\r\n\r\n";
    static inline const std::string GetB = "GET /b HTTP/1.1\r\nHost: sensor\r\n\r\n";
    static std::string Text(std::size_t size) {
        std::string text;
        while (text.size() < size) {
            text += std::to_string(text.size()) + ' ';
        }
        return text.substr(0, size);
    }

    BodyPiecesTest() { Connect(); }
    void Connect() {
        handler.taken = std::make_shared<Taken>();
        session = std::make_unique<HttpSession>(settings, handler, wakeup, [] { return testTime; });
        session->SetPeer({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 127, 0, 0, 1});
        session->Process();
    }

    /// As after a wakeup; returns what the session sends.
    std::string Sent() {
        std::string sent;
        session->Process();
        while (!session->Replies().empty()) {
            const auto replies = session->Replies();
            sent.append(replies.begin(), replies.end());
            session->Sent(replies.size());
            session->Process();
        }
        return sent;
    }
    /// Gives the session bytes as far as it has room for them. Returns what it sends.
    std::string Ask(std::string_view bytes, std::size_t step = std::string_view::npos) {
        std::string sent;
        unread = bytes.size();
        while (!bytes.empty()) {
            const auto space = session->ReceiveSpace();
            const std::size_t size = std::min({step, space.size(), bytes.size()});
            if (size == 0) {
                EXPECT_TRUE(session->IsWorking() || !session->Replies().empty());
                break;
            }
            std::copy_n(bytes.begin(), size, space.begin());
            session->Received(size);
            bytes.remove_prefix(size);
            unread = bytes.size();
            sent += Sent();
        }
        return sent;
    }
    static unsigned StatusOf(const std::string& sent) {
        ResponseReader reader(sent);
        return reader.Next().status;
    }
    Taken& TakenNow() const { return *handler.taken; }

    HttpSessionSettings settings;
    Handler handler;
    const std::shared_ptr<Net::Wakeup> wakeup = std::make_shared<Net::Wakeup>();
    std::unique_ptr<HttpSession> session;
    std::size_t unread = 0;
};

// The parser

std::span<const unsigned char> BytesOf(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

TEST_F(BodyPiecesTest, TheLimitOfABodyInPiecesIsOneOfAll) {
    const auto isPut = [](const HttpRequest& request) { return request.method == "PUT"; };
    const RequestLimits limits{.body = 3, .pieces = 10};
    const auto stateOf = [&](const std::string& header, const std::vector<std::string>& pieces) {
        RequestParser parser(limits, isPut);
        parser.Read(BytesOf(header));
        std::string waiting;
        std::size_t taken = 0;
        for (const std::string& piece : pieces) {
            waiting += piece;
            std::size_t used = 1;
            while (used > 0 && parser.GetState() == RequestParser::State::Body) {
                used = parser.Read(BytesOf(waiting));
                waiting.erase(0, used);
                taken += parser.TakeBody().size();
                EXPECT_EQ(parser.BodySize(), taken);
            }
        }
        return parser.GetState();
    };
    EXPECT_EQ(stateOf(Put(10), {"12345", "67890"}), RequestParser::State::Done);
    EXPECT_EQ(stateOf(Put(11), {}), RequestParser::State::Refused);
    EXPECT_EQ(stateOf("POST" + Put(4).substr(3), {}), RequestParser::State::Refused);
    EXPECT_EQ(stateOf(PutChunks, {"5\r\n12345\r\n", "5\r\n67890\r\n", "0\r\n\r\n"}), RequestParser::State::Done);
    EXPECT_EQ(stateOf(PutChunks, {"5\r\n12345\r\n", "6\r\n678901\r\n"}), RequestParser::State::Refused);
    EXPECT_EQ(stateOf(PutChunks, {"5\r\n12345\r\n", "5\r\n67890\r\n", "1\r\n1\r\n"}), RequestParser::State::Refused);
    EXPECT_EQ(stateOf(PutChunks, {"ffffffffffffffff\r\n"}), RequestParser::State::Refused);
}

// The session

TEST_F(BodyPiecesTest, ABodyIsTakenHoweverItComes) {
    const std::string chunked = PutChunks + "2\r\nhe\r\n3;x=y\r\nllo\r\n0\r\nX: y\r\n\r\n";
    for (const std::string& bytes : {Put(5) + "hello", chunked}) {
        for (std::size_t step = 1; step <= bytes.size(); ++step) {
            Connect();
            EXPECT_EQ(Ask(bytes + GetB, step), "");
            ASSERT_EQ(TakenNow().text, "hello") << step;
            ASSERT_TRUE(TakenNow().hasEnded && TakenNow().isGone) << step;
            EXPECT_TRUE(session->IsWorking());
            TakenNow().Answer(201, "done");
            const std::string sent = Sent();
            ResponseReader reader(sent);
            EXPECT_EQ(reader.Next().body, "done");
            EXPECT_EQ(reader.Next().body, "/b") << "the connection is kept";
            EXPECT_FALSE(session->HasFinished());
        }
    }
}

TEST_F(BodyPiecesTest, ABodyWithoutAByteHasAnEndOnly) {
    for (const std::string& bytes : {Put(0), PutChunks + "0\r\n\r\n"}) {
        Connect();
        Ask(bytes);
        EXPECT_TRUE(TakenNow().hasEnded);
        EXPECT_EQ(TakenNow().pieces, 0U);
    }
}

TEST_F(BodyPiecesTest, ALargeBodyIsNeverKept) {
    const std::string body = Text(Much);
    Ask(Put(Much) + body);
    EXPECT_EQ(TakenNow().text, body);
    EXPECT_GT(TakenNow().pieces, 10U);
    EXPECT_LT(TakenNow().largest, Much / 20);
}

TEST_F(BodyPiecesTest, NothingIsReadWithoutRoom) {
    const std::string body = Text(Much);
    TakenNow().hasRoom = false;
    Ask(Put(Much) + body);
    EXPECT_EQ(TakenNow().pieces, 0U);
    EXPECT_GT(unread, Much / 2);
    EXPECT_TRUE(session->IsWorking());
    EXPECT_EQ(session->Deadline(), std::nullopt) << "it isn't the client that is slow";
    TakenNow().GiveRoom();
    EXPECT_TRUE(session->WantsWakeup());
    Sent();
    Ask(body.substr(body.size() - unread));
    EXPECT_EQ(TakenNow().text, body);
    EXPECT_TRUE(TakenNow().hasEnded);
}

TEST_F(BodyPiecesTest, TheClientIsAskedForTheBodyWhenThereIsRoom) {
    TakenNow().hasRoom = false;
    EXPECT_EQ(Ask(Put(5, "Expect: 100-continue\r\n")), "");
    TakenNow().GiveRoom();
    EXPECT_EQ(Sent(), "HTTP/1.1 100 Continue\r\n\r\n");
    EXPECT_EQ(Ask("hello"), "");
    EXPECT_EQ(TakenNow().text, "hello");
}

TEST_F(BodyPiecesTest, AnAnswerBeforeTheEndIsTheLastOne) {
    for (const std::size_t part : {std::size_t{0}, std::size_t{3}}) {
        Connect();
        TakenNow().hasRoom = part > 0;
        Ask(Put(5, "Expect: 100-continue\r\n") + std::string("hello").substr(0, part));
        TakenNow().Answer(409, "no");
        EXPECT_TRUE(session->WantsWakeup());
        const std::string sent = Sent();
        ResponseReader reader(sent);
        const ReceivedResponse response = reader.Next();
        EXPECT_EQ(response.status, 409U);
        EXPECT_TRUE(response.closes);
        EXPECT_TRUE(session->HasFinished());
        EXPECT_TRUE(TakenNow().isGone);
        EXPECT_FALSE(TakenNow().hasEnded);
        EXPECT_EQ(Ask("lo" + GetB), "") << "nothing more is read";
    }
}

TEST_F(BodyPiecesTest, AWrongBodyIsRefusedAndHasNoEnd) {
    const std::string length = "Content-Length: 5\r\n";
    for (const auto& [status, bytes] : std::vector<std::pair<unsigned, std::string>>{
             {413, Put((std::size_t{64} << 20) + 1)},
             {413, PutChunks + "4000001\r\n"},
             {400, PutChunks + "5\r\nhello!\r\n0\r\n\r\n"},
             {400, PutChunks + "hello\r\n"},
             {400, Put(5, length)},
             {400, Put(5, "Transfer-Encoding: chunked\r\n")},
             {403, Put(5, "", "/forbidden") + "hello"},
             {500, Put(5, "", "/throw") + "hello"},
         }) {
        Connect();
        EXPECT_EQ(StatusOf(Ask(bytes)), status) << bytes.substr(0, 200);
        EXPECT_TRUE(session->HasFinished());
        EXPECT_FALSE(TakenNow().hasEnded);
        EXPECT_TRUE(TakenNow().isGone || !TakenNow().responder);
    }
}

TEST_F(BodyPiecesTest, AnEndlessBodyIsCutAtTheLimit) {
    settings.limits.pieces = std::size_t{1} << 20;
    Connect();
    const std::string chunk = "1000\r\n" + std::string(4096, 'x') + "\r\n";
    std::string sent = Ask(PutChunks);
    std::size_t chunks = 0;
    while (sent.empty() && chunks < 1000) {
        sent = Ask(chunk);
        ++chunks;
    }
    EXPECT_EQ(chunks, 257U);
    EXPECT_EQ(StatusOf(sent), 413U);
    EXPECT_LE(TakenNow().text.size(), settings.limits.pieces);
    EXPECT_TRUE(TakenNow().isGone);
}

TEST_F(BodyPiecesTest, AClientThatGoesLeavesNothing) {
    Ask(Put(5) + "hel");
    session.reset();
    EXPECT_TRUE(TakenNow().isGone);
    EXPECT_FALSE(TakenNow().hasEnded);
    TakenNow().Answer(200, "nobody");
}

TEST_F(BodyPiecesTest, AClientThatEndsEarlyIsntWaitedFor) {
    Ask(Put(5) + "hel");
    session->InputEnded();
    EXPECT_EQ(Sent(), "");
    EXPECT_FALSE(session->IsWorking()) << "so the connection is closed";

    Connect();
    TakenNow().hasRoom = false;
    Ask(Put(5) + "hello");
    session->InputEnded();
    TakenNow().GiveRoom();
    EXPECT_TRUE(session->IsWorking()) << "what was received isn't read yet";
    Sent();
    EXPECT_TRUE(TakenNow().hasEnded);
    EXPECT_TRUE(session->IsWorking()) << "until it is answered";
    TakenNow().Answer(200, "done");
    EXPECT_EQ(StatusOf(Sent()), 200U);
}

TEST_F(BodyPiecesTest, AClientMaySendNothingForTenSeconds) {
    Ask(Put(5) + "h");
    EXPECT_EQ(session->Deadline(), testTime + 10s);
    testTime += 9s;
    Ask("e");
    EXPECT_EQ(session->Deadline(), testTime + 10s);
    testTime += 10s;
    EXPECT_TRUE(session->Expire());
    EXPECT_EQ(StatusOf(Sent()), 408U);
    EXPECT_TRUE(TakenNow().isGone);
    EXPECT_TRUE(session->HasFinished());
}

TEST_F(BodyPiecesTest, ABodyMayTakeLongerTheLargerItIs) {
    settings.bodyRate = 1000;
    Connect();
    Ask(Put(100'000));
    const auto begin = testTime;
    // At 500 bytes a second, its time is used up after 44 seconds: it is 30 seconds and one for each 1,000 bytes.
    for (int i = 0; i < 11; ++i) {
        EXPECT_EQ(session->Deadline(), testTime + 10s) << i;
        testTime += 4s;
        Ask(std::string(2000, 'x'));
    }
    EXPECT_EQ(session->Deadline(), begin + 52s);
    testTime = *session->Deadline();
    EXPECT_TRUE(session->Expire());
    EXPECT_EQ(StatusOf(Sent()), 408U);
}

TEST_F(BodyPiecesTest, TheTimeOfTheDiskIsntTheClients) {
    Ask(Put(100) + "h");
    const auto begin = testTime;
    testTime += 5s;
    TakenNow().hasRoom = false;
    Ask("e");
    EXPECT_EQ(session->Deadline(), std::nullopt);
    testTime += 1h;
    TakenNow().GiveRoom();
    Sent();
    EXPECT_EQ(session->Deadline(), testTime + 10s);
    for (int i = 0; i < 3; ++i) {
        testTime += 8s;
        Ask("l");
    }
    EXPECT_EQ(session->Deadline(), begin + 30s + 1h) << "all its time together";
}

} // namespace
} // namespace Sensor::Http
