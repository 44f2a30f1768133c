#include "Net/BufferedSession.h"

#include <algorithm>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace Net {
namespace {

/// 4 bytes in, 3 bytes out.
class SmallSession : public BufferedSession {
public:
    SmallSession()
        : BufferedSession(4, 3) {}

    using BufferedSession::Append;
    using BufferedSession::Consume;
    using BufferedSession::Input;
    using BufferedSession::OutputSpace;
    using BufferedSession::Produced;

    void SetMayWrite(bool) override {}
    std::size_t Process() override { return 0; }
    bool Broken() const override { return false; }

    void Receive(std::string_view bytes) {
        std::ranges::copy(bytes, ReceiveSpace().begin());
        Received(bytes.size());
    }
};

std::string Text(std::span<const unsigned char> bytes) {
    return {bytes.begin(), bytes.end()};
}

TEST(BufferedSession, KeepsWhatWasReceivedUntilItIsConsumed) {
    SmallSession session;
    EXPECT_EQ(session.ReceiveSpace().size(), 4u);
    EXPECT_TRUE(session.Input().empty());
    session.Receive("abc");
    session.Receive("d");
    EXPECT_EQ(Text(session.Input()), "abcd");
    EXPECT_TRUE(session.ReceiveSpace().empty());
    session.Consume(0);
    session.Consume(3);
    EXPECT_EQ(Text(session.Input()), "d");
    session.Receive("ef");
    EXPECT_EQ(Text(session.Input()), "def");
    session.Consume(3);
    EXPECT_EQ(session.ReceiveSpace().size(), 4u);
}

TEST(BufferedSession, KeepsRepliesUntilTheyAreSent) {
    SmallSession session;
    EXPECT_TRUE(session.Replies().empty());
    session.OutputSpace()[0] = 'a';
    session.Produced(1);
    session.Append(std::span(reinterpret_cast<const unsigned char*>("bc"), 2));
    EXPECT_EQ(Text(session.Replies()), "abc");
    EXPECT_TRUE(session.OutputSpace().empty());
    session.Sent(2);
    EXPECT_EQ(Text(session.Replies()), "c");
    EXPECT_TRUE(session.OutputSpace().empty()) << "there is room when all are sent";
    session.Sent(1);
    EXPECT_EQ(session.OutputSpace().size(), 3u);
}

} // namespace
} // namespace Net
