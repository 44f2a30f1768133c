#pragma once

#include "Net/TcpServer.h"
#include "Services/Common/ServiceCounters.h"
#include "Services/Modbus/IRegisterMap.h"
#include "Services/Modbus/RequestHandler.h"
#include "Services/Modbus/Session.h"

#include <cstdint>
#include <memory>
#include <string>

namespace Services::Modbus {

/// The server of the service without the service.
class ModbusServer {
public:
    explicit ModbusServer(IRegisterMap& registers, Common::ServiceCounters& counters,
                          const Net::TcpServerSettings& settings = {})
        : handler(registers, counters, 0)
        , server(thread, counters, settings,
                 [this](bool mayWrite) { return std::make_unique<Session>(handler, mayWrite); }) {}

    void Update(const Net::TcpServerSettings& settings, unsigned char unit = 0) {
        server.Update(settings, [this, unit] { handler.SetUnit(unit); });
    }

    bool IsListening() const { return server.IsListening(); }
    std::uint16_t Port() const { return server.Port(); }
    std::string Url() const { return server.Url(); }

private:
    RequestHandler handler;
    Net::NetThread thread{"ModbusNet"};
    Net::TcpServer server;
};

} // namespace Services::Modbus
