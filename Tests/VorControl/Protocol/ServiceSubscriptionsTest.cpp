#include "VorControl/Protocol/ServiceSubscriptions.h"

#include "Tests/Support/Failure.h"
#include "Tests/VorControl/Persistence/FakeControlInstance.h"
#include "Vor/Logging.h"
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

    ParamsUpdatedEvent paramsUpdated;
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

} // namespace
} // namespace VorControl::Protocol
