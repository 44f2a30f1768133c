#include "Tests/Support/Signal.h"
#include "Tests/Support/Translations.h"
#include "Tests/Support/WaitForLoop.h"
#include "Tests/VorControl/Control/DeviceManagerFixture.h"
#include "VorControl/Control/ControlDeviceOperations.h"

#include <array>
#include <atomic>
#include <pthread.h>
#include <stdexcept>
#include <thread>

using Tests::Texts;
using VorControl::ControlDeviceActionId;
using VorControl::ControlDeviceManager;
using DeviceStatus = VorCommon::IDeviceProvider::DeviceStatus;

namespace {

constexpr const char* Gone =
    "The active modelA device with serial number 1001 no longer appears to be available in the system. To reuse it, "
    "please add it back to the sensor group on the Design page.";

class ControlDeviceManagerEventsTest : public Tests::DeviceManagerFixture {
protected:
    /// Entries of the user's log with this title and text.
    std::size_t UserEntries(std::uint64_t level, const std::string& title, const std::string& text) const {
        std::size_t count = 0;
        for (const auto& record : log.Records()) {
            count += record.level == level && record.title == title && record.text == text ? 1 : 0;
        }
        return count;
    }

    void Add(const std::string& providerId, const std::shared_ptr<Tests::FakeOutputDevice>& device) {
        devices->Put(providerId, device);
        devices->added.Raise("engine", providerId, device);
    }

    /// The end of a search for devices that found these: provider ids and devices.
    void UpdateListWith(const std::vector<std::pair<std::string, std::shared_ptr<Tests::FakeOutputDevice>>>& found) {
        auto list = std::make_shared<std::vector<VorControl::ControlAvailableDeviceProp>>();
        for (const auto& [providerId, device] : found) {
            VorControl::ControlAvailableDeviceProp& prop = list->emplace_back();
            prop.device = device;
            prop.engineId = "engine";
            prop.providerId = providerId;
            prop.serialNumber = device == nullptr ? "" : device->serialNumber;
        }
        operations.ended.Raise({.clientId = "service",
                                .actionId = ControlDeviceActionId::FindAvailableSensors,
                                .status = yOK,
                                .devices = list});
    }

    void Remove(const std::string& providerId) {
        devices->Erase(providerId);
        devices->removed.Raise("engine", providerId);
    }
};

} // namespace

TEST_F(ControlDeviceManagerEventsTest, ANewListReplacesTheFormerOne) {
    Make();
    devices->Erase("p0");
    const auto third = std::make_shared<Tests::FakeOutputDevice>("modelC", "1003");
    devices->Put("p2", third);
    UpdateList();
    EXPECT_EQ(Available(), (Texts{"engine/p1", "engine/p2"}));
    EXPECT_EQ(NewEvents(), Texts{"list service"});
    EXPECT_EQ(first->changed.Count(), 0U);
    EXPECT_EQ(second->changed.Count(), 1U);
    EXPECT_EQ(third->changed.Count(), 1U);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, AListIsAnnouncedAfterTheLockWasLeft) {
    Make();
    int calls = 0;
    manager->AvailableDeviceListUpdatedEvent().Add([&](const std::string&) {
        ++calls;
        EXPECT_EQ(Tests::StatusOf([&] { manager->EndLock(); }), yERROR_STATE);
    });
    UpdateList();
    EXPECT_EQ(calls, 1);
}

TEST_F(ControlDeviceManagerEventsTest, OfADuplicateTheFirstCounts) {
    Make();
    UpdateListWith({{"p", first}, {"p", second}});
    ASSERT_EQ(Available(), Texts{"engine/p"});
    EXPECT_EQ(manager->AvailableDevices().begin()->second.serialNumber, "1001");
    EXPECT_EQ(second->changed.Count(), 0U);
}

TEST_F(ControlDeviceManagerEventsTest, ADeviceOfAListMayHaveGone) {
    Make();
    UpdateListWith({{"p", nullptr}});
    EXPECT_EQ(Available(), Texts{"engine/p"});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, OtherEndsOfOperationsAreIgnored) {
    Make();
    operations.ended.Raise(
        {.clientId = "service", .actionId = ControlDeviceActionId::SetDigitalOutputState, .status = yOK});
    operations.ended.Raise(
        {.clientId = "service", .actionId = ControlDeviceActionId::FindAvailableSensors, .status = yERROR});
    EXPECT_EQ(NewEvents(), Texts{});
    EXPECT_EQ(Available(), (Texts{"engine/p0", "engine/p1"}));
}

