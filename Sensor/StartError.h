#pragma once

#include <stdexcept>

namespace Sensor {

/// Something that the user requested can't be done. The text is one sentence that names the file, the line or the
/// option.
class StartError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace Sensor
