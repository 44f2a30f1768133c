#pragma once

#include <cstdint>

namespace VorApi {
class RequestInfoEx;
}

namespace Sensor::Resources {

/// A number that a client may ask for by name, and what it is if the client doesn't.
struct QueryNumber {
    const char* name;
    std::uint64_t least;
    std::uint64_t greatest;
    std::uint64_t otherwise;

    /// Throws `yERROR_FORMAT` for anything else than a number between the limits.
    std::uint64_t Of(const VorApi::RequestInfoEx& request) const;
};

} // namespace Sensor::Resources
