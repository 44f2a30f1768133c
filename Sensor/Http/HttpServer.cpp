#include "Sensor/Http/HttpServer.h"

#include "Sensor/Http/Problem.h"

#include <chrono>

namespace Sensor::Http {

namespace {

// The sessions have deadlines of their own.
Net::TcpServerSettings TcpSettings(const HttpServerSettings& settings) {
    return {.address = settings.address,
            .port = settings.port,
            .maxConnections = settings.maxConnections,
            .maxConnectionsPerAddress = settings.maxConnectionsPerAddress,
            .idleTimeOut = std::chrono::milliseconds(0)};
}

} // namespace

HttpServer::HttpServer(Net::NetThread& thread, const HttpServerSettings& settings, IHttpHandler& handler)
    : server(
          thread, counters, TcpSettings(settings),
          [session = settings.session, &handler, sessionWakeup = wakeup](bool) {
              return std::make_unique<HttpSession>(session, handler, sessionWakeup);
          },
          wakeup.get(),
          [session = settings.session, &handler, sessionWakeup = wakeup] {
              auto refusing = std::make_unique<HttpSession>(session, handler, sessionWakeup);
              refusing->Refuse(ProblemResponse({503, "There are as many connections as there may be."}));
              return refusing;
          }) {}

std::string HttpServer::Url() const {
    const std::string url = server.Url();
    return "http" + url.substr(url.find(':'));
}

} // namespace Sensor::Http
