#include "Sensor/Jobs/ServiceSetting.h"

#include "Sensor/Jobs/ListedNames.h"
#include "Sensor/StartError.h"
#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"
#include "Vor/JsonText.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Persistence/RunUpdate.h"
#include "yApi/yStatus.h"

#include <memory>
#include <vector>

#include <nlohmann/json.hpp>

namespace Sensor::Jobs {

namespace {

using nlohmann::json;
using Vor::Properties::JsonSerializer;

std::shared_ptr<Vor::Params::Group> ParamsOf(const ServiceSetting& setting,
                                             const VorControl::IControlInstance& instance) {
    try {
        return instance.Params();
    } catch (const Vor::Exception& e) {
        if (e.Status() != yERROR_NOT_FOUND) {
            throw;
        }
        setting.Refuse("service \"" + setting.serviceId + "\" has no parameters");
    }
}

/// The text as a value of the same kind as the parameter's present value.
json Parsed(const ServiceSetting& setting, const json& current) {
    const std::string& value = setting.value;
    const bool isQuoted = value.size() > 1 && value.front() == '"' && value.back() == '"';
    if (current.is_string() && !isQuoted) {
        return value;
    }
    try {
        return Vor::ParseJson(value);
    } catch (const Vor::Exception&) {
        setting.Refuse("\"" + setting.value + "\" is no value of parameter \"" + setting.parameter + "\", which is " +
                       (current.is_string()    ? "a text, or one in quotation marks as in JSON"
                        : current.is_boolean() ? "true or false"
                        : current.is_number()  ? "a number"
                                               : "a list or an object in JSON"));
    }
}

} // namespace

ServiceSetting ServiceSetting::Parse(const std::string& text, const std::string& command) {
    const std::size_t equals = text.find('=');
    const std::size_t dot = text.find('.');
    if (equals == std::string::npos || dot >= equals || dot == 0 || dot + 1 == equals) {
        throw StartError(command + " " + text + ": expected SERVICE.PARAMETER=VALUE.");
    }
    return {command + " " + text, text.substr(0, dot), text.substr(dot + 1, equals - dot - 1), text.substr(equals + 1)};
}

json ServiceSetting::ValueFor(const VorControl::IControlInstance& instance) const {
    const auto params = ParamsOf(*this, instance);
    const json current = JsonSerializer::Serialize(*params);
    if (!current.contains(parameter)) {
        std::vector<std::string> names;
        for (const auto& item : current.items()) {
            names.push_back(item.key());
        }
        Refuse("service \"" + serviceId + "\" has no parameter \"" + parameter + "\", known: " + Listed(names));
    }
    json parsed = Parsed(*this, current[parameter]);
    try {
        JsonSerializer::Validate(*params, json{{parameter, parsed}});
    } catch (const Vor::Exception& e) {
        std::string reason = e.what();
        if (reason.ends_with('.')) {
            reason.pop_back();
        }
        Refuse("the value isn't taken (" + reason + ")");
    }
    return parsed;
}

void ServiceSetting::Refuse(const std::string& reason) const {
    throw StartError(option + ": " + reason + ".");
}

void SetParameters(VorControl::IControlInstance& instance, const json& values) {
    const auto params = instance.BeginUpdateParameters();
    VorControl::Persistence::RunUpdate([&] { JsonSerializer::Deserialize(*params, values); },
                                       [&] { instance.EndUpdateParameters(); });
}

} // namespace Sensor::Jobs
