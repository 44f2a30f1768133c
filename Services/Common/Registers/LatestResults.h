#pragma once

#include "VorApi/Object.h"
#include "VorMsg/ResultInfo.h"
#include "VorMsg/ResultItem.h"
#include "VorMsg/ResultSet.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace Services::Common {

/// The latest result of each data source of a map, which a new map keeps. Not thread-safe.
class LatestResults {
public:
    /// Sets the data sources of a new map, of which several may be the same. Returns the place of each: places count
    /// from 0, and the same data source has one place. Results of data sources that aren't in the map are dropped.
    std::vector<std::size_t> Replace(const std::vector<std::string>& dataSources);

    /// The number of places.
    std::size_t Count() const { return items.size(); }

    /// Keeps the results of one frame that belong to the map, and calls `kept(place, item)` for each. Allocates
    /// nothing.
    template <class Kept>
    void Store(ResultSet set, const Kept& kept);

    /// Null when there is none yet. Valid until the next change.
    ResultItem At(std::size_t place) const { return items[place].Get(); }

    /// Drops all results. The map stays.
    void Forget();

private:
    std::vector<Vor::Object> items;                        ///< by place
    std::unordered_map<unsigned long, std::size_t> places; ///< by the numeric id of the data source
};

template <class Kept>
void LatestResults::Store(ResultSet set, const Kept& kept) {
    const std::size_t count = ResultSet_Count(set);
    for (std::size_t i = 0; i < count; ++i) {
        const ResultItem item = ResultSet_At(set, i);
        const auto found = places.find(ResultInfo_NumericId(ResultItem_ResultInfo(item)));
        if (found != places.end()) {
            items[found->second] = Vor::Object::Share(item);
            kept(found->second, item);
        }
    }
}

} // namespace Services::Common
