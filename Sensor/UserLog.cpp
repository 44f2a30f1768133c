#include "Sensor/UserLog.h"

#include "Sensor/LogFile.h"
#include "Sensor/PrintableText.h"
#include "Sensor/RepeatedEntries.h"
#include "Sensor/UtcText.h"
#include "Vor/LogOutput.h"
#include "Vor/Logging.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <iostream>
#include <mutex>
#include <optional>
#include <pthread.h>
#include <string>
#include <thread>

namespace Sensor {

namespace {

bool IsOf(std::uint64_t level, std::uint64_t kind) {
    return (level & kind & 0xFF) != 0;
}

const char* NameOf(std::uint64_t level) {
    return IsOf(level, Vor::LevelError)     ? "error"
           : IsOf(level, Vor::LevelWarning) ? "warning"
           : IsOf(level, Vor::LevelDebug)   ? "debug"
           : IsOf(level, Vor::LevelTrace)   ? "trace"
                                            : "info";
}

bool IsUsers(const Vor::LogRecord& record) {
    return (record.level & Vor::LevelUserFlag) != 0;
}

bool IsBackTrace(const Vor::LogRecord& record) {
    return record.format == Vor::LogOutput::BackTraceFormat;
}

/// Logged as an error each time a client asks for the state, although nothing has failed.
bool IsOfHealthyRead(const Vor::LogRecord& record) {
    return record.format == "System stats operation ended but flag was not in the InProgress state" ||
           record.format == "Scanner info operation ended but flag was not in the InProgress state";
}

/// Entries for developers, which only the log of record contains.
bool IsDetail(const Vor::LogRecord& record) {
    const bool serious = IsOf(record.level, Vor::LevelWarning) || IsOf(record.level, Vor::LevelError);
    return (!IsUsers(record) && !serious) || IsBackTrace(record) || IsOfHealthyRead(record);
}

std::string Now() {
    return UtcText(std::chrono::system_clock::now());
}

std::string ThreadName() {
    std::array<char, 16> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

/// The lines of a back trace; those after the first are indented, so that none looks like another entry.
std::string CleanedLines(const std::string& text) {
    std::string lines;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines += (begin == 0 ? "" : "\n  ") + LoggedText(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

/// An entry of the log of record.
std::string RecordLine(const Vor::LogRecord& record) {
    const std::string title(Vor::LogOutput::ShortName(record.title));
    return Now() + " " + NameOf(record.level) + " [" + LoggedText(ThreadName()) + "] " +
           (IsUsers(record) ? "[user] " : "") + LoggedText(title) + ": " +
           (IsBackTrace(record) ? CleanedLines(record.text) : LoggedText(record.text)) + "\n";
}

std::string UserLine(std::uint64_t level, const std::string& text) {
    return Now() + " " + NameOf(level) + ": " + text + "\n";
}

} // namespace

/// It may be called for a moment after the log's end.
class UserLog::Output {
public:
    explicit Output(const Settings& settings)
        : verbose(settings.verbose) {
        if (!settings.file.empty()) {
            file.emplace(settings.file);
        }
    }

    void Write(const Vor::LogRecord& record) {
        const bool isForFile = file && !IsOf(record.level, Vor::LevelDebug) && !IsOf(record.level, Vor::LevelTrace);
        const std::string line = verbose || isForFile ? RecordLine(record) : "";
        if (isForFile) {
            ReportFile(file->Append(line));
        }
        if (verbose) {
            Print(line);
        } else if (!IsDetail(record) && silent != std::this_thread::get_id()) {
            ReportRepeats(RepeatedEntries::Clock::now());
            PrintOnce(record.level, LoggedText(record.text));
        }
    }

    void Reopen() {
        if (!file) {
            return;
        }
        if (const std::string failure = file->Reopen(); !failure.empty()) {
            PrintOnce(Vor::UserError, "The log file can't be opened anew: " + failure + ".");
        }
    }

    void ReportRepeats(RepeatedEntries::Clock::time_point now) {
        const std::lock_guard lock(mutex);
        for (const auto& repeated : repeats.Ended(now)) {
            Print(UserLine(repeated.level, std::to_string(repeated.count) + " more: " + repeated.text));
        }
    }

    std::atomic<std::thread::id> silent{}; ///< the silent thread, or none

private:
    /// One write, so that the lines of several threads don't mix.
    static void Print(const std::string& line) { std::cerr << line; }

    void PrintOnce(std::uint64_t level, const std::string& text) {
        const std::lock_guard lock(mutex);
        if (repeats.Add(level, text, RepeatedEntries::Clock::now())) {
            Print(UserLine(level, text));
        }
    }

    /// Informs the user once when the file fails, and once when it is well again.
    void ReportFile(const std::string& failure) {
        {
            const std::lock_guard lock(mutex);
            if (failure == fileFailure) {
                return;
            }
            fileFailure = failure;
        }
        if (failure.empty()) {
            PrintOnce(Vor::UserInfo, "The log file is written again.");
        } else {
            PrintOnce(Vor::UserError, "The log file can't be written: " + failure + ".");
        }
    }

    const bool verbose;
    std::optional<LogFile> file;
    /// Guards the members below. No other lock is taken while it is held.
    std::mutex mutex;
    RepeatedEntries repeats;
    std::string fileFailure; ///< empty: none
};

UserLog::Silence::Silence(const UserLog& log)
    : log(log) {
    log.output->silent = std::this_thread::get_id();
}

UserLog::Silence::~Silence() {
    log.output->silent = std::thread::id();
}

UserLog::UserLog(const Settings& settings)
    : output(std::make_shared<Output>(settings)) {
    // No entry is formatted that nobody would read.
    Vor::Logging::SetMinimumLevel(settings.verbose        ? Vor::LevelTrace
                                  : settings.file.empty() ? Vor::LevelWarning
                                                          : Vor::LevelInfo);
    Vor::LogOutput::Set([output = output](const Vor::LogRecord& record) { output->Write(record); });
}

UserLog::~UserLog() {
    Vor::LogOutput::Set(nullptr);
    Vor::Logging::SetMinimumLevel(Vor::LevelInfo);
    output->ReportRepeats(RepeatedEntries::Clock::time_point::max());
}

void UserLog::ReopenFile() {
    output->Reopen();
}

void UserLog::ReportRepeats() {
    output->ReportRepeats(RepeatedEntries::Clock::now());
}

} // namespace Sensor
