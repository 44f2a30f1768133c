#include "VorControl/Control/ControlManager.h"

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/FakeDeviceManager.h"
#include "Tests/Support/MemoryStore.h"
#include "Tests/Support/RecordingScanResults.h"
#include "Tests/Support/TestService.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/Control/ControlCreateException.h"
#include "VorControl/Control/ControlRegistry.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <exception>
#include <stdexcept>

#include <gtest/gtest.h>

using Tests::TestPlugin;
using Tests::TestService;
using VorCommon::PersistDomain;
using VorCommon::PlatformKind;
using namespace VorControl;
using Calls = std::vector<std::string>;
using LoadState = IControlManager::PersistenceLoadOpState;

namespace {

const std::string NoConfiguration = "{}";

std::string EnabledConfiguration() {
    return R"({"version":"1","vor:control":{"enabled":true,"parameters":{},"parametersVersion":"1"}})";
}

std::string PathOf(const std::string& type) {
    return "/controls/" + type + "/config.json";
}

class ControlManagerTest : public testing::Test {
protected:
    /// The services "a" and "b", built into a manager.
    void BuildTwo() {
        TestPlugin().Add("b", b, Sharing()).Add("a", a, Sharing()).Publish(plugins);
        Build();
    }

    void Build() {
        registry = std::make_unique<ControlRegistry>(plugins);
        manager = std::make_unique<ControlManager>(*registry, scanResults, environ.Record());
    }

    std::function<void(TestService&)> Sharing() {
        return [this](TestService& service) { service.sharedCalls = calls; };
    }

    std::shared_ptr<TestService> A() { return a.lock(); }
    std::shared_ptr<TestService> B() { return b.lock(); }

    /// Announcements so far, as domain numbers; each must be this manager's with flag 0.
    std::vector<int> NewAnnouncements() {
        std::vector<int> domains;
        for (const auto& announcement : environ.registrar.announcements) {
            EXPECT_EQ(announcement.handler, manager.get());
            EXPECT_EQ(announcement.flag, 0);
            domains.push_back(static_cast<int>(announcement.domain));
        }
        environ.registrar.announcements.clear();
        return domains;
    }

    void NoteLoadEvents() {
        manager->AddPersistenceLoadEventHandler(
            [this](LoadState state) { calls->push_back(state == LoadState::Begin ? "load begins" : "load ends"); });
    }

    Vor::LogCapture log;
    VorPlugin::PluginManager plugins;
    Tests::ControlEnviron environ;
    Tests::RecordingScanResults scanResults;
    Tests::MemoryStore store;
    std::shared_ptr<Calls> calls = std::make_shared<Calls>();
    std::weak_ptr<TestService> a;
    std::weak_ptr<TestService> b;
    std::unique_ptr<ControlRegistry> registry;
    std::unique_ptr<ControlManager> manager;
};

TEST_F(ControlManagerTest, AnEmptyCatalogueGivesNoServicesAndStillRaisesTheLoadEvents) {
    Build();
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Creating all control protocol instances."));
    EXPECT_TRUE(manager->List().empty());
    NoteLoadEvents();
    manager->LoadPersistDomain(PersistDomain::Job, store);
    EXPECT_EQ(*calls, (Calls{"load begins", "load ends"}));
    EXPECT_TRUE(NewAnnouncements().empty());
}

TEST_F(ControlManagerTest, CreatesOneServiceATypeInOrderOfName) {
    BuildTwo();
    EXPECT_EQ(manager->List(), (Calls{"a", "b"}));
    EXPECT_EQ(manager->GetInstance("a").Id(), "a");
    EXPECT_EQ(manager->GetInstance("b").DisplayName(), "b service");
    EXPECT_EQ(&manager->GetInstance("a").Info(), registry->FindByTypeName("a"));
    EXPECT_EQ(&manager->GetControlRegistry(), registry.get());
    EXPECT_STREQ(manager->Component(), "ControlManager");
    EXPECT_TRUE(calls->empty());
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Creating control protocol instance: \"a\"."));
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "Creating control protocol instance: \"b\"."));
}

