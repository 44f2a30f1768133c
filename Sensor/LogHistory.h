#pragma once

#include "Vor/Logging.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Sensor {

/// The latest entries of the user's log since this was made, numbered from 1 on. From any thread.
class LogHistory {
public:
    static constexpr std::size_t Capacity = 1000;

    enum class Level { Info, Warning, Error };

    /// Title and text are printable and cut.
    struct Entry {
        std::uint64_t number = 0;
        std::chrono::system_clock::time_point time;
        Level level = Level::Info;
        std::string title;
        std::string text;
    };

    LogHistory();
    ~LogHistory();
    LogHistory(const LogHistory&) = delete;
    LogHistory& operator=(const LogHistory&) = delete;

    /// Those that are kept and have a higher number, oldest first.
    std::vector<Entry> After(std::uint64_t number) const;
    /// The number of the latest one; 0 when there was none.
    std::uint64_t LastNumber() const;

private:
    struct State;

    const std::shared_ptr<State> state; ///< a call that has begun on another thread may end after the removal
    Vor::Logging::UserHandlerId handler;
};

/// "info", "warning" or "error".
const char* NameOf(LogHistory::Level level);

} // namespace Sensor
