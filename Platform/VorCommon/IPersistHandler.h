#pragma once

#include "VorCommon/PersistDomain.h"

namespace VorCommon {

class IPersistStore;

/// A part of the sensor that keeps data in the domains. All functions but Component() are called on the persistence
/// thread, one at a time, while the main loop waits: a handler mustn't wait for the main loop. The store lives for the
/// call only.
class IPersistHandler {
public:
    virtual ~IPersistHandler() = default;

    /// The handler's name in logs.
    virtual const char* Component() = 0;
    /// The domain has no file yet: set the defaults.
    virtual void InitPersistDomain(PersistDomain domain, IPersistStore& store) = 0;
    /// The domain's file has been read: apply what is stored.
    virtual void LoadPersistDomain(PersistDomain domain, const IPersistStore& store) = 0;
    /// Write what the next load needs. Files that aren't written stay as they are.
    virtual void SavePersistDomain(PersistDomain domain, IPersistStore& store) = 0;
};

} // namespace VorCommon