TEST_F(ControlManagerTest, AFactoryGetsTheNamesOfItsTypeAndTheHost) {
    Calls names;
    IControlHost* hosts[2] = {};
    const auto noting = [&](const ControlProtocol::ControlProtocolEnviron& record) {
        hosts[names.size() / 2] = record.controlHost;
        names.push_back(record.typeName);
        names.push_back(record.displayName);
        return std::make_shared<TestService>(record);
    };
    TestPlugin().Add(TestPlugin::Info("x"), noting).Add(TestPlugin::Info("y"), noting).Publish(plugins);
    Build();
    EXPECT_EQ(names, (Calls{"x", "x service", "y", "y service"}));
    ASSERT_NE(hosts[0], nullptr);
    EXPECT_EQ(hosts[0], hosts[1]);
    EXPECT_EQ(hosts[0]->LocalNodeId(), 4711U);
    EXPECT_EQ(hosts[0]->ControlChannelPort(), 3190);
    EXPECT_EQ(hosts[0]->VdpPort(), 3195);
    EXPECT_EQ(hosts[0]->ProblemsManager(), &environ.problems);
}

TEST_F(ControlManagerTest, AnUnknownServiceIsNotFound) {
    Build();
    try {
        manager->GetInstance("nobody");
        FAIL();
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), yERROR_NOT_FOUND);
        EXPECT_STREQ(e.what(), "Control protocol type not recognized: 'nobody'.");
    }
}

TEST_F(ControlManagerTest, AnUnsupportedTypeIsLoggedAndHasNoService) {
    ControlInfo info = TestPlugin::Info("elsewhere");
    info.SetSupportedEnvironment({true, true, false, true, true, true});
    TestPlugin().Add(info, [](const auto&) { return nullptr; }).Add("a", a).Publish(plugins);
    Build();
    EXPECT_EQ(manager->List(), Calls{"a"});
    EXPECT_TRUE(
        log.Contains(Vor::LevelInfo, "Create: control protocol \"elsewhere\" is not supported in this environment"));
    EXPECT_THROW(manager->GetInstance("elsewhere"), Vor::Exception);
}

TEST_F(ControlManagerTest, EachKindOfPlatformAsksItsOwnFlag) {
    Build();
    const std::pair<PlatformKind, bool ControlInfo::SupportedEnvironmentList::*> kinds[] = {
        {PlatformKind::PhysicalSensor, &ControlInfo::SupportedEnvironmentList::physicalSensor},
        {PlatformKind::PhysicalVorbox, &ControlInfo::SupportedEnvironmentList::physicalVorbox},
        {PlatformKind::VirtualSensor, &ControlInfo::SupportedEnvironmentList::virtualSensor},
        {PlatformKind::VirtualVorbox, &ControlInfo::SupportedEnvironmentList::virtualVorbox},
        {PlatformKind::VorsuiteServiceApp, &ControlInfo::SupportedEnvironmentList::vorsuiteServiceApp},
        {PlatformKind::VorsuiteDaemon, &ControlInfo::SupportedEnvironmentList::vorsuiteDaemon}};
    for (const auto& [kind, flag] : kinds) {
        ControlInfo::SupportedEnvironmentList only{false, false, false, false, false, false};
        only.*flag = true;
        ControlInfo::SupportedEnvironmentList allBut;
        allBut.*flag = false;
        ControlInfo info;
        environ.platform.SetKind(kind);
        info.SetSupportedEnvironment(only);
        EXPECT_TRUE(manager->IsSupported(info)) << static_cast<int>(kind);
        info.SetSupportedEnvironment(allBut);
        EXPECT_FALSE(manager->IsSupported(info)) << static_cast<int>(kind);
    }
}

TEST_F(ControlManagerTest, OnAPlatformOfNoKindEveryTypeIsSupported) {
    Build();
    environ.platform.SetKind(PlatformKind::None);
    ControlInfo info;
    info.SetSupportedEnvironment({false, false, false, false, false, false});
    EXPECT_TRUE(manager->IsSupported(info));
}

