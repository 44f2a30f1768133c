#pragma once

#include "Vor/Structure.h"
#include "VorApi/Params/PropertyValue.h"

namespace Tests {

/// The figures of a service: the one that all services with figures have.
class Figures : public Vor::Properties::Structure {
public:
    Figures()
        : Structure(true) {
        Register("dropCount", dropCount);
    }

    Vor::Properties::Value<long long> dropCount{0};
};

} // namespace Tests
