#pragma once

#include "Tests/Support/CallLog.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorCommon/IDigitalOutputProvider.h"
#include "VorCommon/IProviderManager.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Tests {

/// The parameters of a port.
class PortParams : public Vor::Params::Group {
public:
    PortParams() {
        Register("name", name);
        Register("delay", delay);
    }

    Vor::Params::Value<std::string> name;
    Vor::Params::Value<unsigned short> delay;
};

/// A device with digital outputs. Records its calls on any thread, and returns the values that a test sets, which it
/// does while no other thread uses the device.
class FakeOutputDevice : public VorCommon::IDigitalOutputProvider, public VorCommon::IDeviceProvider, public CallLog {
public:
    explicit FakeOutputDevice(std::string model = "model", std::string serialNumber = "1001",
                              DeviceStatus status = DeviceStatus::Connected)
        : model(std::move(model))
        , serialNumber(std::move(serialNumber))
        , status(status) {}

    VorCommon::IDeviceProvider& Device() override { return *this; }
    std::string Model() const override { return model; }
    std::string SerialNumber() const override { return serialNumber; }
    DeviceStatus Status() const override { return status; }
    ChangedEvent::CallbackId AddChangedHandler(std::function<void()> handler) override {
        return changed.Add(std::move(handler));
    }
    void RemoveChangedHandler(ChangedEvent::CallbackId& id) override { changed.Remove(id); }

    yStatus SetOutputState(unsigned long long outputId, bool state, long long target) override {
        Note(std::to_string(outputId) + (state ? " on " : " off ") + std::to_string(target));
        return answer;
    }
    void Enable(bool enable) override { Note(std::string("Enable ") + Text(enable)); }
    int BehaviourType(unsigned long long port) const override {
        const auto found = behaviours.find(port);
        return found == behaviours.end() ? SoftwareEvents : found->second;
    }
    std::string DisplayName(unsigned long long port) const override {
        const auto found = names.find(port);
        return found == names.end() ? "Port " + std::to_string(port) : found->second;
    }
    std::vector<unsigned long long> Ports() const override { return ports; }
    void OnDeselected() override { Note("OnDeselected"); }
    ParamsChangedEvent::CallbackId AddParamsChangedHandler(std::function<void(unsigned long long)> handler) override {
        return paramsChanged.Add(std::move(handler));
    }
    void RemoveParamsChangedHandler(ParamsChangedEvent::CallbackId& id) override { paramsChanged.Remove(id); }
    std::shared_ptr<const Vor::Params::Group> PortParams(unsigned long long port) const override {
        const auto found = params.find(port);
        return found == params.end() ? nullptr : found->second;
    }
    std::shared_ptr<Vor::Params::Group> BeginUpdatePortParams(unsigned long long port) override {
        Note("BeginUpdate " + std::to_string(port));
        const auto found = params.find(port);
        return found == params.end() ? nullptr : found->second;
    }
    void EndUpdatePortParams(unsigned long long port) override { Note("EndUpdate " + std::to_string(port)); }

    std::string model;
    std::string serialNumber;
    DeviceStatus status;
    yStatus answer = yOK;
    std::vector<unsigned long long> ports{0, 1};
    std::map<unsigned long long, std::string> names; ///< of ports that have another name than "Port 0"
    std::map<unsigned long long, int> behaviours;    ///< of ports that aren't for software events
    std::map<unsigned long long, std::shared_ptr<Tests::PortParams>> params;
    ChangedEvent changed;
    ParamsChangedEvent paramsChanged;
};

/// The devices of a scan engine, by provider id.
class FakeOutputDevices : public VorCommon::IProviderManager<VorCommon::IDigitalOutputProvider> {
public:
    using Provider = VorCommon::IDigitalOutputProvider;

    std::map<std::string, std::weak_ptr<Provider>> Providers() const override {
        const std::lock_guard guard(mutex);
        return providers;
    }
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

    /// Without an event.
    void Put(const std::string& providerId, const std::weak_ptr<Provider>& provider) {
        const std::lock_guard guard(mutex);
        providers[providerId] = provider;
    }
    void Erase(const std::string& providerId) {
        const std::lock_guard guard(mutex);
        providers.erase(providerId);
    }

    ProviderAddedEvent added;
    ProviderRemovedEvent removed;

private:
    mutable std::mutex mutex; ///< guards `providers`
    std::map<std::string, std::weak_ptr<Provider>> providers;
};

} // namespace Tests
