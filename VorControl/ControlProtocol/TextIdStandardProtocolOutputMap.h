#pragma once

#include "VorControl/ControlProtocol/ProtocolOutputBase.h"
#include "VorControl/ControlProtocol/TextIdStandardOutputItemArgs.h"
#include "VorControl/ControlProtocol/TextIdStandardOutputRemoveArgs.h"
#include "VorControl/ControlProtocol/TextIdStandardOutputsArgs.h"

namespace VorControl::ControlProtocol {

/// The output map of services whose clients ask for outputs by name. Ids are in byte order; an id that is taken is
/// refused, whatever the request says of shifting.
class TextIdStandardProtocolOutputMap
    : public ProtocolOutputBase<TextIdStandardOutputs, TextIdStandardOutputItem, TextIdStandardOutputsArgs,
                                TextIdStandardOutputItemArgs, TextIdStandardOutputRemoveArgs> {
public:
    using ProtocolOutputBase::ProtocolOutputBase;

    /// A source without an id gets its own name as the id. Throws the status of the first failure.
    void AddAll(Vor::Params::Group& args) override;
};

} // namespace VorControl::ControlProtocol
