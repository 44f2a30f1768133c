#include "Sensor/Resources/ScanResource.h"

#include "Sensor/Resources/ScanDocuments.h"

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

namespace {

constexpr QueryNumber Points{.name = "points", .least = 0, .greatest = 10'000, .otherwise = 10'000};
constexpr QueryNumber PointsOfStream{.name = "points", .least = 0, .greatest = 2'000, .otherwise = 640};

} // namespace

ScanResource::ScanResource(ScanDocuments& documents)
    : PacedStreams("scan", PointsOfStream)
    , documents(documents) {}

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

std::uint64_t ScanResource::Newest() {
    return documents.Update();
}

nlohmann::json ScanResource::NewestDocument(std::size_t points) {
    return documents.Last(points);
}

} // namespace Sensor::Resources
