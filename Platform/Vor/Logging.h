#pragma once

#include "Vor/Format.h"
#include "Vor/LocatedFormat.h"
#include "Vor/LogRecord.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace Vor {

/// Level words. The top bit is always set, bit 32 marks an entry meant for the user's log.
inline constexpr std::uint64_t LevelInfo = 0x8000000000000000;
inline constexpr std::uint64_t LevelWarning = 0x8000000000000001;
inline constexpr std::uint64_t LevelError = 0x8000000000000002;
inline constexpr std::uint64_t LevelDebug = 0x8000000000000004;
inline constexpr std::uint64_t LevelTrace = 0x8000000000000008;
inline constexpr std::uint64_t LevelUserFlag = 0x0000000100000000;
inline constexpr std::uint64_t UserInfo = LevelInfo | LevelUserFlag;
inline constexpr std::uint64_t UserWarning = LevelWarning | LevelUserFlag;
inline constexpr std::uint64_t UserError = LevelError | LevelUserFlag;

/// The log of the process. All functions may be called from any thread, also during static initialisation, and throw
/// only when there is no memory.
class Logging {
public:
    using UserHandlerId = std::uint64_t;

    /// Entries below this level go to no output, except those of the user's log; captures get every entry. An entry
    /// that goes nowhere isn't formatted and costs no memory. Order of levels: trace, debug, information (the default),
    /// warning, error.
    static void SetMinimumLevel(std::uint64_t level);

    static void Write(int line, const char* path, std::uint64_t level, const char* title, const char* format,
                      std::span<const FormatArg> args);

    /// The user's log: the latest MaxUserRecords entries, oldest first.
    static constexpr std::size_t MaxUserRecords = 1000;
    static std::vector<LogRecord> UserRecords();
    static void ClearUserRecords();
    /// The handler is called for each entry of the user's log, on the thread that logs, with no lock held. A call that
    /// has begun on another thread may end after the removal.
    static UserHandlerId AddUserHandler(std::function<void(const LogRecord&)> handler);
    static void RemoveUserHandler(UserHandlerId id);
};

/// Collects the entries of the whole process while it lives, whatever the minimum level. Several may live at a time.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogRecord> Records() const;
    void Clear();
    /// Number of entries with exactly this text and, if given, this level.
    std::size_t Count(const std::string& text) const;
    std::size_t Count(std::uint64_t level, const std::string& text) const;
    /// Number of entries of a level.
    std::size_t CountLevel(std::uint64_t level) const;
    bool Contains(const std::string& text) const { return Count(text) > 0; }
    bool Contains(std::uint64_t level, const std::string& text) const { return Count(level, text) > 0; }
    /// Waits for an entry with this text; false when there was none in time.
    bool WaitFor(const std::string& text, std::uint64_t timeoutMicroseconds = 10'000'000) const;

    struct Sink;

private:
    std::shared_ptr<Sink> sink;
};

template <typename... Args>
void LogAt(const LocatedFormat& format, std::uint64_t level, const char* title, const Args&... args) {
    const std::array<FormatArg, sizeof...(Args)> list{FormatArg(args)...};
    Logging::Write(static_cast<int>(format.where.line()), format.where.file_name(), level, title, format.text, list);
}

template <typename... Args>
void LogInfo(const LocatedFormat& format, const Args&... args) {
    LogAt(format, LevelInfo, format.where.function_name(), args...);
}

template <typename... Args>
void LogWarning(const LocatedFormat& format, const Args&... args) {
    LogAt(format, LevelWarning, format.where.function_name(), args...);
}

template <typename... Args>
void LogError(const LocatedFormat& format, const Args&... args) {
    LogAt(format, LevelError, format.where.function_name(), args...);
}

template <typename... Args>
void LogDebug(const LocatedFormat& format, const Args&... args) {
    LogAt(format, LevelDebug, format.where.function_name(), args...);
}

/// An entry of the user's log; `level` is UserInfo, UserWarning or UserError, and title and format are translated.
template <typename... Args>
void LogUser(std::uint64_t level, const char* title, const LocatedFormat& format, const Args&... args) {
    LogAt(format, level, title, args...);
}

} // namespace Vor

template <typename... Args>
void Vor_Log(int line, const char* path, std::uint64_t level, const char* functionOrTitle, const char* format,
             const Args&... args) {
    const std::array<Vor::FormatArg, sizeof...(Args)> list{Vor::FormatArg(args)...};
    Vor::Logging::Write(line, path, level, functionOrTitle, format, list);
}
