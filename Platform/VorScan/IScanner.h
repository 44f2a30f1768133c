#pragma once

#include "VorApi/Event.h"
#include "VorApi/Params/Value.h"
#include "VorCommon/IActionTarget.h"
#include "VorCommon/ICommandTarget.h"
#include "VorScan/AlignCompletionStatus.h"
#include "VorScan/AlignState.h"

namespace VorScan {

/// A scanner's actions, commands and alignment. Main loop only.
class IScanner {
public:
    virtual ~IScanner() = default;

    /// Null if the scanner has no actions.
    virtual VorCommon::IActionTarget* ActionTarget() = 0;
    /// Null if the scanner has no commands.
    virtual VorCommon::ICommandTarget* CommandTarget() = 0;
    /// Raised when an alignment has ended, on any thread.
    virtual Vor::Event<AlignCompletionStatus>& AlignmentCompletedEvent() = 0;
    virtual Vor::Params::Value<AlignState>& AlignmentState() = 0;
};

} // namespace VorScan
