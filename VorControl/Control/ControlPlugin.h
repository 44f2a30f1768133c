#pragma once

#include "VorControl/Control/ControlInfo.h"
#include "VorPlugin/IPlugin.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace VorControl {

/// A plug-in publishes this object to announce its service types. It adds them before it publishes the object, which is
/// only read from then on.
class ControlPlugin : public VorPlugin::IPlugin {
public:
    static std::shared_ptr<ControlPlugin> Create();

    ~ControlPlugin() override;

    /// "VorControl.ControlPlugin".
    const char* Type() const override;
    /// This object, to be treated as a ControlPlugin*.
    void* GetObject() const override;

    /// Adds a service type, whose services `factory` creates. This object keeps the factory alive.
    void Add(const ControlInfo& info, std::shared_ptr<IControlFactory> factory);

    std::size_t ControlInfoCount() const { return infos.size(); }
    /// Throws std::out_of_range at or past the count.
    const ControlInfo& ControlInfoAt(std::size_t index) const { return infos.at(index); }

private:
    ControlPlugin() = default;

    std::vector<ControlInfo> infos;
    std::vector<std::shared_ptr<IControlFactory>> factories;
};

} // namespace VorControl
