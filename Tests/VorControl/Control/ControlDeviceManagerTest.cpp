#include "VorControl/Control/ControlDeviceManager.h"

#include "Tests/Support/Translations.h"
#include "Tests/VorControl/Control/DeviceManagerFixture.h"
#include "Vor/JsonSerializer.h"

#include <stdexcept>

#include <nlohmann/json.hpp>

using nlohmann::json;
using Tests::Texts;
using VorControl::ControlDeviceManager;
using DeviceStatus = VorCommon::IDeviceProvider::DeviceStatus;

namespace {

class ControlDeviceManagerTest : public Tests::DeviceManagerFixture {
protected:
    void Trigger(const std::string& device, const std::string& port) {
        VorCommon::ICommandTarget& target = manager->DeviceCommandTarget();
        const auto params = target.GetCommandParams("trigger");
        Vor::Properties::JsonSerializer::Deserialize(
            *params, json{{"deviceId", device}, {"port", port}, {"target", -7}, {"value", true}});
        target.InvokeCommand("trigger", *params);
    }
};

} // namespace

TEST_F(ControlDeviceManagerTest, StartsWithTheDevicesOfTheEngines) {
    scanEngine.engines = {"bare", "engine"};
    Make();
    EXPECT_EQ(operations.NewCalls(), Texts{"add service"});
    EXPECT_EQ(scanEngine.NewCalls(), (Texts{"GetScanEngineList", "GetDigitalOutputProviderManager bare",
                                            "GetDigitalOutputProviderManager engine", "FindAvailableSensors"}));
    EXPECT_EQ(Available(), (Texts{"engine/p0", "engine/p1"}));
    const auto& device = manager->AvailableDevices().at({"engine", "p1"});
    EXPECT_EQ(device.device.lock(), second);
    EXPECT_EQ(device.engineId, "engine");
    EXPECT_EQ(device.deviceModel, "modelB");
    EXPECT_EQ(device.serialNumber, "1002");
    EXPECT_EQ(device.providerId, "p1");
    EXPECT_EQ(device.deviceStatus, DeviceStatus::Connected);
    EXPECT_TRUE(manager->SelectedDevices().empty());
    EXPECT_EQ(manager->MaxSelectableDeviceCount(), 1U);
    EXPECT_STREQ(manager->PersistenceDataVersion(), "1.2");
    EXPECT_EQ(devices->added.Count(), 1U);
    EXPECT_EQ(devices->removed.Count(), 1U);
}

TEST_F(ControlDeviceManagerTest, AnEngineThatIsListedTwiceIsSubscribedOnce) {
    scanEngine.engines = {"engine", "engine"};
    Make();
    EXPECT_EQ(devices->added.Count(), 1U);
    EXPECT_EQ(devices->removed.Count(), 1U);
}

TEST_F(ControlDeviceManagerTest, WithoutEnginesThereIsNothing) {
    scanEngine.hasEngines = false;
    Make();
    EXPECT_EQ(scanEngine.NewCalls(), Texts{});
    EXPECT_EQ(Available(), Texts{});
    manager.reset();
    EXPECT_EQ(operations.NewCalls(), Texts{});
}

TEST_F(ControlDeviceManagerTest, DestructionRemovesAllHandlers) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    EXPECT_EQ(first->changed.Count(), 1U);
    EXPECT_EQ(first->paramsChanged.Count(), 1U);
    operations.NewCalls();
    manager.reset();
    EXPECT_EQ(operations.NewCalls(), Texts{"remove service"});
    EXPECT_EQ(devices->added.Count(), 0U);
    EXPECT_EQ(devices->removed.Count(), 0U);
    EXPECT_EQ(first->changed.Count(), 0U);
    EXPECT_EQ(second->changed.Count(), 0U);
    EXPECT_EQ(first->paramsChanged.Count(), 0U);
    EXPECT_EQ(first->NewCalls(), Texts{});
}

