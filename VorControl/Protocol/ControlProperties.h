#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>

namespace VorControl::Protocol {

/// The document of a service. Who writes it registers the service's parameters under "parameters".
class ControlProperties : public Vor::Params::Group {
public:
    ControlProperties();

    Vor::Params::Value<bool> enabled;
    Vor::Params::Value<std::string> id;
    Vor::Params::Value<std::string> typeName;
    Vor::Params::Value<std::string> displayName;
};

/// What an update of a service may contain besides its parameters.
class ControlPropertiesUpdate : public Vor::Params::Group {
public:
    ControlPropertiesUpdate();

    Vor::Params::Value<bool> enabled;
};

} // namespace VorControl::Protocol
