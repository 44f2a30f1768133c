#pragma once

#include "VorApi/Threads/ScopeLock.h"
#include "VorControl/Control/IControlInstance.h"

namespace VorControl {

/// The lock of a service's output map, for each use of its entries.
using InstanceOutputsMapLock =
    Vor::ScopeLock<IControlInstance, &IControlInstance::OutputsMapBeginLock, &IControlInstance::OutputsMapEndLock>;

/// The lock of a service's non-persistent properties, for each change or read of them.
using InstancePropertiesLock = Vor::ScopeLock<IControlInstance, &IControlInstance::NonPersistentPropertiesBeginLock,
                                              &IControlInstance::NonPersistentPropertiesEndLock>;

} // namespace VorControl
