#include "Sensor/Jobs/JobService.h"

#include "Sensor/Jobs/JobFormat.h"
#include "Sensor/Jobs/KnownKeys.h"
#include "Sensor/Jobs/ListedNames.h"
#include "Sensor/Jobs/OfflineServices.h"
#include "Vor/Exception.h"
#include "Vor/Format.h"
#include "Vor/JsonSerializer.h"
#include "VorCommon/ICommandTarget.h"
#include "VorControl/Control/InstanceLocks.h"
#include "VorControl/ControlProtocol/IProtocolOutput.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"
#include "VorControl/Persistence/PersistControl.h"
#include "VorControl/Persistence/PersistFields.h"
#include "VorControl/Persistence/RunUpdate.h"
#include "VorControl/Providers/UserNotes.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <exception>
#include <memory>

namespace Sensor::Jobs {

namespace {

using nlohmann::json;
using VorCommon::PersistDomain;
using VorControl::Persistence::PersistLoadResult;
using VorControl::Providers::ControlPersistenceProvider;
using VorControl::Providers::UserNotes;
using namespace VorControl::Persistence;

std::string Joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
        all += " " + text + (text.ends_with('.') ? "" : ".");
    }
    return all;
}

/// The text of a failure, followed by the notes that were made before it.
std::string Reason(const Vor::Exception& failure, std::vector<std::string> notes) {
    if (!failure.HasText()) {
        return notes.empty() ? Vor::Format("it failed with status %d.", failure.Status()) : Joined(notes).substr(1);
    }
    std::erase(notes, failure.what());
    return failure.what() + Joined(notes);
}

void ResetToDefaults(VorControl::IControlInstance& instance) {
    if (const auto provider = instance.PersistenceProvider()) {
        provider->Init(PersistDomain::Job);
    } else {
        instance.ResetInstance(true, VorControl::IControlInstance::DataToReset::All);
    }
}

} // namespace

JobService::JobService(OfflineServices& services, VorCommon::ArchiveStore& store, const std::string& serviceId,
                       Missing missing)
    : instance(services.Get(serviceId))
    , path(JobFormat::PathOf(serviceId))
    , store(store) {
    if (store.Exists(path)) {
        settings = JobFormat::Read(store, path);
        JobFormat::RequireSection(settings, path);
    } else if (missing == Missing::UseDefaults) {
        ResetToDefaults(instance);
        settings = JobFormat::Document(Section());
        loaded = true;
    } else {
        Vor::Throw(yERROR_PARAMETER, "the job holds nothing of service '%s'. Expected one that jobs show names.",
                   serviceId);
    }
}

void JobService::Load() {
    if (loaded) {
        return;
    }
    json& section = settings.at(JobFormat::SectionKey);
    const ControlPersistenceProvider::LoadOutcome outcome = LoadSection(section);
    notes = outcome.notes;
    if (outcome.result == PersistLoadResult::Failed) {
        Vor::Throw(yERROR_PARAMETER, "entry '%s' can't be applied.%s", path, Joined(notes));
    }
    loaded = true;
}

ControlPersistenceProvider::LoadOutcome JobService::LoadSection(json& section) const {
    const auto provider = instance.PersistenceProvider();
    if (const auto own = std::dynamic_pointer_cast<ControlPersistenceProvider>(provider)) {
        AddMissingVersions(section);
        return own->LoadWithNotes(PersistDomain::Job, section);
    }
    const UserNotes made;
    try {
        if (provider != nullptr) {
            return {provider->Load(PersistDomain::Job, section), made.Texts()};
        }
        VorControl::PersistControl().LoadSettings(instance, section);
        return {PersistLoadResult::None, made.Texts()};
    } catch (const std::exception&) {
        return {PersistLoadResult::Failed, made.Texts()};
    }
}

// What is written to the store is replaced by Save.
json JobService::Section() const {
    VorControl::PersistControl().Save(instance, PersistDomain::Job, store);
    return JobFormat::Read(store, path).at(JobFormat::SectionKey);
}

// Settings without versions, from before versions existed, are loaded as if they had the service's present versions.
void JobService::AddMissingVersions(json& section) const {
    const auto list = section.find(PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_LIST);
    if (list == section.end() || !list->is_array() ||
        section.contains(PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_VERSION_LIST)) {
        return;
    }
    json present;
    instance.PersistenceProvider()->Save(PersistDomain::Job, present);
    const json versions = present.value(PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_VERSION_LIST, json::array());
    json matching = json::array();
    for (const json& entry : *list) {
        const json properties = entry.is_object() ? entry.value(PERSISTENCE_FIELD_NAME_PROPERTIES, json()) : json();
        const json id = properties.is_object() ? properties.value(PERSISTENCE_FIELD_NAME_ID, json()) : json();
        const auto found = std::find_if(versions.begin(), versions.end(), [&](const json& version) {
            return version.at(PERSISTENCE_FIELD_NAME_ID) == id;
        });
        if (found == versions.end()) {
            return;
        }
        matching.push_back(*found);
    }
    if (!matching.empty()) {
        section[PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_VERSION_LIST] = std::move(matching);
    }
}

