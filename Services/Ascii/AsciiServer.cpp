#include "Services/Ascii/AsciiServer.h"

#include "Services/Ascii/AsciiSession.h"

#include <memory>

namespace Services::Ascii {

AsciiServer::AsciiServer(Outputs& outputs, ISensor& sensor, ServerCounters& counters, Common::Wakeup& wakeup,
                         const AsciiSettings& settings)
    : handler(outputs, sensor, counters, settings.format)
    , server("AsciiNet", counters, settings.tcp,
             {.makeSession = [this](bool mayWrite) { return std::make_unique<AsciiSession>(handler, mayWrite); }},
             &wakeup) {}

void AsciiServer::Update(const AsciiSettings& settings) {
    server.Update(settings.tcp, [&] { handler.SetFormat(settings.format); });
}

} // namespace Services::Ascii
