#pragma once

#include "Services/Ascii/PendingAnswer.h"
#include "Services/Ascii/ResourceReader.h"
#include "VorControl/ControlProtocol/ControlRegisterTypes.h"

#include <memory>

namespace Services::Ascii {

/// The sensor as the requests use it. The operations don't wait. When one has ended, possibly before it returns,
/// PendingAnswer::End is called and the server's Wakeup is set.
class ISensor {
public:
    virtual ~ISensor() = default;

    /// Runs a command. Returns false, and runs nothing, when another command is in progress.
    virtual bool Run(const VorControl::ControlProtocol::ControlRegisterCommandData& command,
                     const std::shared_ptr<PendingAnswer>& answer) = 0;
    /// Reads the present state into the answer.
    virtual void ReadState(const std::shared_ptr<PendingAnswer>& answer) = 0;
    /// Reads a resource into the answer. Returns false, and reads nothing, when too many reads wait already.
    virtual bool ReadResource(ReadTarget target, const std::shared_ptr<PendingAnswer>& answer) = 0;
};

} // namespace Services::Ascii
