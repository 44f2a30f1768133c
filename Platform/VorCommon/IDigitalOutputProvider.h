#pragma once

#include "VorCommon/IDeviceProvider.h"
#include "yApi/yStatus.h"

namespace VorCommon {

/// A device with digital outputs. Its users hold it weakly.
class IDigitalOutputProvider {
public:
    virtual ~IDigitalOutputProvider() = default;

    virtual const IDeviceProvider& Device() const = 0;
    /// Switches an output when the encoder or the time, as the output is configured, has reached `target`. Main loop;
    /// may be slow, may throw.
    virtual yStatus SetOutputState(unsigned long long outputId, bool state, long long target) = 0;
};

} // namespace VorCommon
