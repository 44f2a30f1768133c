#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/DomainService.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/RecordingScanResults.h"
#include "Tests/Support/TestService.h"
#include "Vor/Exception.h"
#include "VorControl/Control/ControlInstance.h"
#include "yApi/yStatus.h"

#include <stdexcept>

#include <gtest/gtest.h>

using VorCommon::PersistDomain;
using VorControl::ControlInstance;
using VorControl::ControlProtocol::ProtocolInitParams;
using Calls = std::vector<std::string>;

namespace {

/// A service that keeps its configuration in the job domain.
class ControlInstanceDomainTest : public testing::Test {
protected:
    ControlInstanceDomainTest() {
        info.SetTypeName("type").SetDisplayName("info's name");
        service = std::make_shared<Tests::DomainService>(environ.Record("type", "Display"));
        instance = InstanceOf(service);
    }

    std::unique_ptr<ControlInstance> InstanceOf(std::shared_ptr<VorControl::ControlProtocol::IProtocol> protocol) {
        VorControl::ControlInstanceParams params;
        params.info = &info;
        params.updateGate = &environ.application.gate;
        params.scanResults = &scanResults;
        params.problemsManager = &environ.application.problems;
        params.protocol = std::move(protocol);
        params.typeName = "type";
        params.displayName = "Display";
        return std::make_unique<ControlInstance>(params);
    }

    int GateDepth() const { return environ.application.gate.Depth(); }

    Tests::HostEnviron environ;
    Tests::RecordingScanResults scanResults;
    VorControl::ControlInfo info;
    std::shared_ptr<Tests::DomainService> service;
    std::unique_ptr<ControlInstance> instance;
};

} // namespace

TEST_F(ControlInstanceDomainTest, GivesTheParametersOfTheJobDomainAndElseTheBoundOnes) {
    EXPECT_EQ(instance->Params(), service->params);
    Vor::Params::Group bound;
    ProtocolInitParams init;
    init.params = &bound;
    const auto plain = std::make_shared<Tests::TestService>(environ.Record("type", "Display"));
    plain->Init(init);
    EXPECT_EQ(InstanceOf(plain)->Params().get(), &bound);
}

TEST_F(ControlInstanceDomainTest, AnswersForTheAssembliesOfTheJobDomain) {
    service->AddAssembly("b");
    service->AddAssembly("a");
    EXPECT_TRUE(instance->HasRegisterAssemblyGroup());
    EXPECT_TRUE(instance->HasRegisterAssembly("a"));
    EXPECT_FALSE(instance->HasRegisterAssembly("c"));
    EXPECT_EQ(instance->RegisterAssemblyList(), (Calls{"a", "b"}));
    EXPECT_EQ(instance->RegisterAssembly("a"), service->group->RegisterAssembly("a"));
    EXPECT_TRUE(instance->HasRegisterAssemblyCommandTarget());
    EXPECT_EQ(&instance->RegisterAssemblyCommandTarget("a"), &service->group->CommandTarget("a"));
    EXPECT_FAILURE(instance->RegisterAssemblyCommandTarget("c"), yERROR_NOT_FOUND,
                   "No register assembly with identifier c was found");
}

TEST_F(ControlInstanceDomainTest, AGroupOfTheJobDomainCountsEvenWhenItIsEmpty) {
    VorControl::ControlProtocol::ProtocolRegisterAssemblyGroup bound;
    bound.Add(std::make_shared<Tests::TestAssembly>(true));
    class Both : public Tests::DomainService {
    public:
        using DomainService::DomainService;
        using DomainService::Init;
    };
    const auto both = std::make_shared<Both>(environ.Record("type", "Display"));
    ProtocolInitParams init;
    init.registerAssemblyGroup = &bound;
    both->Init(init);
    const auto other = InstanceOf(both);
    EXPECT_TRUE(other->HasRegisterAssemblyGroup());
    EXPECT_FALSE(other->HasRegisterAssembly("assembly"));
    EXPECT_TRUE(other->RegisterAssemblyList().empty());

    both->domains.clear();
    EXPECT_TRUE(other->HasRegisterAssemblyGroup());
    EXPECT_TRUE(other->HasRegisterAssembly("assembly"));
    EXPECT_EQ(other->RegisterAssemblyList(), Calls{"assembly"});
    EXPECT_EQ(other->RegisterAssembly("assembly"), bound.RegisterAssembly("assembly"));
    EXPECT_EQ(&other->RegisterAssemblyCommandTarget("assembly"), &bound.CommandTarget("assembly"));
}

