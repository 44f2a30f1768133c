#pragma once

#include "Services/Common/ServiceCounters.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/NonPersistentProperties.h"

#include <atomic>
#include <cstdint>
#include <list>
#include <string>

namespace Services::Common {

/// The properties of a TCP service: its status, where clients connect, why it can't serve them, and its figures. Each
/// figure is a property and a metric.
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
    void RefreshProperties(const ServiceCounters& counters);
    /// Sets the metrics. Main loop only.
    void RefreshMetrics(const ServiceCounters& counters);
    Vor::Params::Group& Metrics() { return metrics; }

private:
    using Counter = std::atomic<std::uint64_t> ServiceCounters::*;

    struct Figure {
        Counter counter;
        Vor::Params::Value<unsigned long long> property;
        Vor::Params::Value<long long> metric;
    };

    void AddFigure(Counter counter, const char* name, const char* title) { AddFigure(counter, name, title, name); }
    void AddFigure(Counter counter, const char* name, const char* title, const char* metricName);

    std::list<Figure> figures;
    Vor::Params::Group metrics;
};

} // namespace Services::Common
