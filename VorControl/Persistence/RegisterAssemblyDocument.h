#pragma once

#include <nlohmann/json_fwd.hpp>

namespace VorControl::ControlProtocol {
class IProtocolRegisterAssembly;
}

namespace VorControl::Persistence {

/// The entry of an assembly in a configuration file. The caller holds the assembly's lock.
nlohmann::json SerializeRegisterAssembly(ControlProtocol::IProtocolRegisterAssembly& assembly);

} // namespace VorControl::Persistence
