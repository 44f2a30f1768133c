#include "Sensor/Resources/LogEntryProperties.h"

#include "Sensor/Resources/DocumentMembers.h"
#include "Sensor/UtcText.h"

namespace Sensor::Resources {

LogEntryProperties::LogEntryProperties() {
    RegisterReadOnly(*this, "number", number, "Number");
    RegisterReadOnly(*this, "time", time, "Time, UTC");
    RegisterReadOnly(*this, "level", level, "Level, info, warning or error");
    RegisterReadOnly(*this, "title", title, "Title");
    RegisterReadOnly(*this, "text", text, "Text");
}

void LogEntryProperties::Populate(const LogHistory::Entry& entry) {
    number = entry.number;
    time = UtcText(entry.time);
    level = NameOf(entry.level);
    title = entry.title;
    text = entry.text;
}

} // namespace Sensor::Resources
