#pragma once

#include "Vor/JsonSerializer.h"

namespace VorCommon {

/// Figures are written as any other structure.
using MetricsJsonSerializer = Vor::Properties::JsonSerializer;

} // namespace VorCommon
