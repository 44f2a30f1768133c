#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace Sensor {

/// What keeps a second sensor from a data folder: the file "sensor.lock" in it, locked with flock as long as this
/// exists. The kernel unlocks it when the process ends, however that happens.
class FolderLock {
public:
    /// The running sensor of a folder.
    struct Owner {
        std::string processId;
        std::string job; ///< the name of the file
    };

    /// Makes the folder when it is missing. Throws a StartError when another sensor runs there, with its process id, or
    /// when the file can't be locked.
    FolderLock(const std::filesystem::path& folder, const std::string& job);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    /// Publishes the job that is loaded now.
    void SetJob(const std::string& job);

    /// Nothing when no sensor runs in the folder.
    static std::optional<Owner> OwnerOf(const std::filesystem::path& folder);

private:
    int descriptor;
};

} // namespace Sensor
