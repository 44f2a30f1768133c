#pragma once

#include "VorCommon/PersistDomain.h"

#include <string>

namespace VorCommon {

class IPersistHandler;

/// Adds and removes persist handlers. Each function may be called on any thread, and none calls a handler.
class IPersistRegistrar {
public:
    /// Adds a handler, which is called from the next initialisation, load or save on. It is borrowed until it is
    /// deregistered. The text is for logs and may be empty.
    /// @return an id, never 0.
    virtual unsigned long long Register(IPersistHandler& handler, const std::string& text) = 0;
    /// Removes the handler and waits for a running call of it, unless this is called from within that call. An unknown
    /// id is ignored.
    virtual void Deregister(unsigned long long id) = 0;
    /// Notifies that the domain has changed since it was saved. The flag isn't used.
    virtual void Announce(IPersistHandler& handler, PersistDomain domain, int flag) = 0;

protected:
    ~IPersistRegistrar() = default;
};

} // namespace VorCommon
