#pragma once

#include <cstdint>

namespace VorScan {

/// How an alignment ended.
enum class AlignCompletionStatus : std::int32_t { Succeeded = 0, Failed = 1 };

} // namespace VorScan
