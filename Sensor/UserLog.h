#pragma once

#include "Vor/Logging.h"

namespace Sensor {

/// While it lives, what the user should know is logged to stderr: warnings, errors and the user's log, or with
/// `verbose` everything.
class UserLog {
public:
    explicit UserLog(bool verbose);
    ~UserLog();
    UserLog(const UserLog&) = delete;
    UserLog& operator=(const UserLog&) = delete;

private:
    Vor::Logging::UserHandlerId handler = 0;
};

} // namespace Sensor
