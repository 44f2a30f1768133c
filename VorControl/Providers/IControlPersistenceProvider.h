#pragma once

#include "VorCommon/PersistDomain.h"
#include "VorControl/Persistence/PersistLoadResult.h"

#include <nlohmann/json_fwd.hpp>

namespace VorControl::Providers {

/// Keeps the configuration of one service: what is registered for a domain is reset, written to the service's section
/// of a file, and read back from it. Any thread; each operation waits for the one that runs.
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
    /// The section is untrusted. A category that can't be loaded has its defaults, makes the result Failed, and doesn't
    /// keep the others from loading; the result is that of the first category with something to report.
    virtual Persistence::PersistLoadResult Load(VorCommon::PersistDomain domain, const nlohmann::json& section) = 0;
    /// Leaves a section alone for a domain without registrations. The first failure is thrown on.
    virtual void Save(VorCommon::PersistDomain domain, nlohmann::json& section) = 0;

    /// What the service keeps in the domain; called by its constructor.
    virtual void RegisterParams(VorCommon::PersistDomain domain) = 0;
    virtual void RegisterOutputsMap(VorCommon::PersistDomain domain) = 0;
    virtual void RegisterRegisterAssemblyGroup(VorCommon::PersistDomain domain) = 0;
};

} // namespace VorControl::Providers
