#pragma once

#include "Sensor/Jobs/ServiceSetting.h"
#include "VorCommon/ArchiveStore.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Providers/ControlPersistenceProvider.h"

#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace VorCommon {
class ICommandTarget;
}

namespace Sensor::Jobs {

class OfflineServices;

/// One service with its settings from a job. Its maps and parameters can be read and changed, and saved in the job.
class JobService {
public:
    /// Selects maps of the service.
    struct Selection {
        std::string assembly = {}; ///< the id; empty: the only one, or all
        bool outputs = false;      ///< the output map instead
    };

    /// What to do when the job has no settings of the service.
    enum class Missing { Refuse, UseDefaults };

    /// Reads the settings from a job's store, which must outlive this. Without settings the service is disabled, and
    /// has its defaults. Throws a Vor::Exception when the service is unknown or its settings can't be read.
    JobService(OfflineServices& services, VorCommon::ArchiveStore& store, const std::string& serviceId,
               Missing missing);

    /// Loads the settings, also those of a disabled service, to read and change them. Throws a Vor::Exception when they
    /// can't be applied.
    void Load();

    VorControl::IControlInstance& Instance() { return instance; }
    /// Messages for the user about the load: what was left out or upgraded.
    const std::vector<std::string>& Notes() const { return notes; }

    /// The ids of the selected assemblies. Throws yERROR_PARAMETER when the service doesn't have the selected one.
    std::vector<std::string> Assemblies(const Selection& selection) const;
    /// Whether the output map is selected, or is the only map. Throws yERROR_PARAMETER when it is selected and the
    /// service has none.
    bool IsOutputs(const Selection& selection) const;

    /// Runs an edit command on the selected map, and returns whether that has changed something. Throws a
    /// Vor::Exception with the library's messages when the command is unknown, `document` isn't valid, or the edit
    /// fails. A failed edit may be incomplete: don't call Save then.
    bool Edit(const Selection& selection, const std::string& command, const nlohmann::json& document);

    /// The data sources of all maps, each once.
    std::set<std::string> DataSources() const;

    /// Changes a parameter. Throws a StartError that names the option.
    void Set(const ServiceSetting& setting);
    /// Whether a sensor starts the service when it loads the job.
    void Enable(bool on);

    /// Writes the settings to the store, which is to be committed. Throws a Vor::Exception.
    void Save();

private:
    std::string RequireAssembly(const Selection& selection) const;
    VorControl::Providers::ControlPersistenceProvider::LoadOutcome LoadSection(nlohmann::json& section) const;
    /// The service's present settings.
    nlohmann::json Section() const;
    void AddMissingVersions(nlohmann::json& section) const;
    static void Run(VorCommon::ICommandTarget& target, const std::string& command, const nlohmann::json& document);

    VorControl::IControlInstance& instance;
    const std::string path; ///< of the settings in the job
    VorCommon::ArchiveStore& store;
    nlohmann::json settings;
    bool loaded = false;
    std::vector<std::string> notes;
};

} // namespace Sensor::Jobs
