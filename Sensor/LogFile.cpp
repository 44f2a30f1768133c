#include "Sensor/LogFile.h"

#include "Sensor/StartError.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace Sensor {

namespace {

std::string LastError() {
    return std::generic_category().message(errno);
}

} // namespace

LogFile::LogFile(std::filesystem::path path)
    : path(std::move(path))
    , descriptor(Open()) {
    if (descriptor < 0) {
        throw StartError("--log-file " + this->path.string() + ": " + LastError() + ".");
    }
}

LogFile::~LogFile() {
    close(descriptor);
}

int LogFile::Open() const {
    constexpr mode_t ReadableByAll = 0644;
    return open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, ReadableByAll);
}

std::string LogFile::Reopen() {
    const std::lock_guard lock(mutex);
    const int opened = Open();
    if (opened < 0) {
        return LastError();
    }
    close(std::exchange(descriptor, opened));
    return "";
}

std::string LogFile::Append(const std::string& lines) {
    const std::lock_guard lock(mutex);
    const char* next = lines.data();
    std::size_t left = lines.size();
    while (left > 0) {
        const ssize_t written = write(descriptor, next, left);
        if (written < 0 && errno != EINTR) {
            return LastError();
        }
        next += written < 0 ? 0 : written;
        left -= written < 0 ? 0 : static_cast<std::size_t>(written);
    }
    return "";
}

} // namespace Sensor
