#include "Sensor/Resources/IoResource.h"

#include "Sensor/Io/OutputDevices.h"
#include "Sensor/Io/OutputPort.h"
#include "Sensor/Resources/IoDocument.h"

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

namespace {

constexpr QueryNumber Edges{
    .name = "edges", .least = 0, .greatest = Io::OutputPort::MaxEdges, .otherwise = Io::OutputPort::MaxEdges};
constexpr QueryNumber EdgesOfStream{.name = "edges", .least = 0, .greatest = Io::OutputPort::MaxEdges, .otherwise = 16};

} // namespace

IoResource::IoResource(const Io::OutputDevices& devices)
    : PacedStreams("digital outputs", EdgesOfStream)
    , devices(devices) {}

void IoResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx&, VorApi::VorDataTree& data) {
    nlohmann::json document = IoDocument(devices, Edges.Of(request));
    if (request.WantsSchema()) {
        document["_schema"] = IoSchema();
    }
    data = VorApi::VorDataTree::FromJson(document);
}

std::uint64_t IoResource::Newest() {
    return devices.ChangeCount();
}

nlohmann::json IoResource::NewestDocument(std::size_t edges) {
    return IoDocument(devices, edges);
}

} // namespace Sensor::Resources
