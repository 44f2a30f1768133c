#include "Services/Common/TcpServerProperties.h"

#include "Services/Common/Translate.h"

namespace Services::Common {

namespace {

template <class Value>
void RegisterReadOnly(Vor::Params::Group& group, const char* name, Value& value, const char* title) {
    group.Register(name, value, title, 100);
    value.EnableReadOnly();
    value.SetReadOnly(true);
}

} // namespace

TcpServerProperties::TcpServerProperties(const char* failedName, const char* failedTitle, const char* droppedName) {
    RegisterReadOnly(*this, "address", address, Translate("Address"));
    RegisterReadOnly(*this, "failure", failure, Translate("Failure"));
    AddFigure(&ServiceCounters::dropped, droppedName, Translate("Dropped Frames"), "dropCount");
    AddFigure(&ServiceCounters::connected, "connected", Translate("Connected Clients"));
    AddFigure(&ServiceCounters::refused, "refused", Translate("Refused Clients"));
    AddFigure(&ServiceCounters::requests, "requests", Translate("Requests"));
    AddFigure(&ServiceCounters::failed, failedName, failedTitle);
    AddFigure(&ServiceCounters::bytesIn, "bytesIn", Translate("Received Bytes"));
    AddFigure(&ServiceCounters::bytesOut, "bytesOut", Translate("Sent Bytes"));
    AddFigure(&ServiceCounters::resultsReceived, "resultsReceived", Translate("Received Result Sets"));
    AddFigure(&ServiceCounters::resultsApplied, "resultsApplied", Translate("Applied Result Sets"));
}

void TcpServerProperties::AddFigure(Counter counter, const char* name, const char* title, const char* metricName) {
    Figure& figure = figures.emplace_back();
    figure.counter = counter;
    RegisterReadOnly(*this, name, figure.property, title);
    RegisterReadOnly(metrics, metricName, figure.metric, title);
}

void TcpServerProperties::RefreshProperties(const ServiceCounters& counters) {
    for (Figure& figure : figures) {
        figure.property = (counters.*figure.counter).load(std::memory_order_relaxed);
    }
}

void TcpServerProperties::RefreshMetrics(const ServiceCounters& counters) {
    for (Figure& figure : figures) {
        figure.metric = static_cast<long long>((counters.*figure.counter).load(std::memory_order_relaxed));
    }
}

} // namespace Services::Common
