#pragma once

#include "VorApi/LogThrown.h"

namespace VorControl {

using Vor::LogThrown;

} // namespace VorControl
