#pragma once

#include "Sensor/Io/OutputDevice.h"
#include "Sensor/Io/OutputPort.h"
#include "Sensor/Io/ScanClock.h"
#include "VorCommon/IDigitalOutputProvider.h"
#include "VorCommon/IProviderManager.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Sensor::Io {

/// The devices with digital outputs that a scan engine offers: "io-0" and so on, with the serial numbers from "1001"
/// on. For any thread; its events are raised on the thread that plugs or unplugs.
class OutputDevices : public VorCommon::IProviderManager<VorCommon::IDigitalOutputProvider> {
public:
    using Provider = VorCommon::IDigitalOutputProvider;

    static constexpr std::size_t MaxCount = 8;

    struct Settings {
        std::size_t count = 1;                ///< at most MaxCount
        std::chrono::milliseconds latency{0}; ///< of each call that switches an output
    };
    struct Plugged {
        std::string providerId;
        std::shared_ptr<OutputDevice> device;
    };

    OutputDevices(std::string engineId, const Settings& settings);
    /// Unplugs all devices without an event, so calls of them return that others would wait for.
    ~OutputDevices() override;
    OutputDevices(const OutputDevices&) = delete;
    OutputDevices& operator=(const OutputDevices&) = delete;

    std::map<std::string, std::weak_ptr<Provider>> Providers() const override;
    ProviderAddedEvent::CallbackId AddProviderAddedHandler(
        std::function<void(const std::string&, const std::string&, const std::shared_ptr<Provider>&)> handler)
        override {
        return added.Add(std::move(handler));
    }
    void RemoveProviderAddedHandler(ProviderAddedEvent::CallbackId& id) override { added.Remove(id); }
    ProviderRemovedEvent::CallbackId
    AddProviderRemovedHandler(std::function<void(const std::string&, const std::string&)> handler) override {
        return removed.Add(std::move(handler));
    }
    void RemoveProviderRemovedHandler(ProviderRemovedEvent::CallbackId& id) override { removed.Remove(id); }

    const std::string& EngineId() const { return engineId; }
    /// Those that are plugged in, by provider id.
    std::vector<Plugged> Devices() const;
    /// Grows with each change of what these devices are and do.
    std::uint64_t ChangeCount() const { return changes->load(std::memory_order_relaxed); }

    /// Throws yERROR_NOT_FOUND for a device that isn't plugged in.
    std::shared_ptr<OutputDevice> Find(const std::string& providerId) const;
    /// Throws yERROR_NOT_FOUND for a device that isn't plugged in.
    void Unplug(const std::string& providerId);
    /// A device that was unplugged comes back as if it had just been switched on. Throws yERROR_NOT_FOUND for an
    /// unknown one, and yERROR_ALREADY_EXISTS for one that is plugged in.
    void Plug(const std::string& providerId);

    /// The time and the encoder begin anew.
    void OnScanStarted();
    void OnScanStopped();
    /// Before the frame is published. The frames come one after the other.
    void OnFrame(std::uint64_t frame, std::int64_t encoder);

private:
    std::shared_ptr<OutputDevice> Make(const std::string& serialNumber) const;
    /// Calls a function of each device.
    void Notify(void (OutputDevice::*function)()) const;
    [[noreturn]] static void FailUnknown(const std::string& providerId);

    struct Place {
        std::string serialNumber;
        std::shared_ptr<OutputDevice> device; ///< null while it is unplugged
    };

    const std::string engineId;
    const std::chrono::milliseconds latency;
    const std::shared_ptr<ScanClock> clock = std::make_shared<ScanClock>();
    const std::shared_ptr<OutputPort::ChangeCount> changes = std::make_shared<OutputPort::ChangeCount>(1);
    ProviderAddedEvent added;
    ProviderRemovedEvent removed;
    /// Guards `places`, and ranks before the locks of the devices.
    mutable std::mutex mutex;
    std::map<std::string, Place> places; ///< by provider id
};

} // namespace Sensor::Io
