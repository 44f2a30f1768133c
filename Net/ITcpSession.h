#pragma once

#include "Net/Network.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace Net {

/// The protocol of one connection without its socket: received bytes go in, bytes to send come out. Both sides are
/// bounded. Used by the server's network thread only; none of the operations waits for anything. A connection whose
/// session throws is closed.
///
/// A reply may come later, from any thread: the session is working until then, and who has the reply sets the server's
/// Wakeup. A session may wrap another one and change the bytes on their way, see WrappedSession.
class ITcpSession {
public:
    using Clock = std::chrono::steady_clock;

    virtual ~ITcpSession() = default;

    /// The client's address. Called once, before anything else.
    virtual void SetPeer(const NetworkAddress& /*address*/) {}

    /// Whether the client may do more than read, from the next request on.
    virtual void SetMayWrite(bool value) = 0;

    /// The room for received bytes, which limits how far requests are received ahead of their replies. Empty only while
    /// bytes wait to be sent or the session is working.
    virtual std::span<unsigned char> ReceiveSpace() = 0;
    /// `count` bytes were written to the front of ReceiveSpace().
    virtual void Received(std::size_t count) = 0;
    /// The client has closed its side, and sends nothing more. Perhaps it has gone altogether. Process is called next.
    virtual void InputEnded() {}

    /// Answers the whole requests that were received, until the room for replies is full. Returns how many it answered.
    /// Called when the client has connected, after Received and Sent, and when the Wakeup is set.
    virtual std::size_t Process() = 0;
    /// Whether the Wakeup, which is for all sessions of the server, was set for this one. Without it Process isn't
    /// called for the Wakeup.
    virtual bool WantsWakeup() const { return true; }

    /// The bytes that wait to be sent.
    virtual std::span<const unsigned char> Replies() const = 0;
    /// The first `count` bytes of Replies() were sent.
    virtual void Sent(std::size_t count) = 0;
    /// The last of Replies() was sent. Process is called next.
    virtual void Drained() {}

    /// Whether the session has ended: nothing more is received, and the connection is closed when its replies are sent.
    virtual bool Broken() const = 0;
    /// Whether the connection is reset, and what waits to be sent dropped. Asked after Process.
    virtual bool IsAborted() const { return false; }
    /// For the log: why the session has ended, such as "it has quit".
    virtual std::string EndReason() const { return "its session has ended"; }

    /// Whether nothing more is sent after Replies(). The connection is closed in that direction when they are sent. In
    /// the other one it is open until the client closes it, until the deadline, or until the session has ended: the
    /// client would lose the last reply if it were still sending when the connection is closed.
    virtual bool HasFinished() const { return false; }

    /// Whether the reply to a request comes later. Until then the connection stays open, even if the client has closed
    /// its side.
    virtual bool IsWorking() const { return false; }

    /// Whether the session sends without requests. The client of such a session may be silent as long as it reads.
    virtual bool IsSubscribed() const { return false; }

    /// Whether bytes are received and processed while replies wait to be sent. Without it a client that doesn't read
    /// its replies isn't read from.
    virtual bool ReadsAhead() const { return false; }

    /// When the session wants an end, instead of the server's idle time-out. It may change with each call of the
    /// session.
    virtual std::optional<Clock::time_point> Deadline() const { return std::nullopt; }
    /// The deadline has passed. The connection is closed at once, unless this returns true and the deadline is a later
    /// one then, or none.
    virtual bool Expire() { return false; }
};

} // namespace Net