TEST_F(ControlDeviceManagerTest, AConstructorThatFailsLeavesNoHandlers) {
    for (const char* const failing : {"GetDigitalOutputProviderManager engine", "FindAvailableSensors"}) {
        scanEngine.OnCall([failing](const std::string& call) {
            if (call == failing) {
                Vor::Throw(yERROR_NOT_FOUND);
            }
        });
        EXPECT_TEXTLESS_FAILURE(Make(), yERROR_NOT_FOUND);
        EXPECT_EQ(operations.ended.Count(), 0U);
        EXPECT_EQ(devices->added.Count(), 0U);
        EXPECT_EQ(devices->removed.Count(), 0U);
    }
}

TEST_F(ControlDeviceManagerTest, ALockThatCannotBeMadeIsThrown) {
    faults.SetHere("yLock_Construct", -31);
    EXPECT_TEXTLESS_FAILURE(Make(), -31);
}

TEST_F(ControlDeviceManagerTest, ALockThatCannotBeEnteredOrLeftIsThrown) {
    Make();
    faults.SetHere("yLock_Enter", -31);
    EXPECT_TEXTLESS_FAILURE(manager->BeginLock(), -31);
    faults.SetHere("yLock_Enter", -31);
    EXPECT_TEXTLESS_FAILURE(manager->CreateSelectedDevice("engine", "1001"), -31);
    EXPECT_TEXTLESS_FAILURE(manager->EndLock(), yERROR_STATE);
}

TEST_F(ControlDeviceManagerTest, ASelectedDeviceHasAnIdAndAPortForEachOutput) {
    first->ports = {0, 3, 10};
    first->status = DeviceStatus::NotConnected;
    Make();
    first->status = DeviceStatus::Connected;
    EXPECT_EQ(manager->CreateSelectedDevice("engine", "1001"), "device-0");
    const auto& device = manager->SelectedDeviceProperties("device-0");
    EXPECT_EQ(device.id, "device-0");
    EXPECT_EQ(device.displayName, "device-0");
    EXPECT_EQ(device.device.lock(), first);
    EXPECT_EQ(device.engineId, "engine");
    EXPECT_EQ(device.deviceModel, "modelA");
    EXPECT_EQ(device.serialNumber, "1001");
    EXPECT_EQ(device.providerId, "p0");
    EXPECT_EQ(device.deviceStatus, DeviceStatus::Connected);
    EXPECT_EQ(Ports("device-0"), (Texts{"port-0", "port-10", "port-3"}));
    EXPECT_EQ(Port("device-0", "port-10")->PortNumber(), 10U);
    EXPECT_EQ(NewEvents(), Texts{"added device-0 1001"});
    EXPECT_EQ(first->paramsChanged.Count(), 1U);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ADeviceIsSelectedByEngineAndSerialNumber) {
    Make();
    EXPECT_FAILURE(manager->CreateSelectedDevice("engine", "7"), yERROR_PARAMETER,
                   "No device with serial number 7 found.");
    EXPECT_FAILURE(manager->CreateSelectedDevice("other", "1001"), yERROR_PARAMETER,
                   "No device with serial number 1001 found.");
    EXPECT_EQ(NewEvents(), Texts{});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ASecondDeviceIsRefused) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    EXPECT_TEXTLESS_FAILURE(manager->CreateSelectedDevice("engine", "1002"), yERROR_FULL);
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ADeviceThatHasGoneIsntSelected) {
    Make();
    first.reset();
    EXPECT_FAILURE(manager->CreateSelectedDevice("engine", "1001"), yERROR_PARAMETER,
                   "Selected device 1001 is unavailable.");
    EXPECT_EQ(SelectedIds(), Texts{});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ASelectionThatAHandlerRefusesIsUndone) {
    Make();
    onEvent = [](const std::string&) { Vor::Throw(yERROR_BUSY, "no"); };
    EXPECT_FAILURE(manager->CreateSelectedDevice("engine", "1001"), yERROR_BUSY, "no");
    EXPECT_EQ(SelectedIds(), Texts{});
    EXPECT_EQ(first->paramsChanged.Count(), 0U);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ADeletedDeviceIsNotifiedAndItsIdIsFreeAgain) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    NewEvents();
    onEvent = [this](const std::string&) { EXPECT_EQ(SelectedIds(), Texts{"device-0"}); };
    manager->DeleteSelectedDevice("device-0", false);
    EXPECT_EQ(NewEvents(), Texts{"removed device-0 1001"});
    EXPECT_EQ(first->NewCalls(), Texts{"OnDeselected"});
    EXPECT_EQ(first->paramsChanged.Count(), 0U);
    EXPECT_EQ(SelectedIds(), Texts{});
    onEvent = nullptr;
    EXPECT_EQ(manager->CreateSelectedDevice("engine", "1002"), "device-0");
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ADeletionOfAnUnknownDeviceIsRefused) {
    Make();
    EXPECT_TEXTLESS_FAILURE(manager->DeleteSelectedDevice("device-0", false), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(manager->DeleteSelectedDevice("device-0", true), yERROR_NOT_FOUND);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ADeletionThatAHandlerRefusesChangesNothing) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    onEvent = [](const std::string&) { Vor::Throw(yERROR_BUSY, "no"); };
    EXPECT_FAILURE(manager->DeleteSelectedDevice("device-0", false), yERROR_BUSY, "no");
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, TheDefaultDeviceIsDeletedByForceOnly) {
    Make(true, 1001);
    EXPECT_TRUE(manager->IsSelectedDefaultDevice("1001"));
    EXPECT_FALSE(manager->IsSelectedDefaultDevice("1002"));
    EXPECT_FALSE(manager->IsSelectedDefaultDevice("01001"));
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(manager->DeleteSelectedDevice("device-0", false), yERROR_READ_ONLY,
                   "Service: Default active device serial number 1001 is not allowed to be deleted.");
    EXPECT_TRUE(log.Contains("Service: Default active device serial number 1001 is not allowed to be deleted."));
    EXPECT_TRUE(Tests::WasTranslated("beApp.ctrl",
                                     "%1$s: Default active device serial number %2$s is not allowed to be deleted."));
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
    manager->DeleteSelectedDevice("device-0", true);
    EXPECT_EQ(SelectedIds(), Texts{});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, AnUnknownDeviceHasNoProperties) {
    Make();
    EXPECT_THROW(manager->SelectedDeviceProperties("device-0"), std::out_of_range);
}