TEST_F(ControlManagerTest, OfSeveralKindsTheFirstInOrderDecides) {
    struct AllKinds : VorCommon::IPlatformAttributes {
        bool IsPhysicalSensor() const override { return values[0]; }
        bool IsVirtualSensor() const override { return values[1]; }
        bool IsVorsuiteServiceApp() const override { return values[2]; }
        bool IsPhysicalVorbox() const override { return values[3]; }
        bool IsVorsuiteDaemon() const override { return values[4]; }
        bool IsVirtualVorbox() const override { return values[5]; }
        bool values[6] = {true, true, true, true, true, true};
    };
    AllKinds platform;
    ControlModuleEnviron record = environ.Record();
    record.platformAttributes = &platform;
    registry = std::make_unique<ControlRegistry>(plugins);
    manager = std::make_unique<ControlManager>(*registry, scanResults, record);
    bool ControlInfo::SupportedEnvironmentList::*const order[] = {
        &ControlInfo::SupportedEnvironmentList::physicalSensor,
        &ControlInfo::SupportedEnvironmentList::virtualSensor,
        &ControlInfo::SupportedEnvironmentList::vorsuiteServiceApp,
        &ControlInfo::SupportedEnvironmentList::physicalVorbox,
        &ControlInfo::SupportedEnvironmentList::vorsuiteDaemon,
        &ControlInfo::SupportedEnvironmentList::virtualVorbox};
    for (std::size_t i = 0; i < std::size(order); ++i) {
        ControlInfo::SupportedEnvironmentList only{false, false, false, false, false, false};
        only.*order[i] = true;
        ControlInfo info;
        info.SetSupportedEnvironment(only);
        EXPECT_TRUE(manager->IsSupported(info)) << i;
        platform.values[i] = false;
        EXPECT_EQ(manager->IsSupported(info), i + 1 == std::size(order)) << i;
    }
}

TEST_F(ControlManagerTest, AFactoryThatGivesNothingFailsTheWholeWithTheTypeName) {
    TestPlugin().Add("a", a).Add(TestPlugin::Info("nothing"), [](const auto&) { return nullptr; }).Publish(plugins);
    try {
        Build();
        FAIL();
    } catch (const ControlCreateException& e) {
        EXPECT_EQ(e.TypeName(), "nothing");
        EXPECT_EQ(e.Status(), yERROR_NOT_FOUND);
        EXPECT_STREQ(e.what(), "Failed to create protocol nothing");
    }
    EXPECT_EQ(log.Count(Vor::LevelError,
                        "Failed to create control protocol: \"nothing\" (Failed to create protocol nothing)"),
              1U);
    EXPECT_TRUE(a.expired());
    EXPECT_EQ(environ.registrar.registerCount, 0);
    EXPECT_EQ(environ.preStart.Count(), 0U);
}

TEST_F(ControlManagerTest, AFactoryThatThrowsFailsTheWholeWithTheCauseNested) {
    TestPlugin()
        .Add(TestPlugin::Info("bad"),
             [](const auto&) -> std::shared_ptr<ControlProtocol::IProtocol> { throw std::runtime_error("100% bad"); })
        .Publish(plugins);
    try {
        Build();
        FAIL();
    } catch (const ControlCreateException& e) {
        EXPECT_EQ(e.TypeName(), "bad");
        EXPECT_EQ(e.Status(), yERROR);
        EXPECT_STREQ(e.what(), "100% bad");
        EXPECT_THROW(std::rethrow_if_nested(e), std::runtime_error);
    }
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Failed to create control protocol: \"bad\" (100% bad)"));
}

TEST_F(ControlManagerTest, AFactorysOwnStatusComesThrough) {
    TestPlugin()
        .Add(TestPlugin::Info("bad"),
             [](const auto&) -> std::shared_ptr<ControlProtocol::IProtocol> { Vor::Throw(-55); })
        .Publish(plugins);
    try {
        Build();
        FAIL();
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), -55);
        EXPECT_FALSE(e.HasText());
    }
}

