#pragma once

#include "Vor/JsonSerializer.h"
#include "VorApi/Threads/ScopeLock.h"

#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

namespace Tests {

/// The non-persistent properties of a service or of its instance.
template <class Service>
nlohmann::json PropertiesOf(Service& service) {
    const Vor::ScopeLock<Service, &Service::NonPersistentPropertiesBeginLock, &Service::NonPersistentPropertiesEndLock>
        lock(service);
    return Vor::Properties::JsonSerializer::Serialize(service.Properties());
}

/// The metrics of a service, refreshed.
template <class Service>
nlohmann::json MetricsOf(Service& service) {
    service.UpdateMetrics();
    return Vor::Properties::JsonSerializer::Serialize(service.GetMetrics());
}

/// The same without those of the latency.
template <class Service>
nlohmann::json CountsOf(Service& service) {
    nlohmann::json counts = nlohmann::json::object();
    const nlohmann::json metrics = MetricsOf(service);
    for (const auto& [name, value] : metrics.items()) {
        if (!name.starts_with("latency")) {
            counts[name] = value;
        }
    }
    return counts;
}

/// The port of an address such as "tcp://127.0.0.1:502"; 0 when the address is empty.
inline std::uint16_t PortOf(const std::string& address) {
    return address.empty() ? std::uint16_t{0}
                           : static_cast<std::uint16_t>(std::stoi(address.substr(address.rfind(':') + 1)));
}

} // namespace Tests
