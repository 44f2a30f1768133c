#pragma once

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/Handle.h"
#include "VorApi/Threads/Locker.h"
#include "VorControl/ControlProtocol/IOutputMapCheck.h"
#include "VorControl/ControlProtocol/IProtocolOutput.h"
#include "VorControl/ControlProtocol/ProtocolOutputCommandTarget.h"
#include "VorControl/ControlProtocol/Translate.h"
#include "yApi/yLock.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

namespace VorControl::ControlProtocol {

/// What the maps with numbers and with texts as ids share. `Outputs` is the document of a map, and `Item` one entry of
/// it, with its type of id and the id that means "none". The others are the requests: `OutputsArgs` of AddAll and
/// UpdateId, `ItemArgs` of Add, and `RemoveArgs` of Remove.
template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
class ProtocolOutputBase : public IProtocolOutput, public IOutputMapCheck {
public:
    using Id = typename Item::Id;

    /// Throws the status of a lock that can't be made.
    explicit ProtocolOutputBase(unsigned short maxCount)
        : maxCount(maxCount) {
        Vor::ThrowIfFailed(yLock_Construct(lock.Out()));
    }
    ProtocolOutputBase(const ProtocolOutputBase&) = delete;
    ProtocolOutputBase& operator=(const ProtocolOutputBase&) = delete;

    void BeginLock() override {
        Vor::ThrowIfFailed(yLock_Enter(lock.Get()));
        locked.store(1, std::memory_order_relaxed);
    }

    void EndLock() override {
        locked.store(0, std::memory_order_relaxed);
        Vor::ThrowIfFailed(yLock_Exit(lock.Get()));
    }

    Outputs& OutputMap() const override {
        if (locked.load(std::memory_order_relaxed) != 1) {
            Vor::Throw(yERROR_STATE);
        }
        return outputs;
    }

    std::shared_ptr<Vor::Params::Group> CreateOutputMapItemArgs() override { return std::make_shared<ItemArgs>(); }
    std::shared_ptr<Vor::Params::Group> CreateOutputMapItemRemoveArgs() override {
        return std::make_shared<RemoveArgs>();
    }
    std::shared_ptr<Vor::Params::Group> CreateOutputsArgs() override { return std::make_shared<OutputsArgs>(); }

    void Add(const Vor::Params::Group& args) override {
        Add_Helper(args, AutoShift(dynamic_cast<const ItemArgs&>(args)));
    }

    void Remove(const Vor::Params::Group& args) override {
        const auto& request = dynamic_cast<const RemoveArgs&>(args);
        const Id& id = request.outputId.Get();
        const std::vector<Id>& ids = request.outputIdList.Get();
        if ((id == Item::NullId) == ids.empty()) {
            Vor::Throw(yERROR_PARAMETER);
        }
        const Vor::Locker locker(lock.Get());
        if (ids.empty()) {
            RemoveOne(id);
        } else {
            RemoveList(ids);
        }
    }

    unsigned long Count() const override {
        const Vor::Locker locker(lock.Get());
        return outputs.map.Count();
    }

    const Item& At(unsigned long index) const override {
        const Vor::Locker locker(lock.Get());
        if (index > Count()) {
            Vor::Throw(yERROR_PARAMETER);
        }
        return std::as_const(outputs).map.At(index);
    }

    void Clear() override {
        const Vor::Locker locker(lock.Get());
        outputs.map.Clear();
    }

    std::vector<std::string> DataSourceList() const override {
        const Vor::Locker locker(lock.Get());
        std::vector<std::string> sources;
        for (unsigned long i = 0; i < Count(); ++i) {
            sources.push_back(At(i).source.Get());
        }
        return sources;
    }

    void CompactId() override {}
    void UpdateId(Vor::Params::Group& args) override { UpdateId_Helper(args, true); }
    VorCommon::ICommandTarget& CommandTarget() override { return commandTarget; }

    /// Inserts an entry where one of the same id is. Throws yERROR_UNIMPLEMENTED where entries can't be shifted.
    virtual void OverlapInsert(unsigned long /*index*/, const Item& /*item*/) {
        Vor::Throw(yERROR_UNIMPLEMENTED, Translate("beApp.ctrl", "Overlap of output id not supported"));
    }

