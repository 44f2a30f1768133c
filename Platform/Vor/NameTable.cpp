#include "Vor/NameTable.h"

#include <functional>
#include <mutex>
#include <shared_mutex>
#include <unordered_set>

namespace Vor::Properties::Internal {

namespace {

struct TextHash {
    using is_transparent = void; // NOLINT(readability-identifier-naming): the standard library looks for it
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};

struct Table {
    /// Guards `texts`. No other lock is taken while it is held.
    std::shared_mutex mutex;
    std::unordered_set<std::string, TextHash, std::equal_to<>> texts;
};

/// Never destroyed: names are used by objects with static storage.
Table& TheTable() {
    static Table* const Instance = new Table();
    return *Instance;
}

const std::string* Intern(std::string_view text) {
    Table& table = TheTable();
    {
        std::shared_lock lock(table.mutex);
        const auto found = table.texts.find(text);
        if (found != table.texts.end()) {
            return &*found;
        }
    }
    std::unique_lock lock(table.mutex);
    return &*table.texts.emplace(text).first;
}

} // namespace

Name::Name(std::string_view text)
    : text(Intern(text)) {}

} // namespace Vor::Properties::Internal
