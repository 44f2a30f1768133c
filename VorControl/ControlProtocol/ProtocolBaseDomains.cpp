#include "VorControl/ControlProtocol/IProtocolOutput.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssemblyGroup.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"
#include "VorControl/Providers/IControlPersistenceProvider.h"

namespace VorControl::ControlProtocol {

using VorCommon::PersistDomain;

std::vector<std::string> ProtocolBase::DataSourceList(PersistDomain domain) {
    if (const auto group = RegisterAssemblyGroup(domain)) {
        return group->DataSourceList();
    }
    const auto map = Outputs(domain);
    return map != nullptr ? map->DataSourceList() : DeviceDataSourceList();
}

void ProtocolBase::RefreshScanResults(PersistDomain domain) {
    if (domain == PersistDomain::Job) {
        host->UpdateScanResultsOutputMap(id, DataSourceList(domain));
    }
}

std::shared_ptr<Vor::Params::Group> ProtocolBase::Params(PersistDomain /*domain*/) const {
    return nullptr;
}

const char* ProtocolBase::ParamsVersion(PersistDomain /*domain*/) const {
    return nullptr;
}

bool ProtocolBase::SupportedParamsVersion(PersistDomain /*domain*/, const char* /*version*/) const {
    return false;
}

void ProtocolBase::ParamsReset(PersistDomain domain) {
    ParamsResetImpl(domain);
}

bool ProtocolBase::UpdateDynamicParams(PersistDomain domain) {
    return UpdateDynamicParamsImpl(domain);
}

std::shared_ptr<Vor::Params::Group> ProtocolBase::BeginUpdateParams(PersistDomain domain, const char* version) {
    return BeginUpdateParamsImpl(domain, version);
}

void ProtocolBase::EndUpdateParams(PersistDomain domain, const char* version) {
    EndUpdateParamsImpl(domain, version);
}

std::shared_ptr<IProtocolOutput> ProtocolBase::Outputs(PersistDomain /*domain*/) {
    return nullptr;
}

void ProtocolBase::OutputsMapReset(PersistDomain domain) {
    OutputsMapResetImpl(domain);
    RefreshScanResults(domain);
}

std::shared_ptr<IProtocolOutput> ProtocolBase::BeginUpdateOutputsMap(PersistDomain domain, const char* version) {
    return BeginUpdateOutputsMapImpl(domain, version);
}

void ProtocolBase::EndUpdateOutputsMap(PersistDomain domain, const char* version) {
    EndUpdateOutputsMapImpl(domain, version);
    RefreshScanResults(domain);
}

std::shared_ptr<IProtocolRegisterAssemblyGroup> ProtocolBase::RegisterAssemblyGroup(PersistDomain /*domain*/) {
    return nullptr;
}

void ProtocolBase::RegisterAssemblyGroupReset(PersistDomain domain) {
    RegisterAssemblyGroupResetImpl(domain);
    RefreshScanResults(domain);
}

const char* ProtocolBase::RegisterAssemblyVersion(PersistDomain /*domain*/, const char* /*assemblyId*/) {
    return nullptr;
}

bool ProtocolBase::SupportedRegisterAssemblyVersion(PersistDomain /*domain*/, const char* /*assemblyId*/,
                                                    const char* /*version*/) {
    return false;
}

std::shared_ptr<IProtocolRegisterAssembly>
ProtocolBase::BeginUpdateRegisterAssembly(PersistDomain domain, const char* assemblyId, const char* version) {
    return BeginUpdateRegisterAssemblyImpl(domain, assemblyId, version);
}

void ProtocolBase::EndUpdateRegisterAssembly(PersistDomain domain, const char* assemblyId, const char* version) {
    EndUpdateRegisterAssemblyImpl(domain, assemblyId, version);
    RefreshScanResults(domain);
}

std::shared_ptr<Providers::IControlPersistenceProvider> ProtocolBase::PersistenceProvider() {
    return nullptr;
}

void ProtocolBase::ParamsResetImpl(PersistDomain /*domain*/) {}

void ProtocolBase::OutputsMapResetImpl(PersistDomain /*domain*/) {}

void ProtocolBase::RegisterAssemblyGroupResetImpl(PersistDomain /*domain*/) {}

bool ProtocolBase::UpdateDynamicParamsImpl(PersistDomain /*domain*/) {
    return false;
}

std::shared_ptr<Vor::Params::Group> ProtocolBase::BeginUpdateParamsImpl(PersistDomain /*domain*/,
                                                                        const char* /*version*/) {
    return nullptr;
}

std::shared_ptr<IProtocolOutput> ProtocolBase::BeginUpdateOutputsMapImpl(PersistDomain /*domain*/,
                                                                         const char* /*version*/) {
    return nullptr;
}

std::shared_ptr<IProtocolRegisterAssembly> ProtocolBase::BeginUpdateRegisterAssemblyImpl(PersistDomain /*domain*/,
                                                                                         const char* /*assemblyId*/,
                                                                                         const char* /*version*/) {
    return nullptr;
}

void ProtocolBase::EndUpdateParamsImpl(PersistDomain /*domain*/, const char* /*version*/) {}

void ProtocolBase::EndUpdateOutputsMapImpl(PersistDomain /*domain*/, const char* /*version*/) {}

void ProtocolBase::EndUpdateRegisterAssemblyImpl(PersistDomain /*domain*/, const char* /*assemblyId*/,
                                                 const char* /*version*/) {}

} // namespace VorControl::ControlProtocol
