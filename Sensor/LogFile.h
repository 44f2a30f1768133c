#pragma once

#include <filesystem>
#include <mutex>
#include <string>

namespace Sensor {

/// A file to which lines are appended, each with one write. For any thread.
class LogFile {
public:
    /// Throws a StartError when the file can't be opened.
    explicit LogFile(std::filesystem::path path);
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Opens the file at the path anew, which may be another one by now. Returns why it can't: then the former file
    /// stays in use. Empty: it could. Once the new file is there, no entry goes to the former one.
    std::string Reopen();

    /// Returns why it can't append; empty: it could.
    std::string Append(const std::string& lines);

private:
    int Open() const;

    const std::filesystem::path path;
    /// Guards the descriptor. No other lock is taken while it is held.
    std::mutex mutex;
    int descriptor;
};

} // namespace Sensor
