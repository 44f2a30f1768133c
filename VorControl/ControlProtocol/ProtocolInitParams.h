#pragma once

#include "Vor/Structure.h"
#include "VorApi/Params/Group.h"

namespace VorCommon {
class ICommandTarget;
}

namespace VorControl {
class IControlDeviceManager;
}

namespace VorControl::ControlProtocol {

class IProtocolOutput;
class IProtocolRegisterAssemblyGroup;
class NonPersistentProperties;

/// The objects that a service passes to ProtocolBase::Init. The service owns them until it is destroyed.
struct ProtocolInitParams {
    /// Null keeps the built-in ones.
    NonPersistentProperties* nonPersistentProperties = nullptr;
    /// Null: the service has no parameters. A service whose configuration is persisted needs a group, even an empty
    /// one.
    Vor::Params::Group* params = nullptr;
    IProtocolOutput* outputs = nullptr;
    VorCommon::ICommandTarget* outputsCommandTarget = nullptr;
    /// Its first child is `dropCount`, the number of messages that the service has dropped, as a
    /// Vor::Properties::Value<long long>; Init refuses another type. A service that sets it overrides UpdateMetrics.
    Vor::Properties::Structure* metrics = nullptr;
    IProtocolRegisterAssemblyGroup* registerAssemblyGroup = nullptr;
    /// A service that sets it overrides RegisterAssemblyUpdate.
    IControlDeviceManager* deviceManager = nullptr;
};

} // namespace VorControl::ControlProtocol
