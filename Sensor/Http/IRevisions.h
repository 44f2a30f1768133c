#pragma once

#include <optional>
#include <string>

namespace Sensor::Http {

/// Which state of the configuration a document contains. For the main loop.
class IRevisions {
public:
    virtual ~IRevisions() = default;
    /// The entity tag of what the path names, with its quotes, such as "\"5f0c-12\"". Nothing for what has no
    /// revision.
    virtual std::optional<std::string> TagOf(const std::string& path) const = 0;
};

} // namespace Sensor::Http
