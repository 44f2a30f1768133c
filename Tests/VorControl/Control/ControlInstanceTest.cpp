#include "VorControl/Control/ControlInstance.h"

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/RecordingScanResults.h"
#include "Tests/Support/TestService.h"
#include "Tests/VorControl/Control/InstanceParams.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/VorGetText.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "yApi/yStatus.h"

#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using Tests::TestService;
using VorCommon::PersistDomain;
using VorControl::ControlInstance;
using DataToReset = VorControl::IControlInstance::DataToReset;
using VorControl::ControlProtocol::ProtocolPersistOptions;
using VorControl::ControlProtocol::ProtocolRegisterAssemblyBase;
using VorControl::ControlProtocol::ProtocolStatus;
using Calls = std::vector<std::string>;

namespace {

/// An assembly "a" that needs given data sources.
class SourcedAssembly : public ProtocolRegisterAssemblyBase {
public:
    explicit SourcedAssembly(Calls sources)
        : ProtocolRegisterAssemblyBase(true, 0, 99, "a", "A")
        , sources(std::move(sources)) {}

    std::vector<std::string> DataSourceList() const override { return sources; }

private:
    Calls sources;
};

class ControlInstanceTest : public testing::Test {
protected:
    ControlInstanceTest() {
        info.SetTypeName("type").SetDisplayName("info's name");
        service = std::make_shared<TestService>(environ.Record("type", "Display"));
        VorControl::ControlInstanceParams params = Tests::InstanceParams(environ, scanResults, info, service);
        params.typeName = "type";
        params.displayName = "Display";
        instance = std::make_unique<ControlInstance>(params);
    }

    void AddAssembly(const std::string& id) {
        service->assemblies.Add(
            std::make_shared<ProtocolRegisterAssemblyBase>(true, 0, 99, id.c_str(), "Assembly " + id));
    }

    template <typename Call>
    static void ExpectUnimplemented(const Call& call) {
        try {
            call();
            FAIL();
        } catch (const Vor::Exception& e) {
            EXPECT_EQ(e.Status(), yERROR_UNIMPLEMENTED);
            EXPECT_FALSE(e.HasText());
        }
    }

    int GateDepth() const { return environ.application.gate.Depth(); }
    std::vector<VorCommon::ProblemsManager::Problem> Problems() const { return environ.application.problems.List(); }

