#include "Sensor/Resources/SensorDir.h"

#include "Sensor/Http/EventStreams.h"
#include "Sensor/Resources/EntryResource.h"
#include "Sensor/Resources/EventsResource.h"
#include "Sensor/Resources/HealthResource.h"
#include "Sensor/Resources/LogResource.h"
#include "Sensor/Resources/LogWatch.h"
#include "Sensor/Resources/ProblemList.h"
#include "Sensor/Resources/ProblemsResource.h"
#include "Sensor/Resources/ScanDocuments.h"
#include "Sensor/Resources/ScanHistoryResource.h"
#include "Sensor/Resources/ScanResource.h"
#include "Sensor/Resources/SensorResource.h"
#include "Sensor/Resources/SourcesResource.h"
#include "VorApi/RoutedResource.h"

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

struct SensorDir::Impl {
    Impl(VorApi::ResourceRouter& router, const SensorEnviron& environ, Http::EventStreams& streams)
        : problemList(environ.problems, [&streams](const nlohmann::json& change) { streams.SendProblem(change); })
        , logWatch(environ.log, [&streams](const nlohmann::json& logged) { streams.SendLogEntry(logged); })
        , scanDocuments(environ.sensor)
        , entry(router, "/", router, environ.boot)
        , sensor(router, "/sensor", environ)
        , events(router, "/events/:stream", streams)
        , health(router, "/healthz")
        , problems(router, "/sensor/problems", problemList)
        , log(router, "/sensor/log", environ.log)
        , sources(router, "/sensor/sources", environ.sensor)
        , scan(router, "/sensor/scan", scanDocuments)
        , scanHistory(router, "/sensor/scan/history", scanDocuments) {}

    ProblemList problemList;
    LogWatch logWatch;
    ScanDocuments scanDocuments;

    VorApi::RoutedResource<EntryResource> entry;
    VorApi::RoutedResource<SensorResource> sensor;
    VorApi::RoutedResource<EventsResource> events;
    VorApi::RoutedResource<HealthResource> health;
    VorApi::RoutedResource<ProblemsResource> problems;
    VorApi::RoutedResource<LogResource> log;
    VorApi::RoutedResource<SourcesResource> sources;
    VorApi::RoutedResource<ScanResource> scan;
    VorApi::RoutedResource<ScanHistoryResource> scanHistory;
};

SensorDir::SensorDir(VorApi::ResourceRouter& router, const SensorEnviron& environ, Http::EventStreams& streams)
    : impl(std::make_unique<Impl>(router, environ, streams)) {}

SensorDir::~SensorDir() = default;

} // namespace Sensor::Resources
