#include "Sensor/Jobs/JobChanges.h"

#include "Vor/Exception.h"
#include "Vor/JsonText.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include <nlohmann/json.hpp>

namespace Sensor::Jobs {

namespace {

using nlohmann::json;
using Content = VorCommon::ArchiveFile::Content;

/// Nothing for bytes that are no JSON.
std::optional<json> ParsedContent(const Content& content) {
    try {
        return Vor::ParseJson(reinterpret_cast<const char*>(content->data()), content->size());
    } catch (const Vor::Exception&) {
        return std::nullopt;
    }
}

std::string TextOf(const json* value) {
    return value == nullptr ? "" : value->dump(-1, ' ', false, json::error_handler_t::replace);
}

bool HasMembers(const json* value) {
    return value != nullptr && value->is_structured() && !value->empty();
}

/// Compares the documents of one entry.
class Comparison {
public:
    Comparison(const std::string& entry, JobChanges& changes, std::size_t& textSize)
        : entry(entry)
        , changes(changes)
        , textSize(textSize) {}

    /// Null for a value that doesn't exist. Where both have members of the same kind these are compared, and where one
    /// doesn't exist the members of the other.
    void Compare(const json* before, const json* after) {
        if (before != nullptr && after != nullptr && *before == *after) {
            return;
        }
        const bool isSameKind = before == nullptr || after == nullptr || before->type() == after->type();
        if (!isSameKind || (!HasMembers(before) && !HasMembers(after))) {
            Add(TextOf(before), TextOf(after));
            return;
        }
        const json& kind = after != nullptr ? *after : *before;
        if (kind.is_object()) {
            CompareObjects(before, after);
        } else {
            CompareArrays(before, after);
        }
    }

    void Add(std::string before, std::string after) {
        ++changes.count;
        JobChanges::Change change{entry, place.to_string(), std::move(before), std::move(after)};
        textSize += change.pointer.size() + change.before.size() + change.after.size();
        if (changes.listed.size() < JobChanges::MaxListed && textSize <= JobChanges::MaxTextSize) {
            changes.listed.push_back(std::move(change));
        }
    }

private:
    void CompareObjects(const json* before, const json* after) {
        std::set<std::string> names;
        for (const json* const object : {before, after}) {
            if (object != nullptr) {
                for (const auto& member : object->items()) {
                    names.insert(member.key());
                }
            }
        }
        const auto memberOf = [](const json* object, const std::string& name) {
            return object != nullptr && object->contains(name) ? &object->at(name) : nullptr;
        };
        for (const std::string& name : names) {
            place.push_back(name);
            Compare(memberOf(before, name), memberOf(after, name));
            place.pop_back();
        }
    }

    void CompareArrays(const json* before, const json* after) {
        const auto sizeOf = [](const json* array) { return array == nullptr ? 0 : array->size(); };
        const auto elementOf = [&](const json* array, std::size_t index) {
            return index < sizeOf(array) ? &array->at(index) : nullptr;
        };
        for (std::size_t i = 0; i < std::max(sizeOf(before), sizeOf(after)); ++i) {
            place.push_back(std::to_string(i));
            Compare(elementOf(before, i), elementOf(after, i));
            place.pop_back();
        }
    }

    const std::string& entry;
    JobChanges& changes;
    std::size_t& textSize;
    json::json_pointer place;
};

} // namespace

JobChanges JobChanges::Between(const VorCommon::ArchiveFile::Entries& before,
                               const VorCommon::ArchiveFile::Entries& after) {
    JobChanges changes;
    std::size_t textSize = 0;
    for (const auto& [name, content] : after) {
        const auto found = before.find(name);
        const bool exists = found != before.end();
        if (exists && *found->second == *content) {
            continue;
        }
        const std::optional<json> newer = ParsedContent(content);
        const std::optional<json> older = exists ? ParsedContent(found->second) : std::nullopt;
        Comparison comparison(name, changes, textSize);
        if (newer && (older || !exists)) {
            comparison.Compare(older ? &*older : nullptr, &*newer);
        } else {
            comparison.Add("", "");
        }
    }
    return changes;
}

} // namespace Sensor::Jobs
