#pragma once

#include "Sensor/Resources/SensorProperties.h"
#include "Vor/AsyncTimer.h"

#include <functional>

#include <nlohmann/json.hpp>

namespace Sensor::Resources {

/// Detects when the sensor's state changes: members of its document, except the time, the frames, the encoder
/// and the memory, which always do. Main loop only.
class StateWatch {
public:
    static constexpr unsigned long long Period = 250'000;

    /// `changed` gets the members that have changed; of the services, those that have changed.
    StateWatch(const SensorEnviron& environ, std::function<void(const nlohmann::json& changes)> changed);

private:
    nlohmann::json Read();
    void Compare();

    const SensorEnviron environ;
    const std::function<void(const nlohmann::json& changes)> changed;
    SensorProperties document;
    nlohmann::json last;
    Vor::AsyncTimer timer;
};

} // namespace Sensor::Resources
