#pragma once

#include <string>

namespace VorControl {

/// Reads resources of the sensor for the services.
class IControlResourceAdaptor {
public:
    virtual ~IControlResourceAdaptor() = default;
    /// See IControlHost::ReadResource.
    virtual void Read(const std::string& path, std::string& out, unsigned long long timeout) = 0;
};

} // namespace VorControl
