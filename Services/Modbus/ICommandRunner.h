#pragma once

#include "Services/Modbus/ControlInputBlock.h"

#include <array>

namespace Services::Modbus {

/// The registers of a command in the order of the wire.
using CommandInput = std::array<unsigned char, ControlInputBlock::InputSize>;

/// Runs the commands of clients, one at a time.
class ICommandRunner {
public:
    virtual ~ICommandRunner() = default;

    /// Whether a command is in progress.
    virtual bool IsBusy() const = 0;

    /// Starts a command, without waiting for anything. ControlRegisters::EndCommand is called once at its end, possibly
    /// before this returns.
    virtual void Run(const CommandInput& input) = 0;
};

} // namespace Services::Modbus
