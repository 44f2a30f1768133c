#include "Vor/Logging.h"

#include "Vor/LogOutput.h"
#include "yApi/yDuration.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <string_view>
#include <utility>

#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

namespace Vor {

struct LogCapture::Sink {
    /// Guards the records. No other lock is taken while it is held.
    std::mutex mutex;
    std::condition_variable added;
    std::vector<LogRecord> records;
};

namespace {

/// Trace, debug, information, warning and error, ascending.
int Rank(std::uint64_t level) {
    if ((level & LevelError & 0xFF) != 0) {
        return 4;
    }
    if ((level & LevelWarning & 0xFF) != 0) {
        return 3;
    }
    if ((level & LevelDebug & 0xFF) != 0) {
        return 1;
    }
    return (level & LevelTrace & 0xFF) != 0 ? 0 : 2;
}

spdlog::level::level_enum OutputLevel(int rank) {
    constexpr std::array Levels{spdlog::level::trace, spdlog::level::debug, spdlog::level::info, spdlog::level::warn,
                                spdlog::level::err};
    return Levels[static_cast<std::size_t>(rank)];
}

/// The log's state. It is never destroyed, since static objects log in their destructors too.
class LogState {
public:
    static LogState& Instance() {
        static LogState* const Instance = new LogState;
        return *Instance;
    }

    /// False when no output, capture or user's log gets an entry of this level.
    bool Wants(std::uint64_t level) const {
        return (level & LevelUserFlag) != 0 || captureCount.load(std::memory_order_relaxed) > 0 ||
               Rank(level) >= minimumRank.load(std::memory_order_relaxed);
    }

    void Write(const LogRecord& record) {
        std::map<Logging::UserHandlerId, std::function<void(const LogRecord&)>> called;
        std::shared_ptr<const std::function<void(const LogRecord&)>> writer;
        const bool user = (record.level & LevelUserFlag) != 0;
        {
            const std::lock_guard lock(mutex);
            for (const auto& sink : captures) {
                const std::lock_guard sinkLock(sink->mutex);
                sink->records.push_back(record);
                sink->added.notify_all();
            }
            if (user) {
                userRecords.push_back(record);
                if (userRecords.size() > Logging::MaxUserRecords) {
                    userRecords.pop_front();
                }
                called = userHandlers;
            }
            writer = replacement;
        }
        for (const auto& [id, handler] : called) {
            try {
                handler(record);
            } catch (...) { // NOLINT(bugprone-empty-catch): an observer mustn't break what it observes
            }
        }
        const int rank = Rank(record.level);
        if (!user && rank < minimumRank.load(std::memory_order_relaxed)) {
            return;
        }
        if (writer == nullptr) {
            if (user) {
                output.log(OutputLevel(rank), "[user] {}: {}", record.title, record.text);
            } else {
                output.log(OutputLevel(rank), "{}: {}", LogOutput::ShortName(record.title), record.text);
            }
            return;
        }
        try {
            (*writer)(record);
        } catch (...) { // NOLINT(bugprone-empty-catch): no output is left for it
        }
    }

    /// Guards the captures, the user's records, their handlers and the replacement; ranks before a capture's mutex.
    std::mutex mutex;
    std::set<std::shared_ptr<LogCapture::Sink>> captures;
    std::atomic<std::size_t> captureCount{0}; ///< of `captures`; written with the mutex held
    std::deque<LogRecord> userRecords;
    std::map<Logging::UserHandlerId, std::function<void(const LogRecord&)>> userHandlers;
    Logging::UserHandlerId lastHandler = 0;
    /// Used in place of the output unless it is null.
    std::shared_ptr<const std::function<void(const LogRecord&)>> replacement;
    std::atomic<int> minimumRank{Rank(LevelInfo)};

private:
    LogState()
        : output("vor", std::make_shared<spdlog::sinks::stderr_color_sink_mt>()) {
        output.set_level(spdlog::level::trace);
        output.flush_on(spdlog::level::warn);
    }

