#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string_view>
#include <utility>

namespace Sensor::Http {

/// How many requests were answered, by their methods and the statuses of the answers. For any thread.
class RequestCounts {
public:
    /// The method, or "other" for one that the server doesn't handle, and for what isn't HTTP.
    using Key = std::pair<std::string_view, unsigned>;

    /// `method` as the client has sent it.
    void Add(std::string_view method, unsigned status);
    std::map<Key, std::uint64_t> Read() const;

private:
    mutable std::mutex mutex; ///< guards the counts; no lock is acquired under it
    std::map<Key, std::uint64_t> counts;
};

} // namespace Sensor::Http
