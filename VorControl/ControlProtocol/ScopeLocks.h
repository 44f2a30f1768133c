#pragma once

#include "VorApi/Threads/ScopeLock.h"
#include "VorControl/ControlProtocol/IProtocol.h"
#include "VorControl/ControlProtocol/IProtocolOutput.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"

namespace VorControl::ControlProtocol {

/// The lock of a register assembly, for each use of its blocks.
using AssemblyLock = Vor::ScopeLock<const IProtocolRegisterAssembly, &IProtocolRegisterAssembly::BeginLock,
                                    &IProtocolRegisterAssembly::EndLock>;

/// The lock of an output map, for each use of its entries.
using OutputMapLock = Vor::ScopeLock<IProtocolOutput, &IProtocolOutput::BeginLock, &IProtocolOutput::EndLock>;

/// The lock of a service's non-persistent properties, for each change or read of them.
using PropertiesLock =
    Vor::ScopeLock<IProtocol, &IProtocol::NonPersistentPropertiesBeginLock, &IProtocol::NonPersistentPropertiesEndLock>;

} // namespace VorControl::ControlProtocol
