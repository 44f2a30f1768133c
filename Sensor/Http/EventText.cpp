#include "Sensor/Http/EventText.h"

namespace Sensor::Http {

std::string EventText(const std::string& name, const std::string& id, const std::string& data) {
    return (name.empty() ? "" : "event: " + name + "\n") + (id.empty() ? "" : "id: " + id + "\n") + "data: " + data +
           "\n\n";
}

} // namespace Sensor::Http
