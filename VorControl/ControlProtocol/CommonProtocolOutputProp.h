#pragma once

#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorPipe/PipeDataFormatProps.h"

#include <string>

namespace VorControl::ControlProtocol {

/// What the documents of all output maps have.
class CommonProtocolOutputProp : public Vor::Params::Group {
public:
    CommonProtocolOutputProp();

    Vor::Params::Value<std::string> version;
    Vor::Params::Array<VorPipe::PipeDataFormatProps>
        acceptedDataFormats; ///< what the service takes; for clients, the map doesn't ask
};

} // namespace VorControl::ControlProtocol
