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

/// Parameter values that replace those of the job as long as the program runs.
class Overlay {
public:
    /// The overlaid parameters of a service.
    struct Service {
        /// The version of the service's parameters.
        std::string version;
        std::map<std::string, nlohmann::json> values;
    };

    /// Adds a setting, which replaces an earlier one of the same parameter. Throws a StartError that names the option
    /// for an unknown service or parameter and for an invalid value.
    void Add(const ServiceSetting& setting, VorControl::IControlManager& manager);

    /// Applies the overlaid values to a service that isn't started and has no file in the job.
    void Apply(VorControl::IControlInstance& instance) const;

    /// Null for a service without overlaid values. `path` is the path of the service's file in the job.
    const Service* Find(const std::string& path) const;

private:
    std::map<std::string, Service> services;
};

} // namespace Sensor::Jobs