TEST_F(ControlDeviceManagerEventsTest, ASelectedDeviceThatWentWithoutAnEventIsRemovedByTheNextList) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    NewEvents();
    VorGetText::GetInstance().ForgetCalls();
    UpdateList();
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
    EXPECT_EQ(NewEvents(), Texts{"list service"});
    first.reset();
    UpdateList();
    EXPECT_EQ(SelectedIds(), Texts{});
    EXPECT_EQ(NewEvents(), (Texts{"removed device-0 1001", "list service"}));
    EXPECT_EQ(UserEntries(Vor::UserWarning, "VorControl", Gone), 1U);
    // Only a deletion and a reset begin with 0 again.
    EXPECT_EQ(manager->CreateSelectedDevice("engine", "1002"), "device-1");
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, AFailureWhileADeviceIsRemovedIsLoggedAndThrown) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    NewEvents();
    first.reset();
    onEvent = [](const std::string&) { throw std::runtime_error("no"); };
    EXPECT_THROW(UpdateList(), std::runtime_error);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Exception updating active device properties: no"));
    EXPECT_EQ(NewEvents(), Texts{"removed device-0 1001"});
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, TheDefaultDeviceIsSelectedByItself) {
    Make(true, 1001);
    EXPECT_EQ(Available(), Texts{"engine/p0"});
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
    EXPECT_EQ(first->paramsChanged.Count(), 0U);
    UpdateList();
    EXPECT_EQ(NewEvents(), Texts{"list service"});
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
}

TEST_F(ControlDeviceManagerEventsTest, OnlyTheFirstDeviceMayBeTheDefaultDevice) {
    Make(true, 1002);
    EXPECT_EQ(Available(), Texts{"engine/p0"});
    EXPECT_EQ(SelectedIds(), Texts{});
    EXPECT_TRUE(log.Contains(Vor::LevelWarning, "Failed to auto-select sensor (1002)"));
    devices->Erase("p0");
    UpdateList();
    EXPECT_EQ(NewEvents(), (Texts{"added device-0 1002", "list service"}));
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, WithoutADeviceTheDefaultDeviceIsLookedForAgain) {
    devices->Erase("p0");
    devices->Erase("p1");
    Make(true, 1001);
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Failed to auto-select sensor (1001)"), 1U);
    UpdateList();
    EXPECT_EQ(NewEvents(), Texts{"list service"});
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Failed to auto-select sensor (1001)"), 2U);
    devices->Put("p0", first);
    UpdateList();
    EXPECT_EQ(NewEvents(), (Texts{"added device-0 1001", "list service"}));
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, AnAddedDeviceIsAvailable) {
    Make();
    const auto third = std::make_shared<Tests::FakeOutputDevice>("modelC", "1003", DeviceStatus::NotConnected);
    Add("p2", third);
    EXPECT_EQ(Available(), (Texts{"engine/p0", "engine/p1", "engine/p2"}));
    EXPECT_EQ(NewEvents(), Texts{"list service"});
    const auto& device = manager->AvailableDevices().at({"engine", "p2"});
    EXPECT_EQ(device.device.lock(), third);
    EXPECT_EQ(device.engineId, "engine");
    EXPECT_EQ(device.deviceModel, "modelC");
    EXPECT_EQ(device.serialNumber, "1003");
    EXPECT_EQ(device.providerId, "p2");
    EXPECT_EQ(device.deviceStatus, DeviceStatus::NotConnected);
    EXPECT_EQ(third->changed.Count(), 1U);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, ADeviceThatIsAddedTwiceReplacesTheFormerOne) {
    Make();
    const auto other = std::make_shared<Tests::FakeOutputDevice>("modelC", "1003");
    Add("p0", other);
    EXPECT_TRUE(log.Contains(Vor::LevelWarning, "ControlDeviceManager: Scan engine engine notified of an added "
                                                "provider (p0), but it already exists."));
    EXPECT_EQ(first->changed.Count(), 0U);
    EXPECT_EQ(other->changed.Count(), 1U);
    EXPECT_EQ(manager->AvailableDevices().at({"engine", "p0"}).serialNumber, "1003");
    EXPECT_EQ(NewEvents(), Texts{"list service"});
}

