#pragma once

#include "Sensor/LogHistory.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>

namespace Sensor::Resources {

/// An entry of the user's log, as documents and events have it.
class LogEntryProperties : public Vor::Params::Group {
public:
    LogEntryProperties();

    /// Overwrites every member.
    void Populate(const LogHistory::Entry& entry);

    Vor::Params::Value<unsigned long long> number;
    Vor::Params::Value<std::string> time;
    Vor::Params::Value<std::string> level;
    Vor::Params::Value<std::string> title;
    Vor::Params::Value<std::string> text;
};

} // namespace Sensor::Resources
