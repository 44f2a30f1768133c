#pragma once

#include "Vor/Structure.h"
#include "VorApi/Params/Group.h"

namespace VorCommon {
class ICommandTarget;
}

namespace VorControl::ControlProtocol {

class IProtocolOutput;
class IProtocolRegisterAssemblyGroup;
class NonPersistentProperties;

/// The objects that a service hands to ProtocolBase::Init. The service owns them and keeps them until it is destroyed.
struct ProtocolInitParams {
    /// Null keeps the built-in ones.
    NonPersistentProperties* nonPersistentProperties = nullptr;
    /// Null: the service has no parameters. A service whose configuration is persisted binds a group, empty if need be.
    Vor::Params::Group* params = nullptr;
    IProtocolOutput* outputs = nullptr;
    VorCommon::ICommandTarget* outputsCommandTarget = nullptr;
    /// Has `dropCount`, an unsigned 64-bit value, as its first child. A service that binds it overrides UpdateMetrics.
    Vor::Properties::Structure* metrics = nullptr;
    IProtocolRegisterAssemblyGroup* registerAssemblyGroup = nullptr;
};

} // namespace VorControl::ControlProtocol
