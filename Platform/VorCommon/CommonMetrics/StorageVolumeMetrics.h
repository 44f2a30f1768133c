#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>

namespace VorCommon::CommonMetrics {

/// One storage volume; sizes in bytes.
class StorageVolumeMetrics : public Vor::Params::Group {
public:
    StorageVolumeMetrics();

    Vor::Params::Value<std::string> name; ///< where it is mounted
    Vor::Params::Value<unsigned long long> capacity;
    Vor::Params::Value<unsigned long long> used;
    Vor::Params::Value<unsigned long long> available;
};

} // namespace VorCommon::CommonMetrics