    /// Whether an entry has the id of `item`.
    virtual bool GetOverlappingState(const Vor::Params::Group& item) {
        const Id& id = dynamic_cast<const Item&>(item).outputId.Get();
        const Vor::Locker locker(lock.Get());
        return HasId(BSearchForInsert(id), id);
    }

    /// Whether the entries in the way of a new one can move up.
    virtual bool IsDataShiftSupported() { return false; }

    void CheckLoaded() override {
        const Vor::Locker locker(lock.Get());
        std::vector<unsigned long> kept;
        std::set<Id> ids;
        Sources sources;
        unsigned int repeated = 0;
        unsigned int surplus = 0;
        for (unsigned long i = 0; i < Count(); ++i) {
            const auto& item = At(i);
            if (ids.contains(item.outputId.Get()) || sources.contains(item.source.Get())) {
                ++repeated;
            } else if (kept.size() == maxCount) {
                ++surplus;
            } else {
                ids.insert(item.outputId.Get());
                sources.insert(item.source.Get());
                kept.push_back(i);
            }
        }
        if (kept.size() != Count() || !IsInOrder(AllIds())) {
            KeepSorted(kept);
        }
        if (repeated != 0) {
            Vor::Throw(yERROR_ALREADY_EXISTS, "Entries of the output map that repeat an id or a source are dropped: %u",
                       repeated);
        }
        if (surplus != 0) {
            Vor::Throw(yERROR_FULL, "Entries of the output map beyond its greatest number are dropped: %u", surplus);
        }
    }

protected:
    using Sources = std::unordered_set<std::string>;

    // Each of these that isn't static enters the lock.

    /// The index of the entry with that id, or the one at which it would be inserted.
    template <class Key>
    unsigned long BSearchForInsert(const Key& id) const {
        const Vor::Locker locker(lock.Get());
        const unsigned long count = outputs.map.Count();
        if (count == 0) {
            return 0;
        }
        unsigned long low = 0;
        unsigned long high = count - 1;
        while (low <= high) {
            const unsigned long mid = (low + high) >> 1;
            const Id& found = outputs.map.At(mid).outputId.Get();
            if (found < id) {
                low = mid + 1;
            } else if (found == id) {
                return mid;
            } else if (low + high < 2) {
                break;
            } else {
                high = mid - 1;
            }
        }
        return low;
    }

    /// Makes room for an entry: those from `index` on move one index up. The entry at `index` keeps its values, for the
    /// caller to overwrite. Throws yERROR_FULL.
    void ShiftOutputMap(unsigned long index) {
        const Vor::Locker locker(lock.Get());
        if (Count() == maxCount) {
            Vor::Throw(yERROR_FULL);
        }
        outputs.map.Emplace();
        for (unsigned long i = Count() - 1; i > index; --i) {
            Assign(outputs.map.At(i), outputs.map.At(i - 1));
        }
    }

    /// `args` is an Item. `sources`, if given, are all sources of the map: they are searched in place of the entries,
    /// and the new one is added to them.
    // NOLINTNEXTLINE(readability-identifier-naming): known to derived maps by this name
    void Add_Helper(const Vor::Params::Group& args, bool autoShift, Sources* sources = nullptr) {
        const auto& item = dynamic_cast<const Item&>(args);
        const Id& id = item.outputId.Get();
        const std::string& source = item.source.Get();
        RequireIdAndSource(item);
        const Vor::Locker locker(lock.Get());
        const unsigned long index = BSearchForInsert(id);
        RequireNewSource(source, HasId(index, id) && At(index).source.Get() == source, HasSource(source, sources));
        if (GetOverlappingState(item)) {
            if (IsDataShiftSupported() && !autoShift) {
                ThrowUnableToAdd(source);
            }
            OverlapInsert(index, item);
        } else {
            ShiftOutputMap(index);
            Assign(outputs.map.At(index), item);
        }
        if (sources != nullptr) {
            sources->insert(source);
        }
    }

