#pragma once

#include "VorApi/Params/Group.h"
#include "VorCommon/CommandInfo.h"

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace VorControl::ControlProtocol {

/// The commands that clients can invoke on an `Object`.
template <class Object>
class CommandTable {
public:
    using Group = Vor::Params::Group;

    struct Command {
        const char* id;
        const char* displayName;
        std::shared_ptr<Group> (*makeParams)(Object&);
        void (*invoke)(Object&, Group&);
    };

    CommandTable(std::initializer_list<Command> commands)
        : commands(commands) {}

    /// Null if there is no such command.
    const Command* Find(const std::string& id) const {
        for (const Command& command : commands) {
            if (command.id == id) {
                return &command;
            }
        }
        return nullptr;
    }

    std::vector<VorCommon::CommandInfo> List() const {
        std::vector<VorCommon::CommandInfo> list;
        list.reserve(commands.size());
        for (const Command& command : commands) {
            list.emplace_back(command.id, command.displayName);
        }
        return list;
    }

    /// The parameters of a command that has none.
    static std::shared_ptr<Group> NoParams(Object& /*object*/) { return std::make_shared<Group>(""); }

private:
    std::vector<Command> commands;
};

} // namespace VorControl::ControlProtocol
