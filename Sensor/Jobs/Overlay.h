#pragma once

#include "Sensor/Jobs/ServiceSetting.h"

#include <map>
#include <string>

#include <nlohmann/json.hpp>

namespace VorControl {
class IControlInstance;
class IControlManager;
} // namespace VorControl

namespace Sensor::Jobs {

/// Values that stand for those of a job as long as the program runs.
class Overlay {
public:
    /// The overlaid parameters of a service.
    struct Service {
        /// The version of the service's parameters.
        std::string version;
        std::map<std::string, nlohmann::json> values;
    };

    /// Adds a setting, in place of an earlier one of the same parameter. Its text is read as what the parameter is: a
    /// number, true or false, a text, or any JSON for the rest. Throws a StartError that names the option for an
    /// unknown service or parameter and for a value that the parameter doesn't take.
    void Add(const ServiceSetting& setting, VorControl::IControlManager& manager);

    /// Gives a service that isn't started its overlaid values, since its job has no file of it.
    void Apply(VorControl::IControlInstance& instance) const;

    /// Null for a service of which nothing is overlaid. `path` is that of the service's file in its store.
    const Service* Find(const std::string& path) const;
    bool IsEmpty() const { return services.empty(); }

private:
    std::map<std::string, Service> services;
};

} // namespace Sensor::Jobs
