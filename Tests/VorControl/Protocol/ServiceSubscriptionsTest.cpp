#include "VorControl/Protocol/ServiceSubscriptions.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/FakeDeviceManager.h"
#include "Tests/VorControl/Persistence/FakeControlInstance.h"
#include "Vor/Logging.h"
#include "VorControl/Protocol/ControlAvailableDeviceResource.h"
#include "VorControl/Protocol/ControlDeviceRegisterAssemblyResource.h"
#include "VorControl/Protocol/ControlDeviceResource.h"
#include "VorControl/Protocol/ControlOutputsCommandResource.h"
#include "VorControl/Protocol/ControlRegisterAssemblyResource.h"
#include "VorControl/Protocol/ControlResource.h"

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace VorControl::Protocol {
namespace {

/// Counts the handlers of its parameters, and may refuse to remove a handler of any kind.
class Service : public Tests::FakeControlInstance {
public:
    ParamsUpdatedEvent::CallbackId
    AddParamsUpdatedEventHandler(std::function<void(const std::string&, bool)> handler) override {
        return paramsUpdated.Add(std::move(handler));
    }
    void RemoveParamsUpdatedEventHandler(ParamsUpdatedEvent::CallbackId& handler) override {
        Refuse();
        paramsUpdated.Remove(handler);
    }
    void RemoveOutputsUpdatedEventHandler(OutputsUpdatedEvent::CallbackId&) override { Refuse(); }
    void RemoveRegisterAssemblyUpdatedEventHandler(RegisterAssemblyUpdatedEvent::CallbackId&) override { Refuse(); }
    void RemoveDeviceRegisterAssemblyUpdatedEventHandler(DeviceRegisterAssemblyUpdatedEvent::CallbackId&) override {
        Refuse();
    }
    AvailableDeviceListUpdatedEvent::CallbackId
    AddAvailableDeviceListUpdatedEventHandler(std::function<void(const std::string&)> handler) override {
        Refuse();
        return listUpdated.Add(std::move(handler));
    }
    void RemoveAvailableDeviceListUpdatedEventHandler(AvailableDeviceListUpdatedEvent::CallbackId& handler) override {
        Refuse();
        listUpdated.Remove(handler);
    }
    DeviceUpdatedEvent::CallbackId
    AddDeviceUpdatedEventHandler(std::function<void(const std::string&, const std::string&, bool)> handler) override {
        Refuse();
        return deviceUpdated.Add(std::move(handler));
    }
    void RemoveDeviceUpdatedEventHandler(DeviceUpdatedEvent::CallbackId& handler) override {
        Refuse();
        deviceUpdated.Remove(handler);
    }

    ParamsUpdatedEvent paramsUpdated;
    AvailableDeviceListUpdatedEvent listUpdated;
    DeviceUpdatedEvent deviceUpdated;
    bool refuses = false;

private:
    void Refuse() const {
        if (refuses) {
            Vor::Throw(yERROR_STATE, "The handler stays.");
        }
    }
};

class Manager : public IControlManager {
public:
    const char* Component() override { return "test"; }
    void InitPersistDomain(VorCommon::PersistDomain, VorCommon::IPersistStore&) override {}
    void LoadPersistDomain(VorCommon::PersistDomain, const VorCommon::IPersistStore&) override {}
    void SavePersistDomain(VorCommon::PersistDomain, VorCommon::IPersistStore&) override {}

    std::vector<std::string> List() const override {
        std::vector<std::string> ids;
        for (const auto& service : services) {
            ids.push_back(service.first);
        }
        return ids;
    }
    IControlInstance& GetInstance(const std::string& id) override { return services.at(id); }
    const ControlRegistry& GetControlRegistry() const override { Vor::Throw(yERROR_UNIMPLEMENTED); }
    PersistenceLoadEvent::CallbackId
    AddPersistenceLoadEventHandler(std::function<void(PersistenceLoadOpState)> handler) override {
        return loads.Add(std::move(handler));
    }
    void RemovePersistenceLoadEventHandler(PersistenceLoadEvent::CallbackId id) override { loads.Remove(id); }

    std::map<std::string, Service> services;
    PersistenceLoadEvent loads;
};

class ServiceSubscriptionsTest : public testing::Test {
protected:
    ServiceSubscriptionsTest() {
        manager.services["a"].typeName = "one";
        manager.services["b"].typeName = "other";
    }

    Vor::LogCapture log;
    Manager manager;
    Service& first = manager.services["a"];
    Service& second = manager.services["b"];
};

TEST_F(ServiceSubscriptionsTest, EachServiceHasAHandlerDuringTheLifetime) {
    {
        const ControlResource resource(manager);
        EXPECT_EQ(first.paramsUpdated.Count(), 1U);
        EXPECT_EQ(second.paramsUpdated.Count(), 1U);
    }
    EXPECT_EQ(first.paramsUpdated.Count(), 0U);
    EXPECT_EQ(second.paramsUpdated.Count(), 0U);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ServiceSubscriptionsTest, AHandlerThatCantBeRemovedIsLogged) {
    first.refuses = true;
    { const ControlResource resource(manager); }
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown while removing parameters update event handlers"), 1U);
    { const ControlOutputsCommandResource resource(manager); }
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown while removing outputs map update event handlers"), 1U);
    { const ControlRegisterAssemblyResource resource(manager); }
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown while removing register assembly update event handlers"),
              1U);
}

TEST_F(ServiceSubscriptionsTest, TwoServicesOfOneTypeNameAreRefusedAndNoHandlerStays) {
    second.typeName = first.typeName;
    EXPECT_TEXTLESS_FAILURE(ControlResource{manager}, yERROR_ALREADY_EXISTS);
    EXPECT_EQ(first.paramsUpdated.Count(), 0U);
    EXPECT_EQ(second.paramsUpdated.Count(), 0U);
    EXPECT_EQ(manager.loads.Count(), 0U);
}

TEST_F(ServiceSubscriptionsTest, ThoseOfDevicesAreOfTheServicesThatUseThem) {
    Tests::FakeDeviceManager devices;
    second.deviceManager = &devices;
    {
        const ControlAvailableDeviceResource available(manager);
        const ControlDeviceResource selected(manager);
        EXPECT_EQ(first.listUpdated.Count(), 0U);
        EXPECT_EQ(second.listUpdated.Count(), 1U);
        EXPECT_EQ(first.deviceUpdated.Count(), 0U);
        EXPECT_EQ(second.deviceUpdated.Count(), 1U);
    }
    EXPECT_EQ(second.listUpdated.Count(), 0U);
    EXPECT_EQ(second.deviceUpdated.Count(), 0U);
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ServiceSubscriptionsTest, AFailureWithHandlersOfDevicesIsLogged) {
    Tests::FakeDeviceManager devices;
    first.deviceManager = &devices;
    first.refuses = true;
    { const ControlAvailableDeviceResource resource(manager); }
    { const ControlDeviceResource resource(manager); }
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown while adding available device list update event handlers"),
              1U);
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown while adding device update event handlers"), 1U);
    first.refuses = false;
    {
        const ControlAvailableDeviceResource available(manager);
        const ControlDeviceResource selected(manager);
        const ControlDeviceRegisterAssemblyResource assemblies(manager);
        first.refuses = true;
    }
    for (const char* const what : {"available device list", "device", "device register assembly"}) {
        EXPECT_EQ(log.Count(Vor::LevelError,
                            std::string("Exception thrown while removing ") + what + " update event handlers"),
                  1U);
    }
}

} // namespace
} // namespace VorControl::Protocol
