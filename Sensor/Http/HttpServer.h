#pragma once

#include "Net/NetThread.h"
#include "Net/TcpCounters.h"
#include "Net/TcpServer.h"
#include "Net/Wakeup.h"
#include "Sensor/Http/HttpSession.h"
#include "Sensor/Http/IHttpHandler.h"

#include <cstdint>
#include <memory>
#include <string>

namespace Sensor::Http {

struct HttpServerSettings {
    std::string address = "127.0.0.1";      ///< IPv4 or IPv6, as digits
    std::uint16_t port = 8080;              ///< 0 for any free port
    unsigned maxConnections = 256;          ///< one more is answered with 503, unless it gets another's place
    unsigned maxConnectionsPerAddress = 64; ///< likewise; connections of loopback aren't counted
    HttpSessionSettings session;
};

/// Serves HTTP/1.1 and HTTP/1.0 on a network thread. What clients may do to it is bounded by the settings: a client
/// costs what it asks for, and blocks nobody.
class HttpServer {
public:
    /// Listens when it returns. Throws as Net::TcpServer does when it can't. `thread` and `handler` must outlive the
    /// server.
    HttpServer(Net::NetThread& thread, const HttpServerSettings& settings, IHttpHandler& handler);
    /// Closes all connections; the handler isn't called any more. Responders that are left do nothing from then on.
    ~HttpServer() = default;
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// The port that is used, also when the settings say 0.
    std::uint16_t Port() const { return server.Port(); }
    /// Such as "http://127.0.0.1:8080".
    std::string Url() const;
    const Net::TcpCounters& Counters() const { return counters; }

private:
    const std::shared_ptr<Net::Wakeup> wakeup = std::make_shared<Net::Wakeup>();
    Net::TcpCounters counters;
    Net::TcpServer server;
};

} // namespace Sensor::Http
