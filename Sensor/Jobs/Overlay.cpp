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

void Overlay::Add(const ServiceSetting& setting, VorControl::IControlManager& manager) {
    const std::vector<std::string> known = manager.List();
    if (std::find(known.begin(), known.end(), setting.serviceId) == known.end()) {
        setting.Refuse("unknown service \"" + setting.serviceId + "\", known: " + Listed(known));
    }
    VorControl::IControlInstance& instance = manager.GetInstance(setting.serviceId);
    nlohmann::json value = setting.ValueFor(instance);
    Service& service = services[JobFormat::PathOf(setting.serviceId)];
    service.version = instance.ParamsVersion();
    service.values[setting.parameter] = std::move(value);
}

void Overlay::Apply(VorControl::IControlInstance& instance) const {
    const Service* const service = Find(JobFormat::PathOf(instance.TypeName()));
    if (service == nullptr) {
        return;
    }
    SetParameters(instance, service->values);
}

const Overlay::Service* Overlay::Find(const std::string& path) const {
    const auto found = services.find(path);
    return found == services.end() ? nullptr : &found->second;
}

} // namespace Sensor::Jobs
