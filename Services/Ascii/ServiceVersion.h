#pragma once

namespace Services::Ascii {

constexpr const char* ServiceVersion = "1.0.0.0";

} // namespace Services::Ascii
