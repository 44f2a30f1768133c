#pragma once

#include "Net/NetThread.h"
#include "Sensor/CommandLine.h"
#include "Sensor/Http/EventStreams.h"
#include "Sensor/Http/HttpServer.h"
#include "Sensor/Http/RequestCounts.h"
#include "Sensor/Http/ResourceGateway.h"
#include "Sensor/Resources/Revisions.h"
#include "Sensor/Resources/SensorDir.h"
#include "Sensor/Resources/SensorProperties.h"
#include "Sensor/Resources/StateWatch.h"
#include "Vor/AsyncTimer.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace Sensor {

class LogHistory;
class ServiceHost;
class VirtualSensor;

/// Serves the resources of the sensor and of its services to HTTP clients. It is built, started and destroyed on the
/// main loop's thread; requests are answered while the loop runs.
class ResourceServer {
public:
    static constexpr std::chrono::seconds RetryPeriod{5};

    /// The resources of the services exist. `print` prints a line for the user. The others outlive this.
    ResourceServer(const CommandLine::Http& settings, ServiceHost& host, VirtualSensor& sensor, const LogHistory& log,
                   std::function<void(const std::string& line)> print);

    /// Listens, and prints where. When the default port is taken it tries again each RetryPeriod. Throws a StartError
    /// when it can't listen otherwise.
    void Start();

private:
    Resources::SensorEnviron Environ(ServiceHost& host, VirtualSensor& sensor, const LogHistory& log) const;
    void Listen();
    void TryAgain();

    const CommandLine::Http settings;
    const std::function<void(const std::string& line)> print;
    Http::RequestCounts requestCounts;
    Resources::Revisions revisions;
    Http::EventStreams streams;
    Resources::SensorDir directory;
    Resources::StateWatch watch;
    Http::ResourceGateway gateway;
    Net::NetThread thread;
    std::optional<Http::HttpServer> server; ///< while it listens
    Vor::AsyncTimer retry;
};

} // namespace Sensor
