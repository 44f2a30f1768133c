#pragma once

#include <cstdint>
#include <string>

namespace VorCommon {

/// The device of a provider. What it returns may change from call to call.
class IDeviceProvider {
public:
    enum class DeviceStatus : std::int32_t { Connected = 0, NotConnected = -1 };

    virtual std::string Model() const = 0;
    virtual std::string SerialNumber() const = 0;
    virtual DeviceStatus Status() const = 0;

protected:
    ~IDeviceProvider() = default;
};

} // namespace VorCommon
