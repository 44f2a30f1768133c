#include "Sensor/Resources/SensorDir.h"

#include "Sensor/Http/EventStreams.h"
#include "Sensor/Resources/EntryResource.h"
#include "Sensor/Resources/EventsResource.h"
#include "Sensor/Resources/HealthResource.h"
#include "Sensor/Resources/IoResource.h"
#include "Sensor/Resources/JobChangesResource.h"
#include "Sensor/Resources/JobCommandResource.h"
#include "Sensor/Resources/JobFileResource.h"
#include "Sensor/Resources/JobUploads.h"
#include "Sensor/Resources/JobsResource.h"
#include "Sensor/Resources/LogResource.h"
#include "Sensor/Resources/LogWatch.h"
#include "Sensor/Resources/MetricsResource.h"
#include "Sensor/Resources/OpenApiResource.h"
#include "Sensor/Resources/OperationProperties.h"
#include "Sensor/Resources/OperationsResource.h"
#include "Sensor/Resources/ProblemList.h"
#include "Sensor/Resources/ProblemsResource.h"
#include "Sensor/Resources/ScanDocuments.h"
#include "Sensor/Resources/ScanHistoryResource.h"
#include "Sensor/Resources/ScanResource.h"
#include "Sensor/Resources/SensorCommandResource.h"
#include "Sensor/Resources/SensorResource.h"
#include "Sensor/Resources/SourcesResource.h"
#include "Sensor/Resources/ToolsResource.h"
#include "Sensor/SensorTools.h"
#include "Sensor/VirtualSensor.h"
#include "VorApi/Event.h"
#include "VorApi/Notification.h"
#include "VorApi/RoutedResource.h"

#include <string>

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
        , metrics(router, "/metrics", environ)
        , openApi(router, OpenApiResource::Route, router, environ)
        , problems(router, "/sensor/problems", problemList)
        , log(router, "/sensor/log", environ.log)
        , sources(router, "/sensor/sources", environ.sensor)
        , tools(router, "/sensor/tools/:tool", environ.tools)
        , scan(router, "/sensor/scan", scanDocuments)
        , scanHistory(router, "/sensor/scan/history", scanDocuments)
        , io(router, "/sensor/io", environ.sensor.Devices())
        , operations(environ)
        , commands(router, "/sensor/commands/:command", operations)
        , lastOperations(router, "/sensor/operations/:operation", operations)
        , sensorJobs(environ.persistence)
        , fileTasks(environ.persistence)
        , jobsEnviron({sensorJobs, fileTasks, environ.persistence, operations,
                       [&streams] { streams.Notice(VorApi::Notification::Reload, "/sensor/jobs"); }})
        , jobs(router, "/sensor/jobs/:job", jobsEnviron)
        , jobCommands(router, "/sensor/jobs/:job/commands/:command", jobsEnviron)
        , jobUploads(jobsEnviron)
        , jobFiles(router, "/sensor/jobs/:job/file", jobsEnviron, jobUploads)
        , jobChanges(router, "/sensor/jobs/loaded/changes", jobsEnviron)
        , jobLoadedEvent(environ.jobLoadedEvent)
        , jobLoadedHandler(jobLoadedEvent.Add([this](const std::string&) { jobsEnviron.changed(); }))
        , toolsChangedEvent(environ.tools.ChangedEvent())
        , toolsChangedHandler(toolsChangedEvent.Add([&streams](const std::string& tool) {
            if (tool.empty()) {
                streams.Notice(VorApi::Notification::Reload, "/sensor/tools");
            } else {
                streams.Notice(VorApi::Notification::Changed, ToolsResource::PathOf(tool));
            }
        })) {
        operations.EndedEvent().Add([&streams](const Operation& operation) {
            streams.Notice(VorApi::Notification::Changed, OperationProperties::PathOf(operation));
        });
    }
    ~Impl() {
        toolsChangedEvent.Remove(toolsChangedHandler);
        jobLoadedEvent.Remove(jobLoadedHandler);
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    ProblemList problemList;
    LogWatch logWatch;
    ScanDocuments scanDocuments;

    VorApi::RoutedResource<EntryResource> entry;
    VorApi::RoutedResource<SensorResource> sensor;
    VorApi::RoutedResource<EventsResource> events;
    VorApi::RoutedResource<HealthResource> health;
    VorApi::RoutedResource<MetricsResource> metrics; ///< counts operations, so it is built before their clients
    VorApi::RoutedResource<OpenApiResource> openApi;
    VorApi::RoutedResource<ProblemsResource> problems;
    VorApi::RoutedResource<LogResource> log;
    VorApi::RoutedResource<SourcesResource> sources;
    VorApi::RoutedResource<ToolsResource> tools;
    VorApi::RoutedResource<ScanResource> scan;
    VorApi::RoutedResource<ScanHistoryResource> scanHistory;
    VorApi::RoutedResource<IoResource> io;
    OperationRunner operations;
    VorApi::RoutedResource<SensorCommandResource> commands;
    VorApi::RoutedResource<OperationsResource> lastOperations;
    SensorJobs sensorJobs;
    FileTasks fileTasks;
    const JobsEnviron jobsEnviron;
    VorApi::RoutedResource<JobsResource> jobs;
    VorApi::RoutedResource<JobCommandResource> jobCommands;
    JobUploads jobUploads;
    VorApi::RoutedResource<JobFileResource> jobFiles;
    VorApi::RoutedResource<JobChangesResource> jobChanges;
    Vor::Event<const std::string&>& jobLoadedEvent;
    Vor::Event<const std::string&>::CallbackId jobLoadedHandler;
    Vor::Event<const std::string&>& toolsChangedEvent;
    Vor::Event<const std::string&>::CallbackId toolsChangedHandler;
};

SensorDir::SensorDir(VorApi::ResourceRouter& router, const SensorEnviron& environ, Http::EventStreams& streams)
    : impl(std::make_unique<Impl>(router, environ, streams)) {}

SensorDir::~SensorDir() = default;

} // namespace Sensor::Resources
