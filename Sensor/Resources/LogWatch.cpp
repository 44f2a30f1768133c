#include "Sensor/Resources/LogWatch.h"

#include "Sensor/LogHistory.h"
#include "Sensor/Resources/LogEntryProperties.h"
#include "Vor/JsonSerializer.h"

#include <utility>

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

LogWatch::LogWatch(const LogHistory& history, std::function<void(const nlohmann::json& entry)> added)
    : history(history)
    , added(std::move(added))
    , passed(history.LastNumber())
    , timer([this](Vor::AsyncTimer&) { Pass(); }) {
    timer.Start(Period, false);
}

void LogWatch::Pass() {
    for (const LogHistory::Entry& entry : history.After(passed)) {
        passed = entry.number;
        LogEntryProperties properties;
        properties.Populate(entry);
        added(Vor::Properties::JsonSerializer::Serialize(properties));
    }
}

} // namespace Sensor::Resources
