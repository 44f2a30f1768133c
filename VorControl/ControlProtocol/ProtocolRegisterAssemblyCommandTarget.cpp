#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyCommandTarget.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/AddBlockParams.h"
#include "VorControl/ControlProtocol/CompactBlocksParams.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/ControlProtocol/RemoveBlockParams.h"
#include "VorControl/ControlProtocol/Translate.h"
#include "VorControl/ControlProtocol/UpdateBlockParams.h"

#include <algorithm>
#include <iterator>

namespace VorControl::ControlProtocol {

using Vor::Params::Group;

namespace {

template <class Params>
std::shared_ptr<Group> Make() {
    return std::make_shared<Params>();
}

struct AssemblyCommand {
    const char* id;
    const char* displayName;
    std::shared_ptr<Group> (*makeParams)();
    void (*invoke)(IProtocolRegisterAssembly&, Group&);
};

const AssemblyCommand AssemblyCommands[] = {
    {"add", "Add", Make<AddBlockParams>,
     [](IProtocolRegisterAssembly& assembly, Group& params) { assembly.Add(params); }},
    {"remove", "Remove", Make<RemoveBlockParams>,
     [](IProtocolRegisterAssembly& assembly, Group& params) { assembly.Remove(params); }},
    {"removeAll", "RemoveAll", [] { return std::make_shared<Group>(""); },
     [](IProtocolRegisterAssembly& assembly, Group&) { assembly.RemoveAll(); }},
    {"compact", "Compact", Make<CompactBlocksParams>,
     [](IProtocolRegisterAssembly& assembly, Group& params) { assembly.Compact(params); }},
    {"update", "Update", Make<UpdateBlockParams>,
     [](IProtocolRegisterAssembly& assembly, Group& params) { assembly.Update(params); }},
};

const AssemblyCommand* FindAssemblyCommand(const std::string& id) {
    const auto* const found = std::find_if(std::begin(AssemblyCommands), std::end(AssemblyCommands),
                                           [&](const AssemblyCommand& command) { return command.id == id; });
    return found == std::end(AssemblyCommands) ? nullptr : found;
}

} // namespace

std::vector<VorCommon::CommandInfo> ProtocolRegisterAssemblyCommandTarget::ListCommands() const {
    std::vector<VorCommon::CommandInfo> list;
    for (const auto& command : AssemblyCommands) {
        list.emplace_back(command.id, command.displayName);
    }
    return list;
}

std::shared_ptr<Group> ProtocolRegisterAssemblyCommandTarget::GetCommandParams(const std::string& command) const {
    const AssemblyCommand* const found = FindAssemblyCommand(command);
    if (found == nullptr) {
        Vor::LogUser(Vor::UserInfo, "VorControl", Translate("beApp.ctrl", "The command '%1$s' does not exist."),
                     command);
        Vor::Throw(yERROR_NOT_FOUND);
    }
    return found->makeParams();
}

std::shared_ptr<Group> ProtocolRegisterAssemblyCommandTarget::InvokeCommand(const std::string& command, Group& params) {
    const AssemblyCommand* const found = FindAssemblyCommand(command);
    if (found == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    found->invoke(assembly, params);
    return std::make_shared<Group>("");
}

bool ProtocolRegisterAssemblyCommandTarget::IsCommandSupported(const std::string& command) {
    return FindAssemblyCommand(command) != nullptr;
}

} // namespace VorControl::ControlProtocol
