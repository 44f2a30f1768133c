#include "VorControl/Providers/ControlPersistenceProvider.h"

#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"
#include "VorApi/AtScopeEnd.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Threads/Locker.h"
#include "VorControl/Control/RunCaught.h"
#include "VorControl/ControlProtocol/IProtocol.h"
#include "VorControl/Persistence/PersistFields.h"
#include "VorControl/Persistence/RunUpdate.h"
#include "VorControl/Persistence/StoredText.h"
#include "VorControl/Providers/ProviderLog.h"
#include "yApi/yStatus.h"
#include "yApi/yString.h"

#include <cstddef>
#include <exception>
#include <stdexcept>

#include <nlohmann/json.hpp>

namespace VorControl::Providers {

using nlohmann::json;
using Persistence::PERSISTENCE_FIELD_NAME_PARAMETERS;
using Persistence::PERSISTENCE_FIELD_NAME_PARAMETERS_VERSION;
using Persistence::PersistLoadResult;
using Persistence::RunUpdate;
using Persistence::StoredText;
using Vor::Properties::JsonSerializer;
using VorCommon::PersistDomain_Name;

namespace {

/// Each pass applies the whole document again, as applying it can change the set of parameters.
constexpr unsigned int MaxDynamicParamPasses = 5;

} // namespace

ControlPersistenceProvider::ControlPersistenceProvider(ControlProtocol::IProtocol& protocol)
    : protocol(protocol) {
    Vor::ThrowIfFailed(yLock_Construct(lock.Out()));
}

const std::string& ControlPersistenceProvider::Name() const {
    return protocol.DisplayName();
}

void ControlPersistenceProvider::RegisterParams(PersistDomain domain) {
    Register(domain, PersistenceDataCategory::Params);
}

void ControlPersistenceProvider::RegisterOutputsMap(PersistDomain domain) {
    Register(domain, PersistenceDataCategory::OutputsMap);
}

void ControlPersistenceProvider::RegisterRegisterAssemblyGroup(PersistDomain domain) {
    Register(domain, PersistenceDataCategory::RegisterAssemblyGroup);
}

void ControlPersistenceProvider::Register(PersistDomain domain, PersistenceDataCategory category) {
    const Vor::Locker locker(lock.Get());
    AddPersistenceDataTable(domain).at(static_cast<std::size_t>(category)) = true;
}

ControlPersistenceProvider::PersistenceDataTable&
ControlPersistenceProvider::AddPersistenceDataTable(PersistDomain domain) {
    try {
        return persistenceDataTable[domain];
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "%s failed to add a persistence domain table for domain %s", Name(),
                       PersistDomain_Name(domain));
        throw;
    }
}

bool ControlPersistenceProvider::HasRegistration(PersistDomain domain, PersistenceDataCategory category) const {
    const Vor::Locker locker(lock.Get());
    const auto found = persistenceDataTable.find(domain);
    return found != persistenceDataTable.end() && found->second.at(static_cast<std::size_t>(category));
}

bool ControlPersistenceProvider::HasParamsRegistration(PersistDomain domain) const {
    return HasRegistration(domain, PersistenceDataCategory::Params);
}

bool ControlPersistenceProvider::HasOutputsMapRegistration(PersistDomain domain) const {
    return HasRegistration(domain, PersistenceDataCategory::OutputsMap);
}

bool ControlPersistenceProvider::HasRegisterAssemblyGroupRegistration(PersistDomain domain) const {
    return HasRegistration(domain, PersistenceDataCategory::RegisterAssemblyGroup);
}

ControlPersistenceProvider::PersistenceDataTable
ControlPersistenceProvider::GetPersistenceDataTable(PersistDomain domain) const {
    const Vor::Locker locker(lock.Get());
    const auto found = persistenceDataTable.find(domain);
    if (found == persistenceDataTable.end()) {
        Vor::Throw(yERROR_NOT_FOUND, "%s has no persistence registered for domain %s", Name(),
                   PersistDomain_Name(domain));
    }
    return found->second;
}

void ControlPersistenceProvider::UpdateLoadResult(PersistLoadResult& result, PersistLoadResult value) {
    if (result == PersistLoadResult::None) {
        result = value;
    }
}

