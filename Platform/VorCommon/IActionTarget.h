#pragma once

#include "Vor/Structure.h"
#include "VorApi/Params/Group.h"
#include "VorCommon/ActionInfo.h"

#include <memory>
#include <string>
#include <vector>

namespace VorCommon {

/// An object with actions. Their ids are case-sensitive.
class IActionTarget {
public:
    virtual std::vector<ActionInfo> Actions() const = 0;
    virtual bool HasAction(const std::string& id) const = 0;
    /// A new structure for the caller, with the defaults of the action's parameters; null when it has none.
    virtual std::shared_ptr<Vor::Properties::Structure> ActionParameters(const std::string& id) = 0;
    /// Runs the action and returns its result.
    virtual std::shared_ptr<Vor::Params::Group>
    ExecuteAction(const std::string& id, const std::shared_ptr<Vor::Properties::Structure>& params) = 0;

protected:
    ~IActionTarget() = default;
};

} // namespace VorCommon
