#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

namespace VorControl {

/// What is stored for every service, whatever its type.
class PersistInstanceProperties : public Vor::Params::Group {
public:
    PersistInstanceProperties();

    Vor::Params::Value<bool> enabled;
};

} // namespace VorControl
