// What the service saves in the job.

#include "Services/Ascii/AsciiProtocol.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"

namespace Services::Ascii {

using namespace VorControl::ControlProtocol;

std::shared_ptr<Vor::Params::Group> AsciiProtocol::Params(PersistDomain domain) const {
    return domain == PersistDomain::Job ? params : nullptr;
}

const char* AsciiProtocol::ParamsVersion(PersistDomain domain) const {
    return domain == PersistDomain::Job ? ParametersVersion : nullptr;
}

std::shared_ptr<IProtocolOutput> AsciiProtocol::Outputs(PersistDomain domain) {
    return domain == PersistDomain::Job ? map : nullptr;
}

std::shared_ptr<IProtocolRegisterAssemblyGroup> AsciiProtocol::RegisterAssemblyGroup(PersistDomain domain) {
    return domain == PersistDomain::Job ? assemblies : nullptr;
}

const char* AsciiProtocol::RegisterAssemblyVersion(PersistDomain domain, const char* /*assemblyId*/) {
    return domain == PersistDomain::Job ? AssemblyVersion : nullptr;
}

std::shared_ptr<VorControl::Providers::IControlPersistenceProvider> AsciiProtocol::PersistenceProvider() {
    return provider;
}

void AsciiProtocol::ParamsResetImpl(PersistDomain domain) {
    if (domain == PersistDomain::Job) {
        params->Reset();
    }
}

void AsciiProtocol::OutputsMapResetImpl(PersistDomain domain) {
    if (domain == PersistDomain::Job) {
        if (mapUpdating) { // the loaded entries replace the default ones
            map->Clear();
        } else {
            ResetMap();
        }
        PublishOutputsLater();
    }
}

void AsciiProtocol::RegisterAssemblyGroupResetImpl(PersistDomain domain) {
    if (domain == PersistDomain::Job) {
        ResetAssembly();
        PublishOutputsLater();
    }
}

std::shared_ptr<Vor::Params::Group> AsciiProtocol::BeginUpdateParamsImpl(PersistDomain domain,
                                                                         const char* /*version*/) {
    return domain == PersistDomain::Job ? params : nullptr;
}

std::shared_ptr<IProtocolOutput> AsciiProtocol::BeginUpdateOutputsMapImpl(PersistDomain domain,
                                                                          const char* /*version*/) {
    if (domain != PersistDomain::Job) {
        return nullptr;
    }
    mapUpdating = true;
    return map;
}

std::shared_ptr<IProtocolRegisterAssembly>
AsciiProtocol::BeginUpdateRegisterAssemblyImpl(PersistDomain domain, const char* assemblyId, const char* /*version*/) {
    return domain == PersistDomain::Job ? assemblies->RegisterAssembly(assemblyId) : nullptr;
}

// Parameters that can't be used leave the service as it was, with the reason in `failure`. They stay for the user to
// correct.
void AsciiProtocol::EndUpdateParamsImpl(PersistDomain domain, const char* /*version*/) {
    if (domain != PersistDomain::Job) {
        return;
    }
    try {
        ParamsUpdate();
    } catch (const std::exception& e) {
        Vor::LogError("The parameters of %s can't be used as they are", DisplayName());
        Vor::Exception::LogException(e);
    }
}

void AsciiProtocol::EndUpdateOutputsMapImpl(PersistDomain domain, const char* /*version*/) {
    if (domain == PersistDomain::Job) {
        mapUpdating = false;
        PublishOutputsLater();
    }
}

void AsciiProtocol::EndUpdateRegisterAssemblyImpl(PersistDomain domain, const char* /*assemblyId*/,
                                                  const char* /*version*/) {
    if (domain == PersistDomain::Job) {
        PublishOutputsLater();
    }
}

} // namespace Services::Ascii
