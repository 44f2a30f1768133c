#include "Sensor/Resources/ScanHistoryResource.h"

#include "Sensor/Resources/QueryNumber.h"
#include "Sensor/Resources/ScanDocuments.h"
#include "Sensor/Scan/ScanHistory.h"

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

namespace {

constexpr QueryNumber FrameNumber{
    .name = "n", .least = 1, .greatest = Scan::ScanHistory::Capacity, .otherwise = Scan::ScanHistory::Capacity};

} // namespace

void ScanHistoryResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx&,
                                   VorApi::VorDataTree& data) {
    std::vector<std::string> names;
    for (const auto& [name, value] : request.GetQuery()) {
        if (name == "source") {
            names.push_back(value);
        }
    }
    nlohmann::json document = documents.History(FrameNumber.Of(request), names);
    if (request.WantsSchema()) {
        document["_schema"] = ScanDocuments::HistorySchema();
    }
    data = VorApi::VorDataTree::FromJson(document);
}

} // namespace Sensor::Resources
