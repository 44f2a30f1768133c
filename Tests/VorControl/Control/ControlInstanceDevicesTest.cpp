#include "Tests/Support/Failure.h"
#include "Tests/Support/FakeDeviceManager.h"
#include "Tests/Support/TestService.h"
#include "Tests/VorControl/Control/InstanceParams.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;
using VorControl::ControlInstance;
using DataToReset = VorControl::IControlInstance::DataToReset;

/// The service "type", with a device manager when a test binds it.
class ControlInstanceDevicesTest : public testing::Test {
protected:
    void Make(bool withDevices) {
        service = std::make_shared<Tests::TestService>(environ.Record("type", "Display"));
        if (withDevices) {
            VorControl::ControlProtocol::ProtocolInitParams init;
            init.params = &service->params;
            init.deviceManager = &devices;
            service->Init(init);
        }
        auto params = Tests::InstanceParams(environ, scanResults, info, service);
        params.typeName = "type";
        instance = std::make_unique<ControlInstance>(params);
    }

    /// Notes the events of the instance, with the depth of the update gate.
    void Listen() {
        const auto note = [this](const std::string& event) {
            events.push_back(event + " " + std::to_string(environ.application.gate.Depth()));
        };
        const auto persisted = [](bool persist) { return std::string(persist ? " persist" : " keep"); };
        instance->AddDeviceUpdatedEventHandler([=](const std::string& id, const std::string& device, bool persist) {
            note("updated " + id + " '" + device + "'" + persisted(persist));
        });
        instance->AddDeviceRemovedEventHandler([=](const std::string& id, const std::string& device, bool persist) {
            note("removed " + id + " '" + device + "'" + persisted(persist));
        });
        instance->AddDeviceRegisterAssemblyUpdatedEventHandler(
            [=](const std::string& id, const std::string& device, const std::string& port,
                const std::string& assembly) { note("assembly " + id + " " + device + " " + port + " " + assembly); });
    }

    Lines NewEvents() { return std::exchange(events, {}); }

    Tests::HostEnviron environ;
    Tests::RecordingScanResults scanResults;
    VorControl::ControlInfo info;
    Tests::FakeDeviceManager devices;
    std::shared_ptr<Tests::TestService> service;
    std::unique_ptr<ControlInstance> instance;
    Lines events;
};

} // namespace