TEST_F(ControlManagerTest, ATypeWithoutFactoryFailsTheWhole) {
    auto lib = std::make_unique<VorPlugin::PluginLib>("");
    auto plugin = ControlPlugin::Create();
    plugin->Add(TestPlugin::Info("bare"), nullptr);
    lib->Add(plugin);
    plugins.Add(std::move(lib));
    try {
        Build();
        FAIL();
    } catch (const ControlCreateException& e) {
        EXPECT_EQ(e.TypeName(), "bare");
        EXPECT_EQ(e.Status(), yERROR_STATE);
    }
}

TEST_F(ControlManagerTest, RegistersWithAnEmptyTextAfterTheServicesAreMadeAndDeregistersFirst) {
    bool madeBefore = false;
    environ.registrar.onRegister = [&] { madeBefore = !a.expired(); };
    environ.registrar.onDeregister = [&] { calls->push_back("deregister"); };
    BuildTwo();
    EXPECT_TRUE(madeBefore);
    EXPECT_EQ(environ.registrar.text, "");
    EXPECT_EQ(environ.registrar.handler, manager.get());
    manager.reset();
    EXPECT_EQ(environ.registrar.deregistered, std::vector<unsigned long long>{17});
    ASSERT_FALSE(calls->empty());
    EXPECT_EQ(calls->front(), "deregister");
}

TEST_F(ControlManagerTest, AFailingRegistrationLeavesNothingBehind) {
    environ.registrar.onRegister = [] { Vor::Throw(-3); };
    EXPECT_THROW(BuildTwo(), Vor::Exception);
    EXPECT_TRUE(a.expired());
    EXPECT_TRUE(environ.registrar.deregistered.empty());
    EXPECT_EQ(environ.preStart.Count(), 0U);
}

TEST_F(ControlManagerTest, ServesTheThreeEventsAsLongAsItLives) {
    BuildTwo();
    EXPECT_EQ(environ.preStart.Count(), 1U);
    EXPECT_EQ(environ.postStop.Count(), 1U);
    EXPECT_EQ(environ.factoryRestore.Count(), 1U);
    manager.reset();
    EXPECT_EQ(environ.preStart.Count(), 0U);
    EXPECT_EQ(environ.postStop.Count(), 0U);
    EXPECT_EQ(environ.factoryRestore.Count(), 0U);
}

TEST_F(ControlManagerTest, WithoutRegistrarAndEventsItIsSimplyNotServed) {
    ControlModuleEnviron record = environ.Record();
    record.persistRegistrar = nullptr;
    record.livePreStartScanEvent = nullptr;
    record.livePostStopScanEvent = nullptr;
    record.factoryRestoreEvent = nullptr;
    TestPlugin().Add("a", a).Publish(plugins);
    registry = std::make_unique<ControlRegistry>(plugins);
    manager = std::make_unique<ControlManager>(*registry, scanResults, record);
    A()->NotifyParamsInternalUpdateEventHandler(true);
    EXPECT_EQ(manager->List(), Calls{"a"});
    manager.reset();
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ControlManagerTest, AFailingDeregistrationIsLoggedAndLeavesTheSubscriptions) {
    BuildTwo();
    environ.registrar.onDeregister = [] { throw std::runtime_error("no"); };
    manager.reset();
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown in destructor"), 1U);
    EXPECT_EQ(environ.preStart.Count(), 1U);
    EXPECT_TRUE(a.expired());
}

TEST_F(ControlManagerTest, AServiceIsDestroyedWhileItsHostExists) {
    BuildTwo();
    std::uint32_t node = 0;
    A()->onDestroy = [&, service = A().get()] { node = service->GetControlHost().LocalNodeId(); };
    manager.reset();
    EXPECT_EQ(node, 4711U);
}

