#pragma once

/// Keys of a service's section in its configuration file.
namespace VorControl::Persistence {

inline constexpr const char* PERSISTENCE_FIELD_NAME_PARAMETERS = "parameters";
inline constexpr const char* PERSISTENCE_FIELD_NAME_PARAMETERS_VERSION = "parametersVersion";
inline constexpr const char* PERSISTENCE_FIELD_NAME_OUTPUTS = "outputs";
inline constexpr const char* PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_LIST = "registerAssemblyList";
inline constexpr const char* PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_VERSION_LIST = "registerAssemblyVersionList";
inline constexpr const char* PERSISTENCE_FIELD_NAME_ATTRIBUTES = "attributes";
inline constexpr const char* PERSISTENCE_FIELD_NAME_PROPERTIES = "properties";
inline constexpr const char* PERSISTENCE_FIELD_NAME_BLOCKS = "blocks";
inline constexpr const char* PERSISTENCE_FIELD_NAME_ID = "id";
inline constexpr const char* PERSISTENCE_FIELD_NAME_DISPLAY_NAME = "displayName";
inline constexpr const char* PERSISTENCE_FIELD_NAME_VERSION = "version";

} // namespace VorControl::Persistence