TEST_F(ControlDeviceManagerEventsTest, InDefaultDeviceModeAnAddedDeviceIsIgnored) {
    Make(true, 1001);
    Add("p2", std::make_shared<Tests::FakeOutputDevice>());
    EXPECT_EQ(Available(), Texts{"engine/p0"});
    EXPECT_EQ(NewEvents(), Texts{});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, ARemovedDeviceIsNoLongerAvailable) {
    Make();
    Remove("p1");
    EXPECT_EQ(Available(), Texts{"engine/p0"});
    EXPECT_EQ(second->changed.Count(), 0U);
    EXPECT_EQ(NewEvents(), Texts{"list service"});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, ARemovalOfAnUnknownDeviceIsLogged) {
    Make();
    Remove("p7");
    EXPECT_TRUE(log.Contains(Vor::LevelWarning, "ControlDeviceManager: Scan engine engine notified of a removed "
                                                "provider (p7), but the device manager wasn't aware of it."));
    EXPECT_EQ(NewEvents(), Texts{"list service"});
}

TEST_F(ControlDeviceManagerEventsTest, ASelectedDeviceThatIsRemovedIsDeletedAndDoesntComeBack) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    NewEvents();
    VorGetText::GetInstance().ForgetCalls();
    Remove("p0");
    EXPECT_EQ(NewEvents(), (Texts{"removed device-0 1001", "list service"}));
    EXPECT_EQ(SelectedIds(), Texts{});
    EXPECT_EQ(Available(), Texts{"engine/p1"});
    EXPECT_EQ(first->NewCalls(), Texts{"OnDeselected"});
    EXPECT_EQ(UserEntries(Vor::UserInfo, "control",
                          "Removed the active device 'device-0' for Service because the sensor was removed."),
              1U);
    EXPECT_TRUE(Tests::WasTranslated("beApp.ctrl",
                                     "Removed the active device '%1$s' for %2$s because the sensor was removed."));
    Add("p0", first);
    EXPECT_EQ(NewEvents(), Texts{"list service"});
    EXPECT_EQ(SelectedIds(), Texts{});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, TheDefaultDeviceThatIsRemovedStaysSelectedUntilTheNextList) {
    Make(true, 1001);
    Remove("p0");
    EXPECT_EQ(NewEvents(), Texts{"list service"});
    EXPECT_EQ(SelectedIds(), Texts{"device-0"});
    EXPECT_EQ(Available(), Texts{});
    EXPECT_TRUE(log.Contains("Caught exception with status -983: Service: Default active device serial number 1001 is "
                             "not allowed to be deleted."));
    first.reset();
    UpdateList();
    EXPECT_EQ(SelectedIds(), Texts{});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, AChangedStatusIsPassedOn) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    AddSource("device-0", "port-0", "a");
    NewEvents();
    const auto port = Port("device-0", "port-0");
    first->status = DeviceStatus::NotConnected;
    first->changed.Raise();
    EXPECT_EQ(manager->AvailableDevices().at({"engine", "p0"}).deviceStatus, DeviceStatus::NotConnected);
    EXPECT_EQ(manager->SelectedDeviceProperties("device-0").deviceStatus, DeviceStatus::NotConnected);
    EXPECT_EQ(NewEvents(), (Texts{"updated device-0 1001", "list service"}));
    EXPECT_EQ(Port("device-0", "port-0"), port);
    EXPECT_EQ(manager->DataSourceList(), Texts{"a"});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, AChangeOfADeviceThatIsntSelectedUpdatesTheList) {
    Make();
    second->model = "modelX";
    second->changed.Raise();
    EXPECT_EQ(manager->AvailableDevices().at({"engine", "p1"}).deviceModel, "modelX");
    EXPECT_EQ(NewEvents(), Texts{"list service"});
}

