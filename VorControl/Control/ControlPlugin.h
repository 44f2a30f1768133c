#pragma once

#include "VorControl/Control/ControlInfo.h"
#include "VorPlugin/IPlugin.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace VorControl {

/// What a plug-in publishes to announce its service types. The plug-in adds them before it publishes the object; from
/// then on it is only read.
class ControlPlugin : public VorPlugin::IPlugin {
public:
    static std::shared_ptr<ControlPlugin> Create();

    ~ControlPlugin() override;

    /// "VorControl.ControlPlugin".
    const char* Type() const override;
    /// This object, to be treated as a ControlPlugin*.
    void* GetObject() const override;

    /// Adds a type, with `factory` as what makes it, and keeps the factory alive as long as this object.
    void Add(const ControlInfo& info, std::shared_ptr<IControlFactory> factory);

    std::size_t ControlInfoCount() const { return infos.size(); }
    /// Fails with std::out_of_range at or past the count.
    const ControlInfo& ControlInfoAt(std::size_t index) const { return infos.at(index); }

private:
    ControlPlugin() = default;

    std::vector<ControlInfo> infos;
    std::vector<std::shared_ptr<IControlFactory>> factories;
};

} // namespace VorControl
