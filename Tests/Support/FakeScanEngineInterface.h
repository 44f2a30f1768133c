#pragma once

#include "Tests/Support/CallLog.h"
#include "Tests/Support/FakeOutputDevice.h"
#include "Vor/Exception.h"
#include "VorApi/Event.h"
#include "VorControl/Control/IControlScanEngineInterface.h"
#include "yApi/yStatus.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Tests {

/// Scan engines with one scanner, which has any id. Records its calls on any thread, and returns the values that a test
/// sets. A test ends an alignment with `completed.Raise`.
class FakeScanEngineInterface : public VorControl::IControlScanEngineInterface, public CallLog {
public:
    void SoftwareTrigger(const std::string& scannerId) override { Note("SoftwareTrigger " + scannerId); }
    void Alignment(const std::string& scannerId) override { Note("Alignment " + scannerId); }
    void ClearAlignment(const std::string& scannerId) override { Note("ClearAlignment " + scannerId); }
    void BlinkLed(bool ledBlinkEnabled, bool ledLightOn) override {
        Note(std::string("BlinkLed ") + Text(ledBlinkEnabled) + " " + Text(ledLightOn));
    }
    Vor::Event<VorScan::AlignCompletionStatus>& AlignmentCompletedEvent(const std::string& scannerId) override {
        Note("AlignmentCompletedEvent " + scannerId);
        return completed;
    }
    Vor::Event<>& AlignmentStateUpdatedEvent(const std::string& engineId) override {
        Note("AlignmentStateUpdatedEvent " + engineId);
        return stateUpdated;
    }
    Vor::Params::Value<VorScan::AlignState>& GetAlignmentState(const std::string& engineId) override {
        Note("GetAlignmentState " + engineId);
        return alignState;
    }
    void ScannerInfo(const std::string& scannerId, ScannerStateInfo& out) override {
        Note("ScannerInfo " + scannerId);
        out = info;
    }
    std::vector<VorControl::ControlAvailableDeviceProp> FindAvailableSensors() override {
        Note("FindAvailableSensors");
        std::vector<VorControl::ControlAvailableDeviceProp> found;
        for (const auto& [engineId, devices] : outputs) {
            for (const auto& [providerId, weak] : devices->Providers()) {
                const auto provider = weak.lock();
                if (provider == nullptr) {
                    continue;
                }
                found.push_back({.device = provider,
                                 .engineId = engineId,
                                 .deviceModel = provider->Device().Model(),
                                 .serialNumber = provider->Device().SerialNumber(),
                                 .providerId = providerId,
                                 .deviceStatus = provider->Device().Status()});
            }
        }
        return found;
    }
    std::shared_ptr<VorCommon::IProviderManager<VorCommon::IDigitalOutputProvider>>
    GetDigitalOutputProviderManager(const std::string& engineId) override {
        Note("GetDigitalOutputProviderManager " + engineId);
        const auto found = outputs.find(engineId);
        return found == outputs.end() ? nullptr : found->second;
    }
    yStatus SetDigitalOutputState(std::shared_ptr<VorCommon::IDigitalOutputProvider> provider,
                                  unsigned long long outputId, bool state, long long time) override {
        Note("SetDigitalOutputState " + std::to_string(outputId) + " " + Text(state) + " " + std::to_string(time));
        return provider == nullptr ? yOK : provider->SetOutputState(outputId, state, time);
    }
    std::vector<std::string> GetScanEngineList() override {
        Note("GetScanEngineList");
        return engines;
    }
    bool IsScanEngineManagerValid() override { return hasEngines; }

    Vor::Event<VorScan::AlignCompletionStatus> completed;
    Vor::Event<> stateUpdated;
    Vor::Params::Value<VorScan::AlignState> alignState;
    /// Returned by ScannerInfo.
    ScannerStateInfo info;
    bool hasEngines = true;
    std::vector<std::string> engines{"engine"};
    /// The devices of each engine that has any.
    std::map<std::string, std::shared_ptr<FakeOutputDevices>> outputs;
};

} // namespace Tests
