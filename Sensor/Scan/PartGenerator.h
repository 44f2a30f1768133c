#pragma once

#include "Sensor/Scan/Recording.h"

namespace Sensor::Scan {

/// The input of a scan without a recording: profiles of a part with a step and a ridge that travels along it, lying on
/// a belt below zero, with noise. The same frames at each call, on every machine.
Recording GeneratePart();

} // namespace Sensor::Scan
