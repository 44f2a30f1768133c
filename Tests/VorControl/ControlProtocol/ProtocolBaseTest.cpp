#include "VorControl/ControlProtocol/ProtocolBase.h"

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/FakeDeviceManager.h"
#include "Tests/Support/RecordingScanResults.h"
#include "Tests/Support/TestService.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "yApi/yFault.h"
#include "yApi/yStatus.h"

#include <stdexcept>
#include <string>
#include <thread>
#include <typeinfo>
#include <utility>

#include <gtest/gtest.h>

using VorCommon::PersistDomain;
using namespace VorControl::ControlProtocol;

namespace {

/// The smallest service: all other operations are those of the base class.
class PlainService : public ProtocolBase {
public:
    explicit PlainService(const ControlProtocolEnviron& environ)
        : ProtocolBase(environ) {}

    void Start() override {}
    void Stop() override {}

    using ProtocolBase::Id;
    using ProtocolBase::Init;
    using ProtocolBase::IsRunning;
    using ProtocolBase::LastDropCount;
    using ProtocolBase::ScannerIsOptional;
    using ProtocolBase::ScanningStopped;
    using ProtocolBase::SetForwardScanResultsToProtocol;
    using ProtocolBase::SetIsRunning;
};

class Metrics : public Vor::Properties::Structure {
public:
    Metrics()
        : Structure(true) {
        Register("dropCount", dropCount);
    }

    Vor::Properties::Value<long long> dropCount{0};
};

class OtherProperties : public NonPersistentProperties {
public:
    OtherProperties() { Register("address", address); }

    Vor::Params::Value<std::string> address;
};

class ProtocolBaseTest : public testing::Test {
protected:
    ~ProtocolBaseTest() override { yFault_Clear(); }

    template <typename Call>
    static yStatus TextlessStatus(const Call& call) {
        try {
            call();
        } catch (const Vor::Exception& e) {
            EXPECT_FALSE(e.HasText());
            return e.Status();
        }
        return yOK;
    }

