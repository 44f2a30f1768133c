#pragma once

#include "VorControl/ControlProtocol/ILoadObserver.h"
#include "VorControl/ControlProtocol/IProtocolOutput.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/NonPersistentProperties.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"
#include "VorControl/Providers/ControlPersistenceProvider.h"

#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace Services::Common {

/// What a service keeps in the job. A service has what isn't null or empty.
struct JobContents {
    std::shared_ptr<Vor::Params::Group> params = nullptr;
    std::vector<std::shared_ptr<VorControl::ControlProtocol::IProtocolRegisterAssembly>> assemblies = {};
    std::shared_ptr<VorControl::ControlProtocol::IProtocolOutput> outputs = nullptr;
    /// Saved with each assembly. The version of the parameters is ProtocolBase::ParamsVersion.
    const char* assemblyVersion = "1";
};

/// The base class of a service whose parameters, register assemblies and output map are in the job, and in no other
/// domain.
///
/// Parameters are given to the service as a whole: ApplyParams is called once for each change, at the end of a load
/// too. Parameters of a job that it refuses stay in the job for the user to correct, and the user's log gets the
/// reason.
///
/// All functions are called inside the update gate, on the main loop's thread or on that of a load; none may wait for
/// the other.
class JobProtocol : public VorControl::ControlProtocol::ProtocolBase,
                    public VorControl::ControlProtocol::ILoadObserver {
public:
    using ProtocolBase::BeginUpdateParams;
    using ProtocolBase::EndUpdateParams;
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

    /// The data sources of the assemblies, then those that are in the output map only.
    std::vector<std::string> DataSourceList() const override;
    std::vector<std::string> DataSourceList(VorCommon::PersistDomain domain) override;

    /// Throws what ApplyParams throws.
    void ParamsUpdate() final;
    void OutputsUpdate() override;
    /// Nothing: what has changed is applied once, at the end of the update.
    void RegisterAssemblyUpdate(const char* assemblyId) override;
    void ConfigureDefaultRegisterAssembly() override;
    void OnLoadBegin() override {}

protected:
    explicit JobProtocol(const VorControl::ControlProtocol::ControlProtocolEnviron& environ);

    /// Call it once, in the constructor of the service, which owns properties and metrics. Null keeps the built-in
    /// properties; without metrics there are none.
    void Init(const JobContents& contents, VorControl::ControlProtocol::NonPersistentProperties* properties = nullptr,
              Vor::Properties::Structure* metrics = nullptr);

    /// The parameters have changed. A service that runs applies them here. If it can't, it throws with a text for the
    /// user and continues as before.
    virtual void ApplyParams() {}
    /// Assemblies or the output map have changed, or may have. A load calls it several times.
    virtual void MapChanged() {}
    /// Notifies the user that the service can't use its parameters, and why.
    void ReportUnusableParams(const std::exception& reason) const;
    /// Sets the blocks of a service without a map of its own: the types' minimum numbers.
    virtual void ResetAssemblies();
    /// Sets the entries of a service without a map of its own: none. A load that has entries sets those instead.
    virtual void ResetOutputs();

    /// Calls ParamsReset(), in which the service puts its parameters back to their defaults.
    void ParamsResetImpl(VorCommon::PersistDomain domain) override;
    void OutputsMapResetImpl(VorCommon::PersistDomain domain) override;
    void RegisterAssemblyGroupResetImpl(VorCommon::PersistDomain domain) override;
    std::shared_ptr<Vor::Params::Group> BeginUpdateParamsImpl(VorCommon::PersistDomain domain,
                                                              const char* version) override;
    void EndUpdateParamsImpl(VorCommon::PersistDomain domain, const char* version) override;
    std::shared_ptr<VorControl::ControlProtocol::IProtocolOutput>
    BeginUpdateOutputsMapImpl(VorCommon::PersistDomain domain, const char* version) override;
    void EndUpdateOutputsMapImpl(VorCommon::PersistDomain domain, const char* version) override;
    std::shared_ptr<VorControl::ControlProtocol::IProtocolRegisterAssembly>
    BeginUpdateRegisterAssemblyImpl(VorCommon::PersistDomain domain, const char* assemblyId,
                                    const char* version) override;
    void EndUpdateRegisterAssemblyImpl(VorCommon::PersistDomain domain, const char* assemblyId,
                                       const char* version) override;

private:
    JobContents job;
    const std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterAssemblyGroup> assemblies =
        std::make_shared<VorControl::ControlProtocol::ProtocolRegisterAssemblyGroup>();
    const std::shared_ptr<VorControl::Providers::ControlPersistenceProvider> provider =
        std::make_shared<VorControl::Providers::ControlPersistenceProvider>(*this);
    // Guarded by the update gate.
    bool paramsTried = false; ///< since the present update began
};

} // namespace Services::Common
