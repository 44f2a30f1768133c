#pragma once

#include "Sensor/Jobs/JobChanges.h"
#include "Sensor/Jobs/JobFiles.h"
#include "VorCommon/ArchiveFile.h"

#include <cstddef>
#include <string>
#include <vector>

namespace VorCommon {
class PersistManager;
}

namespace Sensor::Resources {

/// The files of the jobs of a running sensor. For the persistence thread, on which no job is loaded or saved meanwhile,
/// unless said otherwise.
class SensorJobs {
public:
    struct Job {
        Jobs::JobFiles::Description file;
        bool isLoaded;
        bool isDefault;
    };
    using Existing = VorCommon::ArchiveFile::Existing;

    static constexpr std::size_t MaxCount = 1000;
    /// Bytes, of a name that a client sends with the job: the names of files beside the job's are longer.
    static constexpr std::size_t MaxNameSize = 240;

    /// The manager outlives this.
    explicit SensorJobs(const VorCommon::PersistManager& persistence);

    /// Those that Has, ascending. On any thread.
    std::vector<std::string> Names() const;
    /// Whether that is the name of a job, the loaded one also while it has no file. On any thread.
    bool Has(const std::string& name) const;
    /// On any thread.
    bool IsLoaded(const std::string& name) const;
    /// The name of a job that a client wants to make, without the extension. Throws a Vor::Exception for a bad name,
    /// for a job that exists unless it may be replaced, and when there are too many. On any thread.
    std::string RequireFree(const std::string& name, Existing existing) const;

    /// Throws a Vor::Exception when no client may make or replace the job of that name, as it is in a path. On any
    /// thread.
    void RequireReplaceable(const std::string& name) const;
    /// A folder for files that Place moves, which the sensor has for itself. On any thread.
    std::string UploadFolder() const;

    /// Throws a Vor::Exception when there is no such job, or it has no file. On any thread.
    void RequireFile(const std::string& name) const;

    /// The whole archive, also of the loaded job.
    std::vector<unsigned char> Archive(const std::string& name) const;
    /// Throws a Vor::Exception when there is no such job.
    Job Describe(const std::string& name) const;
    /// All throw a Vor::Exception when the loaded job would be replaced or removed, and when the sensor couldn't start
    /// any more since the default job would be one that it can't load.
    void Copy(const std::string& name, const std::string& newName, Existing existing) const;
    /// The default job stays the default.
    void Rename(const std::string& name, const std::string& newName, Existing existing) const;
    /// Also refuses the default job.
    void Delete(const std::string& name) const;
    void SetDefault(const std::string& name) const;
    /// Moves an archive that was checked, and is on the disk, to the place of a job. Returns whether the job is new.
    /// Throws what RequireReplaceable and MoveArchive throw.
    bool Place(const std::string& made, const std::string& name, Existing existing) const;
    /// What differs between the file of the loaded job and the content that it would have after a save.
    Jobs::JobChanges ChangesOf(const VorCommon::ArchiveFile::Entries& content) const;

private:
    std::string Default() const;
    /// Throws a Vor::Exception unless the sensor would start with the file.
    void RequireLoadable(const std::string& name) const;
    void RequireNotLoaded(const std::string& name, const char* action) const;

    const VorCommon::PersistManager& persistence;
    const Jobs::JobFiles files;
    const std::string workspace;
};

} // namespace Sensor::Resources
