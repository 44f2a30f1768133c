#pragma once

#include "yApi/yStatus.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Tests {

struct ModelType {
    std::string name;
    int registers = 1;
    bool isSizable = false;
    bool hasSource = false;
    int least = 0;
    int most = 65534;
};

/// Moves another block, and then renames the block that has an id.
struct ModelHandler {
    int moved = 0; ///< the number of the block
    int id = 0;
    int renamed = 0; ///< its id
    std::string name;
    bool operator==(const ModelHandler&) const = default;
};

struct ModelBlock {
    std::string type;
    int id = 0;
    int count = 0;
    std::string source;
    std::string name;
    std::optional<int> actualId = std::nullopt;
    std::optional<int> actualCount = std::nullopt;
    /// What the handler of the next change of the id does.
    std::optional<ModelHandler> handler = std::nullopt;
    int number = 0; ///< of all blocks that were added

    int Id() const { return actualId.value_or(id); }
    int Count() const { return actualCount.value_or(count); }
    bool operator==(const ModelBlock&) const = default;
};

/// A simple model of an assembly: a list that each operation walks from the front. An operation returns the status that
/// the assembly throws, or yOK, and its result code.
class RegisterAssemblyModel {
public:
    using Blocks = std::vector<ModelBlock>;
    using Outcome = std::pair<yStatus, int>;
    static constexpr int None = 65535;

    RegisterAssemblyModel(bool isGlobal, int least, int most, std::vector<ModelType> types)
        : isGlobal(isGlobal)
        , least(least)
        , most(most)
        , types(std::move(types)) {}

    Blocks blocks;
    bool hasNoChoiceOfId = false;

    int End(const ModelBlock& block) const { return End(block.Id(), block.Count()); }

    /// Changes the id of a block, which runs its handler.
    void SetId(std::size_t at, int id) {
        if (blocks[at].id == id) {
            return;
        }
        if (const auto handler = std::exchange(blocks[at].handler, std::nullopt)) {
            for (std::size_t i = 0; i < blocks.size(); ++i) {
                if (blocks[i].number == handler->moved) {
                    SetId(i, handler->id);
                }
            }
            Update(handler->renamed, {"", None, None, "", handler->name}, false);
        }
        blocks[at].id = id;
    }

    int Instances(const std::string& type) const {
        return static_cast<int>(
            std::count_if(blocks.begin(), blocks.end(), [&](const auto& block) { return block.type == type; }));
    }

    /// Fills in the values that the entries don't have.
    Outcome Add(Blocks& entries, bool autoShift) {
        std::size_t added = 0;
        int code = 0;
        for (auto& entry : entries) {
            added += AddOne(entry, autoShift, code) ? 1U : 0U;
        }
        return {added == entries.size() ? yOK : yERROR, code};
    }

    Outcome Update(int id, const ModelBlock& change, bool autoShift) {
        const std::size_t at = id == None ? blocks.size() : Find(id);
        if (at == blocks.size()) {
            return {id == None ? yERROR_PARAMETER : yERROR_NOT_FOUND, 0};
        }
        const auto& type = *TypeOf(blocks[at].type);
        int newId = blocks[at].Id();
        int newCount = blocks[at].Count();
        int code = 0;
        if (change.count != None && change.count != newCount) {
            if (isGlobal && !type.isSizable) {
                return {yERROR_PARAMETER, 0};
            }
            code = isGlobal ? 0 : 2;
            newCount = isGlobal ? change.count : newCount;
        }
        newId = change.id == None ? newId : change.id;
        if (newId != blocks[at].Id() || newCount != blocks[at].Count()) {
            if (isGlobal && !IsInRange(newId, newCount)) {
                return {yERROR_PARAMETER, 0};
            }
            std::size_t before = 0;
            bool shifted = false;
            if (const auto status = MakeRoom(newId, End(newId, newCount), autoShift, id, before, shifted);
                status != yOK) {
                return {status, 0};
            }
            code = code == 0 && shifted ? 1 : code;
            SetId(at, newId);
            blocks[at].count = newCount;
            const ModelBlock moved = blocks[at];
            blocks.erase(blocks.begin() + static_cast<std::ptrdiff_t>(at));
            at < before ? --before : before;
            blocks.insert(blocks.begin() + static_cast<std::ptrdiff_t>(before), moved);
            return {yOK, Rename(blocks[before], change, code)};
        }
        return {yOK, Rename(blocks[at], change, code)};
    }

    Outcome Remove(const std::vector<int>& ids) {
        std::size_t removed = 0;
        for (const int id : ids) {
            const std::size_t at = id == None ? blocks.size() : Find(id);
            if (at != blocks.size() && !IsDemanded(blocks[at])) {
                blocks.erase(blocks.begin() + static_cast<std::ptrdiff_t>(at));
                ++removed;
            }
        }
        return {removed == 0 && !ids.empty() ? yERROR_NOT_FOUND : yOK, 0};
    }

    void RemoveAll() {
        for (std::size_t i = 0; i < blocks.size();) {
            if (IsDemanded(blocks[i])) {
                ++i;
            } else {
                blocks.erase(blocks.begin() + static_cast<std::ptrdiff_t>(i));
            }
        }
    }

