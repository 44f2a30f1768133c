#pragma once

#include "Services/Common/Network.h"
#include "Services/Common/TcpServer.h"
#include "Services/Modbus/IRegisterMap.h"
#include "Services/Modbus/RequestHandler.h"
#include "Services/Modbus/ServerCounters.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Services::Modbus {

using Common::NetworkAddress;
using Common::ParseNetworks;

struct ServerSettings {
    std::string address = "127.0.0.1"; ///< IPv4 or IPv6, as digits; "0.0.0.0" and "::" listen on all interfaces
    std::uint16_t port = 0;            ///< 0 for any free port
    unsigned char unit = 0;            ///< 0 answers every unit identifier
    unsigned maxConnections = 32;      ///< one more is closed at once
    /// A connection with no whole request in this time is closed; 0 leaves it open.
    std::chrono::milliseconds idleTimeOut{60000};
    /// Whose clients are served. Another client is closed as soon as it connects.
    std::vector<Common::Network> readers = ParseNetworks({"0.0.0.0/0", "::/0"});
    /// Whose clients may write. For other clients the writing functions are unknown.
    std::vector<Common::Network> writers = ParseNetworks({"127.0.0.0/8", "::1/128"});
};

/// Serves Modbus TCP on a thread of its own, "ModbusNet". No client can block that thread: sockets never block, each
/// connection has fixed buffers, and a client that doesn't read its replies isn't read from until it does. The
/// operations are for one thread at a time; each waits microseconds for the network thread.
class ModbusServer {
public:
    /// Listens when it returns. Throws a Vor::Exception with a text for the user when it can't. `registers` and
    /// `counters` must outlive the server and are used by the network thread. `poll` is as TcpServer::Hooks::poll.
    ModbusServer(IRegisterMap& registers, ServerCounters& counters, const ServerSettings& settings,
                 std::function<void()> poll = {});
    /// See TcpServer::Update.
    void Update(const ServerSettings& settings);

    bool IsListening() const { return server.IsListening(); }
    std::uint16_t Port() const { return server.Port(); }
    std::string Url() const { return server.Url(); }

private:
    RequestHandler handler; ///< belongs to the network thread
    Common::TcpServer server;
};

} // namespace Services::Modbus
