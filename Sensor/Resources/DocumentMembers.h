#pragma once

#include "VorApi/Params/Group.h"

#include <string>

namespace Sensor::Resources {

/// Makes a parameter a member of a group that clients can't change.
template <class P>
void RegisterReadOnly(Vor::Params::Group& group, const std::string& name, P& parameter, const std::string& title) {
    group.Register(name, parameter, title);
    parameter.EnableReadOnly();
    parameter.SetReadOnly(true);
}

} // namespace Sensor::Resources
