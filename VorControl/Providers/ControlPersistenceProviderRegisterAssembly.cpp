#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/IProtocol.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssemblyGroup.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "VorControl/Persistence/PersistFields.h"
#include "VorControl/Persistence/RegisterAssemblyDocument.h"
#include "VorControl/Persistence/RunUpdate.h"
#include "VorControl/Persistence/StoredText.h"
#include "VorControl/Providers/ControlPersistenceProvider.h"
#include "VorControl/Providers/ProviderLog.h"
#include "yApi/yStatus.h"
#include "yApi/yString.h"

#include <algorithm>
#include <cstddef>

#include <nlohmann/json.hpp>

namespace VorControl::Providers {

using ControlProtocol::AssemblyLock;
using ControlProtocol::IProtocolRegisterAssembly;
using nlohmann::json;
using Persistence::PERSISTENCE_FIELD_NAME_ATTRIBUTES;
using Persistence::PERSISTENCE_FIELD_NAME_BLOCKS;
using Persistence::PERSISTENCE_FIELD_NAME_DISPLAY_NAME;
using Persistence::PERSISTENCE_FIELD_NAME_ID;
using Persistence::PERSISTENCE_FIELD_NAME_PROPERTIES;
using Persistence::PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_LIST;
using Persistence::PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_VERSION_LIST;
using Persistence::PERSISTENCE_FIELD_NAME_VERSION;
using Persistence::PersistLoadResult;
using Persistence::RunUpdate;
using Persistence::StoredText;
using VorCommon::PersistDomain_Name;

namespace {

bool IsFilledArray(const json& section, const char* key) {
    return section.is_object() && section.contains(key) && section.at(key).is_array() && !section.at(key).empty();
}

bool HasBlocks(const json& entry) {
    return entry.is_object() && entry.contains(PERSISTENCE_FIELD_NAME_BLOCKS) &&
           entry.at(PERSISTENCE_FIELD_NAME_BLOCKS).is_array();
}

bool HasIdAndVersion(const json& record) {
    return record.is_object() && record.contains(PERSISTENCE_FIELD_NAME_ID) &&
           record.contains(PERSISTENCE_FIELD_NAME_VERSION);
}

/// The name of an assembly in a message to the user.
template <class Ids>
const std::string& NameForUser(const Ids& ids) {
    return ids.displayName.empty() ? ids.id : ids.displayName;
}

} // namespace

void ControlPersistenceProvider::InitRegisterAssemblyGroup(PersistDomain domain) {
    RunLogged([&] { protocol.RegisterAssemblyGroupReset(domain); },
              "%s encountered an error while initializing connection map for domain %s", Name(),
              PersistDomain_Name(domain));
}

void ControlPersistenceProvider::SaveRegisterAssemblyGroup(PersistDomain domain, json& section) {
    std::shared_ptr<Group> group;
    const std::vector<std::string> ids = RunLogged(
        [&] {
            group = protocol.RegisterAssemblyGroup(domain);
            if (group == nullptr) {
                Vor::Throw(yERROR_NOT_FOUND);
            }
            section[PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_LIST] = json::array();
            section[PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_VERSION_LIST] = json::array();
            return group->List();
        },
        "%s encountered an error setting up for persisting connection map into domain %s", Name(),
        PersistDomain_Name(domain));
    for (const std::string& id : ids) {
        SaveRegisterAssembly(domain, *group, id, section);
    }
}

void ControlPersistenceProvider::SaveRegisterAssembly(PersistDomain domain, const Group& group, const std::string& id,
                                                      json& section) {
    const char* const domainName = PersistDomain_Name(domain);
    const auto runLocking = [&](const auto& step) {
        return RunLogged(step, "%s encountered error locking/unlocking connection map %s for persisting into domain %s",
                         Name(), id, domainName);
    };
    const auto run = [&](const auto& step) {
        return RunLogged(step, "%s encountered an error while persisting connection map %s for domain %s", Name(), id,
                         domainName);
    };
    const auto assembly = run([&] { return group.RegisterAssembly(id.c_str()); });
    AssemblyLock lock = runLocking([&] { return AssemblyLock(*assembly); });
    run([&] {
        section[PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_LIST].push_back(
            Persistence::SerializeRegisterAssembly(*assembly));
    });
    runLocking([&] { lock.Unlock(); });
    run([&] {
        const char* const version = protocol.RegisterAssemblyVersion(domain, id.c_str());
        if (version == nullptr) {
            Vor::LogError("%s does not have a version for register assembly %s for domain %s", Name(), id, domainName);
            Vor::Throw(yERROR_NOT_FOUND);
        }
        section[PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_VERSION_LIST].push_back(
            {{PERSISTENCE_FIELD_NAME_VERSION, version}, {PERSISTENCE_FIELD_NAME_ID, id}});
    });
}

PersistLoadResult ControlPersistenceProvider::LoadRegisterAssemblyGroup(PersistDomain domain, const json& section) {
    loadedAssemblyIds.clear();
    PersistLoadResult result = PersistLoadResult::None;
    const auto group = protocol.RegisterAssemblyGroup(domain);
    if (!IsLoadableRegisterAssemblyGroupConfig(domain, group.get(), section, result)) {
        return result;
    }
    const json& list = section.at(PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_LIST);
    const auto versions = section.find(PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_VERSION_LIST);
    for (std::size_t i = 0; i < list.size(); ++i) {
        const json versionRecord = versions == section.end() ? json() : versions->at(i);
        UpdateLoadResult(result, LoadRegisterAssemblyEntry(domain, *group, list.at(i), versionRecord));
    }
    UpdateLoadResult(result, CheckForMissingRegisterAssemblyConfig(domain, *group));
    return result;
}

bool ControlPersistenceProvider::IsLoadableRegisterAssemblyGroupConfig(PersistDomain domain, const Group* group,
                                                                       const json& section, PersistLoadResult& result) {
    const char* const domainName = PersistDomain_Name(domain);
    if (group == nullptr) {
        ReportError("%s has no register assemblies to which to apply the configurations for domain %s.", Name(),
                    domainName);
        result = PersistLoadResult::Failed;
        return false;
    }
    result = PersistLoadResult::None;
    if (!IsFilledArray(section, PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_LIST)) {
        if (group->List().empty()) {
            Vor::LogInfo("%s register assembly configuration has no data to load for domain %s", Name(), domainName);
            return false;
        }
        LogForUser(Vor::UserWarning,
                   "%1$s expected information for connection maps but none are found in the configuration. Please "
                   "check if the connection map data sources are correct.",
                   Name());
        Vor::LogWarning("%s expected information for register assemblies but none are found in the configuration for "
                        "domain %s.",
                        Name(), domainName);
        return false;
    }
    if (!HasWellFormedRegisterAssemblyLists(domain, section)) {
        result = PersistLoadResult::Failed;
        return false;
    }
    return true;
}

// The section has a list of assemblies. Earlier releases wrote no list of their versions.
bool ControlPersistenceProvider::HasWellFormedRegisterAssemblyLists(PersistDomain domain, const json& section) {
    const char* const domainName = PersistDomain_Name(domain);
    const json& list = section.at(PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_LIST);
    if (!std::all_of(list.begin(), list.end(), HasBlocks)) {
        ReportError("%s register assembly configuration has incorrectly formatted register assembly block list for "
                    "domain %s. Register assembly list will not be loaded.",
                    Name(), domainName);
        return false;
    }
    if (!section.contains(PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_VERSION_LIST)) {
        return true;
    }
    if (!IsFilledArray(section, PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_VERSION_LIST)) {
        ReportError("%s register assembly configuration has incorrectly formatted register assembly version list "
                    "for domain %s. Register assembly list will not be loaded.",
                    Name(), domainName);
        return false;
    }
    const json& versions = section.at(PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_VERSION_LIST);
    if (list.size() != versions.size()) {
        ReportError("%s register assembly configuration size (%zu) and the version list size (%zu) are not the same. "
                    "Register assembly list will not be loaded.",
                    Name(), list.size(), versions.size());
        return false;
    }
    if (!std::all_of(versions.begin(), versions.end(), HasIdAndVersion)) {
        ReportError("%s register assembly version list is missing the id or version fields for domain %s.", Name(),
                    domainName);
        return false;
    }
    return true;
}

ControlPersistenceProvider::RegisterAssemblyIntExtIds
ControlPersistenceProvider::RegisterAssemblyIdFromCfg(const json& entry) {
    const json properties = entry.value(PERSISTENCE_FIELD_NAME_PROPERTIES, json());
    if (auto id = StoredText(properties, PERSISTENCE_FIELD_NAME_ID)) {
        return {std::move(*id), StoredText(properties, PERSISTENCE_FIELD_NAME_DISPLAY_NAME).value_or("")};
    }
    const json attributes = entry.value(PERSISTENCE_FIELD_NAME_ATTRIBUTES, json());
    return {StoredText(attributes, PERSISTENCE_FIELD_NAME_ID).value_or(""), ""};
}

PersistLoadResult ControlPersistenceProvider::LoadRegisterAssemblyEntry(PersistDomain domain, const Group& group,
                                                                        const json& entry, const json& versionRecord) {
    const RegisterAssemblyIntExtIds ids = RegisterAssemblyIdFromCfg(entry);
    if (ids.id.empty()) {
        Vor::LogInfo("%s skipped loading a register assembly because it does not have an identifier for domain %s.",
                     Name(), PersistDomain_Name(domain));
        return PersistLoadResult::PartMissing;
    }
    loadedAssemblyIds.push_back(ids.id);
    try {
        return LoadRegisterAssembly(domain, group, ids, entry, versionRecord);
    } catch (const std::exception& e) {
        ReportThrown(e,
                     "%s encountered an error while loading connection map %s. Please check if the connection map data "
                     "sources are correct.",
                     Name(), ids.id);
        return PersistLoadResult::Failed;
    }
}

PersistLoadResult ControlPersistenceProvider::LoadRegisterAssembly(PersistDomain domain, const Group& group,
                                                                   const RegisterAssemblyIntExtIds& ids,
                                                                   const json& entry, const json& versionRecord) {
    if (versionRecord.is_object() && StoredText(versionRecord, PERSISTENCE_FIELD_NAME_ID) != ids.id) {
        Vor::Throw(yERROR_FORMAT,
                   "%s connection map %s configuration conflicts with the version list id %s information for domain "
                   "%s.",
                   Name(), ids.id, StoredText(versionRecord, PERSISTENCE_FIELD_NAME_ID).value_or(""),
                   PersistDomain_Name(domain));
    }
    const StoredVersion stored = StoredText(versionRecord, PERSISTENCE_FIELD_NAME_VERSION);
    if (!group.HasRegisterAssembly(ids.id.c_str())) {
        ReportUnsupportedAssembly(ids);
        Vor::LogWarning("%s could not load part of the configuration because register assembly %s is not found for "
                        "domain %s",
                        Name(), ids.id, PersistDomain_Name(domain));
        return PersistLoadResult::PartMissing;
    }
    const PersistLoadResult result = LoadRegisterAssemblyBlocks(domain, ids, entry, stored.value_or("").c_str());
    if (result != PersistLoadResult::None) {
        return result;
    }
    return LoadRegisterAssemblyVersionCheck(domain, ids, protocol.RegisterAssemblyVersion(domain, ids.id.c_str()),
                                            stored ? stored->c_str() : nullptr);
}

void ControlPersistenceProvider::ReportUnsupportedAssembly(const RegisterAssemblyIntExtIds& ids) const {
    if (ids.displayName.empty()) {
        LogForUser(Vor::UserWarning,
                   "%1$s could not load a connection map configuration because the connection map is no longer "
                   "supported by the service.",
                   Name());
    } else {
        LogForUser(Vor::UserWarning,
                   "%1$s could not load the connection map %2$s configuration because the connection map is no longer "
                   "supported by the service.",
                   Name(), ids.displayName);
    }
}

PersistLoadResult ControlPersistenceProvider::LoadRegisterAssemblyBlocks(PersistDomain domain,
                                                                         const RegisterAssemblyIntExtIds& ids,
                                                                         const json& entry, const char* version) {
    try {
        const auto assembly = protocol.BeginUpdateRegisterAssembly(domain, ids.id.c_str(), version);
        if (assembly == nullptr) {
            ReportUnsupportedAssembly(ids);
            Vor::LogWarning("%s could not load part of the configuration because version %s register assembly %s is "
                            "missing for domain %s",
                            Name(), version, ids.id, PersistDomain_Name(domain));
            return PersistLoadResult::PartMissing;
        }
        return RunUpdate([&] { return FillRegisterAssembly(*assembly, ids.id, entry); },
                         [&] { protocol.EndUpdateRegisterAssembly(domain, ids.id.c_str(), version); });
    } catch (const std::exception& e) {
        ReportThrown(e,
                     "%s encountered an error while loading connection map %s. Please check if the connection map data "
                     "sources are correct.",
                     Name(), ids.id);
        return PersistLoadResult::Failed;
    }
}

// An assembly to which the blocks can't be added gets its default ones.
PersistLoadResult ControlPersistenceProvider::FillRegisterAssembly(IProtocolRegisterAssembly& assembly,
                                                                   const std::string& id, const json& entry) {
    try {
        ControlProtocol::AddBlockParams params;
        Vor::Properties::JsonSerializer::Deserialize(params, entry);
        assembly.ResetRegisterAssembly();
        return assembly.Add(params) != 0 ? PersistLoadResult::AssemblyInPart : PersistLoadResult::None;
    } catch (const std::exception& e) {
        assembly.InitDefaultRegisterBlocksForRegisterAssembly();
        ReportThrown(
            e,
            "%s encountered an error while updating connection map %s. Please check if the connection map data "
            "sources are correct.",
            Name(), id);
        return PersistLoadResult::Failed;
    }
}

PersistLoadResult ControlPersistenceProvider::LoadRegisterAssemblyVersionCheck(PersistDomain domain,
                                                                               const RegisterAssemblyIntExtIds& ids,
                                                                               const char* current,
                                                                               const char* stored) {
    const std::string& name = Name();
    if (current == nullptr) {
        Vor::Throw(yERROR_PARAMETER,
                   "%s does not have the service's connection map %s version information in domain %s", name, ids.id,
                   PersistDomain_Name(domain));
    }
    if (stored == nullptr) {
        Vor::Throw(yERROR_PARAMETER,
                   "%s connection map %s configuration does not have version information in domain %s", name, ids.id,
                   PersistDomain_Name(domain));
    }
    if (yStrEquals(current, stored)) {
        return PersistLoadResult::None;
    }
    if (protocol.SupportedRegisterAssemblyVersion(domain, ids.id.c_str(), stored)) {
        LogForUser(Vor::UserInfo,
                   "%1$s connection map %2$s was upgraded from version \"%3$s\" to \"%4$s\". Please review the "
                   "connection map details.",
                   name, NameForUser(ids), stored, current);
        Vor::LogInfo("%s register assembly %s was upgraded from version \"%s\" to \"%s\".", name, ids.id, stored,
                     current);
        return PersistLoadResult::Upgraded;
    }
    LogForUser(Vor::UserWarning,
               "%1$s connection map %2$s was upgraded from version \"%3$s\" to \"%4$s\". This upgrade path is not "
               "supported. Please review the connection map details.",
               name, NameForUser(ids), stored, current);
    Vor::LogWarning("%s register assembly %s was upgraded from version \"%s\" to \"%s\". This upgrade path is not "
                    "supported.",
                    name, ids.id, stored, current);
    return PersistLoadResult::UnsupportedUpgrade;
}

PersistLoadResult ControlPersistenceProvider::CheckForMissingRegisterAssemblyConfig(PersistDomain domain,
                                                                                    const Group& group) {
    PersistLoadResult result = PersistLoadResult::None;
    for (const std::string& id : group.List()) {
        if (std::find(loadedAssemblyIds.begin(), loadedAssemblyIds.end(), id) != loadedAssemblyIds.end()) {
            continue;
        }
        LogForUser(Vor::UserWarning,
                   "%1$s expected information for connection map %2$s but not found in the configuration. Please "
                   "review the connection map details.",
                   Name(), group.DisplayName(id.c_str()));
        Vor::LogWarning("%s expected information for register assembly %s but not found in the configuration for "
                        "domain %s.",
                        Name(), id, PersistDomain_Name(domain));
        result = PersistLoadResult::PartMissing;
    }
    return result;
}

} // namespace VorControl::Providers
