#pragma once

#include "Services/Ascii/AsciiParams.h"
#include "Services/Ascii/RequestHandler.h"
#include "Services/Common/TcpServer.h"

#include <string>

namespace Services::Ascii {

/// Serves lines of text over TCP on a thread of its own, "AsciiNet". The operations are for one thread at a time; each
/// waits microseconds for the network thread.
class AsciiServer {
public:
    /// Listens when it returns. Throws a Vor::Exception with a text for the user when it can't. All but the settings
    /// must outlive the server.
    AsciiServer(Outputs& outputs, ISensor& sensor, ServerCounters& counters, Common::Wakeup& wakeup,
                const AsciiSettings& settings);

    /// See TcpServer::Update.
    void Update(const AsciiSettings& settings);

    bool IsListening() const { return server.IsListening(); }
    std::string Url() const { return server.Url(); }

private:
    RequestHandler handler; ///< belongs to the network thread
    Common::TcpServer server;
};

} // namespace Services::Ascii
