#pragma once

#include <string_view>

namespace Vor {

/// Whether `text` is well-formed UTF-8 (RFC 3629: no overlong forms, no surrogates, nothing above U+10FFFF).
bool IsUtf8(std::string_view text);

} // namespace Vor
