#pragma once

#include "Services/Ascii/PendingAnswer.h"
#include "VorControl/ControlProtocol/ControlRegisterTypes.h"

#include <memory>

namespace Services::Ascii {

/// What requests ask of the sensor. None of the operations waits; the end of each is told by PendingAnswer::End, maybe
/// before it returns, and by the server's Wakeup.
class ISensor {
public:
    virtual ~ISensor() = default;

    /// Runs a command. False when one is under way: then nothing was begun, and no end is told.
    virtual bool Run(const VorControl::ControlProtocol::ControlRegisterCommandData& command,
                     const std::shared_ptr<PendingAnswer>& answer) = 0;
    /// Finds out the state as it is now.
    virtual void ReadState(const std::shared_ptr<PendingAnswer>& answer) = 0;
};

} // namespace Services::Ascii
