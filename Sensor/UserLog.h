#pragma once

#include <atomic>
#include <memory>

namespace Sensor {

/// While it lives, the log tells users what they should know, a line an entry on stderr: warnings, errors and the
/// user's log. With `verbose` it tells developers everything.
class UserLog {
public:
    /// While it lives, users are told nothing: whatever fails becomes an error of its own.
    class Silence {
    public:
        explicit Silence(const UserLog& log);
        ~Silence();
        Silence(const Silence&) = delete;
        Silence& operator=(const Silence&) = delete;

    private:
        const UserLog& log;
    };

    explicit UserLog(bool verbose);
    ~UserLog();
    UserLog(const UserLog&) = delete;
    UserLog& operator=(const UserLog&) = delete;

private:
    const std::shared_ptr<std::atomic<bool>> silent = std::make_shared<std::atomic<bool>>(false);
};

} // namespace Sensor
