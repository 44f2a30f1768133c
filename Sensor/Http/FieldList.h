#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Sensor::Http {

/// Without the spaces and tabs around it.
std::string_view Trim(std::string_view text);
std::string LowerCase(std::string_view text);
/// The parts of a list such as `a, "b,c"`, without the separators, and without the spaces around them and empty parts.
/// A separator between double quotes is part of its element (RFC 9110, 5.6).
std::vector<std::string_view> SplitList(std::string_view text, char separator);

} // namespace Sensor::Http
