#include "Sensor/Http/RequestCounts.h"

#include "Sensor/Http/HttpRequest.h"

#include <algorithm>

namespace Sensor::Http {

namespace {

/// Clients determine neither how many there are nor what is in them.
std::string_view Known(std::string_view method) {
    const auto* const found = std::ranges::find(HandledMethods, method);
    return found == HandledMethods.end() ? "other" : *found;
}

} // namespace

void RequestCounts::Add(std::string_view method, unsigned status) {
    const Key key(Known(method), status);
    const std::lock_guard guard(mutex);
    ++counts[key];
}

std::map<RequestCounts::Key, std::uint64_t> RequestCounts::Read() const {
    const std::lock_guard guard(mutex);
    return counts;
}

} // namespace Sensor::Http
