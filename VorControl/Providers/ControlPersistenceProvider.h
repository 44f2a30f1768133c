#pragma once

#include "Vor/Format.h"
#include "Vor/LocatedFormat.h"
#include "VorApi/Handle.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Params/Group.h"
#include "VorControl/Providers/IControlPersistenceProvider.h"
#include "VorControl/Providers/UserNotes.h"
#include "yApi/yLock.h"

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace VorControl::ControlProtocol {
class IProtocol;
class IProtocolOutput;
class IProtocolRegisterAssembly;
class IProtocolRegisterAssemblyGroup;
} // namespace VorControl::ControlProtocol

namespace VorControl::Providers {

/// A service makes its provider in its constructor and returns it from PersistenceProvider(). The provider gets the
/// objects of the domain from the service, and changes each between the service's start and end of an update. It does
/// so under its lock, so meanwhile the service must not wait for another thread that uses the provider.
class ControlPersistenceProvider : public IControlPersistenceProvider {
public:
    /// What is registered for a domain, by PersistenceDataCategory.
    using PersistenceDataTable = std::array<bool, 3>;

    /// The service must outlive the provider. Throws the status of a lock that can't be made.
    explicit ControlPersistenceProvider(ControlProtocol::IProtocol& protocol);
    ControlPersistenceProvider(const ControlPersistenceProvider&) = delete;
    ControlPersistenceProvider& operator=(const ControlPersistenceProvider&) = delete;

    void Init(VorCommon::PersistDomain domain) override;
    Persistence::PersistLoadResult Load(VorCommon::PersistDomain domain, const nlohmann::json& section) override;
    void Save(VorCommon::PersistDomain domain, nlohmann::json& section) override;

    void RegisterParams(VorCommon::PersistDomain domain) override;
    void RegisterOutputsMap(VorCommon::PersistDomain domain) override;
    void RegisterRegisterAssemblyGroup(VorCommon::PersistDomain domain) override;

    /// A load's result, and what the user should know about it: why something was left out, upgraded or has failed.
    struct LoadOutcome {
        Persistence::PersistLoadResult result = Persistence::PersistLoadResult::None;
        std::vector<std::string> notes;
    };
    /// As Load.
    LoadOutcome LoadWithNotes(VorCommon::PersistDomain domain, const nlohmann::json& section);

    /// False for a domain for which nothing was registered.
    bool HasParamsRegistration(VorCommon::PersistDomain domain) const;
    bool HasOutputsMapRegistration(VorCommon::PersistDomain domain) const;
    bool HasRegisterAssemblyGroupRegistration(VorCommon::PersistDomain domain) const;
    /// Throws yERROR_NOT_FOUND for a domain for which nothing was registered.
    PersistenceDataTable GetPersistenceDataTable(VorCommon::PersistDomain domain) const;

protected:
    /// One category each, called under the lock. A service that keeps a category in another way overrides its
    /// functions. A failure to reset or to save is thrown on; a failure to load returns Failed.
    virtual void InitParameters(VorCommon::PersistDomain domain);
    virtual void InitOutputsMap(VorCommon::PersistDomain domain);
    virtual void InitRegisterAssemblyGroup(VorCommon::PersistDomain domain);
    virtual void SaveParameters(VorCommon::PersistDomain domain, nlohmann::json& section);
    virtual void SaveOutputsMap(VorCommon::PersistDomain domain, nlohmann::json& section);
    virtual void SaveRegisterAssemblyGroup(VorCommon::PersistDomain domain, nlohmann::json& section);
    virtual Persistence::PersistLoadResult LoadParameters(VorCommon::PersistDomain domain,
                                                          const nlohmann::json& section);
    virtual Persistence::PersistLoadResult LoadOutputsMap(VorCommon::PersistDomain domain,
                                                          const nlohmann::json& section);
    virtual Persistence::PersistLoadResult LoadRegisterAssemblyGroup(VorCommon::PersistDomain domain,
                                                                     const nlohmann::json& section);

private:
    using PersistDomain = VorCommon::PersistDomain;
    using PersistLoadResult = Persistence::PersistLoadResult;
    /// A save and a load ask the service for its group once.
    using Group = ControlProtocol::IProtocolRegisterAssemblyGroup;

