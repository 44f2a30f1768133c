#include "Sensor/Jobs/Overlay.h"

#include "Sensor/Jobs/JobFormat.h"
#include "Sensor/Jobs/ListedNames.h"
#include "Sensor/StartError.h"
#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"
#include "Vor/JsonText.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/IControlManager.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

namespace Sensor::Jobs {

namespace {

[[noreturn]] void Refuse(const ServiceSetting& setting, const std::string& reason) {
    throw StartError(setting.option + ": " + reason + ".");
}

std::shared_ptr<Vor::Params::Group> ParamsOf(const ServiceSetting& setting, VorControl::IControlInstance& instance) {
    try {
        return instance.Params();
    } catch (const Vor::Exception& e) {
        if (e.Status() != yERROR_NOT_FOUND) {
            throw;
        }
        Refuse(setting, "service \"" + setting.serviceId + "\" has no parameters");
    }
}

/// The text as a value of the same kind as the parameter's present value.
nlohmann::json ValueOf(const ServiceSetting& setting, const nlohmann::json& current) {
    if (current.is_string()) {
        return setting.value;
    }
    try {
        return Vor::ParseJson(setting.value);
    } catch (const Vor::Exception&) {
        Refuse(setting, "\"" + setting.value + "\" is no value of parameter \"" + setting.parameter + "\", which is " +
                            (current.is_boolean()  ? "true or false"
                             : current.is_number() ? "a number"
                                                   : "a list or an object in JSON"));
    }
}

} // namespace

void Overlay::Add(const ServiceSetting& setting, VorControl::IControlManager& manager) {
    const std::vector<std::string> known = manager.List();
    if (std::find(known.begin(), known.end(), setting.serviceId) == known.end()) {
        Refuse(setting, "unknown service \"" + setting.serviceId + "\", known: " + Listed(known));
    }
    VorControl::IControlInstance& instance = manager.GetInstance(setting.serviceId);
    const auto params = ParamsOf(setting, instance);
    const nlohmann::json current = Vor::Properties::JsonSerializer::Serialize(*params);
    if (!current.contains(setting.parameter)) {
        std::vector<std::string> names;
        for (const auto& item : current.items()) {
            names.push_back(item.key());
        }
        Refuse(setting, "service \"" + setting.serviceId + "\" has no parameter \"" + setting.parameter +
                            "\", known: " + Listed(names));
    }
    nlohmann::json value = ValueOf(setting, current[setting.parameter]);
    try {
        Vor::Properties::JsonSerializer::Validate(*params, nlohmann::json{{setting.parameter, value}});
    } catch (const Vor::Exception& e) {
        std::string reason = e.what();
        if (reason.ends_with('.')) {
            reason.pop_back();
        }
        Refuse(setting, "the value isn't taken (" + reason + ")");
    }
    Service& service = services[JobFormat::PathOf(setting.serviceId)];
    service.version = instance.ParamsVersion();
    service.values[setting.parameter] = std::move(value);
}

void Overlay::Apply(VorControl::IControlInstance& instance) const {
    const Service* const service = Find(JobFormat::PathOf(instance.TypeName()));
    if (service == nullptr) {
        return;
    }
    const auto params = instance.BeginUpdateParameters();
    try {
        Vor::Properties::JsonSerializer::Deserialize(*params, nlohmann::json(service->values));
    } catch (...) {
        instance.EndUpdateParameters();
        throw;
    }
    instance.EndUpdateParameters();
}

const Overlay::Service* Overlay::Find(const std::string& path) const {
    const auto found = services.find(path);
    return found == services.end() ? nullptr : &found->second;
}

} // namespace Sensor::Jobs
