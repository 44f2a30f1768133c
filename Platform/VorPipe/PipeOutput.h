#pragma once

#include "VorPipe/PipeDataType.h"

#include <string>

namespace VorPipe {

/// A data source: one output of a tool.
struct PipeOutput {
    struct Format {
        PipeDataType type = PipeDataType::None;
        bool arrayed = false; ///< each result is a list of messages of the type
    };

    std::string name;        ///< identifies the data source, such as "profile/max"
    std::string ownerName;   ///< the tool's name for users
    std::string displayName; ///< the output's own name for users
    Format format;
};

} // namespace VorPipe
