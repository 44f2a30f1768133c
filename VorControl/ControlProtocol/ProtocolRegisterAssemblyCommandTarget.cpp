#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyCommandTarget.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/CommandTable.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"
#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

using Vor::Params::Group;

namespace {

using AssemblyCommands = CommandTable<IProtocolRegisterAssembly>;

template <class Params>
std::shared_ptr<Group> MakeAssemblyParams(IProtocolRegisterAssembly& /*assembly*/) {
    return std::make_shared<Params>();
}

const AssemblyCommands& AllAssemblyCommands() {
    static const AssemblyCommands Commands{
        {"add", "Add", MakeAssemblyParams<AddBlockParams>,
         [](IProtocolRegisterAssembly& assembly, Group& params) { assembly.Add(params); }},
        {"remove", "Remove", MakeAssemblyParams<RemoveBlockParams>,
         [](IProtocolRegisterAssembly& assembly, Group& params) { assembly.Remove(params); }},
        {"removeAll", "RemoveAll", AssemblyCommands::NoParams,
         [](IProtocolRegisterAssembly& assembly, Group&) { assembly.RemoveAll(); }},
        {"compact", "Compact", MakeAssemblyParams<CompactBlocksParams>,
         [](IProtocolRegisterAssembly& assembly, Group& params) { assembly.Compact(params); }},
        {"update", "Update", MakeAssemblyParams<UpdateBlockParams>,
         [](IProtocolRegisterAssembly& assembly, Group& params) { assembly.Update(params); }},
    };
    return Commands;
}

} // namespace

std::vector<VorCommon::CommandInfo> ProtocolRegisterAssemblyCommandTarget::ListCommands() const {
    return AllAssemblyCommands().List();
}

std::shared_ptr<Group> ProtocolRegisterAssemblyCommandTarget::GetCommandParams(const std::string& id) const {
    const auto* const command = AllAssemblyCommands().Find(id);
    if (command == nullptr) {
        Vor::LogUser(Vor::UserInfo, "VorControl", Translate("beApp.ctrl", "The command '%1$s' does not exist."), id);
        Vor::Throw(yERROR_NOT_FOUND);
    }
    return command->makeParams(assembly);
}

std::shared_ptr<Group> ProtocolRegisterAssemblyCommandTarget::InvokeCommand(const std::string& id, Group& params) {
    const auto* const command = AllAssemblyCommands().Find(id);
    if (command == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    command->invoke(assembly, params);
    return std::make_shared<Group>("");
}

bool ProtocolRegisterAssemblyCommandTarget::IsCommandSupported(const std::string& id) {
    return AllAssemblyCommands().Find(id) != nullptr;
}

} // namespace VorControl::ControlProtocol
