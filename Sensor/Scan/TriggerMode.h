#pragma once

namespace Sensor::Scan {

/// What makes a frame: the passing of time, or each Scanner::Trigger.
enum class TriggerMode { Time, Software };

} // namespace Sensor::Scan