    spdlog::logger output;
};

} // namespace

void Logging::SetMinimumLevel(std::uint64_t level) {
    LogState::Instance().minimumRank.store(Rank(level), std::memory_order_relaxed);
}

void Logging::Write(int line, const char* path, std::uint64_t level, const char* title, const char* format,
                    std::span<const FormatArg> args) {
    LogState& state = LogState::Instance();
    if (!state.Wants(level)) {
        return;
    }
    LogRecord record;
    record.level = level;
    record.title = title == nullptr ? "" : title;
    record.format = format == nullptr ? "" : format;
    record.text = FormatArgs(format, args);
    record.path = path == nullptr ? "" : path;
    record.line = line;
    state.Write(record);
}

std::vector<LogRecord> Logging::UserRecords() {
    LogState& state = LogState::Instance();
    const std::lock_guard lock(state.mutex);
    return {state.userRecords.begin(), state.userRecords.end()};
}

void Logging::ClearUserRecords() {
    LogState& state = LogState::Instance();
    const std::lock_guard lock(state.mutex);
    state.userRecords.clear();
}

Logging::UserHandlerId Logging::AddUserHandler(std::function<void(const LogRecord&)> handler) {
    LogState& state = LogState::Instance();
    const std::lock_guard lock(state.mutex);
    state.userHandlers.emplace(++state.lastHandler, std::move(handler));
    return state.lastHandler;
}

void Logging::RemoveUserHandler(UserHandlerId id) {
    LogState& state = LogState::Instance();
    const std::lock_guard lock(state.mutex);
    state.userHandlers.erase(id);
}

void LogOutput::Set(std::function<void(const LogRecord&)> write) {
    auto changed = write ? std::make_shared<const std::function<void(const LogRecord&)>>(std::move(write)) : nullptr;
    LogState& state = LogState::Instance();
    const std::lock_guard lock(state.mutex);
    state.replacement.swap(changed);
}

std::string_view LogOutput::ShortName(std::string_view title) {
    const std::size_t arguments = title.find('(');
    if (arguments == std::string_view::npos) {
        return title;
    }
    const std::string_view name = title.substr(0, arguments);
    return name.substr(name.rfind(' ') + 1);
}

LogCapture::LogCapture()
    : sink(std::make_shared<Sink>()) {
    LogState& state = LogState::Instance();
    const std::lock_guard lock(state.mutex);
    state.captures.insert(sink);
    state.captureCount = state.captures.size();
}

LogCapture::~LogCapture() {
    LogState& state = LogState::Instance();
    const std::lock_guard lock(state.mutex);
    state.captures.erase(sink);
    state.captureCount = state.captures.size();
}

std::vector<LogRecord> LogCapture::Records() const {
    const std::lock_guard lock(sink->mutex);
    return sink->records;
}

void LogCapture::Clear() {
    const std::lock_guard lock(sink->mutex);
    sink->records.clear();
}

std::size_t LogCapture::Count(const std::string& text) const {
    const std::lock_guard lock(sink->mutex);
    return static_cast<std::size_t>(
        std::count_if(sink->records.begin(), sink->records.end(), [&](const auto& r) { return r.text == text; }));
}

std::size_t LogCapture::Count(std::uint64_t level, const std::string& text) const {
    const std::lock_guard lock(sink->mutex);
    return static_cast<std::size_t>(std::count_if(sink->records.begin(), sink->records.end(),
                                                  [&](const auto& r) { return r.level == level && r.text == text; }));
}

std::size_t LogCapture::CountLevel(std::uint64_t level) const {
    const std::lock_guard lock(sink->mutex);
    return static_cast<std::size_t>(
        std::count_if(sink->records.begin(), sink->records.end(), [&](const auto& r) { return r.level == level; }));
}

bool LogCapture::WaitFor(const std::string& text, std::uint64_t timeoutMicroseconds) const {
    std::unique_lock lock(sink->mutex);
    return sink->added.wait_for(lock, yThread_Duration(timeoutMicroseconds), [&] {
        return std::any_of(sink->records.begin(), sink->records.end(), [&](const auto& r) { return r.text == text; });
    });
}

} // namespace Vor
