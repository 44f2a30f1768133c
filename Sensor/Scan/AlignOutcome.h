#pragma once

namespace Sensor::Scan {

/// How alignments end, if they do.
enum class AlignOutcome { Succeed, Fail, Never };

} // namespace Sensor::Scan