    Vor::LogCapture log;
    Tests::HostEnviron environ;
    Tests::RecordingScanResults scanResults;
    VorControl::ControlInfo info;
    std::shared_ptr<TestService> service;
    std::unique_ptr<ControlInstance> instance;
};

TEST_F(ControlInstanceTest, StartsDisabledAndDoesntStartTheService) {
    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_FALSE(instance->ProtocolAutoEnableSetting());
    EXPECT_TRUE(service->calls.empty());
    EXPECT_EQ(&instance->Info(), &info);
    EXPECT_EQ(instance->TypeName(), "type");
    EXPECT_EQ(instance->Id(), "type");
    EXPECT_EQ(instance->DisplayName(), "Display");
}

TEST_F(ControlInstanceTest, EnableAddsTheResultHandlerThenStarts) {
    instance->Enable(true);
    EXPECT_EQ(service->calls, (Calls{"AddControlScanResultsHandler", "Start"}));
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_TRUE(Problems().empty());
}

TEST_F(ControlInstanceTest, DisableStopsThenRemovesTheResultHandler) {
    instance->Enable(true);
    service->calls.clear();
    instance->Enable(false);
    EXPECT_EQ(service->calls, (Calls{"Stop", "RemoveControlScanResultsHandler"}));
    EXPECT_FALSE(instance->IsEnabled());
}

TEST_F(ControlInstanceTest, ASecondEnableReachesTheServiceAgain) {
    instance->Enable(true);
    instance->Enable(true);
    EXPECT_EQ(service->calls,
              (Calls{"AddControlScanResultsHandler", "Start", "AddControlScanResultsHandler", "Start"}));
    service->calls.clear();
    instance->Enable(false);
    instance->Enable(false);
    EXPECT_EQ(service->calls,
              (Calls{"Stop", "RemoveControlScanResultsHandler", "Stop", "RemoveControlScanResultsHandler"}));
}

TEST_F(ControlInstanceTest, AFailedStartCountsAsEnabledWithOneProblemAndNoResultHandler) {
    service->onStart = [] { Vor::Throw(-5, "port %d taken", 502); };
    instance->Enable(true);
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_EQ(service->calls, (Calls{"AddControlScanResultsHandler", "Start", "RemoveControlScanResultsHandler"}));
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Protocol (type) failed to start (port 502 taken)."), 1U);
    ASSERT_EQ(Problems().size(), 1U);
    EXPECT_EQ(Problems()[0].severity, 1);
    EXPECT_EQ(Problems()[0].title, "Protocol");
    EXPECT_EQ(Problems()[0].text, "Could not start service: port 502 taken");
    EXPECT_EQ(Problems()[0].owner, instance->Id());
}

TEST_F(ControlInstanceTest, ARepeatedFailureReplacesTheProblemAndASuccessWithdrawsIt) {
    service->onStart = [] { Vor::Throw(-5, "first"); };
    instance->Enable(true);
    service->onStart = [] { Vor::Throw(-5, "second"); };
    instance->Enable(true);
    ASSERT_EQ(Problems().size(), 1U);
    EXPECT_EQ(Problems()[0].text, "Could not start service: second");
    service->onStart = {};
    instance->Enable(true);
    EXPECT_TRUE(Problems().empty());
}

TEST_F(ControlInstanceTest, ProblemTextsAreTranslated) {
    VorGetText::GetInstance().SetTranslations(
        "beApp.ctrl", {{"Protocol", "Dienst"}, {"Could not start service: %s", "Startet nicht: %s"}});
    service->onStart = [] { Vor::Throw(-5, "reason"); };
    instance->Enable(true);
    VorGetText::GetInstance().SetTranslations("beApp.ctrl", {});
    ASSERT_EQ(Problems().size(), 1U);
    EXPECT_EQ(Problems()[0].title, "Dienst");
    EXPECT_EQ(Problems()[0].text, "Startet nicht: reason");
}

TEST_F(ControlInstanceTest, APerCentSignInTheCauseSurvives) {
    service->onStart = [] { Vor::Throw(-5, "%s", "100% and %s"); };
    instance->Enable(true);
    EXPECT_TRUE(log.Contains("Protocol (type) failed to start (100% and %s)."));
    ASSERT_EQ(Problems().size(), 1U);
    EXPECT_EQ(Problems()[0].text, "Could not start service: 100% and %s");
}

TEST_F(ControlInstanceTest, AnotherStandardExceptionOfStartIsLoggedWithoutAProblem) {
    service->onStart = [] { throw std::runtime_error("no luck"); };
    instance->Enable(true);
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_EQ(service->calls.back(), "RemoveControlScanResultsHandler");
    EXPECT_TRUE(log.Contains(Vor::LevelWarning, "Protocol (type) failed to start (no luck)."));
    EXPECT_TRUE(Problems().empty());

    service->onStart = [] { Vor::Throw(-5, "then this"); };
    instance->Enable(true);
    EXPECT_EQ(Problems().size(), 1U);
}

TEST_F(ControlInstanceTest, AnythingElseOutOfStartIsAFailedStart) {
    service->onStart = [] { throw 5; };
    instance->Enable(true);
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_EQ(service->calls, (Calls{"AddControlScanResultsHandler", "Start", "RemoveControlScanResultsHandler"}));
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Protocol (type) failed to start (unknown exception)."), 1U);
    ASSERT_EQ(Problems().size(), 1U);
    EXPECT_EQ(Problems()[0].severity, 1);
    EXPECT_EQ(Problems()[0].title, "Protocol");
    EXPECT_EQ(Problems()[0].text, "Could not start service: unknown exception");
    instance->Enable(true);
    EXPECT_EQ(Problems().size(), 1U);
    service->onStart = {};
    instance->Enable(true);
    EXPECT_TRUE(Problems().empty());
}

TEST_F(ControlInstanceTest, AnythingElseOutOfStopIsAFailedStop) {
    instance->Enable(true);
    service->calls.clear();
    service->onStop = [] { throw 5; };
    instance->Enable(false);
    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_EQ(service->calls, (Calls{"Stop", "RemoveControlScanResultsHandler"}));
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Protocol (type) failed to stop (unknown exception)."), 1U);
    ASSERT_EQ(Problems().size(), 1U);
    EXPECT_EQ(Problems()[0].text, "unknown exception");
}

TEST_F(ControlInstanceTest, AnythingElseOutOfTheResultHandlerIsAFailureToo) {
    service->onAddHandler = [] { throw 5; };
    instance->Enable(true);
    EXPECT_TRUE(instance->IsEnabled());
    ASSERT_EQ(Problems().size(), 1U);
    EXPECT_EQ(Problems()[0].text, "Could not start service: unknown exception");
    service->onAddHandler = {};
    instance->Enable(true);
    EXPECT_TRUE(Problems().empty());

    service->onRemoveHandler = [] { throw 5; };
    instance->Enable(false);
    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_TRUE(log.Contains(Vor::LevelError, "EXCEPTION THROWN: "));
    EXPECT_FALSE(instance->LastEnableFailure());
    service->onRemoveHandler = {};
}

TEST_F(ControlInstanceTest, KeepsWhyItsLastStartOrStopFailed) {
    const auto failure = [this](bool on) {
        instance->Enable(on);
        const auto last = instance->LastEnableFailure();
        return last ? std::to_string(last->status) + " " + last->text : "none";
    };
    EXPECT_FALSE(instance->LastEnableFailure());
    service->onStart = [] { Vor::Throw(yERROR_CONFLICT, "port 502 is taken"); };
    EXPECT_EQ(failure(true), "-980 port 502 is taken");
    service->onStart = [] { throw std::runtime_error("no luck"); };
    EXPECT_EQ(failure(true), "0 no luck");
    service->onStart = [] { throw 5; };
    EXPECT_EQ(failure(true), "0 unknown exception");
    service->onStart = [] { Vor::Throw(-5); };
    EXPECT_EQ(failure(true), "-5 ");
    service->onStart = {};
    EXPECT_EQ(failure(true), "none");
    service->onStop = [] { Vor::Throw(-6, "stuck"); };
    EXPECT_EQ(failure(false), "-6 stuck");
    service->onStop = {};
    EXPECT_EQ(failure(false), "none");
}

TEST_F(ControlInstanceTest, EachEnableEndsWithAnEvent) {
    Calls states;
    auto handler = instance->AddEnabledEventHandler([&](const std::string& id) {
        states.push_back(id + (instance->IsEnabled() ? " on" : " off") +
                         (instance->LastEnableFailure() ? " failed" : ""));
    });
    instance->Enable(true);
    service->onStop = [] { Vor::Throw(-6, "stuck"); };
    instance->Enable(false);
    EXPECT_EQ(states, (Calls{"type on", "type off failed"}));
    instance->RemoveEnabledEventHandler(handler);
    instance->Enable(true);
    EXPECT_EQ(states.size(), 2U);
}

TEST_F(ControlInstanceTest, AFailedStopIsAProblemAndStillRemovesTheResultHandler) {
    instance->Enable(true);
    service->calls.clear();
    service->onStop = [] { Vor::Throw(-6, "stuck"); };
    instance->Enable(false);
    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_EQ(service->calls, (Calls{"Stop", "RemoveControlScanResultsHandler"}));
    EXPECT_TRUE(log.Contains(Vor::LevelWarning, "Protocol (type) failed to stop (stuck)."));
    ASSERT_EQ(Problems().size(), 1U);
    EXPECT_EQ(Problems()[0].severity, 1);
    EXPECT_EQ(Problems()[0].title, "Protocol");
    EXPECT_EQ(Problems()[0].text, "stuck");
}

TEST_F(ControlInstanceTest, AnotherStandardExceptionOfStopIsLoggedWithoutAProblem) {
    service->onStop = [] { throw std::runtime_error("no luck"); };
    instance->Enable(false);
    EXPECT_EQ(service->calls, (Calls{"Stop", "RemoveControlScanResultsHandler"}));
    EXPECT_TRUE(log.Contains(Vor::LevelWarning, "Protocol (type) failed to stop (no luck)."));
    EXPECT_TRUE(Problems().empty());
}

TEST_F(ControlInstanceTest, AFailureToAddTheResultHandlerIsAFailureToStart) {
    service->onAddHandler = [] { Vor::Throw(-7, "no handler"); };
    instance->Enable(true);
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_EQ(service->calls, (Calls{"AddControlScanResultsHandler", "RemoveControlScanResultsHandler"}));
    EXPECT_TRUE(log.Contains(Vor::LevelWarning, "Protocol (type) failed to start (no handler)."));
    EXPECT_TRUE(Problems().empty());
}

TEST_F(ControlInstanceTest, AFailureToRemoveTheResultHandlerNeverKeepsTheStateFromBeingRecorded) {
    instance->Enable(true);
    service->onRemoveHandler = [] { Vor::Throw(-7, "not removed"); };
    EXPECT_NO_THROW(instance->Enable(false));
    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_TRUE(log.Contains(Vor::LevelError, "EXCEPTION THROWN: "));

    service->onStart = [] { Vor::Throw(-5, "no"); };
    EXPECT_NO_THROW(instance->Enable(true));
    EXPECT_TRUE(instance->IsEnabled());
    EXPECT_TRUE(log.Contains(Vor::LevelWarning, "Protocol (type) failed to start (no)."));
    service->onRemoveHandler = {};
}

TEST_F(ControlInstanceTest, RunningMeansRunningStartingOrFailedToStop) {
    const std::pair<ProtocolStatus, bool> expected[] = {
        {ProtocolStatus::Running, true},        {ProtocolStatus::Stopped, false},
        {ProtocolStatus::Starting, true},       {ProtocolStatus::Stopping, false},
        {ProtocolStatus::FailedToStart, false}, {ProtocolStatus::FailedToStop, true}};
    for (const auto& [status, running] : expected) {
        service->UpdateProtocolStatus(status);
        EXPECT_EQ(instance->GetProtocolStatus(), status);
        EXPECT_EQ(instance->IsProtocolRunning(), running) << static_cast<int>(status);
    }
}

TEST_F(ControlInstanceTest, ResetsToTheDefaultStateWhichIsDisabled) {
    instance->Enable(true);
    instance->ResetProtocolToDefaultEnabledState();
    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_EQ(service->calls.back(), "RemoveControlScanResultsHandler");
}

TEST_F(ControlInstanceTest, ResetOfTheOutputsMapWithStateKeptDoesNothing) {
    AddAssembly("a");
    instance->ResetInstance(true, DataToReset::OutputsMap);
    EXPECT_TRUE(service->calls.empty());
}

TEST_F(ControlInstanceTest, ResetOfAllDisablesThenResetsParametersThenAssemblies) {
    AddAssembly("a");
    instance->Enable(true);
    service->calls.clear();
    instance->ResetInstance(false, DataToReset::All);
    EXPECT_FALSE(instance->IsEnabled());
    EXPECT_EQ(service->calls,
              (Calls{"Stop", "RemoveControlScanResultsHandler", "ParamsReset", "ConfigureDefaultRegisterAssembly"}));
}

TEST_F(ControlInstanceTest, ResetOfOnePartResetsThatPart) {
    AddAssembly("a");
    instance->ResetInstance(true, DataToReset::Params);
    EXPECT_EQ(service->calls, Calls{"ParamsReset"});
    service->calls.clear();
    instance->ResetInstance(true, DataToReset::RegisterAssemblies);
    EXPECT_EQ(service->calls, Calls{"ConfigureDefaultRegisterAssembly"});
    service->calls.clear();
    instance->ResetInstance(true, DataToReset::DeviceManager);
    EXPECT_TRUE(service->calls.empty());
}

TEST_F(ControlInstanceTest, ResetLeavesTheAssembliesOfAServiceWithoutAny) {
    instance->ResetInstance(true, DataToReset::All);
    EXPECT_EQ(service->calls, Calls{"ParamsReset"});
}

TEST_F(ControlInstanceTest, AnUpdateOfParametersHoldsTheGateAndRaisesTheEventInsideIt) {
    std::vector<std::tuple<std::string, bool, int>> raised;
    instance->AddParamsUpdatedEventHandler(
        [&](const std::string& id, bool persist) { raised.emplace_back(id, persist, GateDepth()); });
    const auto params = instance->BeginUpdateParameters();
    EXPECT_EQ(params.get(), &service->params);
    EXPECT_EQ(GateDepth(), 1);
    EXPECT_TRUE(raised.empty());
    instance->EndUpdateParameters();
    EXPECT_EQ(GateDepth(), 0);
    EXPECT_EQ(raised, (std::vector<std::tuple<std::string, bool, int>>{{"type", true, 1}}));
}

TEST_F(ControlInstanceTest, ABeginThatFailsLeavesTheGateItself) {
    service->Init({});
    try {
        instance->BeginUpdateParameters();
        FAIL();
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), yERROR_NOT_FOUND);
    }
    EXPECT_EQ(GateDepth(), 0);
}