    /// An entry that can't be added with its new id is lost.
    // NOLINTNEXTLINE(readability-identifier-naming): known to derived maps by this name
    void UpdateId_Helper(Vor::Params::Group& args, bool rejectExisting) {
        auto& request = dynamic_cast<OutputsArgs&>(args);
        if (request.map.Count() != 2) {
            Vor::Throw(yERROR_PARAMETER,
                       Translate("beApp.ctrl",
                                 "There should be exactly 2 output id entries but there are %1$d. The first output id "
                                 "should contain the original id to change from and the second output id should "
                                 "contain the new id to change to."),
                       request.map.Count());
        }
        const Id oldId = request.map.At(0).outputId.Get();
        auto& moved = request.map.At(1);
        const Id newId = moved.outputId.Get();
        if (oldId == Item::NullId || newId == Item::NullId) {
            const char* const text = Translate("beApp.ctrl", "Output id is invalid.");
            Vor::LogUser(Vor::UserError, "VorControl", text);
            Vor::Throw(yERROR_PARAMETER, text);
        }
        if (oldId == newId) {
            return;
        }
        const Vor::Locker locker(lock.Get());
        if (rejectExisting && GetOverlappingState(moved)) {
            Vor::Throw(yERROR_CONFLICT);
        }
        const unsigned long index = BSearchForInsert(oldId);
        if (!HasId(index, oldId)) {
            Vor::Throw(yERROR_NOT_FOUND);
        }
        const std::string source = At(index).source.Get();
        moved.source = source;
        if (GetOverlappingState(moved)) {
            bool refused = IsDataShiftSupported() && !AutoShift(request);
            if constexpr (std::is_integral_v<Id>) {
                refused = refused || newId >= Item::NullId - 1;
            }
            if (refused) {
                ThrowUnableToUpdate(source);
            }
        }
        outputs.map.Remove(index);
        Add_Helper(moved, AutoShift(request));
    }

    static void RequireIdAndSource(const Item& item) {
        const std::string& source = item.source.Get();
        if (item.outputId.Get() == Item::NullId || source.empty()) {
            Vor::LogUser(Vor::UserError, "VorControl", Translate("beApp.ctrl", "Data source %1$s is invalid"), source);
            Vor::LogError("Data source %s is invalid", source);
            Vor::Throw(yERROR_PARAMETER);
        }
    }

    /// `isEntry`: the new entry is in the map as it is.
    static void RequireNewSource(const std::string& source, bool isEntry, bool isPresent) {
        if (isEntry) {
            Vor::LogUser(Vor::UserWarning, "VorControl", Translate("beApp.ctrl", "Output id already exists"));
            Vor::LogWarning("Output id already exists");
            Vor::Throw(yERROR_ALREADY_EXISTS);
        }
        if (isPresent) {
            Vor::LogUser(Vor::UserWarning, "VorControl", Translate("beApp.ctrl", "Data source %1$s already exists"),
                         source);
            Vor::LogWarning("Data source %s already exists", source);
            Vor::Throw(yERROR_ALREADY_EXISTS);
        }
    }

    Sources AllSources() const {
        const Vor::Locker locker(lock.Get());
        Sources sources;
        sources.reserve(Count());
        for (unsigned long i = 0; i < Count(); ++i) {
            sources.insert(At(i).source.Get());
        }
        return sources;
    }

    std::vector<Id> AllIds() const {
        const Vor::Locker locker(lock.Get());
        std::vector<Id> ids;
        ids.reserve(outputs.map.Count());
        for (unsigned long i = 0; i < outputs.map.Count(); ++i) {
            ids.push_back(outputs.map.At(i).outputId.Get());
        }
        return ids;
    }

    /// Whether each id is greater than the one before it.
    static bool IsInOrder(const std::vector<Id>& ids) {
        return std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()) == ids.end();
    }

    static void Assign(Item& entry, const Item& item) { Assign(entry, item.outputId.Get(), item.source.Get()); }
    static void Assign(Item& entry, const Id& id, const std::string& source) {
        entry.source = source;
        entry.outputId = id;
    }

