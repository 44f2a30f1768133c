#include "Sensor/UserLog.h"

#include <iostream>

namespace Sensor {

UserLog::UserLog(bool verbose) {
    Vor::Logging::SetMinimumLevel(verbose ? Vor::LevelTrace : Vor::LevelWarning);
    if (verbose) {
        return;
    }
    handler = Vor::Logging::AddUserHandler([](const Vor::LogRecord& record) {
        if (record.level == Vor::LevelUserInfo) {
            std::cerr << record.title + ": " + record.text + "\n";
        }
    });
}

UserLog::~UserLog() {
    Vor::Logging::RemoveUserHandler(handler);
    Vor::Logging::SetMinimumLevel(Vor::LevelInfo);
}

} // namespace Sensor
