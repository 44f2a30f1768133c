#include "Sensor/Resources/MetricsResource.h"

#include "Sensor/Http/RequestCounts.h"
#include "Sensor/ResidentMemory.h"
#include "Sensor/Resources/ServiceMetrics.h"
#include "Sensor/VirtualSensor.h"
#include "Vor/ByteVector.h"
#include "Vor/Logging.h"
#include "Vor/LoopCore.h"
#include "VorApi/LogThrown.h"
#include "VorCommon/IMetricsKeeper.h"
#include "VorCommon/IMetricsSource.h"
#include "VorControl/Control/ControlModule.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/IControlManager.h"

#include <chrono>
#include <exception>
#include <string>

namespace Sensor::Resources {

namespace {

using Type = PrometheusText::Type;

} // namespace

MetricsResource::MetricsResource(const SensorEnviron& environ)
    : environ(environ)
    , operations(environ) {}

void MetricsResource::Document(const VorApi::RequestInfoEx&, VorApi::ResponseInfoEx&, VorApi::VorDataTree& data) {
    PrometheusText text;
    AddSensor(text);
    AddRequests(text);
    AddOperations(text);
    AddQueues(text);
    AddServices(text);
    const std::string bytes = text.Text();
    data.Set(Vor::Properties::ByteVector(bytes.data(), bytes.size()));
}

void MetricsResource::AddSensor(PrometheusText& text) const {
    text.Add({"vor_frames_total", Type::Counter, "Frames that the scan has produced."}, {},
             environ.sensor.FrameTotal());
    text.Add({"vor_resident_memory_bytes", Type::Gauge, "Memory that the program occupies."}, {}, ResidentMemory());
    text.Add({"vor_main_loop_longest_stall_seconds", Type::Gauge,
              "The longest time within the last minute for which the main loop was busy while something else was due."},
             {}, std::chrono::duration<double>(stalls.Longest()).count());
}

void MetricsResource::AddRequests(PrometheusText& text) const {
    for (const auto& [key, count] : environ.requests.Read()) {
        text.Add({"vor_http_requests_total", Type::Counter, "Requests over HTTP that were answered."},
                 {{"method", std::string(key.first)}, {"status", std::to_string(key.second)}}, count);
    }
}

void MetricsResource::AddOperations(PrometheusText& text) const {
    const PrometheusText::Metric metric{"vor_operations_total", Type::Counter,
                                        "Operations of the sensor that have ended."};
    for (const auto& [client, ended] : operations.Read()) {
        text.Add(metric, {{"client", client}, {"result", "succeeded"}}, ended.succeeded);
        text.Add(metric, {{"client", client}, {"result", "failed"}}, ended.failed);
    }
}

void MetricsResource::AddQueues(PrometheusText& text) const {
    text.Add({"vor_main_loop_queue_length", Type::Gauge, "Calls that wait for the main loop."}, {},
             Vor::LoopCore::Instance().QueuedCount());
    text.Add({"vor_frame_queue_length", Type::Gauge, "Frames that wait to be distributed to the services."}, {},
             environ.sensor.Hub().QueuedCount());
    for (const auto& [service, count] : environ.module.QueuedResults()) {
        text.Add({"vor_service_queue_length", Type::Gauge, "Result sets that a started service has yet to process."},
                 {{"service", service}}, count);
    }
}

// A service whose figures can't be read keeps nobody from reading the others. Those of a disabled service aren't
// refreshed otherwise.
void MetricsResource::AddServices(PrometheusText& text) const {
    for (const std::string& id : environ.services.List()) {
        try {
            VorControl::IControlInstance& instance = environ.services.GetInstance(id);
            if (!instance.HasDeviceManager()) {
                instance.MetricsKeeper().UpdateMetrics();
            }
            AddServiceMetrics(text, id, instance.MetricsSource().GetMetrics());
        } catch (const std::exception& e) {
            Vor::LogThrown(e, "The figures of %s can't be read.", id);
        } catch (...) {
            Vor::LogError("The figures of %s can't be read, by something that is no exception.", id);
        }
    }
}

} // namespace Sensor::Resources