TEST_F(ControlDeviceManagerTest, SelectedDevicesAreEnabledWhileTheyExist) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    manager->EnableSelectedDevices(true);
    manager->EnableSelectedDevices(false);
    EXPECT_EQ(first->NewCalls(), (Texts{"Enable true", "Enable false"}));
    EXPECT_EQ(second->NewCalls(), Texts{});
    first.reset();
    manager->EnableSelectedDevices(true);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, DataSourcesAreThoseOfAllPortsInOrder) {
    Make();
    EXPECT_EQ(manager->DataSourceList(), Texts{});
    manager->CreateSelectedDevice("engine", "1001");
    AddSource("device-0", "port-1", "b");
    AddSource("device-0", "port-1", "a");
    AddSource("device-0", "port-0", "b");
    EXPECT_EQ(manager->DataSourceList(), (Texts{"b", "b", "a"}));
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, FiguresOfPortsAreRefreshedTogether) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    Port("device-0", "port-0")->SetHighCount(3);
    Port("device-0", "port-1")->SetLowCount(4);
    manager->UpdateDevicePortMetrics();
    const auto figures = [&](const char* port) {
        return Vor::Properties::JsonSerializer::Serialize(
            manager->DevicePortMetricsSource("device-0", port).GetMetrics());
    };
    EXPECT_EQ(figures("port-0")["highCount"], 3);
    EXPECT_EQ(figures("port-1")["lowCount"], 4);
    EXPECT_EQ(&manager->DevicePortMetricsSource("device-0", "port-1").GetMetrics(),
              &Port("device-0", "port-1")->GetMetrics());
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, FiguresOfAPortOutliveItsDevice) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    Port("device-0", "port-0")->SetHighCount(3);
    manager->UpdateDevicePortMetrics();
    const auto& source = manager->DevicePortMetricsSource("device-0", "port-0");
    manager->DeleteSelectedDevice("device-0", false);
    EXPECT_EQ(Vor::Properties::JsonSerializer::Serialize(source.GetMetrics())["highCount"], 3);
}

