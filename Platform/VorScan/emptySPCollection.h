#pragma once

#include "VorCommon/ServiceProviderCollection.h"

namespace VorScan {

/// Each translation unit that includes this has its own.
[[maybe_unused]] static const VorCommon::ServiceProviderCollection emptySPCollection{};

} // namespace VorScan
