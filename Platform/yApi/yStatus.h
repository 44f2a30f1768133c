#pragma once

#include <cstdint>

/// Outcome of the C-style calls of the base platform. `yOK` is the only success.
using yStatus = std::int32_t;

inline constexpr yStatus yOK = 1;
inline constexpr yStatus yERROR = 0; ///< generic failure
inline constexpr yStatus yERROR_STATE = -1000;
inline constexpr yStatus yERROR_NOT_FOUND = -999;
inline constexpr yStatus yERROR_COMMAND = -998;
inline constexpr yStatus yERROR_PARAMETER = -997;
inline constexpr yStatus yERROR_UNIMPLEMENTED = -996;
inline constexpr yStatus yERROR_TIMEOUT = -993;
inline constexpr yStatus yERROR_SIZE = -992; ///< a buffer is too small
inline constexpr yStatus yERROR_VERSION = -989;
inline constexpr yStatus yERROR_ALREADY_EXISTS = -987;
inline constexpr yStatus yERROR_FORMAT = -984;
inline constexpr yStatus yERROR_READ_ONLY = -983;
inline constexpr yStatus yERROR_WRITE_ONLY = -982;
inline constexpr yStatus yERROR_CONFLICT = -980;
inline constexpr yStatus yERROR_FULL = -977;
inline constexpr yStatus yERROR_BUSY = -976;
inline constexpr yStatus yERROR_PARTIAL = -2000;
