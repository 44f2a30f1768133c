#include "VorControl/Control/ControlManager.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/VorGetText.h"
#include "VorApi/AtScopeEnd.h"
#include "VorApi/LogThrown.h"
#include "VorCommon/IPersistRegistrar.h"
#include "VorCommon/IPlatformAttributes.h"
#include "VorControl/Control/ControlCreateException.h"
#include "VorControl/Control/ControlInfo.h"
#include "VorControl/Control/ControlInstance.h"
#include "VorControl/Control/ControlRegistry.h"
#include "VorControl/Control/IControlFactory.h"
#include "VorControl/Control/RunCaught.h"
#include "VorControl/ControlProtocol/ILoadObserver.h"
#include "VorControl/Providers/UserNotes.h"
#include "yApi/yStatus.h"

#include <exception>
#include <stdexcept>
#include <utility>

namespace VorControl {

using VorCommon::PersistDomain;

namespace {

void LogFailure(const std::exception& e) {
    Vor::LogThrown(e, "EXCEPTION THROWN: ");
}

} // namespace

ControlManager::ControlManager(ControlRegistry& registry, IControlScanResults& scanResults,
                               const ControlModuleEnviron& environ)
    : registry(registry)
    , environ(environ)
    , scanResults(scanResults)
    , systemInterface(environ.core, environ.persistManager, environ.pipeManager)
    , scanEngineInterface(environ.scanEngineManager)
    , protocolOperations(systemInterface, scanEngineInterface, *environ.runtimeCache)
    , deviceOperations(scanEngineInterface)
    , dataCache(systemInterface, scanEngineInterface)
    , resourceAdaptor(*environ.requestProcessor)
    , host(scanResults, protocolOperations, dataCache, resourceAdaptor, *environ.platformAttributes,
           *environ.runtimeCache, environ.problemsManager, scanEngineInterface, deviceOperations, environ.localNodeId,
           environ.controlChannelPort, environ.vdpPort, environ.pipeAllocator) {
    protocolEnviron.controlHost = &host;
    CreateAll();
    try {
        if (environ.persistRegistrar != nullptr) {
            persistHandlerId = environ.persistRegistrar->Register(*this, "");
        }
        for (const auto& entry : instances) {
            BindEvents(*entry.second);
        }
        Subscribe();
    } catch (...) {
        Unsubscribe();
        throw;
    }
}

ControlManager::~ControlManager() {
    Unsubscribe();
}

void ControlManager::Subscribe() {
    const auto subscribe = [this](Vor::Event<>* event, void (ControlManager::*handler)()) {
        Subscription subscription;
        subscription.event = event;
        if (event != nullptr) {
            subscription.callback = event->Add([this, handler] { (this->*handler)(); });
        }
        return subscription;
    };
    preStart = subscribe(environ.livePreStartScanEvent, &ControlManager::LivePreStartScanEventHandler);
    postStop = subscribe(environ.livePostStopScanEvent, &ControlManager::LivePostStopScanEventHandler);
    factoryRestore = subscribe(environ.factoryRestoreEvent, &ControlManager::FactoryRestoreEventHandler);
}

void ControlManager::Unsubscribe() {
    Vor::CleanUp([this] {
        if (persistHandlerId) {
            environ.persistRegistrar->Deregister(*persistHandlerId);
        }
        for (Subscription* subscription : {&preStart, &postStop, &factoryRestore}) {
            if (subscription->event != nullptr) {
                subscription->event->Remove(subscription->callback);
            }
        }
    });
}

void ControlManager::BindEvents(IControlInstance& instance) {
    const auto updated = [this](const std::string&, bool persist) {
        if (persist) {
            SetPersistenceFileModified(PersistDomain::Job);
        }
    };
    instance.AddParamsUpdatedEventHandler(updated);
    instance.AddOutputsUpdatedEventHandler(updated);
    instance.AddRegisterAssemblyUpdatedEventHandler(
        [this](const std::string&, const std::string&) { SetPersistenceFileModified(PersistDomain::Job); });
    instance.AddPersistenceDomainChangeEventHandler([this](PersistDomain domain) { NotifyDomainChange(domain); });
    instance.AddDeviceRegisterAssemblyUpdatedEventHandler(
        [this](const std::string&, const std::string&, const std::string&, const std::string&) {
            SetPersistenceFileModified(PersistDomain::Job);
        });
    const auto deviceChanged = [this](const std::string&, const std::string&, bool persist) {
        if (persist) {
            SetPersistenceFileModified(PersistDomain::Job);
        }
    };
    instance.AddDeviceUpdatedEventHandler(deviceChanged);
    instance.AddDeviceRemovedEventHandler(deviceChanged);
}

void ControlManager::CreateAll() {
    Vor::LogInfo("Creating all control protocol instances.");
    for (const ControlInfo* info : registry.List()) {
        Create(*info);
    }
}

void ControlManager::Create(const ControlInfo& info) {
    Vor::LogInfo("Creating control protocol instance: \"%s\".", info.TypeName());
    try {
        if (!IsSupported(info)) {
            Vor::LogInfo("%s: control protocol \"%s\" is not supported in this environment", "Create", info.TypeName());
            return;
        }
        ControlInstanceParams params;
        params.info = &info;
        params.updateGate = environ.updateGate;
        params.scanResults = &scanResults;
        params.problemsManager = environ.problemsManager;
        params.typeName = info.TypeName();
        params.displayName = info.DisplayName();
        protocolEnviron.typeName = info.TypeName();
        protocolEnviron.displayName = info.DisplayName();
        params.protocol = info.Factory().Create(protocolEnviron);
        if (!params.protocol) {
            Vor::Throw(yERROR_NOT_FOUND, "Failed to create protocol %s", info.TypeName());
        }
        instances.emplace(info.TypeName(), std::make_unique<ControlInstance>(params));
        if (auto* const observer = dynamic_cast<ControlProtocol::ILoadObserver*>(params.protocol.get())) {
            persistenceLoad.Add([observer](PersistenceLoadOpState state) {
                if (state == PersistenceLoadOpState::Begin) {
                    RunCaught([&] { observer->OnLoadBegin(); }, LogFailure);
                }
            });
        }
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "Failed to create control protocol: \"%s\" (%s)", info.TypeName(), e.what());
        std::throw_with_nested(ControlCreateException(info.TypeName(), e));
    } catch (...) {
        const std::runtime_error unknown("something was thrown that is no exception");
        Vor::LogThrown(unknown, "Failed to create control protocol: \"%s\" (%s)", info.TypeName(), unknown.what());
        std::throw_with_nested(ControlCreateException(info.TypeName(), unknown));
    }
}

