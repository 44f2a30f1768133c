#pragma once

#include "Vor/Structure.h"
#include "VorApi/Params/Group.h"
#include "VorCommon/ActionInfo.h"

#include <memory>
#include <string>
#include <vector>

namespace VorCommon {

/// An object that takes actions. Action ids are exact, upper and lower case differ.
class IActionTarget {
public:
    virtual std::vector<ActionInfo> Actions() const = 0;
    virtual bool HasAction(const std::string& id) const = 0;
    /// A structure of the caller's own, with the defaults of the action's parameters; null when there is none.
    virtual std::shared_ptr<Vor::Properties::Structure> ActionParameters(const std::string& id) = 0;
    /// Runs the action and gives its result.
    virtual std::shared_ptr<Vor::Params::Group>
    ExecuteAction(const std::string& id, const std::shared_ptr<Vor::Properties::Structure>& params) = 0;

protected:
    ~IActionTarget() = default;
};

} // namespace VorCommon