    Vor::LogCapture log;
    Tests::ControlEnviron application;
    Tests::RecordingScanResults scanResults;
    Tests::FakeHost fakes{application, scanResults};
    VorControl::ControlHost& host = fakes.host;
    ControlProtocolEnviron environ{"type", "Display", &host};
    PlainService service{environ};
};

TEST_F(ProtocolBaseTest, CopiesTheNamesOfTheEnviron) {
    environ.typeName = "other";
    environ.displayName = "Other";
    EXPECT_EQ(service.Id(), "type");
    EXPECT_EQ(service.DisplayName(), "Display");
    EXPECT_EQ(&service.GetControlHost(), &host);
    EXPECT_EQ(&static_cast<const PlainService&>(service).GetControlHost(), &host);
}

TEST_F(ProtocolBaseTest, AnEnvironHasTheMarkerTexts) {
    const ControlProtocolEnviron fresh;
    EXPECT_EQ(fresh.typeName, "Lu-Lu-Lu!@#$%");
    EXPECT_EQ(fresh.displayName, "Dun-Dun!@#$%");
}

TEST_F(ProtocolBaseTest, AHostOfAnotherClassIsABadCast) {
    using System = VorControl::IControlSystemInterface;
    using Engine = VorControl::IControlScanEngineInterface;
    class OtherHost : public VorControl::IControlHost {
    public:
        void StartScan(const std::string& /*id*/) override {}
        void StopScan(const std::string& /*id*/) override {}
        void StartAlignment(const std::string& /*id*/, const char* /*scannerId*/) override {}
        void ClearAlignment(const std::string& /*id*/, const char* /*scannerId*/) override {}
        void LoadJob(const std::string& /*id*/, const char* /*job*/) override {}
        void SoftwareTrigger(const std::string& /*id*/, const char* /*scannerId*/) override {}
        void FactoryRestore(const std::string& /*id*/) override {}
        void Restart(const std::string& /*id*/) override {}
        void SetNextIpConfig(const std::string& /*id*/, const yIpConfig& /*config*/, bool /*flag*/) override {}
        void BlinkLed(const std::string& /*id*/, bool /*system*/, bool /*blink*/, bool /*on*/) override {}
        System::SystemStats SystemStats(unsigned long long /*timeout*/) override { return {}; }
        Engine::ScannerStateInfo ScannerInfo(const std::string& /*scannerId*/,
                                             unsigned long long /*timeout*/) override {
            return {};
        }
        VorCommon::IPlatformAttributes& PlatformAttributes() override { throw std::logic_error("not asked"); }
        VorCommon::IRuntimeCache::ServiceState ProfinetServiceRunningState() const override { return {}; }
        void SetProfinetServiceRunningState(VorCommon::IRuntimeCache::ServiceState /*state*/) override {}
        void SetForwardScanResultsToService(const std::string& /*id*/, bool /*enable*/) override {}
        void UpdateScanResultsOutputMap(const std::string& /*id*/, const std::vector<std::string>& /*ids*/) override {}
        void SetScanResultsFiltering(const std::string& /*id*/, bool /*enable*/) override {}
        void AddDataSourceEventHandler(const std::string& /*id*/, const DataSourceEventFunction& /*function*/,
                                       unsigned long long /*timeout*/) override {}
        void RemoveDataSourceEventHandler(const std::string& /*id*/, unsigned long long /*timeout*/) override {}
        void DataSourceProperties(const std::string& /*name*/, System::ControlDataSourceProperties& /*out*/,
                                  unsigned long long /*timeout*/) override {}
        void* LiveJob(unsigned long long /*timeout*/) override { return nullptr; }
        VorCommon::ProblemsManager* ProblemsManager() override { return nullptr; }
        void ReadResource(const std::string& /*path*/, std::string& /*out*/, unsigned long long /*timeout*/) override {}
        Engine& ScanEngineInterface() override { throw std::logic_error("not asked"); }
        VorControl::IControlDeviceOperations& DeviceOperations() override { throw std::logic_error("not asked"); }
        std::uint32_t LocalNodeId() override { return 0; }
        std::uint16_t ControlChannelPort() override { return 0; }
        std::uint16_t VdpPort() override { return 0; }
        void* PipeAllocator() override { return nullptr; }
        long long LocalNodeDateTime(unsigned long long /*timeout*/) override { return 0; }
        void SetLocalNodeDateTime(const std::string& /*id*/, long long /*dateTime*/) override {}
        std::string LocalNodeNtpHost(unsigned long long /*timeout*/) override { return {}; }
        void SetLocalNodeNtpHost(const std::string& /*id*/, const std::string& /*host*/, bool /*flag*/) override {}
        bool LocalNodeSyncTime(const std::string& /*host*/, unsigned long long /*timeout*/) override { return false; }
    };
    OtherHost other;
    environ.controlHost = &other;
    EXPECT_THROW(PlainService{environ}, std::bad_cast);
}

TEST_F(ProtocolBaseTest, ALockThatCantBeMadeIsThrown) {
    yFault_SetHere("yLock_Construct", -31);
    EXPECT_EQ(TextlessStatus([&] { PlainService{environ}; }), -31);
}

TEST_F(ProtocolBaseTest, OperationEndsThatCantBeStoppedAreLoggedAndGoNoFurther) {
    {
        const PlainService going(environ);
        log.Clear();
        yFault_SetHere("yLock_Enter", -34);
    }
    const auto records = log.Records();
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0].level, Vor::LevelError);
    EXPECT_EQ(records[0].text, "EXCEPTION THROWN: ");
    EXPECT_NE(records[1].text.find("-34"), std::string::npos);
    EXPECT_NE(records[2].text.find("Back trace"), std::string::npos);
}

TEST_F(ProtocolBaseTest, StoppingOperationEndsThrowsNothing) {
    class Stopping : public PlainService {
    public:
        using PlainService::PlainService;
        using ProtocolBase::StopOperationEndEvents;
    };
    static_assert(noexcept(std::declval<Stopping&>().StopOperationEndEvents()));
    Stopping stopping(environ);
    yFault_SetHere("yLock_Enter", -34);
    stopping.StopOperationEndEvents();
    EXPECT_EQ(log.Count(Vor::LevelError, "EXCEPTION THROWN: "), 1U);
}

TEST_F(ProtocolBaseTest, HasNoCommandsOfItsOwn) {
    EXPECT_EQ(service.CommandTarget(), nullptr);
}

TEST_F(ProtocolBaseTest, AScannerIsOptionalOnFourKindsOfPlatform) {
    using VorCommon::PlatformKind;
    const std::pair<PlatformKind, bool> expected[] = {
        {PlatformKind::None, false},          {PlatformKind::PhysicalSensor, false},
        {PlatformKind::PhysicalVorbox, true}, {PlatformKind::VirtualSensor, false},
        {PlatformKind::VirtualVorbox, true},  {PlatformKind::VorsuiteServiceApp, true},
        {PlatformKind::VorsuiteDaemon, true}};
    for (const auto& [kind, optional] : expected) {
        application.platform.SetKind(kind);
        const PlainService made(environ);
        EXPECT_EQ(made.ScannerIsOptional(), optional) << static_cast<int>(kind);
    }
}

