#pragma once

#include "Services/Modbus/ControlInputBlock.h"

#include <array>

namespace Services::Modbus {

/// The registers of a command as they stand on the wire.
using CommandInput = std::array<unsigned char, ControlInputBlock::InputSize>;

/// Runs the commands of clients, one at a time.
class ICommandRunner {
public:
    virtual ~ICommandRunner() = default;

    /// Whether a command is under way.
    virtual bool IsBusy() const = 0;

    /// Starts a command. Doesn't wait for anything; the end, which may come before this returns, is told to
    /// ControlRegisters::EndCommand exactly once.
    virtual void Run(const CommandInput& input) = 0;
};

} // namespace Services::Modbus
