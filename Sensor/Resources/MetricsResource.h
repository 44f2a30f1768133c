#pragma once

#include "Sensor/Http/IMediaResource.h"
#include "Sensor/Resources/LoopStalls.h"
#include "Sensor/Resources/OperationCounts.h"
#include "Sensor/Resources/PrometheusText.h"
#include "Sensor/Resources/SensorProperties.h"
#include "VorApi/DocumentResourceBase.h"

#include <string_view>

namespace Sensor::Resources {

/// The figures of the sensor and its services as text for Prometheus. The text is written here, and not by a library
/// such as prometheus-cpp: that would count a second time what the services count already, and is far larger than
/// PrometheusText.
class MetricsResource : public VorApi::DocumentResourceBase, public Http::IMediaResource {
public:
    explicit MetricsResource(const SensorEnviron& environ);

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;
    std::string_view MediaType() const override { return PrometheusText::MediaType; }

protected:
    void RequireDocument(const VorApi::RequestInfoEx&) override {}

private:
    void AddSensor(PrometheusText& text) const;
    void AddRequests(PrometheusText& text) const;
    void AddOperations(PrometheusText& text) const;
    void AddQueues(PrometheusText& text) const;
    void AddServices(PrometheusText& text) const;

    const SensorEnviron environ;
    const OperationCounts operations;
    LoopStalls stalls;
};

} // namespace Sensor::Resources
