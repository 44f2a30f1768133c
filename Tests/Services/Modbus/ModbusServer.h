#pragma once

#include "Services/Common/ServiceCounters.h"
#include "Services/Common/TcpServer.h"
#include "Services/Modbus/IRegisterMap.h"
#include "Services/Modbus/RequestHandler.h"
#include "Services/Modbus/Session.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace Services::Modbus {

/// The server of the service without the service.
class ModbusServer {
public:
    explicit ModbusServer(IRegisterMap& registers, Common::ServiceCounters& counters,
                          const Common::TcpServerSettings& settings = {}, std::function<void()> poll = {})
        : handler(registers, counters, 0)
        , server("ModbusNet", counters, settings,
                 {.makeSession = [this](bool mayWrite) { return std::make_unique<Session>(handler, mayWrite); },
                  .poll = std::move(poll)}) {}

    void Update(const Common::TcpServerSettings& settings, unsigned char unit = 0) {
        server.Update(settings, [this, unit] { handler.SetUnit(unit); });
    }

    bool IsListening() const { return server.IsListening(); }
    std::uint16_t Port() const { return server.Port(); }
    std::string Url() const { return server.Url(); }

private:
    RequestHandler handler;
    Common::TcpServer server;
};

} // namespace Services::Modbus