void ControlPersistenceProvider::Init(PersistDomain domain) {
    const Vor::Locker locker(lock.Get());
    if (HasParamsRegistration(domain)) {
        InitParameters(domain);
    }
    if (HasOutputsMapRegistration(domain)) {
        InitOutputsMap(domain);
    }
    if (HasRegisterAssemblyGroupRegistration(domain)) {
        InitRegisterAssemblyGroup(domain);
    }
}

void ControlPersistenceProvider::Save(PersistDomain domain, json& section) {
    const Vor::Locker locker(lock.Get());
    if (HasParamsRegistration(domain)) {
        SaveParameters(domain, section);
    }
    if (HasOutputsMapRegistration(domain)) {
        SaveOutputsMap(domain, section);
    }
    if (HasRegisterAssemblyGroupRegistration(domain)) {
        SaveRegisterAssemblyGroup(domain, section);
    }
}

ControlPersistenceProvider::LoadOutcome ControlPersistenceProvider::LoadWithNotes(PersistDomain domain,
                                                                                  const json& section) {
    const Vor::Locker locker(lock.Get());
    UserNotes collected;
    notes = &collected;
    const Vor::AtScopeEnd loaded([this] { notes = nullptr; });
    const PersistLoadResult result = Load(domain, section);
    return {result, collected.Texts()};
}

void ControlPersistenceProvider::Note(const std::string& text) {
    if (notes != nullptr) {
        notes->Add(text);
    }
}

void ControlPersistenceProvider::NoteThrown(const std::exception& e) {
    if (*e.what() != '\0') {
        Note(e.what());
    }
    try {
        std::rethrow_if_nested(e);
    } catch (const std::exception& cause) {
        NoteThrown(cause);
    } catch (...) {
        Note(UnknownException);
    }
}

template <class LoadStep, class ResetStep>
PersistLoadResult ControlPersistenceProvider::LoadCategory(const LoadStep& load, const ResetStep& reset) {
    const auto report = [this](const std::exception& e) {
        Vor::LogThrown(e, "EXCEPTION THROWN: ");
        NoteThrown(e);
    };
    try {
        return load();
    } catch (const std::exception& e) {
        report(e);
    } catch (...) {
        report(std::runtime_error(UnknownException));
        ResetAfterFailure(reset);
    }
    return PersistLoadResult::Failed;
}

PersistLoadResult ControlPersistenceProvider::Load(PersistDomain domain, const json& section) {
    const Vor::Locker locker(lock.Get());
    PersistLoadResult result = PersistLoadResult::None;
    if (HasParamsRegistration(domain)) {
        UpdateLoadResult(
            result, LoadCategory([&] { return LoadParameters(domain, section); }, [&] { InitParameters(domain); }));
    }
    if (HasOutputsMapRegistration(domain)) {
        UpdateLoadResult(
            result, LoadCategory([&] { return LoadOutputsMap(domain, section); }, [&] { InitOutputsMap(domain); }));
    }
    if (HasRegisterAssemblyGroupRegistration(domain)) {
        UpdateLoadResult(result, LoadCategory([&] { return LoadRegisterAssemblyGroup(domain, section); },
                                              [&] { InitRegisterAssemblyGroup(domain); }));
    }
    return result;
}

void ControlPersistenceProvider::InitParameters(PersistDomain domain) {
    RunLogged([&] { protocol.ParamsReset(domain); },
              "%s encountered an error while initializing parameters for domain %s", Name(),
              PersistDomain_Name(domain));
}

void ControlPersistenceProvider::SaveParameters(PersistDomain domain, json& section) {
    try {
        const auto params = protocol.Params(domain);
        const char* const version = protocol.ParamsVersion(domain);
        if (params == nullptr || version == nullptr) {
            Vor::Throw(yERROR_NOT_FOUND);
        }
        section[PERSISTENCE_FIELD_NAME_PARAMETERS] = JsonSerializer::Serialize(*params);
        section[PERSISTENCE_FIELD_NAME_PARAMETERS_VERSION] = version;
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "%s encountered an error while persisting parameters for domain %s", Name(),
                       PersistDomain_Name(domain));
        throw;
    }
}

