#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"
#include "VorControl/Persistence/PersistControl.h"
#include "VorControl/Persistence/PersistFields.h"
#include "VorControl/Persistence/PersistLog.h"
#include "VorControl/Persistence/RegisterAssemblyDocument.h"
#include "VorControl/Persistence/RunUpdate.h"
#include "yApi/yStatus.h"

#include <exception>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

namespace VorControl {

using ControlProtocol::AddBlockParams;
using nlohmann::json;
using Persistence::LogForUser;
using Persistence::PERSISTENCE_FIELD_NAME_ATTRIBUTES;
using Persistence::PERSISTENCE_FIELD_NAME_BLOCKS;
using Persistence::PERSISTENCE_FIELD_NAME_ID;
using Persistence::PERSISTENCE_FIELD_NAME_PROPERTIES;
using Persistence::PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_LIST;
using Persistence::PersistLoadResult;
using Persistence::RunUpdate;
using Vor::Properties::JsonSerializer;

namespace {

constexpr const char* EthernetAsciiName = "e-ascii";

bool HasText(const json& entry, const char* group, const char* key) {
    const auto found = entry.find(group);
    if (found == entry.end() || !found->is_object()) {
        return false;
    }
    const auto value = found->find(key);
    return value != found->end() && value->is_string();
}

/// Moves the id from the attributes, where the first release stored it, to the properties.
// NOLINTNEXTLINE(readability-identifier-naming): the underscore separates the parts of a version
void ConvertRegisterAssemblyToPost1_0Format(json& entry) {
    json& attributes = entry.at(PERSISTENCE_FIELD_NAME_ATTRIBUTES);
    json& properties = entry[PERSISTENCE_FIELD_NAME_PROPERTIES];
    if (!properties.is_object()) {
        properties = json::object();
    }
    properties[PERSISTENCE_FIELD_NAME_ID] = std::move(attributes.at(PERSISTENCE_FIELD_NAME_ID));
    attributes.erase(PERSISTENCE_FIELD_NAME_ID);
}

/// Empty when the entry has none.
std::string RegisterAssemblyIdFromCfg(json& entry) {
    if (!entry.is_object()) {
        return "";
    }
    if (!HasText(entry, PERSISTENCE_FIELD_NAME_PROPERTIES, PERSISTENCE_FIELD_NAME_ID)) {
        if (!HasText(entry, PERSISTENCE_FIELD_NAME_ATTRIBUTES, PERSISTENCE_FIELD_NAME_ID)) {
            return "";
        }
        ConvertRegisterAssemblyToPost1_0Format(entry);
    }
    return entry.at(PERSISTENCE_FIELD_NAME_PROPERTIES).at(PERSISTENCE_FIELD_NAME_ID).get<std::string>();
}

/// The service no longer has this block, of which a job had at most one.
// NOLINTNEXTLINE(readability-identifier-naming): the underscore separates the parts of a version
void RemoveUnsupportedRegisterBlockFromEthernetAsciiJobParamsFor1_2Release(AddBlockParams& params) {
    for (unsigned long i = 0; i < params.blocks.Count(); ++i) {
        if (params.blocks.At(i).type.Get() == "Scanner") {
            params.blocks.Remove(i);
            return;
        }
    }
}

/// Runs a step of a save and returns its result. A failure of it is reported to the user and by `logFailure`, and
/// thrown as one of the service.
template <class Step, class Log>
auto RunSaving(const std::string& name, const Step& step, const Log& logFailure) {
    try {
        return step();
    } catch (const std::exception& e) {
        LogForUser(Vor::UserError, "Error saving connection map for service '%s'. Please check the connection map.",
                   name);
        logFailure();
        Vor::ThrowNested(Vor::Exception::StatusOf(e), "Error saving connection map for service '%s'", name);
    }
}

} // namespace

void PersistControl::LoadControlInstanceRegisterAssembly(IControlInstance& instance, json& section) {
    const auto list = section.find(PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_LIST);
    if (list == section.end() || !list->is_array() || !instance.HasRegisterAssemblyGroup() ||
        !instance.HasRegisterAssemblyCommandTarget()) {
        return;
    }
    for (json& entry : *list) {
        LoadRegisterAssemblyEntry(instance, entry);
    }
}

void PersistControl::LoadRegisterAssemblyEntry(IControlInstance& instance, json& entry) {
    const std::string& name = instance.DisplayName();
    const std::string id = RegisterAssemblyIdFromCfg(entry);
    if (id.empty() || !entry.contains(PERSISTENCE_FIELD_NAME_BLOCKS)) {
        Vor::LogWarning("Missing connection map identifier for service '%s'", name);
        LogForUser(Vor::UserWarning,
                   "Missing connection map identifier for service '%s'. Connection map may require manual "
                   "configuration.",
                   name);
        return;
    }
    if (!instance.HasRegisterAssembly(id.c_str())) {
        Vor::LogWarning("Missing connection map identifier '%s' for service '%s'", id, name);
        LogForUser(Vor::UserWarning,
                   "Missing connection map identifier '%1$s' for service '%2$s'. Connection map may require manual "
                   "configuration.",
                   id, name);
        return;
    }
    try {
        UpdateRegisterAssembly(instance, entry, id);
    } catch (const std::exception& e) {
        LogForUser(Vor::UserError,
                   "Error loading connection map '%1$s' for service '%2$s'. Connection map may require manual "
                   "configuration.",
                   id, name);
        Vor::LogThrown(e, "EXCEPTION THROWN: ");
        // "%$1s" is no conversion: it is part of the text.
        Vor::ThrowNested(Vor::Exception::StatusOf(e), "Error loading connection map '%$1s' for service '%2$s'", id,
                         name);
    }
}

void PersistControl::UpdateRegisterAssembly(IControlInstance& instance, const json& entry, const std::string& id) {
    instance.BeginUpdateRegisterAssembly();
    const auto update = [&] {
        try {
            LoadRegisterAssemblyBlocks(instance, entry, id);
            instance.RegisterAssemblyUpdate(id.c_str());
        } catch (const std::exception&) {
            const std::string& name = instance.DisplayName();
            LogForUser(Vor::UserError,
                       "Error filling connection map '%1$s' for service '%2$s'. Connection map may require manual "
                       "configuration.",
                       id, name);
            Vor::LogError("Error filling connection map '%s' for service '%s'", id, name);
            Vor::ThrowNested(yERROR, "Error filling connection map '%1$s' for service '%2$s'", id, name);
        }
    };
    RunUpdate(update, [&] { instance.EndUpdateRegisterAssembly(id.c_str()); });
}

void PersistControl::LoadRegisterAssemblyBlocks(IControlInstance& instance, const json& entry, const std::string& id) {
    const std::string& name = instance.DisplayName();
    try {
        const auto assembly = instance.RegisterAssembly(id.c_str());
        AddBlockParams params;
        JsonSerializer::Deserialize(params, entry);
        assembly->ResetRegisterAssembly();
        if (name == EthernetAsciiName) {
            RemoveUnsupportedRegisterBlockFromEthernetAsciiJobParamsFor1_2Release(params);
        }
        try {
            if (assembly->Add(params) != 0) {
                lastLoadResult = PersistLoadResult::AssemblyInPart;
            }
        } catch (const std::exception& e) {
            Vor::LogWarning("Encountered a problem loading %s register assembly: %s", name, e.what());
            lastLoadResult = PersistLoadResult::PartMissing;
            throw;
        }
    } catch (const std::exception& e) {
        instance.ResetInstance(true, IControlInstance::DataToReset::RegisterAssemblies);
        Vor::LogThrown(e, "Loading register assembly %s blocks for service %s", id, name);
        throw;
    }
}

void PersistControl::SaveControlInstanceRegisterAssembly(IControlInstance& instance, json& section) const {
    if (!instance.HasRegisterAssemblyGroup()) {
        return;
    }
    const std::string& name = instance.DisplayName();
    const auto runLocking = [&](const auto& step) {
        return RunSaving(name, step, [&] {
            Vor::LogError("Error locking/unlocking or getting list connection map for '%s'", name);
        });
    };
    for (const std::string& id : runLocking([&] { return instance.RegisterAssemblyList(); })) {
        const auto save = [&] {
            section[PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_LIST].push_back(
                Persistence::SerializeRegisterAssembly(*instance.RegisterAssembly(id.c_str())));
        };
        runLocking([&] { instance.RegisterAssemblyBeginLock(id.c_str()); });
        RunUpdate([&] { RunSaving(name, save, [] {}); },
                  [&] { runLocking([&] { instance.RegisterAssemblyEndLock(id.c_str()); }); });
    }
}

} // namespace VorControl