TEST_F(ControlDeviceManagerEventsTest, ADeviceOfAnotherIdentityGetsNewPorts) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    AddSource("device-0", "port-0", "a");
    NewEvents();
    first->serialNumber = "2001";
    first->changed.Raise();
    EXPECT_EQ(manager->SelectedDeviceProperties("device-0").serialNumber, "2001");
    EXPECT_EQ(Ports("device-0"), (Texts{"port-0", "port-1"}));
    EXPECT_EQ(manager->DataSourceList(), Texts{});
    EXPECT_EQ(NewEvents(), (Texts{"updated device-0 2001", "list service"}));
    AddSource("device-0", "port-0", "b");
    first->model = "modelX";
    first->changed.Raise();
    EXPECT_EQ(manager->SelectedDeviceProperties("device-0").deviceModel, "modelX");
    EXPECT_EQ(manager->DataSourceList(), Texts{});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, AFurtherPortLeavesTheOthers) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    AddSource("device-0", "port-1", "a");
    first->ports = {0, 1, 2};
    first->changed.Raise();
    EXPECT_EQ(Ports("device-0"), (Texts{"port-0", "port-1", "port-2"}));
    EXPECT_EQ(manager->DataSourceList(), Texts{"a"});
    first->ports.clear();
    first->changed.Raise();
    EXPECT_EQ(Ports("device-0"), (Texts{"port-0", "port-1", "port-2"}));
}

TEST_F(ControlDeviceManagerEventsTest, AChangeOfADeviceThatIsUnknownDoesNothing) {
    Make();
    auto handlerOfADeadEntry = std::make_shared<Tests::FakeOutputDevice>("modelC", "1003");
    Add("p2", handlerOfADeadEntry);
    NewEvents();
    manager->AvailableDevices().clear();
    handlerOfADeadEntry->changed.Raise();
    EXPECT_EQ(NewEvents(), Texts{});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, AChangedParameterOfAPortIsPassedOn) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    NewEvents();
    first->paramsChanged.Raise(1);
    second->paramsChanged.Raise(0);
    EXPECT_EQ(NewEvents(), Texts{"params 1 device-0 1001"});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, AHandlerMayReplaceTheDeviceOfItsEvent) {
    Make();
    Texts seen;
    const auto see = [&](const std::string& device) { seen.push_back(device); };
    manager->SelectedDeviceAddedEvent().Add(
        [&](const Selected& device, const std::string& id) { see(id + " " + device.serialNumber); });
    manager->SelectedDeviceUpdatedEvent().Add(
        [&](const Selected& device, const std::string& id) { see(id + " " + device.serialNumber); });
    manager->SelectedDeviceParamsChangedEvent().Add(
        [&](const Selected& device, unsigned long long) { see(device.id + " " + device.serialNumber); });
    std::string cause = "added";
    onEvent = [&](const std::string& event) {
        if (event == cause) {
            cause.clear();
            manager->DeleteSelectedDevice("device-0", false);
            manager->CreateSelectedDevice("engine", "1002");
        }
    };
    manager->CreateSelectedDevice("engine", "1001");
    EXPECT_EQ(std::exchange(seen, {}), (Texts{"device-0 1002", "device-0 1001"}));

    const std::vector<std::pair<std::string, std::function<void()>>> causes{
        {"updated", [this] { first->changed.Raise(); }},
        {"params 1", [this] { first->paramsChanged.Raise(1); }},
    };
    for (const auto& [event, raise] : causes) {
        manager->Reset();
        manager->CreateSelectedDevice("engine", "1001");
        seen.clear();
        cause = event;
        raise();
        EXPECT_EQ(std::exchange(seen, {}), (Texts{"device-0 1002", "device-0 1001"})) << event;
        EXPECT_EQ(manager->SelectedDeviceProperties("device-0").serialNumber, "1002");
    }
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, AHandlerMayDeleteTheDeviceThatIsBeingDeleted) {
    Make();
    Texts seen;
    manager->SelectedDeviceRemovedEvent().Add(
        [&](const Selected& device, const std::string& id, bool) { seen.push_back(id + " " + device.serialNumber); });
    manager->CreateSelectedDevice("engine", "1001");
    bool deletes = true;
    onEvent = [&](const std::string&) {
        if (std::exchange(deletes, false)) {
            manager->DeleteSelectedDevice("device-0", false);
        }
    };
    manager->DeleteSelectedDevice("device-0", false);
    EXPECT_EQ(seen, (Texts{"device-0 1001", "device-0 1001"}));
    EXPECT_EQ(SelectedIds(), Texts{});
    EXPECT_EQ(first->NewCalls(), Texts{"OnDeselected"});
    EXPECT_EQ(first->paramsChanged.Count(), 0U);
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, ADeviceThatGoesWhileItIsSelectedIsntSelected) {
    /// Ends while it is asked for its ports.
    class LeavingDevice : public Tests::FakeOutputDevice {
    public:
        using FakeOutputDevice::FakeOutputDevice;
        std::vector<unsigned long long> Ports() const override {
            leave();
            return ports;
        }
        std::function<void()> leave;
    };
    Make();
    auto third = std::make_shared<LeavingDevice>("modelC", "1003");
    third->leave = [&] { third.reset(); };
    Add("p2", third);
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(manager->CreateSelectedDevice("engine", "1003"), yERROR_STATE,
                   "Device interface for 1003 is missing.");
    EXPECT_TRUE(Tests::WasTranslated("beApp.ctrl", "Device interface for %1$s is missing."));
    EXPECT_EQ(SelectedIds(), Texts{});
    EXPECT_TRUE(IsUnlocked());
}

