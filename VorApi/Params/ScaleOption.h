#pragma once

namespace Vor::Params {

/// The value of the "scale" keyword. Only the default has a meaning to this library; other values are passed through.
enum class ScaleOption : int { Default = 1 };

} // namespace Vor::Params