TEST_F(ControlManagerTest, ChangesOfAServiceAnnounceTheirDomain) {
    BuildTwo();
    A()->NotifyParamsInternalUpdateEventHandler(false);
    A()->NotifyOutputsInternalUpdateEventHandler(false);
    EXPECT_TRUE(NewAnnouncements().empty());
    A()->NotifyParamsInternalUpdateEventHandler(true);
    B()->NotifyOutputsInternalUpdateEventHandler(true);
    EXPECT_EQ(NewAnnouncements(), (std::vector<int>{2, 2}));
    A()->NotifyPersistenceDomainChangeEventHandler(PersistDomain::Workspace);
    EXPECT_EQ(NewAnnouncements(), std::vector<int>{1});

    IControlInstance& instance = manager->GetInstance("a");
    instance.BeginUpdateParameters();
    instance.EndUpdateParameters();
    EXPECT_EQ(NewAnnouncements(), std::vector<int>{2});
    instance.BeginUpdateRegisterAssembly();
    instance.EndUpdateRegisterAssembly("x");
    EXPECT_EQ(NewAnnouncements(), std::vector<int>{2});
}

TEST_F(ControlManagerTest, NotifyAndSetModifiedAnnounceTheSame) {
    BuildTwo();
    manager->NotifyDomainChange(PersistDomain::Workspace);
    manager->SetPersistenceFileModified(PersistDomain::Job);
    EXPECT_EQ(NewAnnouncements(), (std::vector<int>{1, 2}));
}

TEST_F(ControlManagerTest, ChangesOfDevicesAreAnnounced) {
    Tests::FakeDeviceManager devices;
    TestPlugin()
        .Add("a", a,
             [&](TestService& service) { service.Init({.params = &service.params, .deviceManager = &devices}); })
        .Publish(plugins);
    Build();
    IControlInstance& instance = manager->GetInstance("a");
    EXPECT_NO_THROW(static_cast<void>(A()->GetControlHost().DeviceOperations()));
    instance.BeginUpdateDeviceManager();
    instance.EndUpdateDeviceManager();
    EXPECT_EQ(NewAnnouncements(), std::vector<int>{2});
    instance.BeginUpdateDeviceRegisterAssembly();
    instance.EndUpdateDeviceRegisterAssembly("device-0", "port-0", "registerAssembly-0");
    EXPECT_EQ(NewAnnouncements(), std::vector<int>{2});
    const ControlSelectedDeviceProp device;
    devices.removed.Raise(device, "device-0", false);
    devices.updated.Raise(device, "device-0");
    devices.listUpdated.Raise("a");
    EXPECT_TRUE(NewAnnouncements().empty());
    devices.removed.Raise(device, "device-0", true);
    EXPECT_EQ(NewAnnouncements(), std::vector<int>{2});
    manager.reset();
}

TEST_F(ControlManagerTest, ALoadEnablesServicesBetweenItsEventsAndAnnouncesNothing) {
    BuildTwo();
    NoteLoadEvents();
    store.files[PathOf("b")] = EnabledConfiguration();
    B()->onStart = [this] { B()->NotifyParamsInternalUpdateEventHandler(true); };
    manager->LoadPersistDomain(PersistDomain::Job, store);
    ASSERT_GE(calls->size(), 3U);
    EXPECT_EQ(calls->front(), "load begins");
    EXPECT_EQ(calls->back(), "load ends");
    EXPECT_EQ(std::count(calls->begin(), calls->end(), "b: Start"), 1);
    EXPECT_TRUE(manager->GetInstance("b").IsEnabled());
    EXPECT_FALSE(manager->GetInstance("a").IsEnabled());
    EXPECT_TRUE(NewAnnouncements().empty());
    B()->NotifyParamsInternalUpdateEventHandler(true);
    EXPECT_EQ(NewAnnouncements(), std::vector<int>{2});
    B()->onStart = {};
}

TEST_F(ControlManagerTest, AFailedLoadIsToldToTheUserAndTheNextServiceIsLoaded) {
    BuildTwo();
    store.files[PathOf("a")] = NoConfiguration;
    store.files[PathOf("b")] = EnabledConfiguration();
    manager->LoadPersistDomain(PersistDomain::Job, store);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "EXCEPTION THROWN: "));
    EXPECT_EQ(log.Count(Vor::UserError, "Error loading control service 'a' configuration. Loading next service's "
                                        "configuration."),
              1U);
    EXPECT_TRUE(manager->GetInstance("b").IsEnabled());
}