TEST_F(ControlDeviceManagerEventsTest, EventsOfDevicesAreRaisedWithTheLockHeld) {
    Make();
    manager->CreateSelectedDevice("engine", "1001");
    int checks = 0;
    const auto isLocked = [&](const std::string&) {
        ++checks;
        EXPECT_EQ(Tests::StatusOf([&] { manager->EndLock(); }), yOK);
        manager->BeginLock();
    };
    onEvent = isLocked;
    manager->AvailableDeviceListUpdatedEvent().Add(isLocked);
    first->changed.Raise();
    first->paramsChanged.Raise(0);
    Add("p2", second);
    Remove("p0");
    EXPECT_EQ(checks, 6);
}

TEST_F(ControlDeviceManagerEventsTest, AnEventThatRunsIsWaitedForByTheDestructor) {
    Make();
    Tests::Signal entered;
    Tests::Signal leave;
    std::atomic<bool> left{false};
    manager->AvailableDeviceListUpdatedEvent().Add([&](const std::string&) {
        entered.Set();
        leave.Wait();
        left = true;
    });
    std::thread notifier([&] { second->changed.Raise(); });
    ASSERT_TRUE(entered.Wait());
    std::thread helper([&] { leave.Set(); });
    manager.reset();
    EXPECT_TRUE(left);
    notifier.join();
    helper.join();
}

TEST_F(ControlDeviceManagerEventsTest, WithRealOperationsAListIsUpdatedOnTheirThread) {
    VorControl::ControlDeviceOperations queue(scanEngine);
    Tests::Signal updated;
    {
        ControlDeviceManager subject({.serviceId = "service",
                                      .serviceName = "Service",
                                      .scanEngineInterface = scanEngine,
                                      .deviceOperations = queue});
        std::array<char, 16> thread{};
        subject.AvailableDeviceListUpdatedEvent().Add([&](const std::string&) {
            pthread_getname_np(pthread_self(), thread.data(), thread.size());
            updated.Set();
        });
        devices->Erase("p0");
        EXPECT_TRUE(queue.FindAvailableSensors("service"));
        ASSERT_TRUE(updated.Wait());
        EXPECT_STREQ(thread.data(), "DeviceLoop");
        const VorControl::DeviceManagerLock lock(subject);
        EXPECT_EQ(subject.AvailableDevices().size(), 1U);
    }
}

TEST_F(ControlDeviceManagerEventsTest, DevicesMayChangeWhileTheManagerIsUsed) {
    VorControl::ControlDeviceOperations queue(scanEngine);
    ControlDeviceManager subject({.serviceId = "service",
                                  .serviceName = "Service",
                                  .scanEngineInterface = scanEngine,
                                  .deviceOperations = queue});
    std::thread provider([&] {
        for (int i = 0; i < 100; ++i) {
            devices->removed.Raise("engine", "p0");
            devices->added.Raise("engine", "p0", first);
            first->changed.Raise();
        }
    });
    for (int i = 0; i < 100; ++i) {
        queue.FindAvailableSensors("service");
        // The device may not be there at the moment.
        if (const auto status = Tests::StatusOf([&] { subject.CreateSelectedDevice("engine", "1001"); });
            status != yOK && status != yERROR_FULL) {
            EXPECT_EQ(status, yERROR_PARAMETER);
        }
        subject.DataSourceList();
        subject.UpdateDevicePortMetrics();
        const auto status = Tests::StatusOf([&] { subject.DeleteSelectedDevice("device-0", false); });
        EXPECT_TRUE(status == yOK || status == yERROR_NOT_FOUND) << status;
    }
    provider.join();
    Tests::WaitForLoop();
    const VorControl::DeviceManagerLock lock(subject);
    EXPECT_LE(subject.SelectedDevices().size(), 1U);
}
