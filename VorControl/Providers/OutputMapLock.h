#pragma once

#include "VorControl/ControlProtocol/IProtocolOutput.h"
#include "VorControl/Persistence/PersistLog.h"

#include <exception>
#include <utility>

namespace VorControl::Providers {

/// BeginLock of an output map for a scope.
class OutputMapLock {
public:
    explicit OutputMapLock(ControlProtocol::IProtocolOutput& outputs)
        : outputs(&outputs) {
        outputs.BeginLock();
    }
    OutputMapLock(const OutputMapLock&) = delete;
    OutputMapLock& operator=(const OutputMapLock&) = delete;

    /// EndLock. Throws what that throws; the destructor, which does the same, logs it.
    void End() { std::exchange(outputs, nullptr)->EndLock(); }

    ~OutputMapLock() {
        if (outputs == nullptr) {
            return;
        }
        try {
            End();
        } catch (const std::exception& e) {
            Persistence::LogThrown(e, "Exception thrown in destructor");
        }
    }

private:
    ControlProtocol::IProtocolOutput* outputs;
};

} // namespace VorControl::Providers