std::vector<std::string> JobService::Assemblies(const Selection& selection) const {
    std::vector<std::string> all =
        instance.HasRegisterAssemblyGroup() ? instance.RegisterAssemblyList() : std::vector<std::string>();
    if (selection.assembly.empty()) {
        return all;
    }
    if (std::find(all.begin(), all.end(), selection.assembly) == all.end()) {
        Vor::Throw(yERROR_PARAMETER, "service '%s' has no assembly '%s'. Expected one of: %s.", instance.Id(),
                   selection.assembly, Listed(all));
    }
    return {selection.assembly};
}

bool JobService::IsOutputs(const Selection& selection) const {
    if (selection.outputs && !instance.HasProtocolOutput()) {
        Vor::Throw(yERROR_PARAMETER, "service '%s' has no output map.", instance.Id());
    }
    return selection.outputs || (instance.HasProtocolOutput() && Assemblies(selection).empty());
}

std::string JobService::RequireAssembly(const Selection& selection) const {
    const std::vector<std::string> ids = Assemblies(selection);
    if (ids.empty()) {
        Vor::Throw(yERROR_PARAMETER, "service '%s' has no map.", instance.Id());
    }
    if (ids.size() > 1) {
        Vor::Throw(yERROR_PARAMETER, "service '%s' has several assemblies. Expected --assembly with one of: %s.",
                   instance.Id(), Listed(ids));
    }
    return ids.front();
}

bool JobService::Edit(const Selection& selection, const std::string& command, const json& document) {
    const json before = Section();
    const UserNotes made;
    try {
        if (IsOutputs(selection)) {
            instance.BeginUpdateOutputsMap();
            VorControl::Persistence::RunUpdate([&] { Run(instance.OutputsCommandTarget(), command, document); },
                                               [&] { instance.EndUpdateOutputsMap(); });
        } else {
            const std::string id = RequireAssembly(selection);
            instance.BeginUpdateRegisterAssembly(id.c_str());
            VorControl::Persistence::RunUpdate(
                [&] { Run(instance.RegisterAssemblyCommandTarget(id.c_str()), command, document); },
                [&] { instance.EndUpdateRegisterAssembly(id.c_str()); });
        }
    } catch (const Vor::Exception& e) {
        Vor::ThrowNested(e.Status(), "%s", Reason(e, made.Texts()));
    }
    return Section() != before;
}

std::set<std::string> JobService::DataSources() const {
    std::set<std::string> sources;
    for (const std::string& id : Assemblies({})) {
        auto& assembly = *instance.RegisterAssembly(id.c_str());
        const VorControl::ControlProtocol::AssemblyLock lock(assembly);
        for (const auto& block : assembly.AddedRegisterBlocks()) {
            if (block->HasDataSource()) {
                sources.insert(block->DataSource());
            }
        }
    }
    if (instance.HasProtocolOutput()) {
        const VorControl::InstanceOutputsMapLock lock(instance);
        const json outputs = Vor::Properties::JsonSerializer::Serialize(instance.OutputsMap());
        for (const json& row : outputs.at("map")) {
            sources.insert(row.value("source", std::string()));
        }
    }
    return sources;
}

void JobService::Run(VorCommon::ICommandTarget& target, const std::string& command, const json& document) {
    if (!target.IsCommandSupported(command)) {
        std::vector<std::string> known;
        for (const VorCommon::CommandInfo& info : target.ListCommands()) {
            known.push_back(info.Id());
        }
        Vor::Throw(yERROR_PARAMETER, "there is no command '%s'. Expected one of: %s.", command, Listed(known));
    }
    const auto params = target.GetCommandParams(command);
    if (!document.is_object()) {
        Vor::Throw(yERROR_PARAMETER, "expected a JSON object but got %s.", document.type_name());
    }
    Vor::Properties::JsonSerializer::Validate(*params, document);
    Vor::Properties::JsonSerializer::Deserialize(*params, document);
    RequireKnownKeys(document, Vor::Properties::JsonSerializer::Serialize(*params));
    target.InvokeCommand(command, *params);
}

void JobService::Set(const ServiceSetting& setting) {
    SetParameters(instance, json{{setting.parameter, setting.ValueFor(instance)}});
}

void JobService::Enable(bool on) {
    settings.at(JobFormat::SectionKey)[JobFormat::EnabledKey] = on;
}

void JobService::Save() {
    if (loaded) {
        json& former = settings.at(JobFormat::SectionKey);
        json section = Section();
        section.erase(JobFormat::EnabledKey);
        if (former.contains(JobFormat::EnabledKey)) {
            section[JobFormat::EnabledKey] = former.at(JobFormat::EnabledKey);
        }
        former = std::move(section);
    }
    JobFormat::Write(store, path, settings);
}

} // namespace Sensor::Jobs
