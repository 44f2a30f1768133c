#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/DomainService.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/FakeDeviceManager.h"
#include "Tests/Support/RecordingScanResults.h"
#include "Tests/Support/TestService.h"

#include <gtest/gtest.h>

using VorCommon::PersistDomain;
using VorControl::ControlProtocol::ProtocolInitParams;
using VorControl::ControlProtocol::StandardProtocolOutputMap;
using Calls = std::vector<std::string>;

namespace {

/// A service whose filter of scan results is recorded.
class ProtocolDomainTest : public testing::Test {
protected:
    VorControl::ControlProtocol::ControlProtocolEnviron Record() {
        auto record = environ.Record("type", "Display");
        record.controlHost = &fakes.host;
        return record;
    }

    Tests::HostEnviron environ;
    Tests::RecordingScanResults scanResults;
    Tests::FakeHost fakes{environ.application, scanResults};
};

constexpr PersistDomain Domains[] = {PersistDomain::Job, PersistDomain::Workspace};

} // namespace

// A service without objects for each domain.

TEST_F(ProtocolDomainTest, APlainServiceHasNoAnswerForAnyDomain) {
    Tests::TestService plain(Record());
    VorControl::ControlProtocol::IProtocol& service = plain;
    for (const PersistDomain domain : Domains) {
        EXPECT_TRUE(service.DataSourceList(domain).empty());
        EXPECT_EQ(service.Params(domain), nullptr);
        EXPECT_EQ(service.ParamsVersion(domain), nullptr);
        EXPECT_FALSE(service.SupportedParamsVersion(domain, "1"));
        EXPECT_FALSE(service.UpdateDynamicParams(domain));
        EXPECT_EQ(service.BeginUpdateParams(domain, "1"), nullptr);
        EXPECT_EQ(service.Outputs(domain), nullptr);
        EXPECT_EQ(service.BeginUpdateOutputsMap(domain, ""), nullptr);
        EXPECT_EQ(service.RegisterAssemblyGroup(domain), nullptr);
        EXPECT_EQ(service.RegisterAssemblyVersion(domain, "a"), nullptr);
        EXPECT_FALSE(service.SupportedRegisterAssemblyVersion(domain, "a", "1"));
        EXPECT_EQ(service.BeginUpdateRegisterAssembly(domain, "a", "1"), nullptr);
        service.ParamsReset(domain);
        service.EndUpdateParams(domain, "1");
    }
    EXPECT_EQ(service.PersistenceProvider(), nullptr);
    EXPECT_TRUE(plain.calls.empty());
    EXPECT_TRUE(scanResults.calls->empty());
}

TEST_F(ProtocolDomainTest, APlainServicesFilterFollowsTheJobDomainToo) {
    Tests::TestService plain(Record());
    VorControl::ControlProtocol::IProtocol& service = plain;
    service.OutputsMapReset(PersistDomain::Job);
    EXPECT_EQ(*scanResults.calls, Calls{"map type"});
}

// A service with objects in Init.