bool ControlManager::IsSupported(const ControlInfo& info) const {
    const VorCommon::IPlatformAttributes& platform = *environ.platformAttributes;
    if (platform.IsPhysicalSensor()) {
        return info.SupportedOnPhysicalSensor();
    }
    if (platform.IsVirtualSensor()) {
        return info.SupportedOnVirtualSensor();
    }
    if (platform.IsVorsuiteServiceApp()) {
        return info.SupportedOnVorsuiteServiceApp();
    }
    if (platform.IsPhysicalVorbox()) {
        return info.SupportedOnPhysicalVorbox();
    }
    if (platform.IsVorsuiteDaemon()) {
        return info.SupportedOnVorsuiteDaemon();
    }
    if (platform.IsVirtualVorbox()) {
        return info.SupportedOnVirtualVorbox();
    }
    return true;
}

const char* ControlManager::Component() {
    return "ControlManager";
}

void ControlManager::InitPersistDomain(PersistDomain domain, VorCommon::IPersistStore& store) {
    const auto initAll = [&] {
        for (const auto& entry : instances) {
            RunCaught([&] { persistControl.Init(*entry.second, domain, store); }, LogFailure);
        }
    };
    if (domain == PersistDomain::Job) {
        RunLoad(initAll);
    } else {
        initAll();
    }
}

void ControlManager::LoadPersistDomain(PersistDomain domain, const VorCommon::IPersistStore& store) {
    bool changed = false;
    {
        persistLoading.store(true, std::memory_order_relaxed);
        const Vor::AtScopeEnd loaded([this] { persistLoading.store(false, std::memory_order_relaxed); });
        RunLoad([&] { changed = LoadAll(domain, store); });
    }
    if (changed) {
        NotifyDomainChange(domain);
    }
}

bool ControlManager::LoadAll(PersistDomain domain, const VorCommon::IPersistStore& store) {
    bool changed = false;
    std::vector<ServiceLoadNotes> notes;
    for (const auto& entry : instances) {
        notes.push_back(LoadOne(*entry.second, domain, store));
        changed = changed || persistControl.LastLoadResult() != Persistence::PersistLoadResult{};
    }
    if (domain == PersistDomain::Job) {
        loadNotes = std::move(notes);
    }
    return changed;
}

