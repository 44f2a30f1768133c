#pragma once

#include "VorCommon/ArchiveStore.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Providers/ControlPersistenceProvider.h"

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace VorCommon {
class ICommandTarget;
}

namespace Sensor::Jobs {

class OfflineServices;

/// One service with its settings from a job's file. Its maps can be read and edited, and saved in the job.
class JobService {
public:
    /// Selects maps of the service.
    struct Selection {
        std::string assembly = {}; ///< the id; empty: the only one, or all
        bool outputs = false;      ///< the output map instead
    };

    /// Loads the settings, also those of a disabled service. Throws a Vor::Exception when the job can't be loaded, has
    /// no settings of the service, or the settings can't be applied.
    JobService(OfflineServices& services, const std::string& jobPath, const std::string& serviceId);

    VorControl::IControlInstance& Instance() { return instance; }
    /// Messages for the user about the load: what was left out or upgraded.
    const std::vector<std::string>& Notes() const { return notes; }

    /// The ids of the selected assemblies. Throws yERROR_PARAMETER when the service doesn't have the selected one.
    std::vector<std::string> Assemblies(const Selection& selection) const;
    /// Whether the output map is selected, or is the only map. Throws yERROR_PARAMETER when it is selected and the
    /// service has none.
    bool IsOutputs(const Selection& selection) const;

    /// Runs an edit command on the selected map. Throws a Vor::Exception with the library's messages when the command
    /// is unknown, `document` isn't valid, or the edit fails. A failed edit may be incomplete: don't call Save then.
    void Edit(const Selection& selection, const std::string& command, const nlohmann::json& document);

    /// Writes the settings to the job's file. Whether the service is enabled isn't changed. Throws a Vor::Exception.
    void Save();

private:
    std::string RequireAssembly(const Selection& selection) const;
    void Load(VorControl::Providers::ControlPersistenceProvider& provider);
    void AddMissingVersions(nlohmann::json& section) const;
    static void Run(VorCommon::ICommandTarget& target, const std::string& command, const nlohmann::json& document);

    VorControl::IControlInstance& instance;
    const std::string path; ///< of the settings in the job
    VorCommon::ArchiveStore store;
    nlohmann::json settings;
    std::vector<std::string> notes;
};

} // namespace Sensor::Jobs
