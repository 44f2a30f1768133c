#pragma once

#include "VorCommon/ICommandTarget.h"

namespace VorControl::ControlProtocol {

class IProtocolOutput;

/// The edit commands of an output map: "add", "addAll", "remove", "removeAll", "compactId" and "updateId". Their result
/// is an empty group. Throws yERROR_NOT_FOUND for an unknown command, and what the map throws.
class ProtocolOutputCommandTarget : public VorCommon::ICommandTarget {
public:
    /// The map outlives the target.
    explicit ProtocolOutputCommandTarget(IProtocolOutput& output)
        : output(output) {}

    std::vector<VorCommon::CommandInfo> ListCommands() const override;
    std::shared_ptr<Vor::Params::Group> GetCommandParams(const std::string& id) const override;
    std::shared_ptr<Vor::Params::Group> InvokeCommand(const std::string& id, Vor::Params::Group& params) override;
    bool IsCommandSupported(const std::string& id) override;

private:
    IProtocolOutput& output;
};

} // namespace VorControl::ControlProtocol
