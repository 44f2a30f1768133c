#include "Services/Common/JobProtocol.h"

#include "Services/Common/Translate.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"

#include <set>
#include <utility>

namespace Services::Common {

using VorCommon::PersistDomain;
using namespace VorControl::ControlProtocol;

JobProtocol::JobProtocol(const ControlProtocolEnviron& environ)
    : ProtocolBase(environ) {}

void JobProtocol::Init(const JobContents& contents, NonPersistentProperties* properties,
                       Vor::Properties::Structure* metrics) {
    job = contents;
    for (const auto& assembly : job.assemblies) {
        assemblies->Add(assembly);
    }
    ProtocolBase::Init({.nonPersistentProperties = properties,
                        .params = job.params.get(),
                        .outputs = job.outputs.get(),
                        .outputsCommandTarget = job.outputs != nullptr ? &job.outputs->CommandTarget() : nullptr,
                        .metrics = metrics,
                        .registerAssemblyGroup = job.assemblies.empty() ? nullptr : assemblies.get()});
    if (job.params != nullptr) {
        provider->RegisterParams(PersistDomain::Job);
    }
    if (job.outputs != nullptr) {
        provider->RegisterOutputsMap(PersistDomain::Job);
    }
    if (!job.assemblies.empty()) {
        provider->RegisterRegisterAssemblyGroup(PersistDomain::Job);
    }
}

std::shared_ptr<Vor::Params::Group> JobProtocol::Params(PersistDomain domain) const {
    return domain == PersistDomain::Job ? job.params : nullptr;
}

const char* JobProtocol::ParamsVersion(PersistDomain domain) const {
    return domain == PersistDomain::Job ? ParamsVersion() : nullptr;
}

std::shared_ptr<IProtocolOutput> JobProtocol::Outputs(PersistDomain domain) {
    return domain == PersistDomain::Job ? job.outputs : nullptr;
}

std::shared_ptr<IProtocolRegisterAssemblyGroup> JobProtocol::RegisterAssemblyGroup(PersistDomain domain) {
    return domain == PersistDomain::Job && !job.assemblies.empty() ? assemblies : nullptr;
}

const char* JobProtocol::RegisterAssemblyVersion(PersistDomain domain, const char* assemblyId) {
    return domain == PersistDomain::Job && HasRegisterAssembly(assemblyId) ? job.assemblyVersion : nullptr;
}

std::shared_ptr<VorControl::Providers::IControlPersistenceProvider> JobProtocol::PersistenceProvider() {
    return provider;
}

std::vector<std::string> JobProtocol::DataSourceList() const {
    std::vector<std::string> sources = assemblies->DataSourceList();
    if (job.outputs != nullptr) {
        const std::set<std::string> known(sources.begin(), sources.end());
        for (std::string& source : job.outputs->DataSourceList()) {
            if (!known.contains(source)) {
                sources.push_back(std::move(source));
            }
        }
    }
    return sources;
}

std::vector<std::string> JobProtocol::DataSourceList(PersistDomain domain) {
    return domain == PersistDomain::Job ? DataSourceList() : std::vector<std::string>();
}

void JobProtocol::ParamsUpdate() {
    paramsTried = true;
    ApplyParams();
}

void JobProtocol::OutputsUpdate() {
    MapChanged();
    GetControlHost().UpdateScanResultsOutputMap(Id(), DataSourceList());
}

void JobProtocol::RegisterAssemblyUpdate(const char* /*assemblyId*/) {}

void JobProtocol::ConfigureDefaultRegisterAssembly() {
    RegisterAssemblyGroupReset(PersistDomain::Job);
}

void JobProtocol::ResetAssemblies() {
    for (const auto& assembly : job.assemblies) {
        assembly->InitDefaultRegisterBlocksForRegisterAssembly();
    }
}

void JobProtocol::ResetOutputs() {
    job.outputs->Clear();
}

void JobProtocol::ParamsResetImpl(PersistDomain domain) {
    if (domain == PersistDomain::Job) {
        ParamsReset();
    }
}

void JobProtocol::OutputsMapResetImpl(PersistDomain domain) {
    if (domain == PersistDomain::Job && job.outputs != nullptr) {
        ResetOutputs();
        MapChanged();
    }
}

void JobProtocol::RegisterAssemblyGroupResetImpl(PersistDomain domain) {
    if (domain == PersistDomain::Job) {
        ResetAssemblies();
        MapChanged();
    }
}

std::shared_ptr<Vor::Params::Group> JobProtocol::BeginUpdateParamsImpl(PersistDomain domain, const char* /*version*/) {
    if (domain == PersistDomain::Job) {
        paramsTried = false;
    }
    return Params(domain);
}

void JobProtocol::EndUpdateParamsImpl(PersistDomain domain, const char* /*version*/) {
    if (domain != PersistDomain::Job || paramsTried) {
        return;
    }
    try {
        ParamsUpdate();
    } catch (const std::exception& e) {
        ReportUnusableParams(e);
    }
}

void JobProtocol::ReportUnusableParams(const std::exception& reason) const {
    Vor::LogUser(Vor::UserError, "VorControl", Translate("%1$s can't use its parameters: %2$s."), DisplayName(),
                 reason.what());
}

std::shared_ptr<IProtocolOutput> JobProtocol::BeginUpdateOutputsMapImpl(PersistDomain domain, const char* /*version*/) {
    return Outputs(domain);
}

void JobProtocol::EndUpdateOutputsMapImpl(PersistDomain domain, const char* /*version*/) {
    if (domain == PersistDomain::Job) {
        MapChanged();
    }
}

std::shared_ptr<IProtocolRegisterAssembly>
JobProtocol::BeginUpdateRegisterAssemblyImpl(PersistDomain domain, const char* assemblyId, const char* /*version*/) {
    return domain == PersistDomain::Job && HasRegisterAssembly(assemblyId) ? RegisterAssembly(assemblyId) : nullptr;
}

void JobProtocol::EndUpdateRegisterAssemblyImpl(PersistDomain domain, const char* /*assemblyId*/,
                                                const char* /*version*/) {
    if (domain == PersistDomain::Job) {
        MapChanged();
    }
}

} // namespace Services::Common
