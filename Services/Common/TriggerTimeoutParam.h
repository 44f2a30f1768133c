#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <chrono>

namespace Services::Common {

/// The parameter "triggerTimeout" of a service that runs SensorCommands: milliseconds.
class TriggerTimeoutParam : public Vor::Params::Value<unsigned int> {
public:
    TriggerTimeoutParam();

    void RegisterIn(Vor::Params::Group& params);
    void Reset();
    std::chrono::milliseconds Time() const { return std::chrono::milliseconds(Get()); }
};

} // namespace Services::Common
