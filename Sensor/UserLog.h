#pragma once

#include <atomic>
#include <memory>
#include <thread>

namespace Sensor {

/// During its lifetime the entries for users, which are warnings, errors and the user log, are printed to stderr, one
/// line an entry. With `verbose` all entries are printed, in the format for developers.
class UserLog {
public:
    /// During its lifetime nothing that its thread logs is printed for users, since each failure is reported otherwise.
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
    /// The silent thread, or none.
    const std::shared_ptr<std::atomic<std::thread::id>> silent = std::make_shared<std::atomic<std::thread::id>>();
};

} // namespace Sensor