TEST_F(ProtocolBaseTest, StartsStoppedWithoutAnything) {
    EXPECT_EQ(service.GetProtocolStatus(), ProtocolStatus::Stopped);
    EXPECT_EQ(service.CompletedOperationStatus(), 0);
    EXPECT_FALSE(service.IsRunning());
    EXPECT_TRUE(service.ScanningStopped());
    EXPECT_STREQ(service.ParamsVersion(), "1");
    service.SetIsRunning(true);
    EXPECT_TRUE(service.IsRunning());
}

TEST_F(ProtocolBaseTest, DefaultsThatDoNothing) {
    service.ParamsUpdate();
    service.ParamsReset();
    service.BeginUpdateParams("1");
    service.EndUpdateParams();
    service.ProcessResultSets(nullptr);
    service.OnFactoryRestore();
    service.OnPersistDomainLoaded(PersistDomain::Job);
    service.ResetMetrics();
    EXPECT_TRUE(scanResults.calls->empty());
    EXPECT_EQ(service.GetProtocolStatus(), ProtocolStatus::Stopped);
}

TEST_F(ProtocolBaseTest, DefaultsThatAreNotImplemented) {
    EXPECT_EQ(TextlessStatus([&] { service.RegisterAssemblyUpdate("a"); }), yERROR_UNIMPLEMENTED);
    EXPECT_EQ(TextlessStatus([&] { service.ConfigureDefaultRegisterAssembly(); }), yERROR_UNIMPLEMENTED);
    EXPECT_EQ(TextlessStatus([&] { service.WorkspacePersistData(); }), yERROR_UNIMPLEMENTED);
}

TEST_F(ProtocolBaseTest, WhatIsntBoundIsNotFound) {
    EXPECT_EQ(TextlessStatus([&] { service.Params(); }), yERROR_NOT_FOUND);
    EXPECT_EQ(TextlessStatus([&] { service.RegisterAssembly("a"); }), yERROR_NOT_FOUND);
    EXPECT_EQ(TextlessStatus([&] { service.RegisterAssemblyList(); }), yERROR_NOT_FOUND);
    EXPECT_EQ(TextlessStatus([&] { service.RegisterAssemblyCommandTarget("a"); }), yERROR_NOT_FOUND);
    EXPECT_FALSE(service.HasRegisterAssemblyGroup());
    EXPECT_FALSE(service.HasRegisterAssemblyCommandTarget());
    EXPECT_FALSE(service.HasRegisterAssembly("a"));
    EXPECT_EQ(TextlessStatus([&] { service.DeviceManager(); }), yERROR_NOT_FOUND);
    EXPECT_FALSE(service.HasDeviceManager());
    EXPECT_TRUE(service.DataSourceList().empty());
}

TEST_F(ProtocolBaseTest, PropertiesNeedTheirLockHeld) {
    EXPECT_EQ(TextlessStatus([&] { service.Properties(); }), yERROR_STATE);
    service.NonPersistentPropertiesBeginLock();
    EXPECT_NE(dynamic_cast<NonPersistentProperties*>(&service.Properties()), nullptr);
    service.NonPersistentPropertiesEndLock();
    EXPECT_EQ(TextlessStatus([&] { service.Properties(); }), yERROR_STATE);
}

TEST_F(ProtocolBaseTest, AFailingPropertiesLockThrowsItsStatus) {
    yFault_SetHere("yLock_Enter", -32);
    EXPECT_EQ(TextlessStatus([&] { service.NonPersistentPropertiesBeginLock(); }), -32);
    EXPECT_EQ(TextlessStatus([&] { service.Properties(); }), yERROR_STATE);
    service.NonPersistentPropertiesBeginLock();
    yFault_SetHere("yLock_Exit", -33);
    EXPECT_EQ(TextlessStatus([&] { service.NonPersistentPropertiesEndLock(); }), -33);
    EXPECT_EQ(TextlessStatus([&] { service.Properties(); }), yERROR_STATE);
}

