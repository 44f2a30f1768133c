#pragma once

#include "VorPipe/PipeDataType.h"

#include <string>

namespace VorPipe {

/// A data source: what one output of a tool gives.
struct PipeOutput {
    struct Format {
        PipeDataType type = PipeDataType::None;
        bool arrayed = false;
    };

    std::string name;        ///< the data source's text, such as "profile/max"
    std::string ownerName;   ///< for users, of the tool
    std::string displayName; ///< for users, of the output itself
    Format format;
};

} // namespace VorPipe