    Outcome Compact(int start) {
        int next = isGlobal ? least : 0;
        if (start != None) {
            const int room = isGlobal ? most - start + 1 : 65535 - start;
            if (isGlobal && !IsInRange(start, 1)) {
                return {yERROR_PARAMETER, 0};
            }
            if ((isGlobal ? Registers(0) : static_cast<int>(blocks.size())) > room) {
                return {yERROR_FULL, 0};
            }
            next = start;
        }
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            SetId(i, next);
            next = (End(blocks[i]) + 1) & 0xFFFF;
        }
        return {yOK, 0};
    }

    yStatus Copy(const RegisterAssemblyModel& other) {
        const Blocks all = &other == this ? Blocks() : other.blocks;
        blocks.clear();
        for (const auto& block : all) {
            if (TypeOf(block.type) != nullptr) {
                Blocks entries{{block.type, None, None, block.source, block.name}};
                if (Add(entries, true).first != yOK) {
                    return yERROR;
                }
            }
        }
        return yOK;
    }

    std::vector<std::string> Sources() const {
        std::vector<std::string> sources;
        for (const auto& block : blocks) {
            if (TypeOf(block.type)->hasSource) {
                sources.push_back(block.source);
            }
        }
        return sources;
    }

    /// The index of the first block of each source.
    std::map<std::string, std::size_t> PlacesOfSources() const {
        std::map<std::string, std::size_t> places;
        for (std::size_t i = blocks.size(); i-- > 0;) {
            if (TypeOf(blocks[i].type)->hasSource) {
                places[blocks[i].source] = i;
            }
        }
        return places;
    }

    /// Whether each block begins after the end of the one before it, and all are within the range.
    bool IsInOrder() const {
        int previousEnd = isGlobal ? least - 1 : -1;
        for (const auto& block : blocks) {
            if (block.Id() <= previousEnd || End(block) < block.Id()) {
                return false;
            }
            previousEnd = End(block);
        }
        return previousEnd <= (isGlobal ? most : None - 1);
    }

private:
    int End(int id, int count) const { return isGlobal ? (id + count - 1) & 0xFFFF : id; }

    const ModelType* TypeOf(const std::string& name) const {
        const auto found =
            std::find_if(types.begin(), types.end(), [&](const auto& type) { return type.name == name; });
        return found == types.end() ? nullptr : &*found;
    }

    std::size_t Find(int id) const {
        std::size_t at = 0;
        while (at < blocks.size() && blocks[at].Id() != id) {
            ++at;
        }
        return at;
    }

    bool IsDemanded(const ModelBlock& block) const { return Instances(block.type) <= TypeOf(block.type)->least; }

    bool IsInRange(int id, int count) const { return id <= most && id + count - 1 <= most && id >= least; }

    int Registers(std::size_t from) const {
        int used = 0;
        for (std::size_t i = from; i < blocks.size(); ++i) {
            used = (used + blocks[i].Count()) & 0xFFFF;
        }
        return used;
    }

    bool AddOne(ModelBlock& entry, bool autoShift, int& code) {
        const auto* const type = TypeOf(entry.type);
        if (type == nullptr || Instances(entry.type) >= type->most || (type->hasSource && entry.source.empty())) {
            return false;
        }
        entry.name = entry.name.empty() ? entry.type + " name" : entry.name;
        if (entry.count == None) {
            entry.count = type->registers;
        } else if (!type->isSizable && entry.count != type->registers) {
            entry.count = type->registers;
            code = code == 0 ? 2 : code;
        }
        if (entry.id == None) {
            entry.id = !blocks.empty() ? (End(blocks.back()) + 1) & 0xFFFF : isGlobal ? least : 0;
        }
        std::size_t before = 0;
        bool shifted = false;
        if ((isGlobal && !IsInRange(entry.id, type->registers)) ||
            MakeRoom(entry.id, End(entry), autoShift, None, before, shifted) != yOK) {
            return false;
        }
        code = code == 0 && shifted ? 1 : code;
        ModelBlock block = entry;
        block.source = type->hasSource ? block.source : "";
        block.number = ++added;
        blocks.insert(blocks.begin() + static_cast<std::ptrdiff_t>(before), block);
        hasNoChoiceOfId =
            hasNoChoiceOfId || (isGlobal ? most - least + 1 == entry.count : types.size() == 1 && type->most == 1);
        return true;
    }

    bool Overlaps(int start, int end, const ModelBlock& block) const {
        const int last = End(block);
        return (block.Id() <= start && start <= last) || (block.Id() <= end && end <= last) ||
               (start <= block.Id() && end >= last);
    }

    yStatus MakeRoom(int start, int end, bool autoShift, int ignoredId, std::size_t& before, bool& shifted) {
        for (before = 0; before < blocks.size(); ++before) {
            const auto& block = blocks[before];
            if (block.Id() == ignoredId) {
                continue;
            }
            if (Overlaps(start, end, block)) {
                shifted = true;
                return autoShift ? Shift(before, start, end, ignoredId) : yERROR_CONFLICT;
            }
            if (end < block.Id()) {
                break;
            }
        }
        return yOK;
    }

    yStatus Shift(std::size_t from, int start, int end, int ignoredId) {
        if (isGlobal && ((end + 1 - start) & 0xFFFF) + Registers(from) > ((most + 1 - start) & 0xFFFF)) {
            return yERROR_FULL;
        }
        int previousEnd = end;
        for (std::size_t i = from; i < blocks.size(); ++i) {
            if (blocks[i].Id() == ignoredId) {
                continue;
            }
            if (previousEnd < blocks[i].Id()) {
                break;
            }
            SetId(i, (previousEnd + 1) & 0xFFFF);
            previousEnd = End(blocks[i]);
        }
        return yOK;
    }

    int Rename(ModelBlock& block, const ModelBlock& change, int code) const {
        block.name = change.name.empty() ? block.name : change.name;
        block.source = change.source.empty() || !TypeOf(block.type)->hasSource ? block.source : change.source;
        return code;
    }

    bool isGlobal;
    int least;
    int most;
    std::vector<ModelType> types;
    int added = 0;
};

} // namespace Tests
