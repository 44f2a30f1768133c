#pragma once

#include "Services/Common/ITcpSession.h"
#include "Services/Common/Network.h"
#include "Services/Common/TcpCounters.h"
#include "Services/Common/Wakeup.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Services::Common {

struct TcpServerSettings {
    std::string address = "127.0.0.1"; ///< IPv4 or IPv6, as digits; "0.0.0.0" and "::" listen on all interfaces
    std::uint16_t port = 0;            ///< 0 takes any free port
    unsigned maxConnections = 32;      ///< one more is closed as soon as it is made
    /// A connection with no whole request in this time is closed; 0 leaves it open. One whose session is subscribed is
    /// closed when it takes nothing of what was sent in this time.
    std::chrono::milliseconds idleTimeOut{60000};
    /// Who is served at all; another client is closed as soon as it connects.
    std::vector<Network> readers = ParseNetworks({"0.0.0.0/0", "::/0"});
    /// Which of them may do more than read.
    std::vector<Network> writers = ParseNetworks({"127.0.0.0/8", "::1/128"});
};

/// Serves TCP clients, each with a session of its own, on one thread. All clients share that thread, and none can hold
/// it: sockets never block, and one whose replies aren't taken isn't read until they are.
/// The operations are for one thread at a time; each waits for the network thread, which takes microseconds.
class TcpServer {
public:
    static constexpr std::chrono::milliseconds PollPeriod{100};

    /// What the network thread calls.
    struct Hooks {
        std::function<std::unique_ptr<ITcpSession>(bool mayWrite)> makeSession;
        /// Called at once and then after each PollPeriod, if there is one: it must not wait for anything.
        std::function<void()> poll = {};
    };

    /// Listens when it returns. Throws Vor::Exception with a text for the user when it can't. `counters` and `wakeup`,
    /// if there is one, must outlive the server.
    TcpServer(const char* threadName, TcpCounters& counters, const TcpServerSettings& settings, Hooks hooks,
              Wakeup* wakeup = nullptr);
    /// Closes all connections and ends the thread.
    ~TcpServer();
    TcpServer(const TcpServer&) = delete;
    TcpServer& operator=(const TcpServer&) = delete;

    /// Takes new settings, for the connections that are there too. Another address or port moves the server there and
    /// closes its connections; should that fail, it throws as the constructor does and everything stays as it was
    /// (IsListening() tells, should even that fail). `applied` is called on the network thread unless it throws.
    void Update(const TcpServerSettings& settings, const std::function<void()>& applied);

    bool IsListening() const;
    /// The port really taken, and where clients find it, such as "tcp://127.0.0.1:502".
    std::uint16_t Port() const;
    std::string Url() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace Services::Common
