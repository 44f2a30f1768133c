#include "Sensor/ToolLimits.h"

#include "Vor/DocumentErrors.h"
#include "Vor/Exception.h"
#include "yApi/yStatus.h"

#include <limits>

#include <nlohmann/json.hpp>

namespace Sensor {

namespace {

using nlohmann::json;

std::string Described(const json& value) {
    if (value.is_number() || value.is_null()) {
        return value.dump();
    }
    return (value.is_structured() ? "an " : "a ") + std::string(value.type_name());
}

std::string TextOf(double number) {
    return json(number).dump();
}

/// Adds "PLACE: expected EXPECTED but got GOT."
void Refuse(const std::string& pointer, const std::string& expected, const std::string& got,
            Vor::DocumentErrors& errors) {
    errors.Add(pointer, Vor::Exception(__LINE__, __FILE__, yERROR_PARAMETER, __func__, "%s: expected %s but got %s.",
                                       pointer.empty() ? "the document" : pointer.substr(1), expected, got));
}

} // namespace

Scan::Limits ToolLimits::ForDecision() const {
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    return {.least = low == -Range ? -Infinity : low, .greatest = high == Range ? Infinity : high};
}

void ChangeLimits(ToolLimits& limits, const json& object, const std::string& pointer, Vor::DocumentErrors& errors) {
    if (!object.is_object()) {
        Refuse(pointer, "an object", Described(object), errors);
        return;
    }
    bool areNumbers = true;
    for (const LimitMember& member : LimitMembers) {
        const auto found = object.find(member.name);
        if (found == object.end()) {
            continue;
        }
        const double number = found->is_number() ? found->get<double>() : std::numeric_limits<double>::quiet_NaN();
        if (number >= -ToolLimits::Range && number <= ToolLimits::Range) {
            limits.*member.value = number;
        } else {
            Refuse(pointer + '/' + member.name, "a number from -1000000000 to 1000000000", Described(*found), errors);
            areNumbers = false;
        }
    }
    if (!areNumbers || limits.low <= limits.high) {
        return;
    }
    if (object.contains("low")) {
        Refuse(pointer + "/low", "at most " + TextOf(limits.high) + ", which is high,", TextOf(limits.low), errors);
    } else {
        Refuse(pointer + "/high", "at least " + TextOf(limits.low) + ", which is low,", TextOf(limits.high), errors);
    }
}

} // namespace Sensor
