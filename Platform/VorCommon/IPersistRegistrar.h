#pragma once

#include "VorCommon/PersistDomain.h"

#include <string>

namespace VorCommon {

class IPersistHandler;

/// Where persist handlers come and go. Every operation may be called on any thread; none of them calls a handler.
class IPersistRegistrar {
public:
    /// Adds a handler, which then takes part in whatever is initialised, loaded or saved next. The handler is borrowed
    /// until it is deregistered. The text is for logs and may be empty.
    /// @return an id, never 0.
    virtual unsigned long long Register(IPersistHandler& handler, const std::string& text) = 0;
    /// Takes the handler out, and waits for a call of it that is running, unless made from within that call.
    /// An unknown id is ignored.
    virtual void Deregister(unsigned long long id) = 0;
    /// Tells that the domain no longer is as it was saved. The flag has no meaning here.
    virtual void Announce(IPersistHandler& handler, PersistDomain domain, int flag) = 0;

protected:
    ~IPersistRegistrar() = default;
};

} // namespace VorCommon