ServiceLoadNotes ControlManager::LoadOne(IControlInstance& instance, PersistDomain domain,
                                         const VorCommon::IPersistStore& store) {
    const Providers::UserNotes notes;
    bool hasFailed = false;
    RunCaught([&] { persistControl.Load(instance, domain, store); },
              [&](const std::exception& e) {
                  hasFailed = true;
                  LogFailure(e);
                  Vor::LogUser(Vor::UserError, "VorControl",
                               VorGetText::GetInstance().DPGetText("BE", "beApp.ctrl",
                                                                   "Error loading control service '%s' "
                                                                   "configuration. Loading next service's "
                                                                   "configuration."),
                               instance.Id());
              });
    return {.serviceId = instance.Id(),
            .result = hasFailed ? Persistence::PersistLoadResult::Failed : persistControl.LastLoadResult(),
            .texts = notes.Texts()};
}

void ControlManager::SavePersistDomain(PersistDomain domain, VorCommon::IPersistStore& store) {
    for (const auto& entry : instances) {
        RunCaught([&] { persistControl.Save(*entry.second, domain, store); }, LogFailure);
    }
}

std::vector<std::string> ControlManager::List() const {
    std::vector<std::string> ids;
    ids.reserve(instances.size());
    for (const auto& entry : instances) {
        ids.push_back(entry.first);
    }
    return ids;
}

IControlInstance& ControlManager::GetInstance(const std::string& id) {
    const auto found = instances.find(id);
    if (found == instances.end()) {
        Vor::Throw(yERROR_NOT_FOUND, "Control protocol type not recognized: '%s'.", id);
    }
    return *found->second;
}

const ControlRegistry& ControlManager::GetControlRegistry() const {
    return registry;
}

ControlManager::PersistenceLoadEvent::CallbackId
ControlManager::AddPersistenceLoadEventHandler(std::function<void(PersistenceLoadOpState)> handler) {
    return persistenceLoad.Add(std::move(handler));
}

void ControlManager::RemovePersistenceLoadEventHandler(PersistenceLoadEvent::CallbackId callback) {
    persistenceLoad.Remove(callback);
}

void ControlManager::NotifyDomainChange(PersistDomain domain) {
    if (persistLoading.load(std::memory_order_relaxed)) {
        return;
    }
    if (environ.persistRegistrar != nullptr) {
        environ.persistRegistrar->Announce(*this, domain, 0);
    }
}

void ControlManager::SetPersistenceFileModified(PersistDomain domain) {
    NotifyDomainChange(domain);
}

void ControlManager::OnPersistenceLoad(PersistenceLoadOpState state) {
    persistenceLoad.RaiseToAll(state);
}

void ControlManager::RunLoad(const std::function<void()>& operation) {
    try {
        OnPersistenceLoad(PersistenceLoadOpState::Begin);
        operation();
    } catch (...) {
        RunCaught([&] { OnPersistenceLoad(PersistenceLoadOpState::End); }, LogFailure);
        throw;
    }
    OnPersistenceLoad(PersistenceLoadOpState::End);
}

void ControlManager::LivePreStartScanEventHandler() {
    NotifyEnabled(&IControlInstance::OnPreStartScan,
                  "Error countered invoking pre-start event handler for control service %s");
}

void ControlManager::LivePostStopScanEventHandler() {
    NotifyEnabled(&IControlInstance::OnPostStopScan,
                  "Error countered invoking post-start event handler for control service %s");
}

void ControlManager::NotifyEnabled(void (IControlInstance::*handler)(), const Vor::LocatedFormat& failureText) {
    std::exception_ptr first;
    for (const auto& entry : instances) {
        IControlInstance& instance = *entry.second;
        try {
            if (instance.IsEnabled()) {
                (instance.*handler)();
            }
        } catch (const Vor::Exception& e) {
            Vor::LogThrown(e, failureText, instance.Id());
        } catch (...) {
            first = first == nullptr ? std::current_exception() : first;
        }
    }
    if (first != nullptr) {
        std::rethrow_exception(first);
    }
}

void ControlManager::FactoryRestoreEventHandler() {
    for (const auto& entry : instances) {
        entry.second->OnFactoryRestore();
    }
}

} // namespace VorControl
