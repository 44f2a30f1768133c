#include "Sensor/RepeatedEntries.h"

namespace Sensor {

bool RepeatedEntries::Add(std::uint64_t level, const std::string& text, Clock::time_point now) {
    if (const auto found = entries.find({level, text}); found != entries.end()) {
        ++found->second.count;
        return false;
    }
    if (entries.size() < MaxEntries) {
        entries.emplace(std::pair(level, text), Count{.begin = now});
    }
    return true;
}

std::vector<RepeatedEntries::Repeated> RepeatedEntries::Ended(Clock::time_point now) {
    std::vector<Repeated> ended;
    for (auto entry = entries.begin(); entry != entries.end();) {
        auto& [key, counted] = *entry;
        if (now - counted.begin < Window) {
            ++entry;
        } else if (counted.count == 0) {
            entry = entries.erase(entry);
        } else {
            ended.push_back({key.first, key.second, counted.count});
            counted = {.begin = now};
            ++entry;
        }
    }
    return ended;
}

} // namespace Sensor
