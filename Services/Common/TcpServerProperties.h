#pragma once

#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/NonPersistentProperties.h"

#include <string>

namespace Services::Common {

/// What a TCP service shows of itself: its status, where clients find it, why it can't serve them, and what they do.
class TcpServerProperties : public VorControl::ControlProtocol::NonPersistentProperties {
public:
    TcpServerProperties();

    /// Such as "tcp://127.0.0.1:502", with the port that was really taken; empty while the service doesn't listen.
    Vor::Params::Value<std::string> address;
    /// Empty, or why the service couldn't listen as its parameters say.
    Vor::Params::Value<std::string> failure;
    /// As TcpCounters, since the service was started.
    Vor::Params::Value<unsigned long long> connected;
    Vor::Params::Value<unsigned long long> refused;
    Vor::Params::Value<unsigned long long> requests;

protected:
    /// `title` is translated.
    void RegisterCounter(const char* name, Vor::Params::Value<unsigned long long>& counter, const char* title);
};

} // namespace Services::Common
