#pragma once

namespace Sensor::Scan {

/// How alignments end.
enum class AlignOutcome { Succeed, Fail, Never };

} // namespace Sensor::Scan
