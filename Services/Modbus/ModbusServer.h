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
    std::uint16_t port = 0;            ///< 0 takes any free port
    unsigned char unit = 0;            ///< 0 answers every unit identifier
    unsigned maxConnections = 32;      ///< one more is closed as soon as it is made
    /// A connection with no whole request in this time is closed; 0 leaves it open.
    std::chrono::milliseconds idleTimeOut{60000};
    /// Who is served at all; another client is closed as soon as it connects.
    std::vector<Common::Network> readers = ParseNetworks({"0.0.0.0/0", "::/0"});
    /// Which of them may write; to another one the writing functions are unknown.
    std::vector<Common::Network> writers = ParseNetworks({"127.0.0.0/8", "::1/128"});
};

/// Serves Modbus TCP on one thread of its own, "ModbusNet". All clients share that thread, and none can hold it:
/// sockets never block, each connection has fixed buffers, and one whose replies aren't taken isn't read until they
/// are. The operations are for one thread at a time; each waits for the network thread, which takes microseconds.
class ModbusServer {
public:
    static constexpr std::chrono::milliseconds PollPeriod = Common::TcpServer::PollPeriod;

    /// Listens when it returns. Throws Vor::Exception with a text for the user when it can't. `registers` and
    /// `counters` must outlive the server and are used by the network thread, which calls `poll`, if there is one, at
    /// once and then after each PollPeriod: it must not wait for anything.
    ModbusServer(IRegisterMap& registers, ServerCounters& counters, const ServerSettings& settings,
                 std::function<void()> poll = {});
    /// Takes new settings, for the connections that are there too. Another address or port moves the server there and
    /// closes its connections; should that fail, it throws as the constructor does and everything stays as it was
    /// (IsListening() tells, should even that fail).
    void Update(const ServerSettings& settings);

    bool IsListening() const { return server.IsListening(); }
    /// The port really taken, and where clients find it, such as "tcp://127.0.0.1:502".
    std::uint16_t Port() const { return server.Port(); }
    std::string Url() const { return server.Url(); }

private:
    RequestHandler handler; ///< belongs to the network thread
    Common::TcpServer server;
};

} // namespace Services::Modbus
