#pragma once

#include "Vor/LocatedFormat.h"
#include "VorControl/Control/ControlDataCache.h"
#include "VorControl/Control/ControlDeviceOperations.h"
#include "VorControl/Control/ControlHost.h"
#include "VorControl/Control/ControlModuleEnviron.h"
#include "VorControl/Control/ControlProtocolOperations.h"
#include "VorControl/Control/ControlResourceAdaptor.h"
#include "VorControl/Control/ControlScanEngineInterface.h"
#include "VorControl/Control/ControlSystemInterface.h"
#include "VorControl/Control/IControlManager.h"
#include "VorControl/ControlProtocol/ControlProtocolEnviron.h"
#include "VorControl/Persistence/PersistControl.h"

#include <atomic>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace VorControl {

class ControlInfo;
class IControlScanResults;

/// What the load of a job had to report about a service.
struct ServiceLoadNotes {
    std::string serviceId;
    Persistence::PersistLoadResult result;
    std::vector<std::string> texts; ///< for the user: what the load has written to the user's log
};

/// Owns the services and the objects by which they access the system. It has no lock: the persist operations run on the
/// persistence thread, the event handlers on the thread that raises the event.
class ControlManager : public IControlManager {
public:
    /// Creates the service of each supported type. Throws ControlCreateException if one can't be created; then nothing
    /// is registered.
    ControlManager(ControlRegistry& registry, IControlScanResults& scanResults, const ControlModuleEnviron& environ);
    ~ControlManager() override;

    ControlManager(const ControlManager&) = delete;
    ControlManager& operator=(const ControlManager&) = delete;

    /// "ControlManager".
    const char* Component() override;
    void InitPersistDomain(VorCommon::PersistDomain domain, VorCommon::IPersistStore& store) override;
    void LoadPersistDomain(VorCommon::PersistDomain domain, const VorCommon::IPersistStore& store) override;
    void SavePersistDomain(VorCommon::PersistDomain domain, VorCommon::IPersistStore& store) override;

    std::vector<std::string> List() const override;
    IControlInstance& GetInstance(const std::string& id) override;
    const ControlRegistry& GetControlRegistry() const override;
    PersistenceLoadEvent::CallbackId
    AddPersistenceLoadEventHandler(std::function<void(PersistenceLoadOpState)> handler) override;
    void RemovePersistenceLoadEventHandler(PersistenceLoadEvent::CallbackId callback) override;

    ControlProtocolOperations& Operations() { return protocolOperations; }
    /// Of each service, by its id, at the last load of a job. None after the start without one. For the main loop, and
    /// the thread that loads.
    const std::vector<ServiceLoadNotes>& NotesOfLastLoad() const { return loadNotes; }

    /// Reports the change to the registrar, unless a domain is being loaded.
    void NotifyDomainChange(VorCommon::PersistDomain domain);
    void SetPersistenceFileModified(VorCommon::PersistDomain domain);
    bool IsSupported(const ControlInfo& info) const;

private:
    struct Subscription {
        Vor::Event<>* event = nullptr;
        Vor::Event<>::CallbackId callback;
    };

    void CreateAll();
    void Create(const ControlInfo& info);
    void BindEvents(IControlInstance& instance);
    void Subscribe();
    void Unsubscribe();
    void OnPersistenceLoad(PersistenceLoadOpState state);
    /// Raises the start and the end of a load around the operation, the end also when a handler of the start or the
    /// operation throws. The operation doesn't run if the start failed.
    void RunLoad(const std::function<void()>& operation);
    /// Returns whether a service had something to report.
    bool LoadAll(VorCommon::PersistDomain domain, const VorCommon::IPersistStore& store);
    ServiceLoadNotes LoadOne(IControlInstance& instance, VorCommon::PersistDomain domain,
                             const VorCommon::IPersistStore& store);
    void LivePreStartScanEventHandler();
    void LivePostStopScanEventHandler();
    void FactoryRestoreEventHandler();
    /// Calls the handler of each enabled service. A Vor::Exception is logged with the text and the service's id. Of
    /// other exceptions the first is thrown when all services were called.
    void NotifyEnabled(void (IControlInstance::*handler)(), const Vor::LocatedFormat& failureText);

    ControlRegistry& registry;
    ControlModuleEnviron environ;
    IControlScanResults& scanResults;
    ControlSystemInterface systemInterface;
    ControlScanEngineInterface scanEngineInterface;
    ControlProtocolOperations protocolOperations;
    ControlDeviceOperations deviceOperations;
    ControlDataCache dataCache;
    ControlResourceAdaptor resourceAdaptor;
    ControlHost host;
    ControlProtocol::ControlProtocolEnviron protocolEnviron;
    std::map<std::string, std::unique_ptr<IControlInstance>> instances;
    std::atomic<bool> persistLoading = false; ///< while LoadPersistDomain runs
    PersistControl persistControl;
    std::vector<ServiceLoadNotes> loadNotes;
    std::optional<unsigned long long> persistHandlerId; ///< of the registrar
    PersistenceLoadEvent persistenceLoad;
    Subscription preStart;
    Subscription postStop;
    Subscription factoryRestore;
};

} // namespace VorControl
