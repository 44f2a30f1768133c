#pragma once

#include "yApi/yStatus.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Tests {

constexpr int NoId = 65535;

/// Entries whose numbers never wrap, in a dictionary.
template <class IdType>
class SortedEntries {
public:
    using Id = IdType;

    bool Has(const Id& id) const { return sources.contains(id); }
    std::string SourceOf(const Id& id) const { return sources.at(id); }
    void Erase(const Id& id) { sources.erase(id); }
    void Clear() { sources.clear(); }
    /// The present source of the number moves to the next one, and so on.
    void Put(Id id, std::string source) {
        while (sources.contains(id)) {
            std::swap(source, sources[id]);
            if constexpr (std::is_integral_v<Id>) {
                ++id;
            }
        }
        sources[id] = source;
    }
    void Append(const Id& id, const std::string& source) { sources[id] = source; }
    std::vector<std::pair<Id, std::string>> Entries() const { return {sources.begin(), sources.end()}; }
    void Renumber() {
        const auto entries = Entries();
        sources.clear();
        for (std::size_t i = 0; i < entries.size(); ++i) {
            sources[static_cast<Id>(i)] = entries[i].second;
        }
    }

private:
    std::map<Id, std::string> sources;
};

/// Entries whose numbers may wrap. Then the list isn't sorted any more, and the result of a binary search depends on
/// its steps.
class WrappingEntries {
public:
    using Id = unsigned short;

    bool Has(Id id) const { return Place(id) < list.size() && list[Place(id)].first == id; }
    std::string SourceOf(Id id) const { return list[Place(id)].second; }
    void Erase(Id id) { list.erase(list.begin() + static_cast<std::ptrdiff_t>(Place(id))); }
    void Clear() { list.clear(); }
    void Put(Id id, const std::string& source) {
        const std::size_t place = Place(id);
        const bool pushes = Has(id);
        list.insert(list.begin() + static_cast<std::ptrdiff_t>(place), {id, source});
        Id taken = id;
        for (std::size_t i = place + 1; pushes && i < list.size() && list[i].first == taken; ++i) {
            taken = ++list[i].first;
        }
    }
    void Append(Id id, const std::string& source) { list.emplace_back(id, source); }
    std::vector<std::pair<Id, std::string>> Entries() const { return list; }
    void Renumber() {
        for (std::size_t i = 0; i < list.size(); ++i) {
            list[i].first = static_cast<Id>(i);
        }
    }

private:
    std::size_t Place(Id id) const {
        std::ptrdiff_t low = 0;
        std::ptrdiff_t high = std::ssize(list) - 1;
        while (low <= high) {
            const auto mid = (low + high) / 2;
            const Id found = list[static_cast<std::size_t>(mid)].first;
            if (found == id) {
                return static_cast<std::size_t>(mid);
            }
            if (found < id) {
                low = mid + 1;
            } else {
                high = mid - 1;
            }
        }
        return static_cast<std::size_t>(low);
    }

    std::vector<std::pair<Id, std::string>> list;
};

/// A simple model of an output map. Each operation returns the status that the map throws, or yOK.
template <class Store>
class OutputMapModel {
    using Id = typename Store::Id;
    static constexpr bool IsNumeric = std::is_integral_v<Id>;

public:
    explicit OutputMapModel(std::size_t maxCount)
        : maxCount(maxCount) {}

    std::vector<std::pair<Id, std::string>> Entries() const { return store.Entries(); }
    bool Has(const Id& id) const { return store.Has(id); }

    yStatus Add(const Id& id, const std::string& source, bool autoShift) {
        if (IsNone(id) || source.empty()) {
            return yERROR_PARAMETER;
        }
        if (HasSource(source)) {
            return yERROR_ALREADY_EXISTS;
        }
        if (Has(id) && !IsNumeric) {
            return yERROR_UNIMPLEMENTED;
        }
        if (Has(id) && !autoShift) {
            return yERROR_PARAMETER;
        }
        if (IsFull()) {
            return yERROR_FULL;
        }
        store.Put(id, source);
        return yOK;
    }

    /// Writes the ids into the request as the map does.
    yStatus AddAll(std::vector<std::pair<Id, std::string>>& request) {
        yStatus status = yOK;
        if constexpr (IsNumeric) {
            auto nextId = Entries().empty() ? Id{0} : static_cast<Id>(Entries().back().first + 1);
            for (auto& [id, source] : request) {
                if (IsFull()) {
                    return yERROR_FULL;
                }
                id = nextId;
                if (source.empty() || IsNone(id)) {
                    status = yERROR_PARAMETER;
                } else if (HasSource(source)) {
                    status = yERROR_ALREADY_EXISTS;
                } else {
                    store.Append(nextId++, source);
                }
            }
        } else {
            for (auto& [id, source] : request) {
                id = id.empty() ? source : id;
                const yStatus added = Add(id, source, false);
                status = status == yOK ? added : status;
            }
        }
        return status;
    }

    yStatus Remove(const Id& id, const std::vector<Id>& ids) {
        if (IsNone(id) == ids.empty()) {
            return yERROR_PARAMETER;
        }
        for (const auto& one : ids.empty() ? std::vector<Id>{id} : ids) {
            if (!Has(one)) {
                return yERROR_NOT_FOUND;
            }
            store.Erase(one);
        }
        return yOK;
    }

    yStatus Update(const std::vector<Id>& ids, bool autoShift) {
        if (ids.size() != 2 || IsNone(ids[0]) || IsNone(ids[1])) {
            return yERROR_PARAMETER;
        }
        if (ids[0] == ids[1]) {
            return yOK;
        }
        if (!IsNumeric && Has(ids[1])) {
            return yERROR_CONFLICT;
        }
        if (!Has(ids[0])) {
            return yERROR_NOT_FOUND;
        }
        const auto source = store.SourceOf(ids[0]);
        if constexpr (IsNumeric) {
            if (Has(ids[1]) && (!autoShift || ids[1] >= 65534)) {
                return yERROR_PARAMETER;
            }
        }
        store.Erase(ids[0]);
        return Add(ids[1], source, autoShift);
    }

    void Compact() {
        if constexpr (IsNumeric) {
            store.Renumber();
        }
    }

    void Clear() { store.Clear(); }

private:
    static bool IsNone(const Id& id) {
        if constexpr (IsNumeric) {
            return id == NoId;
        } else {
            return id.empty();
        }
    }

    bool IsFull() const { return Entries().size() == maxCount; }

    bool HasSource(const std::string& source) const {
        const auto entries = Entries();
        return std::any_of(entries.begin(), entries.end(), [&](const auto& entry) { return entry.second == source; });
    }

    Store store;
    std::size_t maxCount;
};

} // namespace Tests
