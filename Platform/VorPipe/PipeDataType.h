#pragma once

#include <cstdint>

namespace VorPipe {

/// The kind of a data source's messages.
enum class PipeDataType : std::uint16_t { None = 0, Stamp = 11, Measurement = 19, String = 20 };

} // namespace VorPipe
