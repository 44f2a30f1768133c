#pragma once

#include "Services/Common/TcpServer.h"
#include "Services/Modbus/IRegisterMap.h"
#include "Services/Modbus/RequestHandler.h"
#include "Services/Modbus/ServerCounters.h"

#include <cstdint>
#include <functional>
#include <string>

namespace Services::Modbus {

struct ServerSettings {
    Common::TcpServerSettings tcp = {}; ///< for clients outside of `tcp.writers` the writing functions are unknown
    unsigned char unit = 0;             ///< the unit identifier to serve; 0 serves all
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
