#include "Sensor/LogHistory.h"

#include "Sensor/PrintableText.h"
#include "Vor/LogRecord.h"

#include <algorithm>
#include <deque>
#include <mutex>

namespace Sensor {

namespace {

LogHistory::Level LevelOf(std::uint64_t level) {
    const auto isOf = [level](std::uint64_t kind) { return (level & kind & 0xFF) != 0; };
    return isOf(Vor::LevelError)     ? LogHistory::Level::Error
           : isOf(Vor::LevelWarning) ? LogHistory::Level::Warning
                                     : LogHistory::Level::Info;
}

} // namespace

struct LogHistory::State {
    void Add(const Vor::LogRecord& record) {
        Entry entry{.time = std::chrono::system_clock::now(),
                    .level = LevelOf(record.level),
                    .title = LoggedText(record.title),
                    .text = LoggedText(record.text)};
        const std::lock_guard guard(mutex);
        entry.number = ++last;
        if (entries.size() == Capacity) {
            entries.pop_front();
        }
        entries.push_back(std::move(entry));
    }

    /// Guards the members below. No other lock is taken while it is held.
    std::mutex mutex;
    std::deque<Entry> entries; ///< their numbers are consecutive
    std::uint64_t last = 0;
};

LogHistory::LogHistory()
    : state(std::make_shared<State>())
    , handler(Vor::Logging::AddUserHandler([state = state](const Vor::LogRecord& record) { state->Add(record); })) {}

LogHistory::~LogHistory() {
    Vor::Logging::RemoveUserHandler(handler);
}

std::vector<LogHistory::Entry> LogHistory::After(std::uint64_t number) const {
    const std::lock_guard guard(state->mutex);
    const auto newer = std::ranges::upper_bound(state->entries, number, {}, &Entry::number);
    return {newer, state->entries.end()};
}

std::uint64_t LogHistory::LastNumber() const {
    const std::lock_guard guard(state->mutex);
    return state->last;
}

const char* NameOf(LogHistory::Level level) {
    switch (level) {
    case LogHistory::Level::Error:
        return "error";
    case LogHistory::Level::Warning:
        return "warning";
    default:
        return "info";
    }
}

} // namespace Sensor