TEST_F(ControlInstanceTest, AnEndWhoseHandlerThrowsLeavesTheGate) {
    instance->AddParamsUpdatedEventHandler([](const std::string&, bool) { throw std::runtime_error("handler"); });
    instance->BeginUpdateParameters();
    EXPECT_THROW(instance->EndUpdateParameters(), std::runtime_error);
    EXPECT_EQ(GateDepth(), 0);
    instance->AddRegisterAssemblyUpdatedEventHandler(
        [](const std::string&, const std::string&) { throw std::runtime_error("handler"); });
    instance->BeginUpdateRegisterAssembly();
    EXPECT_THROW(instance->EndUpdateRegisterAssembly("a"), std::runtime_error);
    EXPECT_EQ(GateDepth(), 0);
}

TEST_F(ControlInstanceTest, TheParametersHoldTheServiceAlive) {
    const auto params = instance->Params();
    const std::weak_ptr<TestService> watched = service;
    instance.reset();
    service.reset();
    EXPECT_FALSE(watched.expired());
}

TEST_F(ControlInstanceTest, AnUpdateOfAnAssemblyHoldsTheGateAndRaisesTheEventInsideIt) {
    std::vector<std::tuple<std::string, std::string, int>> raised;
    instance->AddRegisterAssemblyUpdatedEventHandler(
        [&](const std::string& id, const std::string& assembly) { raised.emplace_back(id, assembly, GateDepth()); });
    instance->BeginUpdateRegisterAssembly();
    EXPECT_EQ(GateDepth(), 1);
    instance->EndUpdateRegisterAssembly("registerAssembly-0");
    EXPECT_EQ(GateDepth(), 0);
    EXPECT_EQ(raised, (std::vector<std::tuple<std::string, std::string, int>>{{"type", "registerAssembly-0", 1}}));
}

