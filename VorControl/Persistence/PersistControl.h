#pragma once

#include "VorCommon/PersistDomain.h"
#include "VorControl/Persistence/PersistLoadResult.h"

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace VorCommon {
class IPersistStore;
}

namespace VorControl {

class IControlInstance;

/// Loads and saves a service's configuration, the file "/controls/TYPE/config.json" of a domain's store. The file is
/// untrusted. Runs on the persistence thread; has no lock. Updates use the update gate of the service, and what is
/// saved is read under the locks of the objects. If the service has a persistence provider, that reads and writes the
/// service's section of the file, and this class does the rest of the file and starts or stops the service.
class PersistControl {
public:
    /// For a domain that has no file yet.
    void Init(IControlInstance& instance, VorCommon::PersistDomain domain, VorCommon::IPersistStore& store);

    /// Does nothing without the service's file. The service is started or stopped as set in its file, also when its
    /// settings can't be loaded, unless its persistence provider throws. Waits without a limit for the service "hmi" to
    /// start or stop.
    /// @throws Vor::Exception or nlohmann::json::exception, and what the service throws. A file that isn't JSON, has no
    ///         section of the service or another version is refused, and the service stays as it is; with a provider
    ///         also one whose "enabled" isn't a boolean. After a later failure a service without a provider has its
    ///         defaults and what was loaded before, one with a provider what that has made of it.
    void Load(IControlInstance& instance, VorCommon::PersistDomain domain, const VorCommon::IPersistStore& store);

    /// Loads the settings of a service without a persistence provider from its file's section, also when the service is
    /// disabled there. It is neither started nor stopped.
    /// @throws Vor::Exception or nlohmann::json::exception, and what the service throws; then the service has its
    ///         defaults and what was loaded before the failure.
    void LoadSettings(IControlInstance& instance, nlohmann::json& section);

    /// A service with nothing to save keeps the file that it has.
    /// @throws Vor::Exception, nlohmann::json::exception for a text that isn't UTF-8, and what the service throws; then
    ///         the file isn't changed.
    void Save(IControlInstance& instance, VorCommon::PersistDomain domain, VorCommon::IPersistStore& store);

    /// The result of the last Load(), also of one that threw.
    Persistence::PersistLoadResult LastLoadResult() const { return lastLoadResult; }

    /// The version of the file's format. A file of any other version is refused.
    const char* Version() const { return "1"; }

private:
    void LoadFileWithPersistenceProvider(IControlInstance& instance, VorCommon::PersistDomain domain,
                                         const VorCommon::IPersistStore& store);
    void LoadWithPersistenceProvider(IControlInstance& instance, VorCommon::PersistDomain domain,
                                     const nlohmann::json& section);
    bool ProtocolEnableSettingFromConfig(const IControlInstance& instance, const nlohmann::json& section) const;
    void SaveWithPersistenceProvider(IControlInstance& instance, VorCommon::PersistDomain domain,
                                     nlohmann::json& doc) const;
    void ValidateConfigFile(const IControlInstance& instance, const nlohmann::json& doc) const;
    void LoadControlInstance(bool keepEnabled, IControlInstance& instance, nlohmann::json& doc);
    void ResetControlInstance(bool keepEnabled, IControlInstance& instance);
    bool ReadEnableSetting(const IControlInstance& instance, const nlohmann::json& section) const;
    void ApplyEnableSetting(IControlInstance& instance, bool setting) const;
    void EnsureValidHMIState(const IControlInstance& instance) const;

    void LoadControlInstanceSettings(IControlInstance& instance, nlohmann::json& section);
    void LoadControlInstanceParams(IControlInstance& instance, const nlohmann::json& section);
    bool ParametersVersionSupported(const IControlInstance& instance, const nlohmann::json& section) const;
    void UpdateControlInstanceParams(IControlInstance& instance, const nlohmann::json& parameters);

    void LoadControlInstanceRegisterAssembly(IControlInstance& instance, nlohmann::json& section);
    void LoadRegisterAssemblyEntry(IControlInstance& instance, nlohmann::json& entry);
    void UpdateRegisterAssembly(IControlInstance& instance, const nlohmann::json& entry, const std::string& id);
    void LoadRegisterAssemblyBlocks(IControlInstance& instance, const nlohmann::json& entry, const std::string& id);
    void LoadControlInstanceDeviceManager(IControlInstance& instance, const nlohmann::json& section);
    void LoadDeviceManagerSelectedDevicesList(IControlInstance& instance, const nlohmann::json& devices);

    nlohmann::json SaveControlInstance(IControlInstance& instance) const;
    void SaveControlInstanceSettings(IControlInstance& instance, nlohmann::json& section) const;
    void SaveControlInstanceParams(const IControlInstance& instance, nlohmann::json& section) const;
    void SaveControlInstanceRegisterAssembly(IControlInstance& instance, nlohmann::json& section) const;
    void SaveControlInstanceDeviceManager(IControlInstance& instance, nlohmann::json& section) const;

    Persistence::PersistLoadResult lastLoadResult = Persistence::PersistLoadResult::None;
};

} // namespace VorControl