TEST_F(ControlManagerTest, TheNotesOfALoadAreKeptForEachService) {
    BuildTwo();
    EXPECT_TRUE(manager->NotesOfLastLoad().empty());
    store.files[PathOf("a")] = NoConfiguration;
    store.files[PathOf("b")] = EnabledConfiguration();
    manager->LoadPersistDomain(PersistDomain::Job, store);
    const auto& notes = manager->NotesOfLastLoad();
    ASSERT_EQ(notes.size(), 2U);
    EXPECT_EQ(notes[0].serviceId, "a");
    EXPECT_EQ(notes[0].result, Persistence::PersistLoadResult::Failed);
    ASSERT_FALSE(notes[0].texts.empty());
    EXPECT_EQ(notes[0].texts.back(),
              "Error loading control service 'a' configuration. Loading next service's configuration.");
    EXPECT_EQ(notes[1].serviceId, "b");
    EXPECT_EQ(notes[1].result, Persistence::PersistLoadResult::None);
    EXPECT_TRUE(notes[1].texts.empty());

    manager->LoadPersistDomain(PersistDomain::Workspace, store);
    EXPECT_EQ(manager->NotesOfLastLoad().size(), 2U) << "it is about jobs";
    store.files.clear();
    manager->LoadPersistDomain(PersistDomain::Job, store);
    ASSERT_EQ(manager->NotesOfLastLoad().size(), 2U);
    EXPECT_EQ(manager->NotesOfLastLoad()[0].result, Persistence::PersistLoadResult::None);
}

TEST_F(ControlManagerTest, AReportedLoadResultAnnouncesTheDomainOnceAfterTheLoad) {
    BuildTwo();
    const std::string unknownBlock =
        R"({"version":"1","vor:control":{"enabled":true,"parameters":{},"parametersVersion":"1",)"
        R"("registerAssemblyList":[{"properties":{"id":"x"},"blocks":[{"type":"Unheard"}]}]}})";
    for (const auto& service : {A(), B()}) {
        service->assemblies.Add(std::make_shared<ControlProtocol::ProtocolRegisterAssemblyBase>(true, 0, 99, "x", "X"));
    }
    store.files[PathOf("a")] = unknownBlock;
    store.files[PathOf("b")] = unknownBlock;
    bool announcedInside = false;
    manager->AddPersistenceLoadEventHandler([&](LoadState state) {
        announcedInside = state == LoadState::End && !environ.registrar.announcements.empty();
    });
    manager->LoadPersistDomain(PersistDomain::Job, store);
    EXPECT_FALSE(announcedInside);
    EXPECT_EQ(NewAnnouncements(), std::vector<int>{2});
}

TEST_F(ControlManagerTest, ALoadThatThrowsNoStandardExceptionIsLoggedAndTheNextServiceIsLoaded) {
    BuildTwo();
    NoteLoadEvents();
    store.files[PathOf("a")] = EnabledConfiguration();
    store.files[PathOf("b")] = EnabledConfiguration();
    A()->onParamsUpdate = [] { throw 5; };
    manager->LoadPersistDomain(PersistDomain::Job, store);
    A()->onParamsUpdate = {};
    EXPECT_EQ(calls->back(), "load ends");
    EXPECT_TRUE(log.Contains(Vor::LevelError, "EXCEPTION THROWN: "));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Caught std::runtime_error: unknown exception"));
    EXPECT_EQ(log.Count(Vor::UserError, "Error loading control service 'a' configuration. Loading next service's "
                                        "configuration."),
              1U);
    EXPECT_TRUE(manager->GetInstance("a").IsEnabled());
    EXPECT_TRUE(manager->GetInstance("b").IsEnabled());
    B()->NotifyParamsInternalUpdateEventHandler(true);
    EXPECT_EQ(NewAnnouncements(), std::vector<int>{2});
}

