#pragma once

#include <cstdint>

namespace Vor::Properties {
class Node;
}

namespace VorControl {
class IControlDeviceManager;
}

namespace VorControl::ControlProtocol {
class IProtocolRegisterAssembly;
}

namespace Sensor::Resources {

/// A number by which configurations are compared: equal for equal values, and different for different ones but for
/// one in 2^64.
std::uint64_t HashOf(const Vor::Properties::Node& node);
/// Of the attributes, properties and blocks. The caller holds the assembly's lock.
std::uint64_t HashOf(VorControl::ControlProtocol::IProtocolRegisterAssembly& assembly);
/// Of the devices that a service uses, and of their ports with parameters and register assemblies. The caller holds the
/// manager's lock. Where parameters of ports may be read.
std::uint64_t HashOf(const VorControl::IControlDeviceManager& devices);

} // namespace Sensor::Resources
