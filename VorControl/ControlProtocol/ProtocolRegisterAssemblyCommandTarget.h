#pragma once

#include "VorCommon/ICommandTarget.h"

namespace VorControl::ControlProtocol {

class IProtocolRegisterAssembly;

/// The edit commands of an assembly: "add", "remove", "removeAll", "compact" and "update". Their result is an empty
/// group, so shifted blocks and ignored register counts aren't reported. Throws yERROR_NOT_FOUND for an unknown
/// command, and what the assembly throws.
class ProtocolRegisterAssemblyCommandTarget : public VorCommon::ICommandTarget {
public:
    /// The assembly outlives the target.
    explicit ProtocolRegisterAssemblyCommandTarget(IProtocolRegisterAssembly& assembly)
        : assembly(assembly) {}

    std::vector<VorCommon::CommandInfo> ListCommands() const override;
    std::shared_ptr<Vor::Params::Group> GetCommandParams(const std::string& id) const override;
    std::shared_ptr<Vor::Params::Group> InvokeCommand(const std::string& id, Vor::Params::Group& params) override;
    bool IsCommandSupported(const std::string& id) override;

private:
    IProtocolRegisterAssembly& assembly;
};

} // namespace VorControl::ControlProtocol
