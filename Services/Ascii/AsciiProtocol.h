#pragma once

#include "Services/Ascii/AsciiParams.h"
#include "Services/Ascii/AsciiProperties.h"
#include "Services/Ascii/AsciiServer.h"
#include "Services/Ascii/ISensor.h"
#include "Services/Ascii/Outputs.h"
#include "Services/Ascii/ServerCounters.h"
#include "Services/Common/Wakeup.h"
#include "Vor/AsyncRunner.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"
#include "VorControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "VorControl/Providers/ControlPersistenceProvider.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Services::Ascii {

/// The service that exchanges lines of text over TCP. Clients request the blocks of one register assembly,
/// "registerAssembly-0", by their numbers, and the entries of an output map by their names. Assembly, map and
/// parameters are saved in the job.
class AsciiProtocol : public VorControl::ControlProtocol::ProtocolBase, private ISensor {
public:
    explicit AsciiProtocol(const VorControl::ControlProtocol::ControlProtocolEnviron& environ);
    ~AsciiProtocol() override;

    void Start() override;
    void Stop() override;

    void ParamsReset() override;
    /// Applies the changed parameters while the service runs. If it can't listen at a new address or port, it continues
    /// at the former one, sets the property `failure` to the reason, and throws.
    void ParamsUpdate() override;
    void OutputsUpdate() override;
    void ConfigureDefaultRegisterAssembly() override;
    void RegisterAssemblyUpdate(const char* assemblyId) override;
    void ProcessResultSets(void* resultSets) override;

    /// The data sources of the assembly, then those that are in the output map only.
    std::vector<std::string> DataSourceList() const override;
    std::vector<std::string> DataSourceList(VorCommon::PersistDomain domain) override;

    /// Updates the counters.
    void NonPersistentPropertiesBeginLock() override;

    using ProtocolBase::BeginUpdateParams;
    using ProtocolBase::Outputs;
    using ProtocolBase::Params;
    using ProtocolBase::ParamsReset;
    using ProtocolBase::ParamsVersion;
    std::shared_ptr<Vor::Params::Group> Params(VorCommon::PersistDomain domain) const override;
    const char* ParamsVersion(VorCommon::PersistDomain domain) const override;
    std::shared_ptr<VorControl::ControlProtocol::IProtocolOutput> Outputs(VorCommon::PersistDomain domain) override;
    std::shared_ptr<VorControl::ControlProtocol::IProtocolRegisterAssemblyGroup>
    RegisterAssemblyGroup(VorCommon::PersistDomain domain) override;
    const char* RegisterAssemblyVersion(VorCommon::PersistDomain domain, const char* assemblyId) override;
    std::shared_ptr<VorControl::Providers::IControlPersistenceProvider> PersistenceProvider() override;

protected:
    void OperationEndEventImpl(int status) override;
    void ParamsResetImpl(VorCommon::PersistDomain domain) override;
    void OutputsMapResetImpl(VorCommon::PersistDomain domain) override;
    void RegisterAssemblyGroupResetImpl(VorCommon::PersistDomain domain) override;
    std::shared_ptr<Vor::Params::Group> BeginUpdateParamsImpl(VorCommon::PersistDomain domain,
                                                              const char* version) override;
    std::shared_ptr<VorControl::ControlProtocol::IProtocolOutput>
    BeginUpdateOutputsMapImpl(VorCommon::PersistDomain domain, const char* version) override;
    std::shared_ptr<VorControl::ControlProtocol::IProtocolRegisterAssembly>
    BeginUpdateRegisterAssemblyImpl(VorCommon::PersistDomain domain, const char* assemblyId,
                                    const char* version) override;
    void EndUpdateParamsImpl(VorCommon::PersistDomain domain, const char* version) override;
    void EndUpdateOutputsMapImpl(VorCommon::PersistDomain domain, const char* version) override;
    void EndUpdateRegisterAssemblyImpl(VorCommon::PersistDomain domain, const char* assemblyId,
                                       const char* version) override;

private:
    using PersistDomain = VorCommon::PersistDomain;

    bool Run(const VorControl::ControlProtocol::ControlRegisterCommandData& command,
             const std::shared_ptr<PendingAnswer>& answer) override;
    void ReadState(const std::shared_ptr<PendingAnswer>& answer) override;

    void Open();
    void Close();
    void SetProperties(const std::string& address, const std::string& failure);
    /// Set the default outputs.
    void ResetAssembly();
    void ResetMap();
    /// Makes the current blocks and map entries the outputs of the clients.
    void PublishOutputs();
    /// The same on the main loop, after all changes of the present load; at once while the service doesn't run.
    void PublishOutputsLater();
    std::vector<OutputDefinition> Definitions() const;

    static constexpr const char* ParametersVersion = "1";
    static constexpr const char* AssemblyVersion = "1";

    AsciiProperties properties;
    const std::shared_ptr<AsciiParams> params;
    const std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterAssemblyBase> assembly;
    const std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterAssemblyGroup> assemblies;
    const std::shared_ptr<VorControl::ControlProtocol::TextIdStandardProtocolOutputMap> map;
    const std::shared_ptr<VorControl::Providers::IControlPersistenceProvider> provider;
    bool mapUpdating = false; ///< from begin to end of an update; the framework runs one update at a time
    Ascii::Outputs outputs;
    ServerCounters counters;
    Common::Wakeup wakeup;
    std::unique_ptr<AsciiServer> server;
    /// Guards the next two. No lock is acquired under it.
    std::mutex commandMutex;
    std::shared_ptr<PendingAnswer> running; ///< the answer to the command in progress
    std::thread::id runner;                 ///< the thread that starts the command, while it does
    /// Whether changed outputs wait to be published on the main loop. Until then clients have the former ones: the load
    /// of a job changes the outputs several times.
    std::atomic<bool> outputsChanging{false};
    Vor::AsyncRunner mainLoop;
};

} // namespace Services::Ascii
