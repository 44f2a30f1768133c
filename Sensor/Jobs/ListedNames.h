#pragma once

#include <string>
#include <vector>

namespace Sensor::Jobs {

/// "a, b, c", or "none".
inline std::string Listed(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text.empty() ? "none" : text;
}

} // namespace Sensor::Jobs
