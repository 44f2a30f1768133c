#pragma once

#include <cstddef>
#include <span>

namespace Services::Common {

/// The protocol of one connection without its socket: received bytes go in, bytes to send come out. Both sides are
/// bounded. Used by the server's network thread only; none of the operations waits for anything.
class ITcpSession {
public:
    virtual ~ITcpSession() = default;

    /// Whether the client may do more than read, from the next request on.
    virtual void SetMayWrite(bool value) = 0;

    /// The room for received bytes. Empty only while bytes wait to be sent or the session is working.
    virtual std::span<unsigned char> ReceiveSpace() = 0;
    /// `count` bytes were written to the front of ReceiveSpace().
    virtual void Received(std::size_t count) = 0;

    /// Answers the whole requests that were received, until the room for replies is full. Returns how many it answered.
    virtual std::size_t Process() = 0;

    /// The bytes that wait to be sent.
    virtual std::span<const unsigned char> Replies() const = 0;
    /// The first `count` bytes of Replies() were sent.
    virtual void Sent(std::size_t count) = 0;

    /// Whether the session has ended: nothing more is received, and the connection is closed when its replies are sent.
    virtual bool Broken() const = 0;

    /// Whether the reply to a request comes later. The server's Wakeup is set when it is there. Until then the
    /// connection stays open, even if the client has closed its side.
    virtual bool IsWorking() const { return false; }

    /// Whether the session sends without requests. The client of such a session may be silent as long as it reads.
    virtual bool IsSubscribed() const { return false; }
};

} // namespace Services::Common
