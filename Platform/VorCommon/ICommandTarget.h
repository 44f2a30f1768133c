#pragma once

#include "VorApi/Params/Group.h"
#include "VorCommon/CommandInfo.h"

#include <memory>
#include <string>
#include <vector>

namespace VorCommon {

/// An object with commands that have parameters. Their ids are case-sensitive.
class ICommandTarget {
public:
    virtual ~ICommandTarget() = default;

    virtual std::vector<CommandInfo> ListCommands() const = 0;
    /// A new group for the caller, with the defaults of the command's parameters.
    virtual std::shared_ptr<Vor::Params::Group> GetCommandParams(const std::string& id) const = 0;
    /// Runs the command and returns its result. It may change `params`.
    virtual std::shared_ptr<Vor::Params::Group> InvokeCommand(const std::string& id, Vor::Params::Group& params) = 0;
    virtual bool IsCommandSupported(const std::string& id) = 0;
};

} // namespace VorCommon
