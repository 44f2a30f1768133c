// Any target of a request is refused, or has a path and a query that can be read.

#include "Sensor/Http/RequestTarget.h"
#include "Sensor/Http/ResourceMap.h"
#include "Vor/Utf8.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto target = Sensor::Http::RequestTarget::Parse({reinterpret_cast<const char*>(data), size});
    if (!target) {
        return 0;
    }
    for (const auto& [name, value] : target->query) {
        Require(Vor::IsUtf8(name) && Vor::IsUtf8(value));
        Require(target->FindQuery(name) != nullptr);
    }
    const std::string path = Sensor::Http::ResourceMap::Canonical(target->path);
    Require(Sensor::Http::ResourceMap::Canonical(path) == path);
    const auto again = Sensor::Http::RequestTarget::Parse(path);
    Require(again && again->path == path && again->query.empty());
    return 0;
}
