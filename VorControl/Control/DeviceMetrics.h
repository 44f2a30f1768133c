#pragma once

#include "Vor/Structure.h"
#include "VorApi/Params/PropertyValue.h"

namespace VorControl {

/// The figures of a port of a device.
class DeviceMetrics : public Vor::Properties::Structure {
public:
    DeviceMetrics()
        : Structure(true) {
        Register("dropCount", dropCount);
        Register("highCount", highCount);
        Register("lowCount", lowCount);
    }

    Vor::Properties::Value<long long> dropCount{0};
    Vor::Properties::Value<long long> highCount{0};
    Vor::Properties::Value<long long> lowCount{0};
};

} // namespace VorControl
