#pragma once

#include "VorControl/ControlProtocol/ProtocolOutputBase.h"
#include "VorControl/ControlProtocol/TextIdStandardOutputs.h"

namespace VorControl::ControlProtocol {

// Compiled once, in TextIdStandardProtocolOutputMap.cpp.
extern template class ProtocolOutputBase<TextIdStandardOutputs, TextIdStandardOutputItem, TextIdStandardOutputsArgs,
                                         TextIdStandardOutputItemArgs, TextIdStandardOutputRemoveArgs>;

/// The output map of services whose clients request outputs by name. Ids are in byte order. An id that another entry
/// has is always refused, since texts can't be shifted.
class TextIdStandardProtocolOutputMap
    : public ProtocolOutputBase<TextIdStandardOutputs, TextIdStandardOutputItem, TextIdStandardOutputsArgs,
                                TextIdStandardOutputItemArgs, TextIdStandardOutputRemoveArgs> {
public:
    using ProtocolOutputBase::ProtocolOutputBase;

    /// The id of a source without an id is its name. Throws the status of the first failure.
    void AddAll(Vor::Params::Group& args) override;
};

} // namespace VorControl::ControlProtocol
