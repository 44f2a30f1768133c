#pragma once

#include <string>

#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/NonPersistentProperties.h"

namespace Services::Ascii {

// What the service shows of itself: its status, where clients find it, why it can't serve them, and what they do.
class AsciiProperties : public VorControl::ControlProtocol::NonPersistentProperties {
public:
    AsciiProperties();

    // Such as "tcp://127.0.0.1:8190", with the port that was really taken; empty while the service doesn't listen.
    Vor::Params::Value<std::string> address;
    // Empty, or why the service couldn't listen as its parameters say.
    Vor::Params::Value<std::string> failure;
    // As ServerCounters, since the service was started.
    Vor::Params::Value<unsigned long long> connected;
    Vor::Params::Value<unsigned long long> refused;
    Vor::Params::Value<unsigned long long> requests;
    Vor::Params::Value<unsigned long long> errors;
    // Lines of frames that clients were too slow for.
    Vor::Params::Value<unsigned long long> dropped;
};

} // namespace Services::Ascii
