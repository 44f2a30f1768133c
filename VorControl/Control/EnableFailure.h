#pragma once

#include "yApi/yStatus.h"

#include <string>

namespace VorControl {

/// Why a service failed to start or to stop.
struct EnableFailure {
    yStatus status = yERROR; ///< of the Vor::Exception that was thrown; yERROR for something else
    std::string text;        ///< may be empty
};

} // namespace VorControl