TEST_F(ControlInstanceDomainTest, LocksTheAssemblyThatTheServiceHasWithoutADomain) {
    service->AddAssembly("a");
    EXPECT_TEXTLESS_FAILURE(instance->RegisterAssemblyBeginLock("a"), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(instance->RegisterAssemblyEndLock("a"), yERROR_NOT_FOUND);
}

TEST_F(ControlInstanceDomainTest, AnUpdateOfParametersIsBracketedInsideTheGate) {
    std::vector<std::tuple<std::string, bool, int>> raised;
    instance->AddParamsUpdatedEventHandler([&](const std::string& id, bool persist) {
        raised.emplace_back(id, persist, GateDepth());
        EXPECT_EQ(service->calls.back(), "EndUpdateParams job 2");
    });
    service->actions["BeginUpdateParams job 2"] = [&] { EXPECT_EQ(GateDepth(), 1); };
    service->actions["EndUpdateParams job 2"] = [&] { EXPECT_EQ(GateDepth(), 1); };
    EXPECT_EQ(instance->BeginUpdateParameters(), service->params);
    EXPECT_EQ(GateDepth(), 1);
    instance->EndUpdateParameters();
    EXPECT_EQ(GateDepth(), 0);
    EXPECT_EQ(service->calls, (Calls{"BeginUpdateParams job 2", "EndUpdateParams job 2"}));
    EXPECT_EQ(raised, (std::vector<std::tuple<std::string, bool, int>>{{"type", true, 1}}));
}

TEST_F(ControlInstanceDomainTest, AServiceThatGivesNothingToChangeHasItsParametersChanged) {
    service->refusesUpdates = true;
    EXPECT_EQ(instance->BeginUpdateParameters(), service->params);
    instance->EndUpdateParameters();
    EXPECT_EQ(service->calls, (Calls{"BeginUpdateParams job 2", "EndUpdateParams job 2"}));
}

TEST_F(ControlInstanceDomainTest, WithoutAVersionTheServiceIsNotAsked) {
    service->paramsVersion = nullptr;
    EXPECT_EQ(instance->BeginUpdateParameters(), service->params);
    instance->EndUpdateParameters();
    EXPECT_TRUE(service->calls.empty());
    EXPECT_EQ(GateDepth(), 0);
}

TEST_F(ControlInstanceDomainTest, AnUpdateOfAnAssemblyIsBracketedInsideTheGate) {
    service->AddAssembly("a");
    Calls raised;
    instance->AddRegisterAssemblyUpdatedEventHandler([&](const std::string& id, const std::string& assembly) {
        raised.push_back(id + " " + assembly + " " + std::to_string(GateDepth()));
        EXPECT_EQ(service->Changes().back(), "EndUpdateRegisterAssembly job a 7");
    });
    EXPECT_EQ(instance->BeginUpdateRegisterAssembly("a"), service->group->RegisterAssembly("a"));
    EXPECT_EQ(GateDepth(), 1);
    instance->EndUpdateRegisterAssembly("a");
    EXPECT_EQ(GateDepth(), 0);
    EXPECT_EQ(service->Changes(), (Calls{"BeginUpdateRegisterAssembly job a 7", "EndUpdateRegisterAssembly job a 7"}));
    EXPECT_EQ(raised, Calls{"type a 1"});
}

TEST_F(ControlInstanceDomainTest, AnAssemblyWithoutAVersionGivesNothingToChange) {
    service->AddAssembly("a");
    service->assemblyVersion = nullptr;
    int raised = 0;
    instance->AddRegisterAssemblyUpdatedEventHandler([&](const std::string&, const std::string&) { ++raised; });
    EXPECT_EQ(instance->BeginUpdateRegisterAssembly("a"), nullptr);
    EXPECT_EQ(GateDepth(), 1);
    instance->EndUpdateRegisterAssembly("a");
    EXPECT_EQ(GateDepth(), 0);
    EXPECT_TRUE(service->Changes().empty());
    EXPECT_EQ(raised, 1);
}

TEST_F(ControlInstanceDomainTest, ABeginThatFailsLeavesTheGateItself) {
    service->actions["BeginUpdateParams job 2"] = [] { Vor::Throw(yERROR_BUSY); };
    service->actions["BeginUpdateOutputsMap job "] = [] { Vor::Throw(yERROR_BUSY); };
    service->actions["RegisterAssemblyVersion a"] = [] { throw std::runtime_error("no version"); };
    EXPECT_TEXTLESS_FAILURE(instance->BeginUpdateParameters(), yERROR_BUSY);
    EXPECT_TEXTLESS_FAILURE(instance->BeginUpdateOutputsMap(), yERROR_BUSY);
    EXPECT_THROW(instance->BeginUpdateRegisterAssembly("a"), std::runtime_error);
    EXPECT_EQ(GateDepth(), 0);
}

TEST_F(ControlInstanceDomainTest, AnEndThatFailsLeavesTheGateAndTellsNobody) {
    int raised = 0;
    instance->AddParamsUpdatedEventHandler([&](const std::string&, bool) { ++raised; });
    instance->AddOutputsUpdatedEventHandler([&](const std::string&, bool) { ++raised; });
    instance->AddRegisterAssemblyUpdatedEventHandler([&](const std::string&, const std::string&) { ++raised; });
    service->AddAssembly("a");
    service->actions["EndUpdateParams job 2"] = [] { Vor::Throw(yERROR_BUSY); };
    service->actions["EndUpdateOutputsMap job "] = [] { Vor::Throw(yERROR_BUSY); };
    service->actions["EndUpdateRegisterAssembly job a 7"] = [] { Vor::Throw(yERROR_BUSY); };
    instance->BeginUpdateParameters();
    EXPECT_TEXTLESS_FAILURE(instance->EndUpdateParameters(), yERROR_BUSY);
    instance->BeginUpdateOutputsMap();
    EXPECT_TEXTLESS_FAILURE(instance->EndUpdateOutputsMap(), yERROR_BUSY);
    instance->BeginUpdateRegisterAssembly("a");
    EXPECT_TEXTLESS_FAILURE(instance->EndUpdateRegisterAssembly("a"), yERROR_BUSY);
    EXPECT_EQ(GateDepth(), 0);
    EXPECT_EQ(raised, 0);
}

TEST_F(ControlInstanceDomainTest, GivesTheOutputMapOfTheJobDomainUnderItsLock) {
    EXPECT_TRUE(instance->HasProtocolOutput());
    EXPECT_TRUE(instance->HasOutputsCommandTarget());
    EXPECT_EQ(&instance->OutputsCommandTarget(), &service->outputs->CommandTarget());
    EXPECT_TEXTLESS_FAILURE(instance->OutputsMap(), yERROR_STATE);
    instance->OutputsMapBeginLock();
    EXPECT_EQ(&instance->OutputsMap(), &service->outputs->OutputMap());
    instance->OutputsMapEndLock();
    EXPECT_TEXTLESS_FAILURE(instance->OutputsMap(), yERROR_STATE);
}

TEST_F(ControlInstanceDomainTest, AnUpdateOfTheOutputMapIsBracketedInsideTheGate) {
    std::vector<std::tuple<std::string, bool, int>> raised;
    instance->AddOutputsUpdatedEventHandler([&](const std::string& id, bool persist) {
        raised.emplace_back(id, persist, GateDepth());
        EXPECT_EQ(service->Changes().back(), "EndUpdateOutputsMap job ");
    });
    EXPECT_EQ(instance->BeginUpdateOutputsMap(), service->outputs);
    EXPECT_EQ(GateDepth(), 1);
    instance->EndUpdateOutputsMap();
    EXPECT_EQ(GateDepth(), 0);
    EXPECT_EQ(service->Changes(), (Calls{"BeginUpdateOutputsMap job ", "EndUpdateOutputsMap job "}));
    EXPECT_EQ(raised, (std::vector<std::tuple<std::string, bool, int>>{{"type", true, 1}}));
}

TEST_F(ControlInstanceDomainTest, AnUpdatedOutputMapReachesTheServiceAndThenTheFilter) {
    service->actions["OutputsUpdate"] = [&] { EXPECT_TRUE(scanResults.calls->empty()); };
    instance->OutputsUpdate();
    EXPECT_EQ(service->Changes(), Calls{"OutputsUpdate"});
    EXPECT_EQ(*scanResults.calls, Calls{"map type"});
}

TEST_F(ControlInstanceDomainTest, AMapThatTheServiceKeepsWithoutADomainIsNotSeen) {
    class Plain : public Tests::TestService {
    public:
        using TestService::TestService;
        void OutputsUpdate() override { calls.emplace_back("OutputsUpdate"); }
    };
    const auto plain = std::make_shared<Plain>(environ.Record("type", "Display"));
    VorControl::ControlProtocol::StandardProtocolOutputMap map(4, 0, 100);
    ProtocolInitParams init;
    init.outputs = &map;
    init.outputsCommandTarget = &map.CommandTarget();
    plain->Init(init);
    const auto other = InstanceOf(plain);
    EXPECT_FALSE(other->HasProtocolOutput());
    EXPECT_FALSE(other->HasOutputsCommandTarget());
    EXPECT_TEXTLESS_FAILURE(other->OutputsMap(), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(other->OutputsCommandTarget(), yERROR_UNIMPLEMENTED);
    EXPECT_NO_THROW(other->OutputsMapBeginLock());
    EXPECT_NO_THROW(other->OutputsMapEndLock());
    EXPECT_TEXTLESS_FAILURE(other->OutputsUpdate(), yERROR_UNIMPLEMENTED);
    EXPECT_EQ(plain->calls, Calls{"OutputsUpdate"});
    EXPECT_TRUE(scanResults.calls->empty());
}

TEST_F(ControlInstanceDomainTest, GivesThePersistenceProviderOfTheService) {
    EXPECT_EQ(instance->PersistenceProvider(), service->provider);
    EXPECT_EQ(
        InstanceOf(std::make_shared<Tests::TestService>(environ.Record("type", "Display")))->PersistenceProvider(),
        nullptr);
}
