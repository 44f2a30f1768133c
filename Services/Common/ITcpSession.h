#pragma once

#include <cstddef>
#include <span>

namespace Services::Common {

/// The protocol of one connection without its socket: received bytes go in, bytes to send come out. Both sides are
/// bounded. Used by the server's network thread only; none of the operations waits for anything.
class ITcpSession {
public:
    virtual ~ITcpSession() = default;

    /// Whether the client may do more than read; holds from the next request on.
    virtual void SetMayWrite(bool value) = 0;

    /// The room for received bytes. Empty only while bytes wait to be sent or the session is working.
    virtual std::span<unsigned char> ReceiveSpace() = 0;
    /// Tells how many bytes were put there.
    virtual void Received(std::size_t count) = 0;

    /// Answers the whole requests that were received, as far as their replies have room. Returns how many.
    virtual std::size_t Process() = 0;

    /// The bytes that wait to be sent, and how many of them were.
    virtual std::span<const unsigned char> Replies() const = 0;
    virtual void Sent(std::size_t count) = 0;

    /// Nothing more is received; the connection is closed when its replies are gone.
    virtual bool Broken() const = 0;

    /// A request is under way whose reply comes later. The server's Wakeup tells when it is there. Meanwhile the
    /// connection stays, even if the client has closed its side.
    virtual bool IsWorking() const { return false; }

    /// The session sends without being asked, so the client may be silent as long as it takes what is sent.
    virtual bool IsSubscribed() const { return false; }
};

} // namespace Services::Common
