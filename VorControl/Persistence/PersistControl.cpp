#include "VorControl/Persistence/PersistControl.h"

#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"
#include "Vor/JsonText.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorCommon/IPersistStore.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Persistence/PersistFields.h"
#include "VorControl/Persistence/PersistInstanceProperties.h"
#include "VorControl/Persistence/PersistLog.h"
#include "VorControl/Persistence/RunUpdate.h"
#include "VorControl/Providers/IControlPersistenceProvider.h"
#include "yApi/yStatus.h"
#include "yApi/yString.h"
#include "yApi/yThread.h"

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

namespace VorControl {

using ControlProtocol::ProtocolPersistOptions;
using ControlProtocol::ProtocolStatus;
using nlohmann::json;
using Persistence::LogForUser;
using Persistence::PERSISTENCE_FIELD_NAME_PARAMETERS;
using Persistence::PERSISTENCE_FIELD_NAME_PARAMETERS_VERSION;
using Persistence::PERSISTENCE_FIELD_NAME_VERSION;
using Persistence::PersistLoadResult;
using Persistence::RunUpdate;
using VorCommon::IPersistStore;
using VorCommon::PersistDomain;

namespace {

constexpr const char* ControlKey = "vor:control";
constexpr const char* EnabledKey = "enabled";

constexpr const char* HmiId = "hmi";
constexpr std::uint64_t HmiPollPeriod = 100000; ///< microseconds

std::string ConfigPath(const IControlInstance& instance) {
    return "/controls/" + instance.TypeName() + "/config.json";
}

json ReadDocument(const IPersistStore& store, const std::string& path) {
    const VorCommon::PersistBuffer buffer = store.Read(path);
    return Vor::ParseJson(reinterpret_cast<const char*>(buffer.pointer + buffer.offset), buffer.size);
}

/// An empty document isn't written, so an older file stays.
void WriteDocument(IPersistStore& store, const std::string& path, const json& doc) {
    if (doc.empty()) {
        return;
    }
    const std::string text = doc.dump(-1, ' ');
    store.Write(path, text.data(), text.size());
}

/// The options of the job domain apply to every domain.
bool HasOption(const IControlInstance& instance, ProtocolPersistOptions option) {
    return instance.HasPersistOption(PersistDomain::Job, option);
}

} // namespace

void PersistControl::Init(IControlInstance& instance, PersistDomain domain, IPersistStore& store) {
    if (const auto provider = instance.PersistenceProvider()) {
        if (domain == PersistDomain::Job) {
            instance.ResetProtocolToDefaultEnabledState();
        }
        provider->Init(domain);
    } else if (domain == PersistDomain::Job) {
        instance.ResetInstance(false, IControlInstance::DataToReset::All);
    } else if (domain == PersistDomain::Workspace && HasOption(instance, ProtocolPersistOptions::WorkspaceData)) {
        WriteDocument(store, ConfigPath(instance), instance.WorkspacePersistData());
    }
}

void PersistControl::Load(IControlInstance& instance, PersistDomain domain, const IPersistStore& store) {
    lastLoadResult = PersistLoadResult::None;
    const std::string path = ConfigPath(instance);
    if (instance.PersistenceProvider() != nullptr) {
        LoadFileWithPersistenceProvider(instance, domain, store);
    } else if (domain == PersistDomain::Job) {
        if (!store.Exists(path)) {
            return;
        }
        json doc = ReadDocument(store, path);
        ValidateConfigFile(instance, doc);
        LoadControlInstance(true, instance, doc);
        instance.OnPersistDomainLoaded(domain);
    } else if (domain == PersistDomain::Workspace && HasOption(instance, ProtocolPersistOptions::WorkspaceData)) {
        if (!store.Exists(path)) {
            return;
        }
        json doc = ReadDocument(store, path);
        if (!doc.empty()) {
            instance.WorkspacePersistData() = std::move(doc);
            instance.OnPersistDomainLoaded(domain);
        }
    }
}

void PersistControl::Save(IControlInstance& instance, PersistDomain domain, IPersistStore& store) {
    if (instance.PersistenceProvider() != nullptr) {
        json doc;
        SaveWithPersistenceProvider(instance, domain, doc);
        WriteDocument(store, ConfigPath(instance), doc);
    } else if (domain == PersistDomain::Job) {
        WriteDocument(store, ConfigPath(instance), SaveControlInstance(instance));
    } else if (domain == PersistDomain::Workspace && HasOption(instance, ProtocolPersistOptions::WorkspaceData)) {
        WriteDocument(store, ConfigPath(instance), instance.WorkspacePersistData());
    }
}

void PersistControl::LoadFileWithPersistenceProvider(IControlInstance& instance, PersistDomain domain,
                                                     const IPersistStore& store) {
    const std::string path = ConfigPath(instance);
    if (!store.Exists(path)) {
        return;
    }
    const json doc = ReadDocument(store, path);
    if (doc.empty()) {
        return;
    }
    ValidateConfigFile(instance, doc);
    const json& section = doc.at(ControlKey);
    LoadWithPersistenceProvider(instance, domain, section);
    if (domain == PersistDomain::Job) {
        ApplyEnableSetting(instance, ProtocolEnableSettingFromConfig(instance, section));
    }
}

// A service that the job disables gets its defaults, whatever else is in the file.
void PersistControl::LoadWithPersistenceProvider(IControlInstance& instance, PersistDomain domain,
                                                 const json& section) {
    const auto provider = instance.PersistenceProvider();
    if (domain == PersistDomain::Job && !ProtocolEnableSettingFromConfig(instance, section)) {
        provider->Init(domain);
        return;
    }
    lastLoadResult = provider->Load(domain, section);
}

bool PersistControl::ProtocolEnableSettingFromConfig(const IControlInstance& instance, const json& section) const {
    if (section.is_object() && section.contains(EnabledKey)) {
        return section.at(EnabledKey).get<bool>();
    }
    Vor::LogWarning("Missing enable/disable setting in configuration file for service '%s'. Using default setting.",
                    instance.DisplayName());
    return instance.ProtocolAutoEnableSetting();
}

void PersistControl::SaveWithPersistenceProvider(IControlInstance& instance, PersistDomain domain, json& doc) const {
    json& section = doc[ControlKey];
    instance.PersistenceProvider()->Save(domain, section);
    if (domain == PersistDomain::Job) {
        section[EnabledKey] = instance.IsEnabled();
    }
    if (section.empty()) {
        doc.erase(ControlKey);
        return;
    }
    doc[PERSISTENCE_FIELD_NAME_VERSION] = Version();
}

void PersistControl::ValidateConfigFile(const IControlInstance& instance, const json& doc) const {
    const std::string& name = instance.DisplayName();
    if (!doc.is_object() || !doc.contains(ControlKey)) {
        LogForUser(Vor::UserWarning,
                   "No saved information found in service '%s' configuration file. No changes made to service.", name);
        Vor::Throw(yERROR_FORMAT, "No saved information found in service '%s' configuration file.", name);
    }
    if (!doc.contains(PERSISTENCE_FIELD_NAME_VERSION)) {
        LogForUser(Vor::UserWarning,
                   "Unsupported configuration file format for service '%s'. Manual configuration for service may be "
                   "needed.",
                   name);
        Vor::Throw(yERROR_FORMAT, "Unsupported configuration file format for service '%s'.", name);
    }
    const std::string version = doc.at(PERSISTENCE_FIELD_NAME_VERSION).get<std::string>();
    if (!yStrEquals(version.c_str(), Version())) {
        LogForUser(Vor::UserWarning,
                   "Unsupported configuration file version for service '%s'. Manual configuration for service may be "
                   "needed.",
                   name);
        Vor::Throw(yERROR_VERSION,
                   "Unsupported configuration file version for service '%1$s'. expected: %2$s actual: %3$s", name,
                   Version(), version);
    }
}

void PersistControl::LoadControlInstance(bool keepEnabled, IControlInstance& instance, json& doc) {
    ResetControlInstance(keepEnabled, instance);
    json& section = doc.at(ControlKey);
    const bool enabled = ReadEnableSetting(instance, section);
    bool failed = false;
    std::exception_ptr other; // isn't a std::exception
    if (enabled) {
        try {
            LoadControlInstanceSettings(instance, section);
        } catch (const std::exception&) {
            failed = true;
        } catch (...) {
            other = std::current_exception();
        }
    }
    ApplyEnableSetting(instance, enabled);
    if (failed) {
        Vor::Throw(yERROR);
    }
    if (other != nullptr) {
        std::rethrow_exception(other);
    }
}

void PersistControl::LoadSettings(IControlInstance& instance, json& section) {
    ResetControlInstance(true, instance);
    LoadControlInstanceSettings(instance, section);
}

// Resets what the file will set.
void PersistControl::ResetControlInstance(bool keepEnabled, IControlInstance& instance) {
    using DataToReset = IControlInstance::DataToReset;
    if (HasOption(instance, ProtocolPersistOptions::All)) {
        instance.ResetInstance(keepEnabled, DataToReset::All);
        return;
    }
    for (const auto& [option, data] :
         {std::pair(ProtocolPersistOptions::Params, DataToReset::Params),
          std::pair(ProtocolPersistOptions::OutputsMap, DataToReset::OutputsMap),
          std::pair(ProtocolPersistOptions::RegisterAssemblies, DataToReset::RegisterAssemblies),
          std::pair(ProtocolPersistOptions::DeviceManager, DataToReset::DeviceManager)}) {
        if (HasOption(instance, option)) {
            instance.ResetInstance(keepEnabled, data);
        }
    }
}

bool PersistControl::ReadEnableSetting(const IControlInstance& instance, const json& section) const {
    PersistInstanceProperties properties;
    if (section.is_object() && section.contains(EnabledKey)) {
        Vor::Properties::JsonSerializer::Deserialize(properties, section);
    } else {
        LogForUser(Vor::UserWarning,
                   "Missing enable/disable setting in configuration file for service '%s'. Service will be disabled. "
                   "Manual configuration for service may be needed.",
                   instance.DisplayName());
        Vor::LogWarning("Missing enable/disable setting in configuration file for service '%s'.",
                        instance.DisplayName());
    }
    return properties.enabled.Get();
}

// A running service isn't started again, but one whose start failed is.
void PersistControl::ApplyEnableSetting(IControlInstance& instance, bool setting) const {
    const bool startAgain = setting && instance.GetProtocolStatus() == ProtocolStatus::FailedToStart;
    if (setting == instance.IsEnabled() && !startAgain) {
        return;
    }
    if (instance.Id() == HmiId) {
        EnsureValidHMIState(instance);
    }
    instance.Enable(setting);
}

void PersistControl::EnsureValidHMIState(const IControlInstance& instance) const {
    const auto isBetweenStates = [&] {
        const ProtocolStatus status = instance.GetProtocolStatus();
        return status == ProtocolStatus::Starting || status == ProtocolStatus::Stopping;
    };
    while (isBetweenStates()) {
        Vor::ThrowIfFailed(yThread_Sleep(HmiPollPeriod));
    }
}

void PersistControl::LoadControlInstanceSettings(IControlInstance& instance, json& section) {
    if (HasOption(instance, ProtocolPersistOptions::Params)) {
        LoadControlInstanceParams(instance, section);
    }
    if (HasOption(instance, ProtocolPersistOptions::RegisterAssemblies)) {
        LoadControlInstanceRegisterAssembly(instance, section);
    }
    if (HasOption(instance, ProtocolPersistOptions::DeviceManager)) {
        LoadControlInstanceDeviceManager(instance, section);
    }
}

void PersistControl::LoadControlInstanceParams(IControlInstance& instance, const json& section) {
    if (!section.contains(PERSISTENCE_FIELD_NAME_PARAMETERS)) {
        return;
    }
    try {
        if (!ParametersVersionSupported(instance, section)) {
            Vor::Throw(yERROR_VERSION);
        }
        UpdateControlInstanceParams(instance, section.at(PERSISTENCE_FIELD_NAME_PARAMETERS));
    } catch (const std::exception& e) {
        LogForUser(Vor::UserError,
                   "Error loading parameters for service '%s'. Parameters may require manual configuration.",
                   instance.DisplayName());
        Vor::LogThrown(e, "EXCEPTION THROWN: ");
        Vor::ThrowNested(Vor::Exception::StatusOf(e), "Error loading parameters for service '%s'",
                         instance.DisplayName());
    }
}

bool PersistControl::ParametersVersionSupported(const IControlInstance& instance, const json& section) const {
    const std::string& name = instance.DisplayName();
    if (!section.contains(PERSISTENCE_FIELD_NAME_PARAMETERS_VERSION)) {
        LogForUser(Vor::UserWarning,
                   "Missing parameters version for service '%s'. Parameters may require manual configuration.", name);
        Vor::LogWarning("Missing parameters version for service '%s'", name);
        return false;
    }
    const std::string version = section.at(PERSISTENCE_FIELD_NAME_PARAMETERS_VERSION).get<std::string>();
    if (!yStrEquals(version.c_str(), instance.ParamsVersion())) {
        LogForUser(Vor::UserWarning,
                   "Unsupported parameters version for service '%s'. Parameters may require manual configuration.",
                   name);
        Vor::LogWarning("Unsupported parameters version for service '%1$s'. Expected: %2$s, version in config: %3$s",
                        name, instance.ParamsVersion(), version);
        return false;
    }
    return true;
}

void PersistControl::UpdateControlInstanceParams(IControlInstance& instance, const json& parameters) {
    const auto params = instance.BeginUpdateParameters();
    const auto update = [&] {
        try {
            Vor::Properties::JsonSerializer::Deserialize(*params, parameters);
            instance.ParamsUpdate();
        } catch (const std::exception& e) {
            LogForUser(Vor::UserError,
                       "Error updating parameters for service '%s'. Parameters may require manual configuration.",
                       instance.DisplayName());
            Vor::LogThrown(e, "Error updating parameters for service '%s'", instance.DisplayName());
            Vor::ThrowNested(yERROR, "Error updating parameters for service '%s'", instance.DisplayName());
        }
    };
    RunUpdate(update, [&] { instance.EndUpdateParameters(); });
}

json PersistControl::SaveControlInstance(IControlInstance& instance) const {
    PersistInstanceProperties properties;
    properties.enabled = instance.IsEnabled();
    json doc;
    doc[PERSISTENCE_FIELD_NAME_VERSION] = Version();
    json& section = doc[ControlKey];
    section = Vor::Properties::JsonSerializer::Serialize(properties);
    SaveControlInstanceSettings(instance, section);
    return doc;
}

void PersistControl::SaveControlInstanceSettings(IControlInstance& instance, json& section) const {
    if (HasOption(instance, ProtocolPersistOptions::Params)) {
        SaveControlInstanceParams(instance, section);
    }
    if (HasOption(instance, ProtocolPersistOptions::RegisterAssemblies)) {
        SaveControlInstanceRegisterAssembly(instance, section);
    }
    if (HasOption(instance, ProtocolPersistOptions::DeviceManager)) {
        SaveControlInstanceDeviceManager(instance, section);
    }
}

void PersistControl::SaveControlInstanceParams(const IControlInstance& instance, json& section) const {
    try {
        section[PERSISTENCE_FIELD_NAME_PARAMETERS] = Vor::Properties::JsonSerializer::Serialize(*instance.Params());
        section[PERSISTENCE_FIELD_NAME_PARAMETERS_VERSION] = instance.ParamsVersion();
    } catch (const std::exception& e) {
        LogForUser(Vor::UserError, "Error saving parameters for service '%s'. Please check the parameter settings.",
                   instance.DisplayName());
        Vor::LogThrown(e, "EXCEPTION THROWN: ");
        Vor::ThrowNested(Vor::Exception::StatusOf(e), "Error saving parameters for service '%s'",
                         instance.DisplayName());
    }
}

} // namespace VorControl
