#pragma once

#include "VorCommon/PersistDomain.h"

namespace VorCommon {

class IPersistStore;

/// A part of the sensor that persists with the domains. All but Component() is called on the persistence thread, one
/// call at a time, while the main loop waits: a handler mustn't wait for the main loop. The store lives for the call
/// only.
class IPersistHandler {
public:
    virtual ~IPersistHandler() = default;

    /// The name by which logs speak of the handler.
    virtual const char* Component() = 0;
    /// The domain has no file yet: take the defaults.
    virtual void InitPersistDomain(PersistDomain domain, IPersistStore& store) = 0;
    /// The domain's file has been read: take what is stored.
    virtual void LoadPersistDomain(PersistDomain domain, const IPersistStore& store) = 0;
    /// Write what shall be found again. Files that aren't written stay as they are.
    virtual void SavePersistDomain(PersistDomain domain, IPersistStore& store) = 0;
};

} // namespace VorCommon
