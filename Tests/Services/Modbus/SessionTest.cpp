#include "Services/Modbus/Session.h"

#include "Tests/Services/Modbus/Bytes.h"

#include <gtest/gtest.h>

namespace Services::Modbus {
namespace {

/// A session with what it needs.
struct SessionFixture {
    explicit SessionFixture(bool mayWrite)
        : session(handler, mayWrite) {}

    AddressRegisters registers;
    Common::ServiceCounters counters;
    RequestHandler handler{registers, counters, 0};
    Session session;
};

/// The replies of a session to a stream that arrives in pieces of `step` bytes. Each reply is sent at once.
Bytes Replies(const Bytes& stream, std::size_t step) {
    SessionFixture fixture(true);
    Session& session = fixture.session;
    Bytes replies;
    std::size_t at = 0;
    while (at < stream.size() && !session.Broken()) {
        const auto space = session.ReceiveSpace();
        const std::size_t size = std::min({step, space.size(), stream.size() - at});
        std::copy_n(stream.begin() + static_cast<std::ptrdiff_t>(at), size, space.begin());
        session.Received(size);
        at += size;
        do {
            session.Process();
            const auto waiting = session.Replies();
            replies.insert(replies.end(), waiting.begin(), waiting.end());
            session.Sent(waiting.size());
        } while (session.Process() > 0 || !session.Replies().empty());
    }
    return replies;
}

TEST(Session, GivesTheSameRepliesHoweverTheStreamIsCut) {
    Bytes stream;
    for (unsigned i = 0; i < 300; ++i) {
        stream = stream + ReadRequest(i, 100 * i, 1 + i % 126);
    }
    const Bytes whole = Replies(stream, stream.size());
    EXPECT_GT(whole.size(), 300u * 9);
    for (std::size_t step = 1; step < 40; ++step) {
        EXPECT_EQ(Replies(stream, step), whole) << step;
    }
}

TEST(Session, AnswersInTheOrderOfTheRequests) {
    const Bytes replies = Replies(ReadRequest(7, 1, 1) + ReadRequest(3, 65535, 9) + ReadRequest(5, 2, 1), 1000);
    EXPECT_EQ(replies, (Bytes{0, 7, 0, 0, 0, 5, 1, 3, 2, 0, 1, /**/ 0, 3, 0, 0, 0, 3, 1, 0x83, 2, /**/
                              0, 5, 0, 0, 0, 5, 1, 3, 2, 0, 2}));
}

TEST(Session, AnswersWhatCameBeforeSomethingThatIsNoFrame) {
    const Bytes good = ReadRequest(1, 2, 3);
    const Bytes bad = {0, 2, 0, 9, 0, 6, 1, 3, 0, 0, 0, 1};
    for (std::size_t step = 1; step < 30; ++step) {
        EXPECT_EQ(Replies(good + bad + good, step), Replies(good, 12)) << step;
    }
}

TEST(Session, StopsAnsweringAndReceivingUntilItsRepliesAreTaken) {
    SessionFixture fixture(true);
    Session& session = fixture.session;
    std::size_t requests = 0;
    for (;;) {
        const auto space = session.ReceiveSpace();
        const Bytes request = ReadRequest(0, 0, 125);
        if (space.size() < request.size()) {
            break;
        }
        std::copy(request.begin(), request.end(), space.begin());
        session.Received(request.size());
        session.Process();
        ASSERT_LT(++requests, 1000u);
    }
    const std::size_t waiting = session.Replies().size();
    EXPECT_EQ(waiting % 259, 0u);
    EXPECT_EQ(session.Process(), 0u);
    session.Sent(waiting - 1);
    EXPECT_EQ(session.Process(), 0u) << "half a reply still waits";
    session.Sent(1);
    std::size_t answered = waiting / 259;
    while (const std::size_t more = session.Process()) {
        answered += more;
        session.Sent(session.Replies().size());
    }
    EXPECT_EQ(answered, requests);
    EXPECT_TRUE(session.Replies().empty());
}

TEST(Session, KnowsTheWritingFunctionsOnlyWhereItMayWrite) {
    const Bytes write = {0, 9, 0, 0, 0, 6, 1, 6, 0, 7, 0, 1};
    SessionFixture fixture(false);
    Session& session = fixture.session;
    const auto ask = [&] {
        std::copy(write.begin(), write.end(), session.ReceiveSpace().begin());
        session.Received(write.size());
        session.Process();
        const Bytes reply(session.Replies().begin(), session.Replies().end());
        session.Sent(reply.size());
        return reply;
    };
    EXPECT_EQ(ask(), (Bytes{0, 9, 0, 0, 0, 3, 1, 0x86, 1}));
    session.SetMayWrite(true);
    EXPECT_EQ(ask(), (Bytes{0, 9, 0, 0, 0, 3, 1, 0x86, 2}));
    session.SetMayWrite(false);
    EXPECT_EQ(ask(), (Bytes{0, 9, 0, 0, 0, 3, 1, 0x86, 1}));
}

} // namespace
} // namespace Services::Modbus