TEST_F(ControlInstanceTest, ChangesFromInsideTheServiceCarryItsOwnFlag) {
    Calls raised;
    auto params = instance->AddParamsUpdatedEventHandler(
        [&](const std::string& id, bool persist) { raised.push_back("params " + id + (persist ? " 1" : " 0")); });
    auto outputs = instance->AddOutputsUpdatedEventHandler(
        [&](const std::string& id, bool persist) { raised.push_back("outputs " + id + (persist ? " 1" : " 0")); });
    auto domain = instance->AddPersistenceDomainChangeEventHandler(
        [&](PersistDomain value) { raised.push_back(VorCommon::PersistDomain_Name(value)); });
    service->NotifyParamsInternalUpdateEventHandler(false);
    service->NotifyParamsInternalUpdateEventHandler(true);
    service->NotifyOutputsInternalUpdateEventHandler(true);
    service->NotifyOutputsInternalUpdateEventHandler(false);
    service->NotifyPersistenceDomainChangeEventHandler(PersistDomain::Workspace);
    service->NotifyPersistenceDomainChangeEventHandler(PersistDomain::Job);
    EXPECT_EQ(raised, (Calls{"params type 0", "params type 1", "outputs type 1", "outputs type 0", "workspace"}));

    instance->RemoveParamsUpdatedEventHandler(params);
    instance->RemoveOutputsUpdatedEventHandler(outputs);
    instance->RemovePersistenceDomainChangeEventHandler(domain);
    EXPECT_FALSE(params.IsSet() || outputs.IsSet() || domain.IsSet());
    raised.clear();
    service->NotifyParamsInternalUpdateEventHandler(true);
    service->NotifyOutputsInternalUpdateEventHandler(true);
    service->NotifyPersistenceDomainChangeEventHandler(PersistDomain::Workspace);
    EXPECT_TRUE(raised.empty());
}

