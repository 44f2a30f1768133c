#pragma once

#include "VorApi/Event.h"
#include "VorApi/Params/Group.h"
#include "VorCommon/IDeviceProvider.h"
#include "yApi/yStatus.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace VorCommon {

/// A device with digital outputs, its ports. Its users hold it weakly, and share it only for a call or an output that
/// is queued. Any thread may call, also with locks of its own held, so no call but SetOutputState waits for the device
/// or for another thread.
class IDigitalOutputProvider {
public:
    /// Argument: the number of the port.
    using ParamsChangedEvent = Vor::Event<unsigned long long>;

    /// The behaviour of a port that is switched by SetOutputState. A port of any other behaviour switches by itself.
    static constexpr int SoftwareEvents = 3;

    virtual ~IDigitalOutputProvider() = default;

    virtual IDeviceProvider& Device() = 0;
    /// Switches an output when the encoder or the time, as the output is configured, has reached `target`. Called on
    /// the thread "DeviceLoop", one call after the other; may be slow, may throw.
    virtual yStatus SetOutputState(unsigned long long outputId, bool state, long long target) = 0;

    /// Whether the user of the device drives it now.
    virtual void Enable(bool enable) = 0;
    /// How a port is switched: SoftwareEvents or another number.
    virtual int BehaviourType(unsigned long long port) const = 0;
    /// The name that the user gave a port; may be empty.
    virtual std::string DisplayName(unsigned long long port) const = 0;
    /// The numbers of the ports. Empty when they aren't known now.
    virtual std::vector<unsigned long long> Ports() const = 0;
    /// The user of the device has given it up.
    virtual void OnDeselected() = 0;
    /// The handler is called after a parameter of a port has changed. As the handlers of IDeviceProvider.
    virtual ParamsChangedEvent::CallbackId AddParamsChangedHandler(std::function<void(unsigned long long)> handler) = 0;
    virtual void RemoveParamsChangedHandler(ParamsChangedEvent::CallbackId& id) = 0;

    /// The parameters of a port; null when there is no such port, or it has none. They are read and updated on the main
    /// loop, or on the persistence thread while the main loop waits for it.
    virtual std::shared_ptr<const Vor::Params::Group> PortParams(unsigned long long port) const = 0;
    /// The parameters of a port to be changed; null as above. EndUpdatePortParams must follow, also after null. The
    /// values may come from a file, so they may be outside of their limits.
    virtual std::shared_ptr<Vor::Params::Group> BeginUpdatePortParams(unsigned long long port) = 0;
    virtual void EndUpdatePortParams(unsigned long long port) = 0;
};

} // namespace VorCommon