PersistLoadResult ControlPersistenceProvider::LoadParameters(PersistDomain domain, const json& section) {
    const char* const domainName = PersistDomain_Name(domain);
    if (!section.contains(PERSISTENCE_FIELD_NAME_PARAMETERS) ||
        !section.contains(PERSISTENCE_FIELD_NAME_PARAMETERS_VERSION)) {
        Vor::LogInfo("%s configuration has no parameters section to load for domain %s", Name(), domainName);
        return PersistLoadResult::None;
    }
    const json& parameters = section.at(PERSISTENCE_FIELD_NAME_PARAMETERS);
    if (parameters.empty()) {
        Vor::LogInfo("%s configuration is missing parameters to load for domain %s", Name(), domainName);
        return PersistLoadResult::None;
    }
    try {
        const StoredVersion stored = StoredText(section, PERSISTENCE_FIELD_NAME_PARAMETERS_VERSION);
        const std::string version = stored.value_or("");
        const auto params = protocol.BeginUpdateParams(domain, version.c_str());
        if (params == nullptr) {
            Vor::Throw(yERROR_NOT_FOUND);
        }
        const bool updated = RunUpdate(
            [&] {
                InitParameters(domain);
                return UpdateParameters(domain, *params, parameters);
            },
            [&] { protocol.EndUpdateParams(domain, version.c_str()); });
        const PersistLoadResult result =
            LoadParamsVersionCheck(domain, protocol.ParamsVersion(domain), stored ? stored->c_str() : nullptr);
        return updated ? result : PersistLoadResult::Failed;
    } catch (const std::exception& e) {
        ReportThrown(e, "%s encountered an error while loading parameters for domain %s", Name(), domainName);
        ResetAfterFailure([&] { InitParameters(domain); });
        return PersistLoadResult::Failed;
    }
}

// False when the document couldn't be applied.
bool ControlPersistenceProvider::UpdateParameters(PersistDomain domain, Vor::Params::Group& params,
                                                  const json& parameters) {
    try {
        bool isChanging = true;
        for (unsigned int pass = 0; isChanging && pass < MaxDynamicParamPasses; ++pass) {
            JsonSerializer::Deserialize(params, parameters);
            isChanging = protocol.UpdateDynamicParams(domain);
        }
        if (isChanging) {
            Vor::LogWarning("%s limit of %u dynamic parameter update iterations has been reached. Dynamic parameter "
                            "updates will be stopped.",
                            Name(), MaxDynamicParamPasses);
        }
        return true;
    } catch (const std::exception& e) {
        ReportThrown(e, "%s encountered error updating parameters for domain %s", Name(), PersistDomain_Name(domain));
        return false;
    }
}

PersistLoadResult ControlPersistenceProvider::LoadParamsVersionCheck(PersistDomain domain, const char* current,
                                                                     const char* stored) {
    const std::string& name = Name();
    if (current == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "%s does not have the service's parameter version information in domain %s", name,
                   PersistDomain_Name(domain));
    }
    if (stored == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "%s configuration does not have version information in domain %s", name,
                   PersistDomain_Name(domain));
    }
    if (yStrEquals(current, stored)) {
        return PersistLoadResult::None;
    }
    if (protocol.SupportedParamsVersion(domain, stored)) {
        LogForUser(Vor::UserInfo,
                   "%1$s parameters was upgraded from version \"%2$s\" to \"%3$s\". Please review the parameter "
                   "details",
                   name, stored, current);
        Vor::LogInfo("%s parameters was upgraded from version \"%s\" to \"%s\".", name, stored, current);
        return PersistLoadResult::Upgraded;
    }
    LogForUser(Vor::UserWarning,
               "%1$s parameters was upgraded from version \"%2$s\" to \"%3$s\". This upgrade path is not supported. "
               "Please review the parameter details.",
               name, stored, current);
    Vor::LogWarning("%s parameters was upgraded from version \"%s\" to \"%s\". This upgrade path is not supported. "
                    "Please review the parameter details.",
                    name, stored, current);
    return PersistLoadResult::UnsupportedUpgrade;
}

} // namespace VorControl::Providers