TEST_F(ControlManagerTest, AnInitOrSaveThatThrowsNoStandardExceptionIsLoggedAndTheNextServiceFollows) {
    BuildTwo();
    A()->onParamsReset = [] { throw 5; };
    manager->InitPersistDomain(PersistDomain::Job, store);
    A()->onParamsReset = {};
    EXPECT_EQ(std::count(calls->begin(), calls->end(), "b: ParamsReset"), 1);
    EXPECT_EQ(log.Count(Vor::LevelError, "Caught std::runtime_error: unknown exception"), 1U);

    A()->onParamsVersion = [] { throw 5; };
    manager->SavePersistDomain(PersistDomain::Job, store);
    A()->onParamsVersion = {};
    EXPECT_EQ(store.writes, Calls{PathOf("b")});
    EXPECT_EQ(log.Count(Vor::LevelError, "Caught std::runtime_error: unknown exception"), 2U);
}

TEST_F(ControlManagerTest, ALoadHandlerThatThrowsEndsTheLoadAndIsOver) {
    BuildTwo();
    auto callback = manager->AddPersistenceLoadEventHandler([](LoadState) { throw std::runtime_error("handler"); });
    EXPECT_THROW(manager->LoadPersistDomain(PersistDomain::Job, store), std::runtime_error);
    manager->RemovePersistenceLoadEventHandler(callback);
    A()->NotifyParamsInternalUpdateEventHandler(true);
    EXPECT_EQ(NewAnnouncements(), std::vector<int>{2});
}

TEST_F(ControlManagerTest, EachLoadHandlerIsCalledAtTheBeginAndAtTheEndWhateverAnotherThrows) {
    for (const LoadState failing : {LoadState::Begin, LoadState::End}) {
        BuildTwo();
        calls->clear();
        NoteLoadEvents();
        manager->AddPersistenceLoadEventHandler([failing](LoadState state) {
            if (state == failing) {
                throw std::runtime_error("handler");
            }
        });
        NoteLoadEvents();
        store.files[PathOf("a")] = EnabledConfiguration();
        EXPECT_THROW(manager->LoadPersistDomain(PersistDomain::Job, store), std::runtime_error);
        std::erase_if(*calls, [](const std::string& call) { return call.rfind("load", 0) != 0; });
        EXPECT_EQ(*calls, (Calls{"load begins", "load begins", "load ends", "load ends"}));
        EXPECT_EQ(manager->GetInstance("a").IsEnabled(), failing == LoadState::End);
    }
}

TEST_F(ControlManagerTest, AnEndHandlerThatThrowsAfterAFailedLoadIsLogged) {
    BuildTwo();
    manager->AddPersistenceLoadEventHandler([](LoadState state) {
        if (state == LoadState::Begin) {
            throw std::runtime_error("begin");
        }
        throw 5;
    });
    NoteLoadEvents();
    EXPECT_THROW(manager->LoadPersistDomain(PersistDomain::Job, store), std::runtime_error);
    EXPECT_EQ(calls->back(), "load ends");
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Caught std::runtime_error: unknown exception"));
}

TEST_F(ControlManagerTest, OnlyTheInitOfTheJobRaisesTheLoadEvents) {
    BuildTwo();
    NoteLoadEvents();
    manager->InitPersistDomain(PersistDomain::Workspace, store);
    EXPECT_TRUE(calls->empty());
    manager->InitPersistDomain(PersistDomain::Job, store);
    EXPECT_EQ(calls->front(), "load begins");
    EXPECT_EQ(calls->back(), "load ends");
    EXPECT_EQ(std::count(calls->begin(), calls->end(), "a: ParamsReset"), 1);
    EXPECT_EQ(std::count(calls->begin(), calls->end(), "b: ParamsReset"), 1);
}

TEST_F(ControlManagerTest, AnInitDoesntHoldBackChanges) {
    BuildTwo();
    A()->onStop = [this] { A()->NotifyParamsInternalUpdateEventHandler(true); };
    manager->InitPersistDomain(PersistDomain::Job, store);
    EXPECT_EQ(NewAnnouncements(), std::vector<int>{2});
    A()->onStop = {};
}

TEST_F(ControlManagerTest, AFailedSaveIsLoggedAndTheNextServiceIsSaved) {
    BuildTwo();
    A()->Init({});
    manager->SavePersistDomain(PersistDomain::Job, store);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "EXCEPTION THROWN: "));
    EXPECT_EQ(store.writes, Calls{PathOf("b")});
}

