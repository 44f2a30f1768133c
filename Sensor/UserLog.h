#pragma once

namespace Sensor {

/// While it lives, the log tells users what they should know, a line an entry on stderr: warnings, errors and the
/// user's log. With `verbose` it tells developers everything.
class UserLog {
public:
    explicit UserLog(bool verbose);
    ~UserLog();
    UserLog(const UserLog&) = delete;
    UserLog& operator=(const UserLog&) = delete;
};

} // namespace Sensor
