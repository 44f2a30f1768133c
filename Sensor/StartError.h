#pragma once

#include <stdexcept>

namespace Sensor {

/// Something that the user asked for and that can't be done: one sentence that names the file, the line or the option.
class StartError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace Sensor
