#pragma once

#include <cstddef>
#include <string_view>

#include <nlohmann/json_fwd.hpp>

namespace Vor {

/// How deep arrays and objects may be nested, and how many bytes a JSON text may have.
inline constexpr std::size_t JsonMaxDepth = 64;
inline constexpr std::size_t JsonMaxSize = std::size_t{64} * 1024 * 1024;

/// Reads a JSON text from a file or a socket. Throws `yERROR_FORMAT` with a text that says what is wrong and, with line
/// and column (counted in bytes from 1), where: no JSON, no UTF-8, too large or nested too deeply.
nlohmann::json ParseJson(const char* text, std::size_t size);
nlohmann::json ParseJson(std::string_view text);

} // namespace Vor