TEST_F(ControlInstanceTest, AnAssemblyHandlerCanBeRemoved) {
    int raised = 0;
    auto callback =
        instance->AddRegisterAssemblyUpdatedEventHandler([&](const std::string&, const std::string&) { ++raised; });
    instance->RemoveRegisterAssemblyUpdatedEventHandler(callback);
    instance->BeginUpdateRegisterAssembly();
    instance->EndUpdateRegisterAssembly("a");
    EXPECT_EQ(raised, 0);
}

TEST_F(ControlInstanceTest, AServiceWithoutAssembliesHasNoneToGive) {
    EXPECT_FALSE(instance->HasRegisterAssemblyGroup());
    EXPECT_FALSE(instance->HasRegisterAssembly("a"));
    ExpectUnimplemented([&] { instance->RegisterAssembly("a"); });
    ExpectUnimplemented([&] { instance->RegisterAssemblyList(); });
    EXPECT_FALSE(instance->HasRegisterAssemblyCommandTarget());
    ExpectUnimplemented([&] { instance->RegisterAssemblyCommandTarget("a"); });
    EXPECT_NO_THROW(instance->RegisterAssemblyBeginLock("a"));
    EXPECT_NO_THROW(instance->RegisterAssemblyEndLock("a"));
    instance->RegisterAssemblyUpdate("a");
    EXPECT_TRUE(service->calls.empty());
    EXPECT_TRUE(scanResults.calls->empty());
}