TEST_F(ControlInstanceDevicesTest, WithoutADeviceManagerThereAreNoDevices) {
    Make(false);
    EXPECT_FALSE(instance->HasDeviceManager());
    EXPECT_TEXTLESS_FAILURE(instance->DeviceManager(), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(instance->AddAvailableDeviceListUpdatedEventHandler([](const std::string&) {}),
                            yERROR_UNIMPLEMENTED);
    VorControl::IControlInstance::AvailableDeviceListUpdatedEvent::CallbackId id;
    EXPECT_TEXTLESS_FAILURE(instance->RemoveAvailableDeviceListUpdatedEventHandler(id), yERROR_UNIMPLEMENTED);
    instance->DeviceManagerBeginLock();
    instance->DeviceManagerEndLock();
    instance->ResetInstance(true, DataToReset::DeviceManager);
    instance->RegisterAssemblyUpdate("");
    EXPECT_EQ(service->calls, Lines{});
}

TEST_F(ControlInstanceDevicesTest, TheDeviceManagerIsThatOfTheService) {
    Make(true);
    EXPECT_TRUE(instance->HasDeviceManager());
    EXPECT_EQ(&instance->DeviceManager(), &devices);
    instance->DeviceManagerBeginLock();
    instance->DeviceManagerEndLock();
    EXPECT_EQ(devices.NewCalls(), (Lines{"BeginLock", "EndLock"}));
}

TEST_F(ControlInstanceDevicesTest, HandlersOfTheListAreThoseOfTheDeviceManager) {
    Make(true);
    Lines lists;
    auto id = instance->AddAvailableDeviceListUpdatedEventHandler(
        [&](const std::string& service) { lists.push_back(service); });
    devices.listUpdated.Raise("type");
    instance->RemoveAvailableDeviceListUpdatedEventHandler(id);
    devices.listUpdated.Raise("type");
    EXPECT_EQ(lists, Lines{"type"});
    EXPECT_EQ(devices.listUpdated.Count(), 0U);
}

TEST_F(ControlInstanceDevicesTest, EventsOfTheDeviceManagerAreEventsOfTheInstance) {
    Make(true);
    Listen();
    const VorControl::ControlSelectedDeviceProp device;
    devices.removed.Raise(device, "device-0", true);
    devices.removed.Raise(device, "device-1", false);
    devices.updated.Raise(device, "device-0");
    EXPECT_EQ(NewEvents(), (Lines{"removed type 'device-0' persist 0", "removed type 'device-1' keep 0",
                                  "updated type 'device-0' keep 0"}));
    instance.reset();
    EXPECT_EQ(devices.removed.Count(), 0U);
    EXPECT_EQ(devices.updated.Count(), 0U);
}

TEST_F(ControlInstanceDevicesTest, AnUpdateOfDevicesIsBracketedByTheGate) {
    Make(true);
    Listen();
    instance->BeginUpdateDeviceManager();
    EXPECT_EQ(environ.application.gate.Depth(), 1);
    instance->EndUpdateDeviceManager();
    EXPECT_EQ(environ.application.gate.Depth(), 0);
    EXPECT_EQ(NewEvents(), Lines{"updated type '' persist 1"});
    instance->BeginUpdateDeviceRegisterAssembly();
    EXPECT_EQ(environ.application.gate.Depth(), 1);
    instance->EndUpdateDeviceRegisterAssembly("device-0", "port-1", "registerAssembly-0");
    EXPECT_EQ(environ.application.gate.Depth(), 0);
    EXPECT_EQ(NewEvents(), Lines{"assembly type device-0 port-1 registerAssembly-0 1"});
}

TEST_F(ControlInstanceDevicesTest, TheGateIsLeftWhenAHandlerFails) {
    Make(true);
    const auto failing = [](const auto&...) { throw std::runtime_error("handler"); };
    instance->AddDeviceUpdatedEventHandler(failing);
    instance->AddDeviceRegisterAssemblyUpdatedEventHandler(failing);
    instance->BeginUpdateDeviceManager();
    EXPECT_THROW(instance->EndUpdateDeviceManager(), std::runtime_error);
    instance->BeginUpdateDeviceRegisterAssembly();
    EXPECT_THROW(instance->EndUpdateDeviceRegisterAssembly("d", "p", "a"), std::runtime_error);
    EXPECT_EQ(environ.application.gate.Depth(), 0);
}

TEST_F(ControlInstanceDevicesTest, AHandlerIsRemovedByItsId) {
    Make(true);
    const auto ignore = [](const auto&...) {};
    auto updated = instance->AddDeviceUpdatedEventHandler(ignore);
    auto removed = instance->AddDeviceRemovedEventHandler(ignore);
    auto assembly = instance->AddDeviceRegisterAssemblyUpdatedEventHandler(ignore);
    instance->RemoveDeviceUpdatedEventHandler(updated);
    instance->RemoveDeviceRemovedEventHandler(removed);
    instance->RemoveDeviceRegisterAssemblyUpdatedEventHandler(assembly);
    EXPECT_FALSE(updated.IsSet());
    EXPECT_FALSE(removed.IsSet());
    EXPECT_FALSE(assembly.IsSet());
}

TEST_F(ControlInstanceDevicesTest, AResetOfTheDevicesResetsTheirManager) {
    Make(true);
    devices.NewCalls();
    for (const auto data : {DataToReset::Params, DataToReset::OutputsMap, DataToReset::RegisterAssemblies}) {
        instance->ResetInstance(true, data);
    }
    EXPECT_EQ(devices.NewCalls(), Lines{});
    instance->ResetInstance(true, DataToReset::DeviceManager);
    instance->ResetInstance(true, DataToReset::All);
    EXPECT_EQ(devices.NewCalls(), (Lines{"Reset", "Reset"}));
}

TEST_F(ControlInstanceDevicesTest, AChangeOfAPortsAssemblyUpdatesTheFilter) {
    Make(true);
    devices.sources = {"profile/max"};
    scanResults.calls->clear();
    instance->RegisterAssemblyUpdate("");
    EXPECT_EQ(service->calls, Lines{"RegisterAssemblyUpdate "});
    EXPECT_EQ(*scanResults.calls, Lines{"map type profile/max"});
}
