#pragma once

#include "VorCommon/IMetricsKeeper.h"
#include "VorCommon/IMetricsSource.h"

#include <memory>

namespace VorCommon {
class ICommandTarget;
}

namespace VorControl {

namespace ControlProtocol {
class IProtocolRegisterAssembly;
}

/// An output port of a device that a service uses. The service counts here what it asks of the port, on any thread; the
/// figures are refreshed and read on the main loop.
class IControlDevicePort : public VorCommon::IMetricsKeeper, public VorCommon::IMetricsSource {
public:
    ~IControlDevicePort() override = default;

    virtual unsigned long long PortNumber() const = 0;
    /// Requests that were lost, that switched the port on, that switched it off.
    virtual void SetDropCount(long long count) = 0;
    virtual void SetHighCount(long long count) = 0;
    virtual void SetLowCount(long long count) = 0;
    /// Counts requests that were discarded; they are lost, too.
    virtual void IncrementDiscardCount(long long count) = 0;
    virtual void ResetDiscardCount() = 0;

    /// The data sources of the port: one assembly, of measurements.
    virtual std::shared_ptr<ControlProtocol::IProtocolRegisterAssembly> RegisterAssembly() = 0;
    /// The commands that change the assembly. Owned by the port.
    virtual VorCommon::ICommandTarget& RegisterAssemblyCmdTarget() = 0;
};

} // namespace VorControl
