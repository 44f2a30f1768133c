#pragma once

#include "Vor/VorDataTreeSerializer.h"

namespace VorCommon {

/// Figures are written as any other structure.
using MetricsVorDataTreeSerializer = Vor::Properties::VorDataTreeSerializer;

} // namespace VorCommon
