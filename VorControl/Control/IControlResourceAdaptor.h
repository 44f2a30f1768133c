#pragma once

#include <string>

namespace VorControl {

/// Reads resources of the sensor for the services.
class IControlResourceAdaptor {
public:
    virtual ~IControlResourceAdaptor() = default;
    /// Reads a resource of the sensor, such as "/controls/modbus", or one member of its document, such as
    /// "/controls/modbus#/enabled": `out` is its JSON text, "null" for a member that it doesn't have. One read at a
    /// time, yERROR_BUSY for another one; a read that took too long counts until the main loop has ended it. Throws
    /// yERROR_NOT_FOUND when there is no such resource, and yERROR_COMMAND when the main loop didn't read it within
    /// `timeout` microseconds; then `out` is unchanged.
    virtual void Read(const std::string& path, std::string& out, unsigned long long timeout) = 0;
};

} // namespace VorControl
