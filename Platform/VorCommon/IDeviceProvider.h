#pragma once

#include "VorApi/Event.h"

#include <cstdint>
#include <functional>
#include <string>

namespace VorCommon {

/// The device of a provider. What it returns may change from call to call. Any thread may call, also with locks of its
/// own held, so no call waits for another thread.
class IDeviceProvider {
public:
    enum class DeviceStatus : std::int32_t { Connected = 0, NotConnected = -1 };
    using ChangedEvent = Vor::Event<>;

    virtual std::string Model() const = 0;
    virtual std::string SerialNumber() const = 0;
    virtual DeviceStatus Status() const = 0;
    /// The handler is called after the model, the serial number or the status has changed, on any thread. The provider
    /// holds no lock meanwhile, since the handler calls it. A removal clears the id, doesn't wait for a handler that
    /// runs, and does nothing for an id that isn't set.
    virtual ChangedEvent::CallbackId AddChangedHandler(std::function<void()> handler) = 0;
    virtual void RemoveChangedHandler(ChangedEvent::CallbackId& id) = 0;

protected:
    ~IDeviceProvider() = default;
};

} // namespace VorCommon
