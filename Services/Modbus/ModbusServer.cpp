#include "Services/Modbus/ModbusServer.h"

#include "Services/Modbus/Session.h"

#include <memory>
#include <utility>

namespace Services::Modbus {

ModbusServer::ModbusServer(IRegisterMap& registers, ServerCounters& counters, const ServerSettings& settings,
                           std::function<void()> poll)
    : handler(registers, counters, settings.unit)
    , server("ModbusNet", counters, settings.tcp,
             {.makeSession = [this](bool mayWrite) { return std::make_unique<Session>(handler, mayWrite); },
              .poll = std::move(poll)}) {}

void ModbusServer::Update(const ServerSettings& settings) {
    server.Update(settings.tcp, [&] { handler.SetUnit(settings.unit); });
}

} // namespace Services::Modbus
