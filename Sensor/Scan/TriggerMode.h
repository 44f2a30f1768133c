#pragma once

namespace Sensor::Scan {

/// When a frame is published: at the frame rate, or at each Scanner::Trigger.
enum class TriggerMode { Time, Software };

} // namespace Sensor::Scan