TEST_F(ControlManagerTest, AHandlerWithoutFunctionIsntAddedAndCanBeRemoved) {
    Build();
    const auto callback = manager->AddPersistenceLoadEventHandler({});
    EXPECT_FALSE(callback.IsSet());
    EXPECT_NO_THROW(manager->RemovePersistenceLoadEventHandler(callback));
    NoteLoadEvents();
    manager->LoadPersistDomain(PersistDomain::Workspace, store);
    EXPECT_EQ(*calls, (Calls{"load begins", "load ends"}));
}

TEST_F(ControlManagerTest, ScanEventsReachEnabledServicesAndTheRestoreAll) {
    BuildTwo();
    manager->GetInstance("b").Enable(true);
    calls->clear();
    environ.preStart.Raise();
    environ.postStop.Raise();
    EXPECT_EQ(*calls, (Calls{"b: scan started", "b: scan stopped"}));
    calls->clear();
    environ.factoryRestore.Raise();
    EXPECT_EQ(*calls, (Calls{"a: OnFactoryRestore", "b: OnFactoryRestore"}));
}

TEST_F(ControlManagerTest, TwoServicesThatFailAtAScanEventGiveTwoEntriesAndNoException) {
    BuildTwo();
    for (const auto& service : {A(), B()}) {
        manager->GetInstance(service->DisplayName().substr(0, 1)).Enable(true);
        service->onScanState = [] { Vor::Throw(-9, "no scan"); };
    }
    EXPECT_NO_THROW(environ.preStart.Raise());
    EXPECT_NO_THROW(environ.postStop.Raise());
    for (const char* id : {"a", "b"}) {
        const std::string service(id);
        EXPECT_EQ(log.Count(Vor::LevelError,
                            "Error countered invoking pre-start event handler for control service " + service),
                  1U);
        EXPECT_EQ(log.Count(Vor::LevelError,
                            "Error countered invoking post-start event handler for control service " + service),
                  1U);
    }
}

TEST_F(ControlManagerTest, TheFirstOtherExceptionAtAScanEventReachesTheRaiserWhenAllWereNotified) {
    BuildTwo();
    manager->GetInstance("a").Enable(true);
    manager->GetInstance("b").Enable(true);
    calls->clear();
    A()->onScanState = [] { throw 5; };
    B()->onScanState = [] { throw std::runtime_error("no"); };
    EXPECT_THROW(environ.preStart.Raise(), int);
    EXPECT_THROW(environ.postStop.Raise(), int);
    EXPECT_EQ(*calls, (Calls{"a: scan started", "b: scan started", "a: scan stopped", "b: scan stopped"}));
    A()->onScanState = {};
    EXPECT_THROW(environ.preStart.Raise(), std::runtime_error);
}

TEST_F(ControlManagerTest, AFailedRestoreEndsTheWalkAndReachesTheRaiser) {
    BuildTwo();
    A()->onFactoryRestore = [] { Vor::Throw(-9, "no"); };
    EXPECT_THROW(environ.factoryRestore.Raise(), Vor::Exception);
    EXPECT_EQ(*calls, Calls{"a: OnFactoryRestore"});
}

TEST_F(ControlManagerTest, ALibraryLoadedLaterExtendsTheCatalogueAlone) {
    BuildTwo();
    std::weak_ptr<TestService> late;
    const auto& lib = TestPlugin().Add("late", late).Publish(plugins);
    EXPECT_EQ(manager->List(), (Calls{"a", "b"}));
    EXPECT_NE(registry->FindByTypeName("late"), nullptr);
    plugins.Unload(lib);
    EXPECT_EQ(registry->FindByTypeName("late"), nullptr);
}

TEST_F(ControlManagerTest, TheServiceOfAnUnloadedLibraryStays) {
    const auto& lib = TestPlugin().Add("a", a).Publish(plugins);
    Build();
    plugins.Unload(lib);
    EXPECT_EQ(manager->List(), Calls{"a"});
    EXPECT_EQ(manager->GetInstance("a").Info().DisplayName(), "a service");
}

} // namespace
