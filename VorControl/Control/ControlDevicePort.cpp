#include "VorControl/Control/ControlDevicePort.h"

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlockInfo.h"

namespace VorControl {

using ControlProtocol::DefaultMeasurementValueAndDecisionRegisterBlockInfo;
using ControlProtocol::IProtocolRegisterAssembly;
using ControlProtocol::ProtocolRegisterAssemblyBase;

namespace {

constexpr unsigned short LastOutputId = 65534;
constexpr const char* AssemblyId = "registerAssembly-0";

} // namespace

ControlDevicePort::ControlDevicePort(unsigned long long portNumber)
    : portNumber(portNumber)
    , registerAssembly(std::make_shared<ProtocolRegisterAssemblyBase>(
          false, 0, LastOutputId, AssemblyId, IProtocolRegisterAssembly::DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME))
    , registerAssemblyCmdTarget(*registerAssembly) {
    registerAssembly->AddSupportedBlockType(std::make_unique<DefaultMeasurementValueAndDecisionRegisterBlockInfo>());
}

void ControlDevicePort::UpdateMetrics() {
    metrics.dropCount = dropCount.load(std::memory_order_relaxed) + discardCount.load(std::memory_order_relaxed);
    metrics.highCount = highCount.load(std::memory_order_relaxed);
    metrics.lowCount = lowCount.load(std::memory_order_relaxed);
}

void ControlDevicePort::ResetMetrics() {
    metrics.dropCount = 0;
    metrics.highCount = 0;
    metrics.lowCount = 0;
    ResetDiscardCount();
}

unsigned long long ControlDevicePort::PortNumber() const {
    return portNumber;
}

void ControlDevicePort::SetDropCount(long long count) {
    dropCount.store(count, std::memory_order_relaxed);
}

void ControlDevicePort::SetHighCount(long long count) {
    highCount.store(count, std::memory_order_relaxed);
}

void ControlDevicePort::SetLowCount(long long count) {
    lowCount.store(count, std::memory_order_relaxed);
}

void ControlDevicePort::IncrementDiscardCount(long long count) {
    discardCount.fetch_add(count, std::memory_order_relaxed);
}

void ControlDevicePort::ResetDiscardCount() {
    discardCount.store(0, std::memory_order_relaxed);
}

std::shared_ptr<IProtocolRegisterAssembly> ControlDevicePort::RegisterAssembly() {
    return registerAssembly;
}

VorCommon::ICommandTarget& ControlDevicePort::RegisterAssemblyCmdTarget() {
    return registerAssemblyCmdTarget;
}

const Vor::Properties::Structure& ControlDevicePort::GetMetrics() const {
    return metrics;
}

} // namespace VorControl
