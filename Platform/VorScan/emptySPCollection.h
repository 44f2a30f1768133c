#pragma once

#include "VorCommon/ServiceProviderCollection.h"

namespace VorScan {

/// One in each translation unit, from its load to its exit.
[[maybe_unused]] static const VorCommon::ServiceProviderCollection emptySPCollection{};

} // namespace VorScan
