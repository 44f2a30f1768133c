#pragma once

#include "Vor/AsyncTimer.h"

#include <cstdint>
#include <functional>

#include <nlohmann/json_fwd.hpp>

namespace Sensor {
class LogHistory;
}

namespace Sensor::Resources {

/// Passes each new entry of the user's log on. Main loop only.
class LogWatch {
public:
    static constexpr unsigned long long Period = 250'000;

    /// `added` gets an entry with the members that it has in its document. The history outlives this.
    LogWatch(const LogHistory& history, std::function<void(const nlohmann::json& entry)> added);

private:
    void Pass();

    const LogHistory& history;
    const std::function<void(const nlohmann::json& entry)> added;
    std::uint64_t passed;
    Vor::AsyncTimer timer;
};

} // namespace Sensor::Resources
