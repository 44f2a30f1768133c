#pragma once

#include <cstddef>
#include <string>

namespace Sensor {

/// Random bytes of the system, which nobody can guess, as hexadecimal digits.
std::string RandomText(std::size_t bytes);

} // namespace Sensor
