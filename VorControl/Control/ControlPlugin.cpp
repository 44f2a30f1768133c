#include "VorControl/Control/ControlPlugin.h"

#include "VorControl/Control/IControlFactory.h"

#include <utility>

namespace VorControl {

std::shared_ptr<ControlPlugin> ControlPlugin::Create() {
    struct Plugin : ControlPlugin {};
    return std::make_shared<Plugin>();
}

ControlPlugin::~ControlPlugin() = default;

const char* ControlPlugin::Type() const {
    return "VorControl.ControlPlugin";
}

void* ControlPlugin::GetObject() const {
    return const_cast<ControlPlugin*>(this);
}

void ControlPlugin::Add(const ControlInfo& info, std::shared_ptr<IControlFactory> factory) {
    ControlInfo record = info;
    if (factory) {
        record.SetFactory(*factory);
        factories.push_back(std::move(factory));
    }
    infos.push_back(std::move(record));
}

} // namespace VorControl
