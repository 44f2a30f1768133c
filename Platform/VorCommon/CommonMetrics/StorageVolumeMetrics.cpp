#include "VorCommon/CommonMetrics/StorageVolumeMetrics.h"

namespace VorCommon::CommonMetrics {

StorageVolumeMetrics::StorageVolumeMetrics() {
    for (auto* const size : {&capacity, &used, &available}) {
        size->EnableUnits(true);
        size->SetUnits("B");
    }
    Register("name", name, "Name");
    Register("capacity", capacity, "Capacity");
    Register("used", used, "Used");
    Register("available", available, "Available");
}

} // namespace VorCommon::CommonMetrics
