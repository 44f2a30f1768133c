#include "Sensor/Io/OutputDevices.h"

#include "Vor/Exception.h"

#include <algorithm>
#include <utility>

namespace Sensor::Io {

namespace {

constexpr std::size_t FirstSerialNumber = 1001;

} // namespace

OutputDevices::OutputDevices(std::string engineId, const Settings& settings)
    : engineId(std::move(engineId))
    , latency(settings.latency) {
    for (std::size_t i = 0; i < std::min(settings.count, MaxCount); ++i) {
        const std::string serialNumber = std::to_string(FirstSerialNumber + i);
        places["io-" + std::to_string(i)] = {.serialNumber = serialNumber, .device = Make(serialNumber)};
    }
}

OutputDevices::~OutputDevices() {
    for (auto& [providerId, place] : places) {
        if (place.device != nullptr) {
            place.device->Unplug();
        }
    }
}

std::shared_ptr<OutputDevice> OutputDevices::Make(const std::string& serialNumber) const {
    return std::make_shared<OutputDevice>(
        OutputDevice::Environ{.serialNumber = serialNumber, .latency = latency, .clock = clock, .changes = changes});
}

std::map<std::string, std::weak_ptr<OutputDevices::Provider>> OutputDevices::Providers() const {
    std::map<std::string, std::weak_ptr<Provider>> providers;
    for (const auto& [providerId, device] : Devices()) {
        providers[providerId] = device;
    }
    return providers;
}

std::vector<OutputDevices::Plugged> OutputDevices::Devices() const {
    std::vector<Plugged> plugged;
    const std::lock_guard guard(mutex);
    for (const auto& [providerId, place] : places) {
        if (place.device != nullptr) {
            plugged.push_back({providerId, place.device});
        }
    }
    return plugged;
}

std::shared_ptr<OutputDevice> OutputDevices::Find(const std::string& providerId) const {
    const std::lock_guard guard(mutex);
    const auto place = places.find(providerId);
    if (place == places.end() || place->second.device == nullptr) {
        FailUnknown(providerId);
    }
    return place->second.device;
}

void OutputDevices::Unplug(const std::string& providerId) {
    {
        std::shared_ptr<OutputDevice> device;
        {
            const std::lock_guard guard(mutex);
            const auto place = places.find(providerId);
            if (place == places.end() || place->second.device == nullptr) {
                FailUnknown(providerId);
            }
            device.swap(place->second.device);
        }
        device->Unplug();
    }
    changes->fetch_add(1, std::memory_order_relaxed);
    removed.Raise(engineId, providerId);
}

void OutputDevices::Plug(const std::string& providerId) {
    std::shared_ptr<OutputDevice> device;
    {
        const std::lock_guard guard(mutex);
        const auto place = places.find(providerId);
        if (place == places.end()) {
            FailUnknown(providerId);
        }
        if (place->second.device != nullptr) {
            Vor::Throw(yERROR_ALREADY_EXISTS, "The device %s is plugged in already.", providerId);
        }
        device = Make(place->second.serialNumber);
        place->second.device = device;
    }
    changes->fetch_add(1, std::memory_order_relaxed);
    added.Raise(engineId, providerId, device);
}

void OutputDevices::FailUnknown(const std::string& providerId) {
    Vor::Throw(yERROR_NOT_FOUND, "There is no device %s.", providerId);
}

void OutputDevices::OnScanStarted() {
    clock->Start();
    Notify(&OutputDevice::OnScanChanged);
}

void OutputDevices::OnScanStopped() {
    clock->Stop();
    Notify(&OutputDevice::OnScanChanged);
}

void OutputDevices::OnFrame(std::uint64_t frame, std::int64_t encoder) {
    clock->SetFrame(frame, encoder);
    Notify(&OutputDevice::OnFrame);
}

void OutputDevices::Notify(void (OutputDevice::*function)()) const {
    const std::lock_guard guard(mutex);
    for (const auto& entry : places) {
        if (OutputDevice* const device = entry.second.device.get()) {
            (device->*function)();
        }
    }
}

} // namespace Sensor::Io
