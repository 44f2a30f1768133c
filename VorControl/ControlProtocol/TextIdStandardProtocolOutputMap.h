#pragma once

#include "VorControl/ControlProtocol/ProtocolOutputBase.h"
#include "VorControl/ControlProtocol/TextIdStandardOutputs.h"

#include <map>
#include <string>

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

private:
    using NewEntries = std::map<std::string, std::string>; ///< sources by id

    // The caller of these holds the lock.

    /// Whether nobody can see the states of the map between the first added entry of a request and the last one.
    bool CanMerge(const TextIdStandardOutputsArgs& request) const;
    /// Adds an entry to those that will be merged, or throws as Add_Helper.
    void Collect(const TextIdStandardOutputItem& item, Sources& sources, NewEntries& added);
    void Merge(NewEntries&& added);
};

} // namespace VorControl::ControlProtocol
