#include "Sensor/Resources/IoDocument.h"

#include "Sensor/Io/OutputDevices.h"
#include "Sensor/Resources/DescribedMembers.h"

#include <utility>

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

using nlohmann::json;

namespace {

json DocumentOf(const Io::OutputPort::Edge& edge) {
    return {{"number", edge.number},
            {"time", edge.time},
            {"frame", edge.frame ? json(*edge.frame) : json()},
            {"high", edge.high}};
}

json DocumentOf(unsigned long long number, const Io::OutputDevice::PortState& port) {
    json edges = json::array();
    for (const Io::OutputPort::Edge& edge : port.edges) {
        edges.push_back(DocumentOf(edge));
    }
    return {{"port", number},
            {"name", port.settings.name},
            {"behaviour", static_cast<int>(port.settings.behaviour)},
            {"on", port.on},
            {"high", port.high},
            {"rises", port.counts.rises},
            {"falls", port.counts.falls},
            {"requests", port.counts.requests},
            {"done", port.counts.done},
            {"refused", port.counts.refused},
            {"lost", port.counts.lost},
            {"waiting", port.counts.waiting},
            {"lastState", port.lastRequest ? json(port.lastRequest->on) : json()},
            {"lastTarget", port.lastRequest ? json(port.lastRequest->target) : json()},
            {"edges", std::move(edges)}};
}

json EdgeSchema() {
    return DescribedObject({{"number", Described("integer", "Number of the edge, from 1 on")},
                            {"time", DescribedWithUnit("integer", "Time since the start of the scan", "us")},
                            {"frame", Described(OrNull("integer"), "Last frame of the scan")},
                            {"high", Described("boolean", "Whether the line rose")}});
}

json PortSchema() {
    return DescribedObject({{"port", Described("integer", "Number of the port")},
                            {"name", Described("string", "Name")},
                            {"behaviour", Described("integer", "Behaviour, 3 for software events")},
                            {"on", Described("boolean", "Whether the output is on")},
                            {"high", Described("boolean", "Whether its line is high")},
                            {"rises", Described("integer", "How often the line rose")},
                            {"falls", Described("integer", "How often the line fell")},
                            {"requests", Described("integer", "Requests that arrived")},
                            {"done", Described("integer", "Requests that were carried out")},
                            {"refused", Described("integer", "Requests that were refused")},
                            {"lost", Described("integer", "Requests that were taken and then dropped")},
                            {"waiting", Described("integer", "Requests whose time hasn't come")},
                            {"lastState", Described(OrNull("boolean"), "State in the last request")},
                            {"lastTarget", Described(OrNull("integer"), "Target in the last request")},
                            {"edges", DescribedList(EdgeSchema(), "Latest edges of the line, the latest last")}});
}

} // namespace

json IoDocument(const Io::OutputDevices& devices, std::size_t edges) {
    json list = json::array();
    for (const auto& [providerId, device] : devices.Devices()) {
        const Io::OutputDevice::DeviceState state = device->State(edges);
        json ports = json::array();
        for (std::size_t i = 0; i < state.ports.size(); ++i) {
            ports.push_back(DocumentOf(i, state.ports[i]));
        }
        list.push_back({{"engineId", devices.EngineId()},
                        {"providerId", providerId},
                        {"model", device->Model()},
                        {"serialNumber", state.serialNumber},
                        {"enabled", state.enabled},
                        {"ports", std::move(ports)}});
    }
    return {{"devices", std::move(list)}};
}

json IoSchema() {
    const json device = DescribedObject({{"engineId", Described("string", "Scan engine that offers the device")},
                                         {"providerId", Described("string", "Id in the scan engine")},
                                         {"model", Described("string", "Model")},
                                         {"serialNumber", Described("string", "Serial number")},
                                         {"enabled", Described("boolean", "Whether a service drives the device")},
                                         {"ports", DescribedList(PortSchema(), "Ports")}});
    return DescribedObject({{"devices", DescribedList(device, "Devices with digital outputs")}});
}

} // namespace Sensor::Resources
