#pragma once

#include <cstdint>

namespace VorScan {

enum class AlignState : std::int32_t { NotAligned = 0, Aligned = 1, Aligning = 2 };

} // namespace VorScan