TEST_F(ProtocolBaseTest, ThePropertiesLockKeepsOtherThreadsOut) {
    service.NonPersistentPropertiesBeginLock();
    bool released = false;
    bool sawRelease = false;
    std::thread other([&] {
        service.NonPersistentPropertiesBeginLock();
        sawRelease = released;
        service.NonPersistentPropertiesEndLock();
    });
    released = true;
    service.NonPersistentPropertiesEndLock();
    other.join();
    EXPECT_TRUE(sawRelease);
}

TEST_F(ProtocolBaseTest, AnInnerEndOfTheLockClosesTheOuterBracketToo) {
    service.NonPersistentPropertiesBeginLock();
    service.NonPersistentPropertiesBeginLock();
    service.NonPersistentPropertiesEndLock();
    EXPECT_EQ(TextlessStatus([&] { service.Properties(); }), yERROR_STATE);
    service.NonPersistentPropertiesEndLock();
}

TEST_F(ProtocolBaseTest, InitTakesTheServicesOwnProperties) {
    OtherProperties properties;
    ProtocolInitParams init;
    init.nonPersistentProperties = &properties;
    service.Init(init);
    service.NonPersistentPropertiesBeginLock();
    EXPECT_EQ(&service.Properties(), &properties);
    service.NonPersistentPropertiesEndLock();
    properties.Status() = ProtocolStatus::Starting;
    EXPECT_EQ(service.GetProtocolStatus(), ProtocolStatus::Starting);
}

TEST_F(ProtocolBaseTest, InitWithoutPropertiesKeepsThemAndTakesTheNullsOfTheRest) {
    Vor::Params::Group params;
    ProtocolRegisterAssemblyGroup assemblies;
    Metrics metrics;
    service.Init({.params = &params, .metrics = &metrics, .registerAssemblyGroup = &assemblies});
    EXPECT_EQ(&service.Params(), &params);
    EXPECT_EQ(&service.GetMetrics(), &metrics);
    EXPECT_TRUE(service.RegisterAssemblyList().empty());
    service.Init({});
    EXPECT_EQ(service.GetProtocolStatus(), ProtocolStatus::Stopped);
    EXPECT_EQ(TextlessStatus([&] { service.Params(); }), yERROR_NOT_FOUND);
    EXPECT_NE(&service.GetMetrics(), &metrics);
    EXPECT_EQ(TextlessStatus([&] { service.RegisterAssemblyList(); }), yERROR_NOT_FOUND);
}

TEST_F(ProtocolBaseTest, WithoutBoundMetricsTheyAreEmptyAndNeedNoUpdate) {
    EXPECT_TRUE(service.GetMetrics().Members().empty());
    EXPECT_NO_THROW(service.UpdateMetrics());
}

TEST_F(ProtocolBaseTest, BoundMetricsDemandAnUpdateOfTheServicesOwn) {
    Metrics metrics;
    service.Init({.metrics = &metrics});
    try {
        service.UpdateMetrics();
        FAIL();
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), yERROR_UNIMPLEMENTED);
        EXPECT_STREQ(e.what(), "Display must implement UpdateMetrics() if it has bound in metrics into the control "
                               "framework");
    }
}

TEST_F(ProtocolBaseTest, MetricsWithoutADropCountOfTheRightTypeAreRefused) {
    const std::string refusal = "The metrics of Display have no 'dropCount' of the type Value<long long>";
    Vor::Properties::Structure none(true);
    EXPECT_FAILURE(service.Init({.metrics = &none}), yERROR_PARAMETER, refusal);
    Vor::Properties::Structure unsignedCount(true);
    Vor::Properties::Value<unsigned long long> count{0};
    unsignedCount.Register("dropCount", count);
    EXPECT_FAILURE(service.Init({.metrics = &unsignedCount}), yERROR_PARAMETER, refusal);
    Vor::Properties::Structure nested(true);
    Vor::Properties::Structure inner(true);
    nested.Register("dropCount", inner);
    EXPECT_FAILURE(service.Init({.metrics = &nested}), yERROR_PARAMETER, refusal);
    EXPECT_NO_THROW(service.OnPreStartScan());
}

TEST_F(ProtocolBaseTest, TheStartOfAScanTakesTheDropCountAsTheNewBase) {
    Metrics metrics;
    metrics.dropCount = 41;
    service.OnPreStartScan();
    EXPECT_EQ(service.LastDropCount(), 0U);
    service.Init({.metrics = &metrics});
    service.OnPreStartScan();
    EXPECT_EQ(service.LastDropCount(), 41U);
    metrics.dropCount = 50;
    service.OnPostStopScan();
    EXPECT_EQ(service.LastDropCount(), 41U);
}

