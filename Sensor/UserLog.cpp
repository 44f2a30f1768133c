#include "Sensor/UserLog.h"

#include "Vor/LogOutput.h"
#include "Vor/Logging.h"

#include <iostream>
#include <string>
#include <thread>

namespace Sensor {

namespace {

bool IsOf(const Vor::LogRecord& record, std::uint64_t level) {
    return (record.level & level & 0xFF) != 0;
}

/// Entries for developers, which only the verbose log contains.
bool IsDetail(const Vor::LogRecord& record) {
    const bool user = (record.level & Vor::LevelUserFlag) != 0;
    const bool serious = IsOf(record, Vor::LevelWarning) || IsOf(record, Vor::LevelError);
    return (!user && !serious) || record.format == Vor::LogOutput::BackTraceFormat;
}

void WriteLine(const Vor::LogRecord& record) {
    if (IsDetail(record)) {
        return;
    }
    const char* kind = IsOf(record, Vor::LevelError) ? "error: " : IsOf(record, Vor::LevelWarning) ? "warning: " : "";
    // One write, so that the lines of several threads don't mix.
    std::cerr << kind + record.text + "\n";
}

} // namespace

UserLog::Silence::Silence(const UserLog& log)
    : log(log) {
    *log.silent = std::this_thread::get_id();
}

UserLog::Silence::~Silence() {
    *log.silent = std::thread::id();
}

UserLog::UserLog(bool verbose) {
    if (verbose) {
        Vor::Logging::SetMinimumLevel(Vor::LevelTrace);
    } else {
        Vor::LogOutput::Set([silent = silent](const Vor::LogRecord& record) {
            if (*silent != std::this_thread::get_id()) {
                WriteLine(record);
            }
        });
    }
}

UserLog::~UserLog() {
    Vor::LogOutput::Set(nullptr);
    Vor::Logging::SetMinimumLevel(Vor::LevelInfo);
}

} // namespace Sensor
