#pragma once

#include <cstdint>

namespace VorPipe {

/// What the messages of a data source are.
enum class PipeDataType : std::uint16_t { None = 0, Stamp = 11, Measurement = 19, String = 20 };

} // namespace VorPipe
