#pragma once

#include "Sensor/Scan/Limits.h"

#include <array>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace Vor {
class DocumentErrors;
}

namespace Sensor {

/// The limits of a tool's decision as clients and jobs have them: both are from -Range to Range, and their defaults,
/// the ends of that, accept every value.
struct ToolLimits {
    static constexpr double Range = 1'000'000'000;

    double low = -Range; ///< the least accepted value
    double high = Range; ///< the greatest accepted value

    Scan::Limits ForDecision() const;
    bool operator==(const ToolLimits&) const = default;
};

/// A member of documents with limits.
struct LimitMember {
    const char* name;
    double ToolLimits::*value;
    const char* title;
};

inline constexpr std::array<LimitMember, 2> LimitMembers = {
    {{"low", &ToolLimits::low, "Least accepted value"}, {"high", &ToolLimits::high, "Greatest accepted value"}}};

/// Changes the limits that an object has; its other members are ignored. Adds what is refused to the errors: the limits
/// are not to be used then. `pointer` is the place of the object in its document (RFC 6901).
void ChangeLimits(ToolLimits& limits, const nlohmann::json& object, const std::string& pointer,
                  Vor::DocumentErrors& errors);

} // namespace Sensor
