#pragma once

#include "Vor/Structure.h"
#include "VorApi/Params/PropertyValue.h"

#include <string>

namespace VorControl::Protocol {

/// The document of a command. Who describes a command registers its parameters under "parameters".
struct CommandProperties : Vor::Properties::Structure {
    CommandProperties()
        : Structure(true) {
        Register("id", id);
    }

    Vor::Properties::Value<std::string> id;
};

} // namespace VorControl::Protocol