TEST_F(ProtocolBaseTest, ScanStateIsSetBeforeTheHook) {
    Tests::TestService noting(environ);
    std::vector<bool> stopped;
    noting.onScanState = [&] { stopped.push_back(noting.ScanningStopped()); };
    noting.OnPreStartScan();
    noting.OnPostStopScan();
    EXPECT_EQ(noting.calls, (std::vector<std::string>{"scan started", "scan stopped"}));
    EXPECT_EQ(stopped, (std::vector<bool>{false, true}));
}

TEST_F(ProtocolBaseTest, ABoundButEmptyGroupCountsAsNoneButIsAsked) {
    ProtocolRegisterAssemblyGroup assemblies;
    service.Init({.registerAssemblyGroup = &assemblies});
    EXPECT_FALSE(service.HasRegisterAssemblyGroup());
    EXPECT_FALSE(service.HasRegisterAssemblyCommandTarget());
    EXPECT_EQ(TextlessStatus([&] { service.RegisterAssemblyCommandTarget("a"); }), yERROR_NOT_FOUND);
    EXPECT_TRUE(service.RegisterAssemblyList().empty());
    EXPECT_TRUE(service.DataSourceList().empty());
    try {
        service.RegisterAssembly("a");
        FAIL();
    } catch (const Vor::Exception& e) {
        EXPECT_STREQ(e.what(), "No register assembly has been added to the register assembly group");
    }
}

TEST_F(ProtocolBaseTest, GivesTheAssembliesOfItsGroup) {
    ProtocolRegisterAssemblyGroup assemblies;
    const auto assembly = std::make_shared<ProtocolRegisterAssemblyBase>(true, 0, 9, "a", "A");
    assemblies.Add(assembly);
    service.Init({.registerAssemblyGroup = &assemblies});
    EXPECT_TRUE(service.HasRegisterAssemblyGroup());
    EXPECT_TRUE(service.HasRegisterAssembly("a"));
    EXPECT_FALSE(service.HasRegisterAssembly("b"));
    EXPECT_FALSE(service.HasRegisterAssembly(nullptr));
    EXPECT_EQ(service.RegisterAssembly("a"), assembly);
    EXPECT_TRUE(service.HasRegisterAssemblyCommandTarget());
    EXPECT_EQ(&service.RegisterAssemblyCommandTarget("a"), &assembly->CommandTarget());
    EXPECT_EQ(service.RegisterAssemblyList(), std::vector<std::string>{"a"});
}

TEST_F(ProtocolBaseTest, TheDataSourcesAreThoseOfItsGroup) {
    class Group : public ProtocolRegisterAssemblyGroup {
    public:
        std::vector<std::string> DataSourceList() const override { return {"profile/max", "profile/min"}; }
    };
    Group assemblies;
    service.Init({.registerAssemblyGroup = &assemblies});
    EXPECT_EQ(service.DataSourceList(), (std::vector<std::string>{"profile/max", "profile/min"}));
}

TEST_F(ProtocolBaseTest, TheDataSourcesOfItsDevicesCountWithoutAGroup) {
    Tests::FakeDeviceManager devices;
    devices.sources = {"profile/mean"};
    service.Init({.deviceManager = &devices});
    EXPECT_TRUE(service.HasDeviceManager());
    EXPECT_EQ(&service.DeviceManager(), &devices);
    EXPECT_EQ(service.DataSourceList(), std::vector<std::string>{"profile/mean"});
    EXPECT_EQ(static_cast<IProtocol&>(service).DataSourceList(PersistDomain::Job),
              std::vector<std::string>{"profile/mean"});
    ProtocolRegisterAssemblyGroup assemblies;
    service.Init({.registerAssemblyGroup = &assemblies, .deviceManager = &devices});
    EXPECT_TRUE(service.DataSourceList().empty());
}

TEST_F(ProtocolBaseTest, ASecondResultHandlerIsntAdded) {
    service.AddControlScanResultsHandler();
    service.AddControlScanResultsHandler();
    EXPECT_EQ(*scanResults.calls, std::vector<std::string>{"add type"});
    service.RemoveControlScanResultsHandler();
    service.RemoveControlScanResultsHandler();
    EXPECT_EQ(*scanResults.calls, (std::vector<std::string>{"add type", "remove type"}));
    service.AddControlScanResultsHandler();
    EXPECT_EQ(scanResults.event.Count(), 1U);
    service.RemoveControlScanResultsHandler();
}

