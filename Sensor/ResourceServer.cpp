#include "Sensor/ResourceServer.h"

#include "Sensor/RandomText.h"
#include "Sensor/ServiceHost.h"
#include "Sensor/StartError.h"
#include "Sensor/VirtualSensor.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"

#include <utility>

namespace Sensor {

namespace {

constexpr std::size_t BootBytes = 8;

} // namespace

ResourceServer::ResourceServer(const CommandLine::Http& settings, ServiceHost& host, VirtualSensor& sensor,
                               const LogHistory& log, std::function<void(const std::string& line)> print)
    : settings(settings)
    , print(std::move(print))
    , revisions(RandomText(BootBytes), host.Services(), &host.Tools())
    , streams({.boot = revisions.Boot(),
               .router = host.Router(),
               .requests = host.Requests(),
               .revisions = revisions,
               .services = host.Services().List()})
    , directory(host.Router(), Environ(host, sensor, log), streams)
    , watch(Environ(host, sensor, log), [this](const auto& changes) { streams.SendState(changes); })
    , gateway({.hosts = settings.hosts}, host.Router(), host.Requests(), revisions, streams)
    , thread("HttpNet")
    , retry([this](Vor::AsyncTimer&) { TryAgain(); }) {
    revisions.StartedOrStoppedEvent().Add(
        [this](const std::string& path) { streams.Notice(VorApi::Notification::Changed, path); });
}

Resources::SensorEnviron ResourceServer::Environ(ServiceHost& host, VirtualSensor& sensor,
                                                 const LogHistory& log) const {
    return {.boot = revisions.Boot(),
            .services = host.Services(),
            .persistence = host.Persistence(),
            .problems = host.Problems(),
            .sensor = sensor,
            .log = log,
            .module = host.Module(),
            .requests = requestCounts,
            .jobLoadedEvent = host.JobLoadedEvent(),
            .tools = host.Tools()};
}

void ResourceServer::Start() {
    try {
        Listen();
    } catch (const Vor::Exception& e) {
        if (settings.portGiven || e.Status() != yERROR_CONFLICT) {
            throw StartError("--http-port " + std::to_string(settings.port) + ": " + e.what() + ".");
        }
        Vor::LogUser(Vor::UserWarning, "HTTP",
                     "HTTP isn't served yet: %1$s. The sensor tries again every %2$d seconds.", e.what(),
                     static_cast<int>(RetryPeriod.count()));
        retry.Start(std::chrono::microseconds(RetryPeriod).count(), false);
    }
}

void ResourceServer::Listen() {
    server.emplace(thread,
                   Http::HttpServerSettings{.address = settings.address,
                                            .port = settings.port,
                                            .session = {.limits = {}, .counts = &requestCounts}},
                   gateway);
    print("HTTP: " + server->Url() + "/");
}

void ResourceServer::TryAgain() {
    try {
        Listen();
        retry.Stop();
    } catch (const Vor::Exception& e) {
        Vor::LogDebug("HTTP isn't served yet: %s.", e.what());
    }
}

} // namespace Sensor
