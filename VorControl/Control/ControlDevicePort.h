#pragma once

#include "VorControl/Control/DeviceMetrics.h"
#include "VorControl/Control/IControlDevicePort.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyCommandTarget.h"

#include <atomic>
#include <memory>
#include <string>

namespace VorControl {

class ControlDevicePort : public IControlDevicePort {
public:
    explicit ControlDevicePort(unsigned long long portNumber);

    /// By which a device has its port of that number.
    static std::string Key(unsigned long long portNumber) { return "port-" + std::to_string(portNumber); }

    ControlDevicePort(const ControlDevicePort&) = delete;
    ControlDevicePort& operator=(const ControlDevicePort&) = delete;

    void UpdateMetrics() override;
    /// The counts themselves stay, but that of discarded requests.
    void ResetMetrics() override;
    unsigned long long PortNumber() const override;
    void SetDropCount(long long count) override;
    void SetHighCount(long long count) override;
    void SetLowCount(long long count) override;
    void IncrementDiscardCount(long long count) override;
    void ResetDiscardCount() override;
    std::shared_ptr<ControlProtocol::IProtocolRegisterAssembly> RegisterAssembly() override;
    VorCommon::ICommandTarget& RegisterAssemblyCmdTarget() override;
    const Vor::Properties::Structure& GetMetrics() const override;

private:
    const unsigned long long portNumber;
    std::atomic<long long> dropCount = 0;
    std::atomic<long long> highCount = 0;
    std::atomic<long long> lowCount = 0;
    std::atomic<long long> discardCount = 0;
    DeviceMetrics metrics;
    const std::shared_ptr<ControlProtocol::ProtocolRegisterAssemblyBase> registerAssembly;
    ControlProtocol::ProtocolRegisterAssemblyCommandTarget registerAssemblyCmdTarget;
};

} // namespace VorControl
