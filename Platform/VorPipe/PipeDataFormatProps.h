#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorPipe/PipeDataType.h"

namespace VorPipe {

/// The document form of a data source's format.
class PipeDataFormatProps : public Vor::Params::Group {
public:
    PipeDataFormatProps();

    Vor::Params::Value<PipeDataType> type;
    Vor::Params::Value<bool> arrayed;
};

} // namespace VorPipe
