#pragma once

#include "Sensor/Scan/Recording.h"

namespace Sensor::Scan {

/// The input of a scan without a recording: profiles of a part with a step and a ridge that moves along it, on a belt
/// below zero, with noise. The frames are the same at each call and on every machine.
Recording GeneratePart();

} // namespace Sensor::Scan
