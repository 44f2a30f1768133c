#pragma once

#include <cstddef>

#include <nlohmann/json_fwd.hpp>

namespace Sensor::Io {
class OutputDevices;
}

namespace Sensor::Resources {

/// The devices with their ports and so many of the latest edges of each. Never waits for a device.
nlohmann::json IoDocument(const Io::OutputDevices& devices, std::size_t edges);
nlohmann::json IoSchema();

} // namespace Sensor::Resources
