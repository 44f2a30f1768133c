#pragma once

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/IProtocol.h"

namespace Services::Common {

/// NonPersistentPropertiesBeginLock of a service for a scope.
class PropertiesLock {
public:
    explicit PropertiesLock(VorControl::ControlProtocol::IProtocol& protocol)
        : protocol(protocol) {
        protocol.NonPersistentPropertiesBeginLock();
    }
    ~PropertiesLock() {
        try {
            protocol.NonPersistentPropertiesEndLock();
        } catch (const std::exception& e) {
            Vor::LogError("Exception thrown in destructor");
            Vor::Exception::LogException(e);
            Vor::Exception::LogBackTrace(e);
        }
    }
    PropertiesLock(const PropertiesLock&) = delete;
    PropertiesLock& operator=(const PropertiesLock&) = delete;

private:
    VorControl::ControlProtocol::IProtocol& protocol;
};

} // namespace Services::Common
