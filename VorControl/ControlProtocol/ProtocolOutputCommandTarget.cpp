#include "VorControl/ControlProtocol/ProtocolOutputCommandTarget.h"

#include "Vor/Exception.h"
#include "VorControl/ControlProtocol/IProtocolOutput.h"
#include "VorControl/ControlProtocol/Translate.h"

#include <algorithm>
#include <iterator>

namespace VorControl::ControlProtocol {

using Vor::Params::Group;

namespace {

std::shared_ptr<Group> NoParams(IProtocolOutput& /*output*/) {
    return std::make_shared<Group>("");
}

struct OutputCommand {
    const char* id;
    const char* displayName;
    std::shared_ptr<Group> (*makeParams)(IProtocolOutput&);
    void (*invoke)(IProtocolOutput&, Group&);
};

const OutputCommand OutputCommands[] = {
    {"add", "Add", [](IProtocolOutput& output) { return output.CreateOutputMapItemArgs(); },
     [](IProtocolOutput& output, Group& params) { output.Add(params); }},
    {"addAll", "AddAll", [](IProtocolOutput& output) { return output.CreateOutputsArgs(); },
     [](IProtocolOutput& output, Group& params) { output.AddAll(params); }},
    {"remove", "Remove", [](IProtocolOutput& output) { return output.CreateOutputMapItemRemoveArgs(); },
     [](IProtocolOutput& output, Group& params) { output.Remove(params); }},
    {"removeAll", "RemoveAll", NoParams, [](IProtocolOutput& output, Group&) { output.Clear(); }},
    {"compactId", "Compact", NoParams, [](IProtocolOutput& output, Group&) { output.CompactId(); }},
    {"updateId", "Update", [](IProtocolOutput& output) { return output.CreateOutputsArgs(); },
     [](IProtocolOutput& output, Group& params) { output.UpdateId(params); }},
};

const OutputCommand* FindOutputCommand(const std::string& id) {
    const auto* const found = std::find_if(std::begin(OutputCommands), std::end(OutputCommands),
                                           [&](const OutputCommand& command) { return command.id == id; });
    return found == std::end(OutputCommands) ? nullptr : found;
}

} // namespace

std::vector<VorCommon::CommandInfo> ProtocolOutputCommandTarget::ListCommands() const {
    std::vector<VorCommon::CommandInfo> list;
    for (const auto& command : OutputCommands) {
        list.emplace_back(command.id, command.displayName);
    }
    return list;
}

std::shared_ptr<Group> ProtocolOutputCommandTarget::GetCommandParams(const std::string& id) const {
    const OutputCommand* const command = FindOutputCommand(id);
    if (command == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND,
                   Translate("beApp.ctrl", "The command '%s' does not exist. No parameters available"), id);
    }
    return command->makeParams(output);
}

std::shared_ptr<Group> ProtocolOutputCommandTarget::InvokeCommand(const std::string& id, Group& params) {
    const OutputCommand* const command = FindOutputCommand(id);
    if (command == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND, Translate("beApp.ctrl", "The command '%s' does not exist. Command ignored."), id);
    }
    command->invoke(output, params);
    return std::make_shared<Group>("");
}

bool ProtocolOutputCommandTarget::IsCommandSupported(const std::string& id) {
    return FindOutputCommand(id) != nullptr;
}

} // namespace VorControl::ControlProtocol
