#pragma once

#include "Tests/Support/CallLog.h"
#include "Tests/Support/Figures.h"
#include "VorCommon/IMetricsSource.h"
#include "VorControl/Control/ControlDeviceCommandTarget.h"
#include "VorControl/Control/IControlDeviceManager.h"

#include <functional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace Tests {

/// Records its calls, and returns the values that a test sets.
class FakeDeviceManager : public VorControl::IControlDeviceManager, public CallLog {
public:
    /// The figures of every port.
    struct Source : VorCommon::IMetricsSource {
        const Vor::Properties::Structure& GetMetrics() const override { return figures; }
        Figures figures;
    };

    AvailableDeviceMap& AvailableDevices() override { return available; }
    unsigned long long MaxSelectableDeviceCount() const override { return 1; }
    const SelectedDeviceMap& SelectedDevices() const override { return selected; }
    VorControl::ControlSelectedDeviceProp& SelectedDeviceProperties(const std::string& id) override {
        return selected.at(id);
    }
    void DeleteSelectedDevice(const std::string& id, bool force) override {
        Note("DeleteSelectedDevice " + id + " " + Text(force));
    }
    std::string CreateSelectedDevice(const std::string& engineId, const std::string& serialNumber) override {
        Note("CreateSelectedDevice " + engineId + " " + serialNumber);
        return "device-0";
    }
    void EnableSelectedDevices(bool enable) override { Note(std::string("EnableSelectedDevices ") + Text(enable)); }
    DeviceAddedEvent& SelectedDeviceAddedEvent() override { return added; }
    DeviceRemovedEvent& SelectedDeviceRemovedEvent() override { return removed; }
    DeviceUpdatedEvent& SelectedDeviceUpdatedEvent() override { return updated; }
    DeviceParamsChangedEvent& SelectedDeviceParamsChangedEvent() override { return paramsChanged; }
    VorCommon::ICommandTarget& DeviceCommandTarget() override { return commandTarget; }
    AvailableListUpdatedEvent& AvailableDeviceListUpdatedEvent() override { return listUpdated; }
    std::vector<std::string> DataSourceList() override { return sources; }
    void BeginLock() override { Note("BeginLock"); }
    void EndLock() override { Note("EndLock"); }
    const VorCommon::IMetricsSource& DevicePortMetricsSource(const std::string& deviceId,
                                                             const std::string& portId) override {
        Note("DevicePortMetricsSource " + deviceId + " " + portId);
        if (onMetricsSource) {
            onMetricsSource();
        }
        return source;
    }
    void UpdateDevicePortMetrics() override { Note("UpdateDevicePortMetrics"); }
    bool IsSelectedDefaultDevice(const std::string&) const override { return false; }
    void Save(nlohmann::json& out) override {
        Note("Save");
        out = {{"selectedDevicesList", nlohmann::json::array()}};
    }
    void Load(const nlohmann::json& in) override { Note("Load " + in.dump()); }
    void Reset() override { Note("Reset"); }

    AvailableDeviceMap available;
    SelectedDeviceMap selected;
    std::vector<std::string> sources;
    Source source;
    std::function<void()> onMetricsSource;
    VorControl::ControlDeviceCommandTarget commandTarget;
    DeviceAddedEvent added;
    DeviceRemovedEvent removed;
    DeviceUpdatedEvent updated;
    DeviceParamsChangedEvent paramsChanged;
    AvailableListUpdatedEvent listUpdated;
};

} // namespace Tests
