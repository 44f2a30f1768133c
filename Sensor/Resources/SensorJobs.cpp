#include "Sensor/Resources/SensorJobs.h"

#include "Sensor/Jobs/DefaultJob.h"
#include "Sensor/Jobs/JobFormat.h"
#include "Vor/Exception.h"
#include "VorCommon/MoveArchive.h"
#include "VorCommon/PersistManager.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <filesystem>

namespace Sensor::Resources {

using VorCommon::ArchiveFile;
using VorCommon::PersistDomain;
using VorCommon::PersistManager;

SensorJobs::SensorJobs(const PersistManager& persistence)
    : persistence(persistence)
    , files(std::filesystem::path(persistence.FilePath(PersistDomain::Job)).parent_path())
    , workspace(persistence.FilePath(PersistDomain::Workspace)) {}

std::vector<std::string> SensorJobs::Names() const {
    std::vector<std::string> names = files.Names();
    const std::string loaded = Jobs::JobFormat::JobNameOf(persistence.LoadedJob());
    if (!loaded.empty() && std::ranges::find(names, loaded) == names.end()) {
        names.push_back(loaded);
    }
    std::erase_if(names, [this](const std::string& name) { return !Has(name); });
    std::ranges::sort(names);
    return names;
}

bool SensorJobs::Has(const std::string& name) const {
    return Jobs::JobFormat::JobNameOf(name) == name && (files.Has(name) || IsLoaded(name));
}

bool SensorJobs::IsLoaded(const std::string& name) const {
    return persistence.LoadedJob() == name + Jobs::JobFormat::Extension;
}

std::string SensorJobs::RequireFree(const std::string& name, Existing existing) const {
    std::string free = Jobs::JobFormat::JobNameOf(PersistManager::JobFileName(name));
    if (Jobs::JobFormat::JobNameOf(free) != free) {
        Vor::Throw(yERROR_PARAMETER, "'%s' is not a job name: it ends with '%s' more than once.", name,
                   Jobs::JobFormat::Extension);
    }
    if (files.Has(free)) {
        if (existing == Existing::Refuse) {
            Vor::Throw(yERROR_ALREADY_EXISTS, "There is a job '%s' already, and 'replace' isn't true.", free);
        }
    } else if (files.Names().size() >= MaxCount) {
        Vor::Throw(yERROR_FULL, "There are %d jobs, which is the most that there may be.", static_cast<int>(MaxCount));
    }
    return free;
}

void SensorJobs::RequireReplaceable(const std::string& name) const {
    if (name.size() > MaxNameSize) {
        Vor::Throw(yERROR_PARAMETER, "The name of the job has %d bytes, and at most %d were expected.",
                   static_cast<int>(name.size()), static_cast<int>(MaxNameSize));
    }
    if (RequireFree(name, Existing::Replace) != name) {
        Vor::Throw(yERROR_PARAMETER, "'%s' is not a job name: paths have it without '%s'.", name,
                   Jobs::JobFormat::Extension);
    }
    RequireNotLoaded(name, "replaced");
}

std::string SensorJobs::UploadFolder() const {
    return (std::filesystem::path(persistence.FilePath(PersistDomain::Job)).parent_path() / ".uploads").string();
}

void SensorJobs::RequireFile(const std::string& name) const {
    if (Jobs::JobFormat::JobNameOf(name) != name || !files.Has(name)) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no file of a job '%s'.", name);
    }
}

std::vector<unsigned char> SensorJobs::Archive(const std::string& name) const {
    RequireFile(name);
    return files.Read(name);
}

SensorJobs::Job SensorJobs::Describe(const std::string& name) const {
    const bool isLoaded = IsLoaded(name);
    if (isLoaded && !files.Has(name)) {
        return {.file = {.name = name, .failure = "It isn't saved yet."}, .isLoaded = true, .isDefault = false};
    }
    return {.file = files.Describe(name), .isLoaded = isLoaded, .isDefault = Default() == name};
}

void SensorJobs::Copy(const std::string& name, const std::string& newName, Existing existing) const {
    RequireFile(name);
    RequireNotLoaded(newName, "replaced");
    if (Default() == newName) {
        RequireLoadable(name);
    }
    ArchiveFile(files.PathOf(name)).CopyTo(files.PathOf(newName), existing);
}

// The default job exists at each moment.
void SensorJobs::Rename(const std::string& name, const std::string& newName, Existing existing) const {
    RequireNotLoaded(name, "renamed");
    if (name == newName) {
        Vor::Throw(yERROR_PARAMETER, "The job '%s' has this name already.", name);
    }
    Copy(name, newName, existing);
    if (Default() == name) {
        Jobs::DefaultJob::Write(workspace, newName);
    }
    ArchiveFile(files.PathOf(name)).Remove();
}

void SensorJobs::Delete(const std::string& name) const {
    RequireFile(name);
    RequireNotLoaded(name, "deleted");
    if (Default() == name) {
        Vor::Throw(yERROR_CONFLICT, "The job '%s' can't be deleted while the sensor starts with it.", name);
    }
    ArchiveFile(files.PathOf(name)).Remove();
}

void SensorJobs::SetDefault(const std::string& name) const {
    RequireFile(name);
    RequireLoadable(name);
    Jobs::DefaultJob::Write(workspace, name);
}

bool SensorJobs::Place(const std::string& made, const std::string& name, Existing existing) const {
    RequireReplaceable(name);
    const bool isNew = !files.Has(name);
    VorCommon::MoveArchive(made, files.PathOf(name), existing);
    return isNew;
}

Jobs::JobChanges SensorJobs::ChangesOf(const ArchiveFile::Entries& content) const {
    const ArchiveFile file(persistence.FilePath(PersistDomain::Job));
    return Jobs::JobChanges::Between(file.Exists() ? file.Read() : ArchiveFile::Entries(), content);
}

std::string SensorJobs::Default() const {
    return Jobs::DefaultJob::Read(workspace);
}

void SensorJobs::RequireLoadable(const std::string& name) const {
    try {
        Jobs::JobFormat::Open(files.PathOf(name));
    } catch (const Vor::Exception& e) {
        Vor::Throw(e.Status(), "The sensor couldn't start with the job '%s'. %s", name, e.what());
    }
}

void SensorJobs::RequireNotLoaded(const std::string& name, const char* action) const {
    if (IsLoaded(name)) {
        Vor::Throw(yERROR_CONFLICT, "The job '%s' can't be %s while it is loaded.", name, action);
    }
}

} // namespace Sensor::Resources
