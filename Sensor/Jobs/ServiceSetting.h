#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace VorControl {
class IControlInstance;
}

namespace Sensor::Jobs {

/// The value of a service's parameter from the command line.
struct ServiceSetting {
    /// As the user wrote it, with what was in front of it, for errors.
    std::string option;
    std::string serviceId;
    std::string parameter;
    std::string value;

    /// Reads "SERVICE.PARAMETER=VALUE". Throws a StartError that names the option, which is `command` and the text.
    static ServiceSetting Parse(const std::string& text, const std::string& command);

    /// The value for the parameter of the service. The text is parsed by the kind of the parameter: a number, true or
    /// false, a text, which may be in quotation marks as in JSON, or JSON for all others. Throws a StartError that
    /// names the option when the service has no such parameter or refuses the value.
    nlohmann::json ValueFor(const VorControl::IControlInstance& instance) const;
    /// Throws a StartError that names the option and the reason.
    [[noreturn]] void Refuse(const std::string& reason) const;
};

/// Changes parameters of a service, given by name, in one update.
void SetParameters(VorControl::IControlInstance& instance, const nlohmann::json& values);

} // namespace Sensor::Jobs
