#pragma once

#include "Vor/Exception.h"

#include <string>

namespace VorControl {

/// Reports why a service could not be created. It has the status and the text of the cause, or status 0 for a cause
/// that is no Vor::Exception. The cause is nested in it.
class ControlCreateException : public Vor::Exception {
public:
    ControlCreateException(const std::string& typeName, const std::exception& cause);

    const std::string& TypeName() const { return *typeName; }

private:
    std::shared_ptr<const std::string> typeName; ///< shared, so that a copy can't throw
};

} // namespace VorControl
