#pragma once

#include <string>

namespace Sensor::Jobs {

/// The value of a service's parameter from the command line.
struct ServiceSetting {
    /// As the user wrote it, for errors.
    std::string option;
    std::string serviceId;
    std::string parameter;
    std::string value;

    /// Reads "SERVICE.PARAMETER=VALUE". Throws a StartError that names the option.
    static ServiceSetting Parse(const std::string& text);
};

} // namespace Sensor::Jobs
