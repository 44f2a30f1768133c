#include "Sensor/Resources/LogResource.h"

#include "Sensor/LogHistory.h"
#include "Sensor/Resources/DocumentMembers.h"
#include "Sensor/Resources/LogEntryProperties.h"
#include "Sensor/Resources/QueryNumber.h"
#include "Vor/Exception.h"
#include "VorApi/Params/Array.h"
#include "VorApi/Params/Value.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace Sensor::Resources {

namespace {

constexpr QueryNumber Count{.name = "n", .least = 1, .greatest = LogHistory::Capacity, .otherwise = 100};
constexpr std::uint64_t NoNumber = std::numeric_limits<std::uint64_t>::max();
constexpr QueryNumber Before{.name = "before", .least = 1, .greatest = NoNumber, .otherwise = NoNumber};

class LogProperties : public Vor::Params::Group {
public:
    LogProperties() {
        RegisterReadOnly(*this, "items", items, "Entries, the latest first");
        RegisterReadOnly(*this, "more", more, "Whether there are earlier ones");
    }

    Vor::Params::Array<LogEntryProperties> items;
    Vor::Params::Value<bool> more;
};

LogHistory::Level LevelOf(const VorApi::RequestInfoEx& request) {
    const std::string* const name = request.FindQuery("level");
    if (name == nullptr) {
        return LogHistory::Level::Info;
    }
    for (const auto level : {LogHistory::Level::Info, LogHistory::Level::Warning, LogHistory::Level::Error}) {
        if (*name == NameOf(level)) {
            return level;
        }
    }
    Vor::Throw(yERROR_FORMAT, "The query has level=%s, and info, warning or error was expected.", *name);
}

/// Letters of ASCII in upper and lower case are the same.
bool Contains(const std::string& text, const std::string& part) {
    const auto isSame = [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); };
    return !std::ranges::search(text, part, isSame).empty() || part.empty();
}

} // namespace

void LogResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx&, VorApi::VorDataTree& data) {
    const std::size_t count = Count.Of(request);
    const std::uint64_t before = Before.Of(request);
    const LogHistory::Level level = LevelOf(request);
    const std::string* const part = request.FindQuery("q");

    std::vector<LogHistory::Entry> entries = history.After(0);
    std::ranges::reverse(entries);
    std::erase_if(entries, [&](const LogHistory::Entry& entry) {
        const bool isWanted = part == nullptr || Contains(entry.title, *part) || Contains(entry.text, *part);
        return entry.number >= before || entry.level < level || !isWanted;
    });
    LogProperties document;
    document.more = entries.size() > count;
    document.items.Resize(std::min(entries.size(), count));
    for (std::size_t i = 0; i < document.items.Count(); ++i) {
        document.items.At(i).Populate(entries[i]);
    }
    NodeToVorDataTree(document, request, data, true);
}

} // namespace Sensor::Resources
