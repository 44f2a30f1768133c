#pragma once

#include <filesystem>
#include <memory>

namespace Sensor {

/// The output of the log during its lifetime. For users, warnings, errors and the user's log are printed to stderr,
/// with time and level; an entry that is equal to one of the last ten seconds is counted. The log of record, which
/// contains all entries with time, level and thread, is a file, or with `verbose` on stderr in place of the entries for
/// users. What could forge a line or change a terminal is escaped, and long texts are cut.
class UserLog {
public:
    struct Settings {
        /// Print all entries, also those below information.
        bool verbose = false;
        /// For the entries from information up; empty: no file.
        std::filesystem::path file = {};
    };

    /// During its lifetime nothing that its thread logs is printed for users, since each failure is reported otherwise.
    class Silence {
    public:
        explicit Silence(const UserLog& log);
        ~Silence();
        Silence(const Silence&) = delete;
        Silence& operator=(const Silence&) = delete;

    private:
        const UserLog& log;
    };

    /// Throws a StartError when the file can't be opened.
    explicit UserLog(const Settings& settings);
    ~UserLog();
    UserLog(const UserLog&) = delete;
    UserLog& operator=(const UserLog&) = delete;

    /// Opens the file anew, after another program has moved it. For any thread.
    void ReopenFile();

    /// Prints the entries that were counted for ten seconds. To be called every second or so, from any thread.
    void ReportRepeats();

private:
    class Output;
    const std::shared_ptr<Output> output;
};

} // namespace Sensor