    /// The id of an assembly, and its name for the user. Either may be empty.
    struct RegisterAssemblyIntExtIds {
        std::string id;
        std::string displayName;
    };
    /// A version in the file, which may be missing.
    using StoredVersion = std::optional<std::string>;

    /// Log an error of a load, and note it.
    template <typename... Args>
    void ReportError(const Vor::LocatedFormat& text, const Args&... args) {
        Vor::LogError(text, args...);
        Note(Vor::Format(text.text, args...));
    }
    template <typename... Args>
    void ReportThrown(const std::exception& e, const Vor::LocatedFormat& text, const Args&... args) {
        Vor::LogThrown(e, text, args...);
        Note(Vor::Format(text.text, args...));
        NoteThrown(e);
    }
    void Note(const std::string& text);
    /// Notes the texts of the exception and of those nested in it.
    void NoteThrown(const std::exception& e);

    /// Returns the result of a category. What isn't a std::exception is a failure, too, after which it is reset.
    template <class LoadStep, class ResetStep>
    PersistLoadResult LoadCategory(const LoadStep& load, const ResetStep& reset);

    void Register(PersistDomain domain, PersistenceDataCategory category);
    PersistenceDataTable& AddPersistenceDataTable(PersistDomain domain);
    bool HasRegistration(PersistDomain domain, PersistenceDataCategory category) const;
    /// Keeps the first result that isn't None.
    static void UpdateLoadResult(PersistLoadResult& result, PersistLoadResult value);
    const std::string& Name() const;

    bool UpdateParameters(PersistDomain domain, Vor::Params::Group& params, const nlohmann::json& parameters);
    PersistLoadResult LoadParamsVersionCheck(PersistDomain domain, const char* current, const char* stored);

    PersistLoadResult UpdateOutputsMap(PersistDomain domain, ControlProtocol::IProtocolOutput& outputs,
                                       const nlohmann::json& document);

    void SaveRegisterAssembly(PersistDomain domain, const Group& group, const std::string& id, nlohmann::json& section);
    bool IsLoadableRegisterAssemblyGroupConfig(PersistDomain domain, const Group* group, const nlohmann::json& section,
                                               PersistLoadResult& result);
    bool HasWellFormedRegisterAssemblyLists(PersistDomain domain, const nlohmann::json& section);
    static RegisterAssemblyIntExtIds RegisterAssemblyIdFromCfg(const nlohmann::json& entry);
    PersistLoadResult LoadRegisterAssemblyEntry(PersistDomain domain, const Group& group, const nlohmann::json& entry,
                                                const nlohmann::json& versionRecord);
    PersistLoadResult LoadRegisterAssembly(PersistDomain domain, const Group& group,
                                           const RegisterAssemblyIntExtIds& ids, const nlohmann::json& entry,
                                           const nlohmann::json& versionRecord);
    PersistLoadResult LoadRegisterAssemblyBlocks(PersistDomain domain, const RegisterAssemblyIntExtIds& ids,
                                                 const nlohmann::json& entry, const char* version);
    PersistLoadResult FillRegisterAssembly(ControlProtocol::IProtocolRegisterAssembly& assembly, const std::string& id,
                                           const nlohmann::json& entry);
    PersistLoadResult LoadRegisterAssemblyVersionCheck(PersistDomain domain, const RegisterAssemblyIntExtIds& ids,
                                                       const char* current, const char* stored);
    PersistLoadResult CheckForMissingRegisterAssemblyConfig(PersistDomain domain, const Group& group);
    void ReportUnsupportedAssembly(const RegisterAssemblyIntExtIds& ids) const;

    ControlProtocol::IProtocol& protocol;
    /// Reentrant; guards the members below and serialises the operations. It is held during calls of the service,
    /// and ranks before the locks of the service's objects.
    Vor::Handle<yLock, yLock_Destroy> lock;
    std::map<PersistDomain, PersistenceDataTable> persistenceDataTable;
    /// The assemblies that the file of the current load has had so far.
    std::vector<std::string> loadedAssemblyIds;
    UserNotes* notes = nullptr; ///< of the current LoadWithNotes
};

} // namespace VorControl::Providers
