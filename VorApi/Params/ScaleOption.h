#pragma once

namespace Vor::Params {

/// The value of the "scale" keyword. The library uses the default only; other values are passed through.
enum class ScaleOption : int { Default = 1 };

} // namespace Vor::Params