TEST_F(ControlInstanceTest, GivesTheServicesAssembliesAndLocksThem) {
    AddAssembly("b");
    AddAssembly("a");
    EXPECT_TRUE(instance->HasRegisterAssemblyGroup());
    EXPECT_TRUE(instance->HasRegisterAssembly("a"));
    EXPECT_FALSE(instance->HasRegisterAssembly("c"));
    EXPECT_EQ(instance->RegisterAssemblyList(), (Calls{"a", "b"}));
    const auto assembly = instance->RegisterAssembly("a");
    EXPECT_EQ(assembly, service->assemblies.RegisterAssembly("a"));
    EXPECT_TRUE(instance->HasRegisterAssemblyCommandTarget());
    EXPECT_EQ(&instance->RegisterAssemblyCommandTarget("a"), &assembly->CommandTarget());
    EXPECT_THROW(assembly->AddedRegisterBlocks(), Vor::Exception);
    instance->RegisterAssemblyBeginLock("a");
    EXPECT_TRUE(assembly->AddedRegisterBlocks().empty());
    instance->RegisterAssemblyEndLock("a");
    EXPECT_THROW(assembly->AddedRegisterBlocks(), Vor::Exception);
}

TEST_F(ControlInstanceTest, AnUpdatedAssemblyReachesTheServiceAndThenTheFilter) {
    service->assemblies.Add(std::make_shared<SourcedAssembly>(Calls{"profile/max", "profile/min"}));
    service->sharedCalls = scanResults.calls;
    instance->RegisterAssemblyUpdate("a");
    EXPECT_EQ(*scanResults.calls, (Calls{"type: RegisterAssemblyUpdate a", "map type profile/max profile/min"}));
}

