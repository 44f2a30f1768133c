#pragma once

#include "Net/ITcpSession.h"
#include "Net/Network.h"
#include "Net/TcpCounters.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
// Asio of Boost 1.74 uses std::exchange without including its header.
#include <utility>

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

namespace Net {

/// One client of a server: moves bytes between socket and session, and closes what has lasted too long. For the network
/// thread. It lives as long as the server or an operation under way refers to it; its session until it is closed.
class TcpConnection : public std::enable_shared_from_this<TcpConnection> {
public:
    /// `name` is the client's address and port. `counters` are used until it is closed.
    TcpConnection(boost::asio::ip::tcp::socket accepted, const NetworkAddress& peer, std::string name,
                  TcpCounters& counters, std::unique_ptr<ITcpSession> session, std::chrono::milliseconds idleTimeOut);

    /// `closed` is called once, by Close.
    void Start(std::function<void()> closed);

    const NetworkAddress& Peer() const { return peer; }
    /// When the last request was answered, or sent what the client is subscribed to; at first when it has connected.
    ITcpSession::Clock::time_point LastActive() const { return std::max(lastRequest, lastSent); }
    void SetMayWrite(bool value) { session->SetMayWrite(value); }
    void SetIdleTimeOut(std::chrono::milliseconds value);

    /// Pumps when the session wants it. For the server's Wakeup.
    void Wake();
    /// Answers the requests that were received and sends the replies. Receives more only when all replies are sent,
    /// unless the session reads ahead.
    void Pump();

    /// Closes the connection and destroys the session. The reason is for the log.
    void Close(const std::string& reason);

private:
    using Clock = ITcpSession::Clock;

    bool IsOpen() const { return session != nullptr; }
    /// Runs what calls the session, and closes the connection when that throws.
    template <typename Work>
    void Guarded(const Work& work);
    /// Calls `ready` when the socket is; until then `waiting` is set.
    void WaitFor(boost::asio::ip::tcp::socket::wait_type what, bool& waiting, void (TcpConnection::*ready)());
    void Exchange();
    void Receive();
    void Read();
    void WaitUntilSendable();
    std::optional<Clock::time_point> Deadline() const;
    void Watch();
    void CheckDeadline();
    bool MayBeSilent(Clock::time_point oldest) const;

    boost::asio::ip::tcp::socket socket;
    boost::asio::steady_timer timer;
    const NetworkAddress peer;
    const std::string name;
    TcpCounters& counters;
    std::unique_ptr<ITcpSession> session; ///< null: closed
    std::function<void()> closed;
    std::chrono::milliseconds idleTimeOut;
    Clock::time_point lastRequest = Clock::now();
    Clock::time_point lastSent = lastRequest;
    Clock::time_point watchedUntil = Clock::time_point::max(); ///< when the timer ends; max: it doesn't run
    bool receiving = false;
    bool blocked = false;     ///< the socket is waited for before more is sent
    bool inputEnded = false;  ///< the client has closed its side
    bool outputEnded = false; ///< the own side is closed
};

} // namespace Net
