#include "Services/Common/TcpServerProperties.h"

#include "Services/Common/Translate.h"

#include <cstddef>

namespace Services::Common {

namespace {

constexpr const char* Counter = "counter";
constexpr const char* Gauge = "gauge";
constexpr const char* Histogram = "histogram";
constexpr const char* Bytes = "B";
constexpr const char* Microseconds = "us";

template <class Value>
void RegisterReadOnly(Vor::Params::Group& group, const std::string& name, Value& value, const std::string& title,
                      const char* units = nullptr) {
    group.Register(name, value, title, 100);
    value.EnableReadOnly();
    value.SetReadOnly(true);
    if (units != nullptr) {
        value.EnableUnits(true);
        value.SetUnits(units);
    }
}

} // namespace

TcpServerProperties::TcpServerProperties(const char* failedName, const char* failedTitle, const char* droppedName) {
    RegisterReadOnly(*this, "address", address, Translate("Address"));
    RegisterReadOnly(*this, "failure", failure, Translate("Failure"));
    using F = ServiceFigures;
    AddFigure({.name = droppedName,
               .title = Translate("Dropped Frames"),
               .kind = Counter,
               .read = [](const F& of) { return of.dropped; },
               .metricName = "dropCount"});
    AddFigure({"connected", Translate("Connected Clients"), Gauge, [](const F& of) { return of.connected; }});
    AddFigure({"refused", Translate("Refused Clients"), Counter, [](const F& of) { return of.refused; }});
    AddFigure({"requests", Translate("Requests"), Counter, [](const F& of) { return of.requests; }});
    AddFigure({failedName, failedTitle, Counter, [](const F& of) { return of.failed; }});
    AddFigure({"bytesIn", Translate("Received Bytes"), Counter, [](const F& of) { return of.bytesIn; }, Bytes});
    AddFigure({"bytesOut", Translate("Sent Bytes"), Counter, [](const F& of) { return of.bytesOut; }, Bytes});
    AddFigure({"resultsReceived", Translate("Received Result Sets"), Counter,
               [](const F& of) { return of.resultsReceived; }});
    AddFigure(
        {"resultsApplied", Translate("Applied Result Sets"), Counter, [](const F& of) { return of.resultsApplied; }});
    AddFigure(
        {"resultsDropped", Translate("Dropped Result Sets"), Counter, [](const F& of) { return of.resultsDropped; }});
    AddFigure({"latencyResults", Translate("Result Sets of the Last 10 Seconds"), Gauge,
               [](const F& of) { return of.latency.recent; }});
    AddFigure({"latencyP50", Translate("Median Latency of the Last 10 Seconds"), Gauge,
               [](const F& of) { return of.latency.median; }, Microseconds});
    AddFigure({"latencyP99", Translate("99th Percentile of the Latency of the Last 10 Seconds"), Gauge,
               [](const F& of) { return of.latency.percentile99; }, Microseconds});
    AddFigure({"latencyMax", Translate("Greatest Latency of the Last 10 Seconds"), Gauge,
               [](const F& of) { return of.latency.greatest; }, Microseconds});
    metrics.Register("latency", latency, Translate("Time from Publication until Clients Can Read the Results"));
}

TcpServerProperties::LatencyMetric::LatencyMetric()
    : Group(Histogram) {
    for (std::size_t i = 0; i < upTo.size(); ++i) {
        const std::string bound = std::to_string(ResultLatency::Bounds[i]);
        RegisterReadOnly(*this, bound, upTo[i], bound);
    }
    RegisterReadOnly(*this, "more", more, Translate("More"));
    RegisterReadOnly(*this, "sum", sum, Translate("Sum"), Microseconds);
}

void TcpServerProperties::LatencyMetric::Refresh(const ResultLatency::Figures& figures) {
    for (std::size_t i = 0; i < upTo.size(); ++i) {
        upTo[i] = static_cast<long long>(figures.counts[i]);
    }
    more = static_cast<long long>(figures.counts.back());
    sum = static_cast<long long>(figures.sum);
}

void TcpServerProperties::AddFigure(const Declaration& declaration) {
    const auto& [name, title, kind, read, units, metricName] = declaration;
    Figure& figure = figures.emplace_back();
    figure.read = read;
    RegisterReadOnly(*this, name, figure.property, title, units);
    RegisterReadOnly(metrics, metricName == nullptr ? name : metricName, figure.metric, title, units);
    figure.metric.SetExtendedType(kind);
}

void TcpServerProperties::RefreshProperties(const ServiceFigures& values) {
    for (Figure& figure : figures) {
        figure.property = figure.read(values);
    }
}

void TcpServerProperties::RefreshMetrics(const ServiceFigures& values) {
    for (Figure& figure : figures) {
        figure.metric = static_cast<long long>(figure.read(values));
    }
    latency.Refresh(values.latency);
}

} // namespace Services::Common
