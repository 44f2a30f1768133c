#pragma once

#include "Services/Common/ServiceCounters.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/NonPersistentProperties.h"

#include <array>
#include <cstdint>
#include <list>
#include <string>

namespace Services::Common {

/// The properties of a TCP service: its status, where clients connect, why it can't serve them, and its figures. Each
/// figure is a property and a metric.
///
/// The "extendedType" of a metric is "counter" for a figure that only grows until the service is started anew, and
/// "gauge" for any other. That of the metric "latency" is "histogram": it has a member for each bucket, named by its
/// upper bound, `more` for what is beyond the last one, and `sum`, whose units are those of the bounds.
class TcpServerProperties : public VorControl::ControlProtocol::NonPersistentProperties {
public:
    /// `failedName` and `failedTitle`, which is translated, name the figure of requests that were answered with an
    /// error. The metric of dropped results is always "dropCount".
    TcpServerProperties(const char* failedName, const char* failedTitle, const char* droppedName = "dropCount");

    /// Such as "tcp://127.0.0.1:502", with the port that is used; empty while the service doesn't listen.
    Vor::Params::Value<std::string> address;
    /// Why the service doesn't work as its parameters say; empty when it does.
    Vor::Params::Value<std::string> failure;

    /// Sets the properties. Under the properties lock.
    void RefreshProperties(const ServiceFigures& values);
    /// Sets the metrics. Main loop only.
    void RefreshMetrics(const ServiceFigures& values);
    Vor::Params::Group& Metrics() { return metrics; }

private:
    using Read = std::uint64_t (*)(const ServiceFigures&);

    struct Declaration {
        const char* name;
        const char* title;
        const char* kind; ///< its "extendedType"
        Read read;
        const char* units = nullptr;
        const char* metricName = nullptr; ///< if that is another one
    };

    struct Figure {
        Read read;
        Vor::Params::Value<unsigned long long> property;
        Vor::Params::Value<long long> metric;
    };

    class LatencyMetric : public Vor::Params::Group {
    public:
        LatencyMetric();
        void Refresh(const ResultLatency::Figures& figures);

    private:
        std::array<Vor::Params::Value<long long>, ResultLatency::Bounds.size()> upTo;
        Vor::Params::Value<long long> more;
        Vor::Params::Value<long long> sum;
    };

    void AddFigure(const Declaration& declaration);

    std::list<Figure> figures;
    Vor::Params::Group metrics;
    LatencyMetric latency;
};

} // namespace Services::Common
