#include "Sensor/Resources/ScanResource.h"

#include "Sensor/Resources/QueryNumber.h"
#include "Sensor/Resources/ScanDocuments.h"
#include "Vor/Exception.h"

#include <utility>

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

namespace {

constexpr QueryNumber Points{.name = "points", .least = 0, .greatest = 10'000, .otherwise = 10'000};
constexpr QueryNumber PointsOfStream{.name = "points", .least = 0, .greatest = 2'000, .otherwise = 640};
constexpr QueryNumber Rate{.name = "rate", .least = 1, .greatest = 25, .otherwise = 10};

constexpr unsigned long long Second = 1'000'000;

} // namespace

void ScanResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                            VorApi::VorDataTree& data) {
    documents.Update();
    nlohmann::json document = documents.Last(Points.Of(request));
    if (request.WantsSchema()) {
        document["_schema"] = ScanDocuments::LastSchema();
    }
    data = VorApi::VorDataTree::FromJson(document);
    response.Link("vor:scanHistory", "/sensor/scan/history", false, VorApi::VorDataTree());
    response.Link("vor:sources", "/sensor/sources", false, VorApi::VorDataTree());
}

unsigned int ScanResource::StartStream(const VorApi::RequestInfoEx& request, VorApi::IStreamReceiver& receiver) {
    const std::size_t points = PointsOfStream.Of(request);
    const std::uint64_t rate = Rate.Of(request);
    if (streams.size() >= MaxStreams) {
        Vor::Throw(yERROR_BUSY,
                   "There are %u streams of the scan with other rates or points already, which is the limit.",
                   streams.size());
    }
    const unsigned int id = ++lastId;
    Stream& stream = streams.emplace(id, Stream{receiver, points}).first->second;
    stream.timer = std::make_unique<Vor::AsyncTimer>([this, &stream](Vor::AsyncTimer&) { Send(stream); });
    stream.timer->Start(Second / rate, false);
    return id;
}

void ScanResource::StopStream(unsigned int id) {
    if (streams.erase(id) == 0) {
        Vor::Throw(yERROR_NOT_FOUND, "The scan has no stream %u.", id);
    }
}

void ScanResource::Send(Stream& stream) {
    if (const std::uint64_t found = documents.Update(); found != stream.sent) {
        stream.sent = found;
        stream.receiver.Send(VorApi::VorDataTree::FromJson(documents.Last(stream.points)));
    }
}

} // namespace Sensor::Resources