TEST_F(ControlDeviceManagerTest, FiguresOfAnUnknownPortAreRefused) {
    Make();
    EXPECT_FAILURE(manager->DevicePortMetricsSource("device-0", "port-0"), yERROR_NOT_FOUND,
                   "Service: Active device with device id 'device-0' not found.");
    manager->CreateSelectedDevice("engine", "1001");
    EXPECT_FAILURE(manager->DevicePortMetricsSource("device-0", "port-9"), yERROR_NOT_FOUND,
                   "Service: Port 'port-9' not found for device with device id 'device-0'.");
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ATriggerIsQueuedAndCantBeDropped) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    operations.NewCalls();
    Trigger("device-0", "port-1");
    EXPECT_EQ(operations.NewCalls(), Texts{"set service 1001 1 false true -7"});
    EXPECT_EQ(first->NewCalls(), Texts{});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ATriggerOfAnUnknownDeviceOrPortIsRefused) {
    Make();
    EXPECT_TEXTLESS_FAILURE(Trigger("device-0", "port-0"), yERROR_NOT_FOUND);
    manager->CreateSelectedDevice("engine", "1001");
    EXPECT_TEXTLESS_FAILURE(Trigger("device-1", "port-0"), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(Trigger("device-0", "port-2"), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(Trigger("device-0", ""), yERROR_NOT_FOUND);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ATriggerOfADeviceThatIsntConnectedIsRefused) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    first->status = DeviceStatus::NotConnected;
    first->changed.Raise();
    EXPECT_TEXTLESS_FAILURE(Trigger("device-0", "port-0"), yERROR_NOT_FOUND);
    first->status = DeviceStatus::Connected;
    first->changed.Raise();
    Trigger("device-0", "port-0");
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ATriggerOfADeviceThatHasGoneIsRefused) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    first.reset();
    EXPECT_FAILURE(Trigger("device-0", "port-0"), yERROR_STATE,
                   "Device interface for serial number '1001' is missing.");
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ATriggerOfAPortForOtherEventsIsRefused) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    first->behaviours[1] = 2;
    EXPECT_FAILURE(Trigger("device-0", "port-1"), yERROR_STATE,
                   "Digital output device with serial number '1001' is not configured for software events on port 1.");
    Trigger("device-0", "port-0");
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ResetDeselectsAllDevices) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    NewEvents();
    onEvent = [this](const std::string&) { EXPECT_EQ(SelectedIds(), Texts{"device-0"}); };
    manager->Reset();
    EXPECT_EQ(NewEvents(), Texts{"removed device-0 1001"});
    EXPECT_EQ(first->NewCalls(), Texts{"OnDeselected"});
    EXPECT_EQ(first->paramsChanged.Count(), 0U);
    EXPECT_EQ(SelectedIds(), Texts{});
    onEvent = nullptr;
    EXPECT_EQ(manager->CreateSelectedDevice("engine", "1001"), "device-0");
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerTest, ResetSelectsTheDefaultDeviceAnew) {
    Make(true, 1001);
    manager->Reset();
    EXPECT_EQ(NewEvents(), (Texts{"removed device-0 1001", "added device-0 1001"}));
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
    devices->Erase("p0");
    UpdateList();
    NewEvents();
    manager->Reset();
    EXPECT_EQ(NewEvents(), Texts{"removed device-0 1001"});
    EXPECT_TRUE(log.Contains("Failed to auto-select active device for serial number 1001)"));
    EXPECT_TRUE(IsUnlocked());
}
