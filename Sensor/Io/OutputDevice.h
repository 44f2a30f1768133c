#pragma once

#include "Sensor/Io/OutputPort.h"
#include "Sensor/Io/PortParams.h"
#include "Sensor/Io/ScanClock.h"
#include "Vor/AsyncTimer.h"
#include "VorCommon/IDigitalOutputProvider.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Sensor::Io {

/// A device with four digital outputs. Pulses and delays end on the main loop. A request is refused with yERROR_STATE
/// while nobody drives the device, unless it changes nothing, at a port that switches by itself, and for a target that
/// no running scan will reach; with yERROR_FULL when too many wait at the port; and with yERROR_NOT_FOUND for an
/// unknown port. One that was taken may still be lost: when its scan stops, or when the device isn't driven any more.
class OutputDevice : public VorCommon::IDigitalOutputProvider, public VorCommon::IDeviceProvider {
public:
    static constexpr const char* ModelName = "Virtual I/O 4";
    static constexpr unsigned long long PortCount = 4;

    struct Environ {
        std::string serialNumber;
        std::chrono::milliseconds latency{0}; ///< how long each call of SetOutputState takes, by the loop's clock
        std::shared_ptr<const ScanClock> clock;
        std::shared_ptr<OutputPort::ChangeCount> changes; ///< of all that State returns
    };
    /// What the calls of SetOutputState do.
    enum class Calls {
        Work,
        Fail, ///< they throw
        Hang  ///< they return only when this is changed or the device is unplugged
    };
    struct PortState {
        PortSettings settings;
        bool on = false;
        bool high = false; ///< the line
        OutputPort::Counts counts;
        std::optional<OutputPort::Request> lastRequest;
        std::vector<OutputPort::Edge> edges;
    };
    struct DeviceState {
        std::string serialNumber;
        bool enabled = false; ///< somebody drives the device
        std::vector<PortState> ports;
    };

    explicit OutputDevice(Environ environ);
    ~OutputDevice() override = default;
    OutputDevice(const OutputDevice&) = delete;
    OutputDevice& operator=(const OutputDevice&) = delete;

    VorCommon::IDeviceProvider& Device() override { return *this; }
    yStatus SetOutputState(unsigned long long outputId, bool state, long long target) override;
    void Enable(bool enable) override;
    /// 0, always in its idle state, for an unknown port.
    int BehaviourType(unsigned long long port) const override;
    std::string DisplayName(unsigned long long port) const override;
    std::vector<unsigned long long> Ports() const override;
    void OnDeselected() override { Enable(false); }
    ParamsChangedEvent::CallbackId AddParamsChangedHandler(std::function<void(unsigned long long)> handler) override {
        return paramsChanged.Add(std::move(handler));
    }
    void RemoveParamsChangedHandler(ParamsChangedEvent::CallbackId& id) override { paramsChanged.Remove(id); }
    std::shared_ptr<const Vor::Params::Group> PortParams(unsigned long long port) const override;
    std::shared_ptr<Vor::Params::Group> BeginUpdatePortParams(unsigned long long port) override;
    /// A value that is outside of its limits becomes what it was, and the user is notified.
    void EndUpdatePortParams(unsigned long long port) override;

    std::string Model() const override { return ModelName; }
    std::string SerialNumber() const override;
    DeviceStatus Status() const override;
    ChangedEvent::CallbackId AddChangedHandler(std::function<void()> handler) override {
        return changed.Add(std::move(handler));
    }
    void RemoveChangedHandler(ChangedEvent::CallbackId& id) override { changed.Remove(id); }

    /// As if another device had been put in its place.
    void ChangeSerialNumber(const std::string& serialNumber);
    void SetCalls(Calls calls);
    /// For ever: the device is no longer connected, its calls fail, and nothing waits at its ports.
    void Unplug();

    void OnScanChanged();
    void OnFrame();

    /// Each port with so many of its latest edges.
    DeviceState State(std::size_t edges) const;

private:
    /// Waits as long as a call takes, and throws when it doesn't reach the device.
    void Transfer() const;
    /// Called on the main loop when the timer is due.
    void RunDue();
    /// Calls a function for each port, then sees to what will be due. Called with the mutex held.
    template <class Function>
    void ChangePorts(const Function& function);
    /// Called with the mutex held.
    void Arm(const ScanClock::Moment& moment);

    const std::chrono::milliseconds latency;
    const std::shared_ptr<const ScanClock> clock;
    const std::shared_ptr<OutputPort::ChangeCount> changes;
    std::atomic<Calls> calls{Calls::Work};
    std::atomic<bool> plugged{true};
    /// By port. For the thread that updates them.
    const std::vector<std::shared_ptr<Io::PortParams>> params;
    ChangedEvent changed;
    ParamsChangedEvent paramsChanged;

    /// Guards the members below, and ranks before the clock and the timer. No event is raised under it.
    mutable std::mutex mutex;
    std::string serialNumber;
    bool enabled = false;
    std::vector<OutputPort> ports;
    std::optional<Vor::LoopCore::Time> armed; ///< when the timer is due

    Vor::AsyncTimer timer; ///< last, so that it doesn't run while the other members are destroyed
};

} // namespace Sensor::Io
