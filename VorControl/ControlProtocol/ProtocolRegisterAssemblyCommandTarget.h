#pragma once

#include "VorCommon/ICommandTarget.h"

namespace VorControl::ControlProtocol {

class IProtocolRegisterAssembly;

/// The edit commands of an assembly: "add", "remove", "removeAll", "compact" and "update". None has a result, so that
/// shifted blocks and replaced register counts aren't told. An unknown command throws yERROR_NOT_FOUND; a failure of
/// the assembly passes through.
class ProtocolRegisterAssemblyCommandTarget : public VorCommon::ICommandTarget {
public:
    /// The assembly outlives the target.
    explicit ProtocolRegisterAssemblyCommandTarget(IProtocolRegisterAssembly& assembly)
        : assembly(assembly) {}

    std::vector<VorCommon::CommandInfo> ListCommands() const override;
    std::shared_ptr<Vor::Params::Group> GetCommandParams(const std::string& command) const override;
    std::shared_ptr<Vor::Params::Group> InvokeCommand(const std::string& command, Vor::Params::Group& params) override;
    bool IsCommandSupported(const std::string& command) override;

private:
    IProtocolRegisterAssembly& assembly;
};

} // namespace VorControl::ControlProtocol