    const unsigned short maxCount;
    std::atomic<std::uint32_t> locked = 0; ///< 1 between BeginLock and EndLock
    mutable Outputs outputs;
    /// Reentrant; guards `outputs`. Handlers of the list and of its entries run under it, and refusals are logged under
    /// it, so the locks that these enter rank after it.
    Vor::Handle<yLock, yLock_Destroy> lock;
    ProtocolOutputCommandTarget commandTarget{*this};
    unsigned short firstOutputId = 0; ///< where the numbers of AddAll and CompactId begin

private:
    template <class Args>
    static bool AutoShift(const Args& args) {
        if constexpr (requires { args.autoShift; }) {
            return args.autoShift.Get();
        } else {
            return false;
        }
    }

    [[noreturn]] static void ThrowUnableToAdd(const std::string& source) {
        Vor::LogUser(Vor::UserError, "VorControl",
                     Translate("beApp.ctrl",
                               "Unable to add data source %1$s. The specified address would cause the selected source "
                               "to overlap addresses used by an existing data source."),
                     source);
        Vor::LogError("Unable to add data source %s. The specified address would cause the selected source to "
                      "overlap addresses used by an existing data source.",
                      source);
        Vor::Throw(yERROR_PARAMETER);
    }

    [[noreturn]] static void ThrowUnableToUpdate(const std::string& source) {
        Vor::LogUser(Vor::UserError, "VorControl",
                     Translate("beApp.ctrl",
                               "Unable to update output id for data source %1$s. The specified address would cause the "
                               "selected source to overlap addresses used by an existing data source."),
                     source);
        Vor::LogError("Unable to update output id for data source [%s]. The specified address would cause the selected "
                      "source to overlap addresses used by an existing data source.",
                      source);
        Vor::Throw(yERROR_PARAMETER,
                   Translate("beApp.ctrl",
                             "Unable to update output id for data source [%1$s]. The specified address would cause the "
                             "selected source to overlap addresses used by an existing data source."),
                   source);
    }

    // The caller of these holds the lock.

    bool HasId(unsigned long index, const Id& id) const {
        return index < outputs.map.Count() && outputs.map.At(index).outputId.Get() == id;
    }

    bool HasSource(const std::string& source, const Sources* sources) const {
        if (sources != nullptr) {
            return sources->contains(source);
        }
        for (unsigned long i = 0; i < outputs.map.Count(); ++i) {
            if (outputs.map.At(i).source.Get() == source) {
                return true;
            }
        }
        return false;
    }

    void RemoveOne(const Id& id) {
        const unsigned long index = BSearchForInsert(id);
        if (!HasId(index, id)) {
            Vor::Throw(yERROR_NOT_FOUND);
        }
        outputs.map.Remove(index);
    }

    void RemoveList(const std::vector<Id>& ids) {
        const std::vector<Id> present = AllIds();
        // A handler sees the map as it is after the removals before, and so does the search in a map without order.
        if (outputs.map.HasItemRemovedHandlers() || !IsInOrder(present)) {
            for (const Id& id : ids) {
                RemoveOne(id);
            }
            return;
        }
        std::vector<bool> marks(present.size());
        bool allFound = true;
        for (const Id& id : ids) {
            const auto found = std::lower_bound(present.begin(), present.end(), id);
            const auto index = static_cast<std::size_t>(found - present.begin());
            if (found == present.end() || *found != id || marks[index]) {
                allFound = false;
                break;
            }
            marks[index] = true;
        }
        outputs.map.RemoveMarked(marks);
        if (!allFound) {
            Vor::Throw(yERROR_NOT_FOUND);
        }
    }

    /// Drops all entries but those at these indices, and sorts them by id.
    void KeepSorted(const std::vector<unsigned long>& indices) {
        std::vector<std::unique_ptr<Item>> kept;
        kept.reserve(indices.size());
        for (const unsigned long index : indices) {
            kept.push_back(std::make_unique<Item>());
            kept.back()->CopyValues(At(index));
        }
        std::sort(kept.begin(), kept.end(),
                  [](const auto& left, const auto& right) { return left->outputId.Get() < right->outputId.Get(); });
        for (unsigned long i = 0; i < kept.size(); ++i) {
            outputs.map.At(i).CopyValues(*kept[i]);
        }
        outputs.map.Resize(kept.size());
    }
};

} // namespace VorControl::ControlProtocol