TEST_F(ProtocolDomainTest, TheBoundOutputMapIsGiven) {
    Tests::TestService service(Record());
    EXPECT_FALSE(service.HasProtocolOutput());
    EXPECT_FALSE(service.HasOutputsCommandTarget());
    EXPECT_TEXTLESS_FAILURE(service.Outputs(), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(service.OutputsCommandTarget(), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(service.OutputsUpdate(), yERROR_UNIMPLEMENTED);

    StandardProtocolOutputMap map(4, 0, 100);
    ProtocolInitParams init;
    init.outputs = &map;
    init.outputsCommandTarget = &map.CommandTarget();
    service.Init(init);
    EXPECT_TRUE(service.HasProtocolOutput());
    EXPECT_TRUE(service.HasOutputsCommandTarget());
    EXPECT_EQ(&service.Outputs(), &map);
    EXPECT_EQ(&service.OutputsCommandTarget(), &map.CommandTarget());
    EXPECT_TEXTLESS_FAILURE(service.OutputsUpdate(), yERROR_UNIMPLEMENTED);
}

TEST_F(ProtocolDomainTest, ABoundGroupDecidesOverTheOutputMapEvenWhenEmpty) {
    Tests::TestService service(Record());
    StandardProtocolOutputMap map(4, 0, 100);
    VorControl::ControlProtocol::StandardOutputItemArgs args;
    args.outputId = 3;
    args.source = "profile/max";
    map.Add(args);
    ProtocolInitParams init;
    init.outputs = &map;
    service.Init(init);
    Tests::FakeDeviceManager devices;
    devices.sources = {"profile/mean"};
    init.deviceManager = &devices;
    service.Init(init);
    EXPECT_EQ(service.DataSourceList(), Calls{"profile/max"});
    init.registerAssemblyGroup = &service.assemblies;
    service.Init(init);
    EXPECT_TRUE(service.DataSourceList().empty());
}

// A service with objects for a domain.

TEST_F(ProtocolDomainTest, TheDataSourcesOfADomainAreItsGroupsAndElseItsMaps) {
    Tests::DomainService service(Record());
    service.AddOutput(1, "profile/min");
    service.AddAssembly("a").AddEntries({{.type = "scan", .dataSource = "profile/max"}});
    EXPECT_EQ(service.DataSourceList(PersistDomain::Job), Calls{"profile/max"});
    EXPECT_TRUE(service.DataSourceList(PersistDomain::Workspace).empty());
    service.AssemblyOf("a").ResetRegisterAssembly();
    EXPECT_TRUE(service.DataSourceList(PersistDomain::Job).empty());
    service.group = nullptr;
    EXPECT_EQ(service.DataSourceList(PersistDomain::Job), Calls{"profile/min"});
}

TEST_F(ProtocolDomainTest, EachOperationReachesItsHook) {
    Tests::DomainService service(Record());
    service.AddAssembly("a");
    service.ParamsReset(PersistDomain::Workspace);
    EXPECT_FALSE(service.UpdateDynamicParams(PersistDomain::Workspace));
    EXPECT_EQ(service.BeginUpdateParams(PersistDomain::Workspace, "1"), service.params);
    service.EndUpdateParams(PersistDomain::Workspace, "1");
    service.OutputsMapReset(PersistDomain::Workspace);
    EXPECT_EQ(service.BeginUpdateOutputsMap(PersistDomain::Workspace, ""), service.outputs);
    service.EndUpdateOutputsMap(PersistDomain::Workspace, "");
    service.RegisterAssemblyGroupReset(PersistDomain::Workspace);
    EXPECT_EQ(service.BeginUpdateRegisterAssembly(PersistDomain::Workspace, "a", "2"),
              service.group->RegisterAssembly("a"));
    service.EndUpdateRegisterAssembly(PersistDomain::Workspace, "a", "2");
    EXPECT_EQ(service.calls,
              (Calls{"ParamsReset workspace", "UpdateDynamicParams workspace", "BeginUpdateParams workspace 1",
                     "EndUpdateParams workspace 1", "OutputsReset workspace", "BeginUpdateOutputsMap workspace ",
                     "EndUpdateOutputsMap workspace ", "AssembliesReset workspace",
                     "BeginUpdateRegisterAssembly workspace a 2", "EndUpdateRegisterAssembly workspace a 2"}));
    EXPECT_TRUE(scanResults.calls->empty()) << "only the job domain sets the filter";
}

TEST_F(ProtocolDomainTest, WhatChangesTheJobsSourcesSetsTheFilterAfterTheHook) {
    Tests::DomainService service(Record());
    service.AddAssembly("a");
    const auto noteFilter = [&](const std::string& call) {
        service.actions[call] = [&, call] { scanResults.calls->push_back(call); };
    };
    noteFilter("OutputsReset job");
    noteFilter("EndUpdateOutputsMap job ");
    noteFilter("AssembliesReset job");
    noteFilter("EndUpdateRegisterAssembly job a 2");
    const auto addSource = [&] { service.AssemblyOf("a").AddEntries({{.type = "scan", .dataSource = "profile/max"}}); };

    addSource();
    service.OutputsMapReset(PersistDomain::Job);
    service.EndUpdateOutputsMap(PersistDomain::Job, "");
    service.EndUpdateRegisterAssembly(PersistDomain::Job, "a", "2");
    service.RegisterAssemblyGroupReset(PersistDomain::Job);
    EXPECT_EQ(*scanResults.calls,
              (Calls{"OutputsReset job", "map type profile/max", "EndUpdateOutputsMap job ", "map type profile/max",
                     "EndUpdateRegisterAssembly job a 2", "map type profile/max", "AssembliesReset job", "map type"}));
    scanResults.calls->clear();
    service.ParamsReset(PersistDomain::Job);
    service.BeginUpdateParams(PersistDomain::Job, "1");
    service.EndUpdateParams(PersistDomain::Job, "1");
    service.BeginUpdateOutputsMap(PersistDomain::Job, "");
    service.BeginUpdateRegisterAssembly(PersistDomain::Job, "a", "2");
    EXPECT_TRUE(scanResults.calls->empty());
}

TEST_F(ProtocolDomainTest, AHookThatFailsSetsNoFilter) {
    Tests::DomainService service(Record());
    service.actions["AssembliesReset job"] = [] { Vor::Throw(yERROR_CONFLICT); };
    EXPECT_TEXTLESS_FAILURE(service.RegisterAssemblyGroupReset(PersistDomain::Job), yERROR_CONFLICT);
    EXPECT_TRUE(scanResults.calls->empty());
}

TEST_F(ProtocolDomainTest, AFilterThatFailsFailsTheOperation) {
    class FailingList : public Tests::DomainService {
    public:
        using DomainService::DataSourceList;
        using DomainService::DomainService;
        std::vector<std::string> DataSourceList(PersistDomain) override { Vor::Throw(yERROR_BUSY); }
    };
    FailingList service(Record());
    service.AddAssembly("a");
    EXPECT_TEXTLESS_FAILURE(service.OutputsMapReset(PersistDomain::Job), yERROR_BUSY);
    EXPECT_TEXTLESS_FAILURE(service.EndUpdateOutputsMap(PersistDomain::Job, ""), yERROR_BUSY);
    EXPECT_TEXTLESS_FAILURE(service.RegisterAssemblyGroupReset(PersistDomain::Job), yERROR_BUSY);
    EXPECT_TEXTLESS_FAILURE(service.EndUpdateRegisterAssembly(PersistDomain::Job, "a", "2"), yERROR_BUSY);
    EXPECT_NO_THROW(service.OutputsMapReset(PersistDomain::Workspace));
}
