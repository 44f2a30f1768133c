#pragma once

#include "Net/ITcpSession.h"
#include "Net/NetThread.h"
#include "Net/Network.h"
#include "Net/TcpCounters.h"
#include "Net/Wakeup.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Net {

struct TcpServerSettings {
    std::string address = "127.0.0.1";      ///< IPv4 or IPv6, as digits; "0.0.0.0" and "::" listen on all interfaces
    std::uint16_t port = 0;                 ///< 0 for any free port
    unsigned maxConnections = 32;           ///< one more is refused, unless it gets another's place
    unsigned maxConnectionsPerAddress = 16; ///< one more is refused; 0: no limit of its own
    /// Addresses of which each may have as many connections as all together, and whose connections keep their places.
    std::vector<Network> uncounted = LoopbackNetworks();
    /// A connection with no whole request in this time is closed; 0 leaves it open. One whose session is subscribed is
    /// closed when its client has read nothing in this time although something was sent. A session may have a deadline
    /// of its own instead.
    std::chrono::milliseconds idleTimeOut{60000};
    /// Whose clients are served. Another client is closed as soon as it connects.
    std::vector<Network> readers = ParseNetworks({"0.0.0.0/0", "::/0"});
    /// Whose clients may do more than read.
    std::vector<Network> writers = LoopbackNetworks();
};

/// Serves TCP clients, each with a session of its own, on a NetThread. No client can block that thread: sockets never
/// block, and a client that doesn't read its replies isn't read from until it does.
/// When all places are taken, a client from an address without a connection gets one: of the address that has the most
/// connections, and more than one, the connection that has been silent for the longest time is closed.
/// The operations are for one thread at a time; each waits microseconds for the network thread.
class TcpServer {
public:
    /// Makes the session of a client that has connected. Called on the network thread. A client without a session, and
    /// one for which this throws, is closed.
    using SessionMaker = std::function<std::unique_ptr<ITcpSession>(bool mayWrite)>;
    /// Makes the session of a client for which there is no place, with which that is answered. Called on the network
    /// thread, for at most MaxRefused such connections at a time; another one is closed at once. All of them are, when
    /// there is no function.
    using RefusalMaker = std::function<std::unique_ptr<ITcpSession>()>;

    static constexpr std::size_t MaxRefused = 16;

    /// Listens when it returns. Throws a Vor::Exception with a text for the user when it can't. `thread`, `counters`,
    /// and `wakeup`, if there is one, must outlive the server.
    TcpServer(NetThread& thread, TcpCounters& counters, const TcpServerSettings& settings, SessionMaker makeSession,
              Wakeup* wakeup = nullptr, RefusalMaker makeRefusal = nullptr);
    /// Closes all connections. Their sessions are gone then.
    ~TcpServer();
    TcpServer(const TcpServer&) = delete;
    TcpServer& operator=(const TcpServer&) = delete;

    /// Applies new settings, also to the open connections. Another address or port moves the server there and closes
    /// its connections. When that fails, it throws as the constructor does and the server stays as it was, or, when
    /// even that fails, listens no more: see IsListening(). `applied` is called on the network thread unless it throws.
    void Update(const TcpServerSettings& settings, const std::function<void()>& applied);

    bool IsListening() const;
    /// The port that is used, also when the settings say 0.
    std::uint16_t Port() const;
    /// Where clients connect, such as "tcp://127.0.0.1:502".
    std::string Url() const;

private:
    class Impl;
    NetThread& thread;
    const std::shared_ptr<Impl> impl;
};

} // namespace Net
