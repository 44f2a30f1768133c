#pragma once

#include <cstdint>

namespace VorControl::ControlProtocol {

/// Bit flags: what of a service is kept in a persistence domain.
enum class ProtocolPersistOptions : std::uint32_t {
    None = 0,
    Params = 1,
    OutputsMap = 2,
    RegisterAssemblies = 4,
    WorkspaceData = 8,
    DeviceManager = 16,
    All = 31
};

constexpr ProtocolPersistOptions operator|(ProtocolPersistOptions left, ProtocolPersistOptions right) {
    return static_cast<ProtocolPersistOptions>(static_cast<std::uint32_t>(left) | static_cast<std::uint32_t>(right));
}

constexpr ProtocolPersistOptions operator&(ProtocolPersistOptions left, ProtocolPersistOptions right) {
    return static_cast<ProtocolPersistOptions>(static_cast<std::uint32_t>(left) & static_cast<std::uint32_t>(right));
}

} // namespace VorControl::ControlProtocol
