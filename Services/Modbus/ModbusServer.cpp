#include "Services/Modbus/ModbusServer.h"

#include "Services/Modbus/Session.h"

#include <memory>
#include <utility>

namespace Services::Modbus {

namespace {

Common::TcpServerSettings TcpSettings(const ServerSettings& settings) {
    return {.address = settings.address,
            .port = settings.port,
            .maxConnections = settings.maxConnections,
            .idleTimeOut = settings.idleTimeOut,
            .readers = settings.readers,
            .writers = settings.writers};
}

} // namespace

ModbusServer::ModbusServer(IRegisterMap& registers, ServerCounters& counters, const ServerSettings& settings,
                           std::function<void()> poll)
    : handler(registers, counters, settings.unit)
    , server("ModbusNet", counters, TcpSettings(settings),
             {.makeSession = [this](bool mayWrite) { return std::make_unique<Session>(handler, mayWrite); },
              .poll = std::move(poll)}) {}

void ModbusServer::Update(const ServerSettings& settings) {
    server.Update(TcpSettings(settings), [&] { handler.SetUnit(settings.unit); });
}

} // namespace Services::Modbus
