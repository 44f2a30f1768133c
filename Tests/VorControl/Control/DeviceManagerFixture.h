#pragma once

#include "Tests/Support/AddBlocks.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/FakeDeviceOperations.h"
#include "Tests/Support/FakeOutputDevice.h"
#include "Tests/Support/FakeScanEngineInterface.h"
#include "Tests/Support/Faults.h"
#include "Vor/Logging.h"
#include "VorControl/Control/ControlDeviceManager.h"
#include "VorControl/Control/ControlDevicePort.h"
#include "yApi/yLock.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Tests {

using Texts = std::vector<std::string>;

/// A manager of the service "service", named "Service", whose one engine has the devices "p0" (serial number 1001) and
/// "p1" (1002). The list of events has each one's name and id, and "locked" if the manager's lock is held.
class DeviceManagerFixture : public testing::Test {
protected:
    using Manager = VorControl::ControlDeviceManager;
    using Selected = VorControl::ControlSelectedDeviceProp;

    DeviceManagerFixture() {
        scanEngine.outputs["engine"] = devices;
        devices->Put("p0", first);
        devices->Put("p1", second);
    }

    void Make(bool autoSelect = false, std::uint32_t defaultSerial = 0) {
        manager.reset();
        manager =
            std::make_unique<Manager>(VorControl::ControlDeviceManagerCtorArgs{.serviceId = "service",
                                                                               .serviceName = "Service",
                                                                               .scanEngineInterface = scanEngine,
                                                                               .deviceOperations = operations,
                                                                               .autoSelectDefaultDevice = autoSelect,
                                                                               .defaultSerialNumber = defaultSerial});
        manager->SelectedDeviceAddedEvent().Add(
            [this](const Selected& device, const std::string& id) { Event("added", id, device); });
        manager->SelectedDeviceRemovedEvent().Add([this](const Selected& device, const std::string& id, bool persist) {
            Event(persist ? "removed" : "removed?", id, device);
        });
        manager->SelectedDeviceUpdatedEvent().Add(
            [this](const Selected& device, const std::string& id) { Event("updated", id, device); });
        manager->SelectedDeviceParamsChangedEvent().Add([this](const Selected& device, unsigned long long port) {
            Event("params " + std::to_string(port), device.id, device);
        });
        manager->AvailableDeviceListUpdatedEvent().Add(
            [this](const std::string& service) { events.push_back("list " + service); });
    }

    void Event(const std::string& name, const std::string& id, const Selected& device) {
        EXPECT_EQ(device.id, id);
        events.push_back(name + " " + id + " " + device.serialNumber);
        if (onEvent) {
            onEvent(name);
        }
    }

    Texts NewEvents() { return std::exchange(events, {}); }

    /// The keys of the available devices, such as "engine/p0".
    Texts Available() {
        Texts keys;
        for (const auto& entry : manager->AvailableDevices()) {
            keys.push_back(entry.first.first + "/" + entry.first.second);
        }
        return keys;
    }

    Texts SelectedIds() const {
        Texts ids;
        for (const auto& entry : manager->SelectedDevices()) {
            ids.push_back(entry.first);
        }
        return ids;
    }

    Texts Ports(const std::string& id) {
        Texts keys;
        for (const auto& entry : manager->SelectedDeviceProperties(id).ports) {
            keys.push_back(entry.first);
        }
        return keys;
    }

    std::shared_ptr<VorControl::ControlDevicePort> Port(const std::string& id, const std::string& key) {
        return manager->SelectedDeviceProperties(id).ports.at(key);
    }

    void AddSource(const std::string& id, const std::string& key, const std::string& source) {
        AddBlocks(*Port(id, key)->RegisterAssembly(), {{"Measurement", source, 65535}});
    }

    /// The end of a search for devices, with those that there are now.
    void UpdateList() {
        operations.ended.Raise({.clientId = "service",
                                .actionId = VorControl::ControlDeviceActionId::FindAvailableSensors,
                                .status = yOK,
                                .devices = std::make_shared<std::vector<VorControl::ControlAvailableDeviceProp>>(
                                    scanEngine.FindAvailableSensors())});
    }

    /// No operation has left the manager's lock entered.
    bool IsUnlocked() {
        manager->BeginLock();
        manager->EndLock();
        return StatusOf([&] { manager->EndLock(); }) == yERROR_STATE;
    }

    Faults faults;
    Vor::LogCapture log;
    FakeScanEngineInterface scanEngine;
    std::shared_ptr<FakeOutputDevices> devices = std::make_shared<FakeOutputDevices>();
    std::shared_ptr<FakeOutputDevice> first = std::make_shared<FakeOutputDevice>("modelA", "1001");
    std::shared_ptr<FakeOutputDevice> second = std::make_shared<FakeOutputDevice>("modelB", "1002");
    FakeDeviceOperations operations;
    std::unique_ptr<Manager> manager;
    Texts events;
    std::function<void(const std::string&)> onEvent;
};

} // namespace Tests
