#pragma once

#include "VorControl/ControlProtocol/ControlRegisterTypes.h"

namespace Services::Common {

/// Runs the commands of clients, one at a time.
class ICommandRunner {
public:
    virtual ~ICommandRunner() = default;

    /// Whether a command is in progress.
    virtual bool IsBusy() const = 0;

    /// Starts a command, without waiting for anything. CommandCells::EndCommand is called once at its end, possibly
    /// before this returns.
    virtual void Run(const VorControl::ControlProtocol::ControlRegisterCommandData& command) = 0;
};

} // namespace Services::Common
