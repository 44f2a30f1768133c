#include "Sensor/Resources/StateWatch.h"

#include "Vor/JsonSerializer.h"
#include "VorControl/Control/IControlManager.h"

#include <algorithm>
#include <utility>

namespace Sensor::Resources {

namespace {

/// The elements of a list that another one doesn't have.
nlohmann::json NewElements(const nlohmann::json& list, const nlohmann::json& before) {
    nlohmann::json fresh = nlohmann::json::array();
    std::ranges::copy_if(list, std::back_inserter(fresh), [&](const nlohmann::json& element) {
        return std::ranges::find(before, element) == before.end();
    });
    return fresh;
}

} // namespace

StateWatch::StateWatch(const SensorEnviron& environ, std::function<void(const nlohmann::json& changes)> changed)
    : environ(environ)
    , changed(std::move(changed))
    , last(Read())
    , timer([this](Vor::AsyncTimer&) { Compare(); }) {
    timer.Start(Period, false);
}

nlohmann::json StateWatch::Read() {
    document.Populate(environ, {});
    nlohmann::json state = Vor::Properties::JsonSerializer::Serialize(document);
    for (const char* always : {"frame", "encoder", "memory"}) {
        state.erase(always);
    }
    return state;
}

void StateWatch::Compare() {
    const nlohmann::json before = std::exchange(last, Read());
    nlohmann::json changes = nlohmann::json::object();
    for (const auto& [name, value] : last.items()) {
        if (value != before.at(name)) {
            changes[name] = name == "services" ? NewElements(value, before.at(name)) : value;
        }
    }
    if (!changes.empty()) {
        changed(changes);
    }
}

} // namespace Sensor::Resources
