#include "Sensor/FolderLock.h"

#include "Sensor/StartError.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace Sensor {

namespace {

std::filesystem::path FileOf(const std::filesystem::path& folder) {
    return folder / "sensor.lock";
}

FolderLock::Owner Read(const std::filesystem::path& folder) {
    FolderLock::Owner owner;
    std::ifstream file(FileOf(folder));
    std::getline(file, owner.processId);
    std::getline(file, owner.job);
    return owner;
}

/// OwnerOf holds the lock for a moment, which is no reason to refuse a start.
bool LockWithin(int descriptor, std::chrono::milliseconds patience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

[[noreturn]] void Fail(const std::filesystem::path& folder, int error) {
    throw StartError("--data " + folder.string() + ": the folder can't be locked for this sensor (" +
                     std::generic_category().message(error) + ").");
}

} // namespace

FolderLock::FolderLock(const std::filesystem::path& folder, const std::string& job) {
    constexpr mode_t ReadableByAll = 0644;
    constexpr std::chrono::milliseconds Patience{50};
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        Fail(folder, error.value());
    }
    descriptor = open(FileOf(folder).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, ReadableByAll);
    if (descriptor < 0) {
        Fail(folder, errno);
    }
    if (!LockWithin(descriptor, Patience)) {
        const int failure = errno;
        close(descriptor);
        if (failure != EWOULDBLOCK) {
            Fail(folder, failure);
        }
        throw StartError("--data " + folder.string() + ": the sensor with process id " + Read(folder).processId +
                         " uses this folder. Expected a folder of this sensor's own.");
    }
    SetJob(job);
}

FolderLock::~FolderLock() {
    close(descriptor);
}

// The text is for users: the folder is locked with and without it.
void FolderLock::SetJob(const std::string& job) {
    const std::string text = std::to_string(getpid()) + "\n" + job + "\n";
    if (pwrite(descriptor, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size())) {
        [[maybe_unused]] const int cut = ftruncate(descriptor, static_cast<off_t>(text.size()));
    }
}

std::optional<FolderLock::Owner> FolderLock::OwnerOf(const std::filesystem::path& folder) {
    const int opened = open(FileOf(folder).c_str(), O_RDONLY | O_CLOEXEC);
    if (opened < 0) {
        return std::nullopt;
    }
    const bool isFree = flock(opened, LOCK_SH | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    close(opened);
    return isFree ? std::nullopt : std::optional(Read(folder));
}

} // namespace Sensor
