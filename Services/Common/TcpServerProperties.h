#pragma once

#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/NonPersistentProperties.h"

#include <string>

namespace Services::Common {

/// The properties of a TCP service: its status, where clients connect, why it can't serve them, and counters.
class TcpServerProperties : public VorControl::ControlProtocol::NonPersistentProperties {
public:
    /// `failedName` and `failedTitle` name the counter of requests that were answered with an error.
    TcpServerProperties(const char* failedName, const char* failedTitle);

    /// Such as "tcp://127.0.0.1:502", with the port that is used; empty while the service doesn't listen.
    Vor::Params::Value<std::string> address;
    /// Why the service doesn't work as its parameters say; empty when it does.
    Vor::Params::Value<std::string> failure;
    /// See ServiceCounters.
    Vor::Params::Value<unsigned long long> connected;
    Vor::Params::Value<unsigned long long> refused;
    Vor::Params::Value<unsigned long long> requests;
    Vor::Params::Value<unsigned long long> failed;

protected:
    /// `title` is translated.
    void RegisterCounter(const char* name, Vor::Params::Value<unsigned long long>& counter, const char* title);
};

} // namespace Services::Common
