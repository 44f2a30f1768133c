#pragma once

#include "Vor/LogRecord.h"
#include "VorCommon/ArchiveStore.h"
#include "VorControl/Control/IControlInstance.h"

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace VorCommon {
class ICommandTarget;
}

namespace Sensor::Jobs {

class OfflineServices;

/// One service with the settings that a job's file has for it: its maps can be read and edited, and saved in the job.
class JobService {
public:
    /// Which of the service's maps is meant.
    struct Selection {
        std::string assembly = {}; ///< empty: the only one, or all
        bool outputs = false;      ///< the output map instead
    };

    /// Loads the settings, also those of a disabled service. Throws a Vor::Exception when the job can't be loaded,
    /// holds nothing of the service, or what it holds can't be applied.
    JobService(OfflineServices& services, const std::string& jobPath, const std::string& serviceId);

    VorControl::IControlInstance& Instance() { return instance; }
    /// What the user should know of the load: what it left out or has upgraded.
    const std::vector<std::string>& Notes() const { return notes; }

    /// The assemblies that are meant. Throws yERROR_PARAMETER when the service hasn't that one.
    std::vector<std::string> Assemblies(const Selection& selection) const;
    /// Whether the output map is meant, because it is selected or is the only map. Throws yERROR_PARAMETER when it is
    /// selected and the service has none.
    bool IsOutputs(const Selection& selection) const;

    /// Runs an edit command of the map that is selected. Throws a Vor::Exception, with what the library says, when the
    /// command isn't known, its document isn't taken or the edit fails; Save would then keep what was done of it.
    void Edit(const Selection& selection, const std::string& command, const nlohmann::json& document);

    /// Puts the settings into the job's file; whether the service is enabled stays. Throws a Vor::Exception.
    void Save();

private:
    std::string RequireAssembly(const Selection& selection) const;
    void Load();
    void AddMissingVersions(nlohmann::json& section) const;
    static void Run(VorCommon::ICommandTarget& target, const std::string& command, const nlohmann::json& document);

    VorControl::IControlInstance& instance;
    const std::string path; ///< of the settings in the job
    VorCommon::ArchiveStore store;
    nlohmann::json settings;
    std::vector<std::string> notes;
};

} // namespace Sensor::Jobs
