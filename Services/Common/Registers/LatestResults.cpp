#include "Services/Common/Registers/LatestResults.h"

#include <utility>

namespace Services::Common {

std::vector<std::size_t> LatestResults::Replace(const std::vector<std::string>& dataSources) {
    std::vector<std::size_t> result;
    std::vector<Vor::Object> nextItems;
    std::unordered_map<unsigned long, std::size_t> nextPlaces;
    result.reserve(dataSources.size());
    nextItems.reserve(dataSources.size());
    nextPlaces.reserve(dataSources.size());
    for (const std::string& dataSource : dataSources) {
        const unsigned long id = ResultInfo_IdOfText(dataSource);
        const auto [place, isNew] = nextPlaces.try_emplace(id, nextItems.size());
        if (isNew) {
            const auto former = places.find(id);
            nextItems.push_back(former == places.end() ? Vor::Object() : std::move(items[former->second]));
        }
        result.push_back(place->second);
    }
    items = std::move(nextItems);
    places = std::move(nextPlaces);
    return result;
}

void LatestResults::Forget() {
    for (Vor::Object& item : items) {
        item = {};
    }
}

} // namespace Services::Common