TEST_F(ControlInstanceTest, PropertiesNeedTheirLock) {
    EXPECT_THROW(instance->Properties(), Vor::Exception);
    instance->NonPersistentPropertiesBeginLock();
    EXPECT_EQ(instance->Properties().Members().size(), 1U);
    instance->NonPersistentPropertiesEndLock();
    EXPECT_THROW(instance->Properties(), Vor::Exception);
}

TEST_F(ControlInstanceTest, ForwardsTheRestToTheService) {
    EXPECT_STREQ(instance->ParamsVersion(), "1");
    service->workspaceData = std::make_shared<nlohmann::json>();
    EXPECT_EQ(&instance->WorkspacePersistData(), service->workspaceData.get());
    EXPECT_TRUE(instance->HasPersistOption(PersistDomain::Job, ProtocolPersistOptions::Params));
    EXPECT_FALSE(instance->HasPersistOption(PersistDomain::Job, ProtocolPersistOptions::WorkspaceData));
    instance->ParamsUpdate();
    instance->OnPreStartScan();
    instance->OnPostStopScan();
    instance->OnFactoryRestore();
    instance->OnPersistDomainLoaded(PersistDomain::Workspace);
    EXPECT_EQ(service->calls, (Calls{"ParamsUpdate", "scan started", "scan stopped", "OnFactoryRestore",
                                     "OnPersistDomainLoaded workspace"}));
}

TEST_F(ControlInstanceTest, GivesTheCommandsOfTheService) {
    EXPECT_EQ(instance->CommandTarget(), nullptr);
    AddAssembly("a");
    service->commandTarget = &service->RegisterAssemblyCommandTarget("a");
    EXPECT_EQ(instance->CommandTarget(), service->commandTarget);
}

TEST_F(ControlInstanceTest, ItsEndRemovesTheHandlersWithoutStoppingTheService) {
    instance->Enable(true);
    int raised = 0;
    instance->AddParamsUpdatedEventHandler([&](const std::string&, bool) { ++raised; });
    service->calls.clear();
    instance.reset();
    EXPECT_EQ(service->calls, Calls{"RemoveControlScanResultsHandler"});
    service->NotifyParamsInternalUpdateEventHandler(true);
    service->NotifyOutputsInternalUpdateEventHandler(true);
    service->NotifyPersistenceDomainChangeEventHandler(PersistDomain::Workspace);
    EXPECT_EQ(raised, 0);
}

TEST_F(ControlInstanceTest, ItsEndLogsAFailureAndWithdrawsItsProblems) {
    service->onStart = [] { Vor::Throw(-5, "no"); };
    instance->Enable(true);
    ASSERT_EQ(Problems().size(), 1U);
    service->onRemoveHandler = [] { Vor::Throw(-7, "not removed"); };
    instance.reset();
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown in destructor"), 1U);
    EXPECT_TRUE(Problems().empty());
    service->onRemoveHandler = {};
}

} // namespace