TEST_F(ProtocolBaseTest, ResultSetsReachTheOverride) {
    Tests::TestService noting(environ);
    void* received = nullptr;
    noting.onResultSets = [&](void* sets) { received = sets; };
    noting.AddControlScanResultsHandler();
    int batch = 0;
    scanResults.event.Raise(&batch);
    EXPECT_EQ(received, &batch);
    noting.RemoveControlScanResultsHandler();
}

TEST_F(ProtocolBaseTest, ForwardingIsSetUnderItsOwnId) {
    service.SetForwardScanResultsToProtocol(true);
    service.SetForwardScanResultsToProtocol(false);
    EXPECT_EQ(*scanResults.calls, (std::vector<std::string>{"forward type on", "forward type off"}));
}

TEST_F(ProtocolBaseTest, EventsReachTheirHandlersUntilTheyAreRemoved) {
    std::vector<std::string> raised;
    auto params = service.AddParamsInternalUpdateEventHandler(
        [&](bool persist) { raised.emplace_back(persist ? "params 1" : "params 0"); });
    auto outputs = service.AddOutputsInternalUpdateEventHandler(
        [&](bool persist) { raised.emplace_back(persist ? "outputs 1" : "outputs 0"); });
    service.NotifyParamsInternalUpdateEventHandler(true);
    service.NotifyOutputsInternalUpdateEventHandler(false);
    EXPECT_EQ(raised, (std::vector<std::string>{"params 1", "outputs 0"}));
    service.RemoveParamsInternalUpdateEventHandler(params);
    service.RemoveOutputsInternalUpdateEventHandler(outputs);
    EXPECT_FALSE(params.IsSet());
    EXPECT_FALSE(outputs.IsSet());
    service.RemoveParamsInternalUpdateEventHandler(params);
    service.RemoveOutputsInternalUpdateEventHandler(outputs);
    service.NotifyParamsInternalUpdateEventHandler(true);
    service.NotifyOutputsInternalUpdateEventHandler(false);
    EXPECT_EQ(raised.size(), 2U);
}

TEST_F(ProtocolBaseTest, AServiceCanReportEveryDomainButTheJob) {
    std::vector<PersistDomain> changed;
    auto callback =
        service.AddPersistenceDomainChangeEventHandler([&](PersistDomain domain) { changed.push_back(domain); });
    service.NotifyPersistenceDomainChangeEventHandler(PersistDomain::Job);
    EXPECT_TRUE(changed.empty());
    EXPECT_EQ(
        log.Count(Vor::LevelError, "Changing JOB domain from within control service Display is currently not allowed"),
        1U);
    service.NotifyPersistenceDomainChangeEventHandler(PersistDomain::Workspace);
    EXPECT_EQ(changed, std::vector<PersistDomain>{PersistDomain::Workspace});
    service.RemovePersistenceDomainChangeEventHandler(callback);
    EXPECT_FALSE(callback.IsSet());
    service.NotifyPersistenceDomainChangeEventHandler(PersistDomain::Workspace);
    EXPECT_EQ(changed.size(), 1U);
}

TEST_F(ProtocolBaseTest, OnlyTheJobDomainHasPersistOptions) {
    const auto job = PersistDomain::Job;
    EXPECT_EQ(static_cast<unsigned>(service.PersistOptions(job)), 23U);
    EXPECT_TRUE(service.HasPersistOption(job, ProtocolPersistOptions::Params));
    EXPECT_TRUE(service.HasPersistOption(job, ProtocolPersistOptions::OutputsMap));
    EXPECT_TRUE(service.HasPersistOption(job, ProtocolPersistOptions::RegisterAssemblies));
    EXPECT_FALSE(service.HasPersistOption(job, ProtocolPersistOptions::WorkspaceData));
    EXPECT_TRUE(service.HasPersistOption(job, ProtocolPersistOptions::DeviceManager));
    EXPECT_TRUE(service.HasPersistOption(job, ProtocolPersistOptions::All));
    EXPECT_FALSE(service.HasPersistOption(PersistDomain::Workspace, ProtocolPersistOptions::All));
    EXPECT_FALSE(service.HasPersistOption(static_cast<PersistDomain>(3), ProtocolPersistOptions::All));
}

} // namespace
