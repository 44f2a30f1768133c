#pragma once

#include <string>

namespace Sensor::Http {

/// An event as it is sent (HTML standard, 9.2.5). `data` is one line. An event without a name is a message, one without
/// an id leaves the client's last one.
std::string EventText(const std::string& name, const std::string& id, const std::string& data);

} // namespace Sensor::Http
