#include "VorControl/ControlProtocol/ProtocolOutputCommandTarget.h"

#include "Vor/Exception.h"
#include "VorControl/ControlProtocol/CommandTable.h"
#include "VorControl/ControlProtocol/IProtocolOutput.h"
#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

using Vor::Params::Group;

namespace {

using OutputCommands = CommandTable<IProtocolOutput>;

const OutputCommands& AllOutputCommands() {
    static const OutputCommands Commands{
        {"add", "Add", [](IProtocolOutput& output) { return output.CreateOutputMapItemArgs(); },
         [](IProtocolOutput& output, Group& params) { output.Add(params); }},
        {"addAll", "AddAll", [](IProtocolOutput& output) { return output.CreateOutputsArgs(); },
         [](IProtocolOutput& output, Group& params) { output.AddAll(params); }},
        {"remove", "Remove", [](IProtocolOutput& output) { return output.CreateOutputMapItemRemoveArgs(); },
         [](IProtocolOutput& output, Group& params) { output.Remove(params); }},
        {"removeAll", "RemoveAll", OutputCommands::NoParams, [](IProtocolOutput& output, Group&) { output.Clear(); }},
        {"compactId", "Compact", OutputCommands::NoParams, [](IProtocolOutput& output, Group&) { output.CompactId(); }},
        {"updateId", "Update", [](IProtocolOutput& output) { return output.CreateOutputsArgs(); },
         [](IProtocolOutput& output, Group& params) { output.UpdateId(params); }},
    };
    return Commands;
}

} // namespace

std::vector<VorCommon::CommandInfo> ProtocolOutputCommandTarget::ListCommands() const {
    return AllOutputCommands().List();
}

std::shared_ptr<Group> ProtocolOutputCommandTarget::GetCommandParams(const std::string& id) const {
    const auto* const command = AllOutputCommands().Find(id);
    if (command == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND,
                   Translate("beApp.ctrl", "The command '%s' does not exist. No parameters available"), id);
    }
    return command->makeParams(output);
}

std::shared_ptr<Group> ProtocolOutputCommandTarget::InvokeCommand(const std::string& id, Group& params) {
    const auto* const command = AllOutputCommands().Find(id);
    if (command == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND, Translate("beApp.ctrl", "The command '%s' does not exist. Command ignored."), id);
    }
    command->invoke(output, params);
    return std::make_shared<Group>("");
}

bool ProtocolOutputCommandTarget::IsCommandSupported(const std::string& id) {
    return AllOutputCommands().Find(id) != nullptr;
}

} // namespace VorControl::ControlProtocol
