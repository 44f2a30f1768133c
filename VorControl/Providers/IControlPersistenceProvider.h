#pragma once

#include "VorCommon/PersistDomain.h"
#include "VorControl/Persistence/PersistLoadResult.h"

#include <nlohmann/json_fwd.hpp>

namespace VorControl::Providers {

/// Resets the configuration of one service, saves it in the service's section of a file and loads it from there. Does
/// so with what is registered for a domain. Any thread may call; each operation waits for the one that is running.
class IControlPersistenceProvider {
public:
    enum class PersistenceDataCategory { Params = 0, OutputsMap = 1, RegisterAssemblyGroup = 2 };

    /// "parameter", "outputs map", "register assembly group", or "unknown" for any other value.
    static const char* PersistenceCategoryName(PersistenceDataCategory category) {
        switch (category) {
        case PersistenceDataCategory::Params:
            return "parameter";
        case PersistenceDataCategory::OutputsMap:
            return "outputs map";
        case PersistenceDataCategory::RegisterAssemblyGroup:
            return "register assembly group";
        }
        return "unknown";
    }

    virtual ~IControlPersistenceProvider() = default;

    /// Resets what is registered for the domain. The first failure is thrown on.
    virtual void Init(VorCommon::PersistDomain domain) = 0;
    /// The section is untrusted. A category that can't be loaded gets its defaults and has the result Failed; the
    /// others are still loaded. The result is that of the first category that has something to report.
    virtual Persistence::PersistLoadResult Load(VorCommon::PersistDomain domain, const nlohmann::json& section) = 0;
    /// Doesn't change the section for a domain without registrations. The first failure is thrown on.
    virtual void Save(VorCommon::PersistDomain domain, nlohmann::json& section) = 0;

    /// Registers what the service keeps in the domain; called by the service's constructor.
    virtual void RegisterParams(VorCommon::PersistDomain domain) = 0;
    virtual void RegisterOutputsMap(VorCommon::PersistDomain domain) = 0;
    virtual void RegisterRegisterAssemblyGroup(VorCommon::PersistDomain domain) = 0;
};

} // namespace VorControl::Providers
