#pragma once

#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorPipe/PipeDataFormatProps.h"

#include <string>

namespace VorControl::ControlProtocol {

/// The parameters that the documents of all output maps have.
class CommonProtocolOutputProp : public Vor::Params::Group {
public:
    CommonProtocolOutputProp();

    Vor::Params::Value<std::string> version;
    /// For clients: the map adds sources of other formats, too.
    Vor::Params::Array<VorPipe::PipeDataFormatProps> acceptedDataFormats;
};

} // namespace VorControl::ControlProtocol
