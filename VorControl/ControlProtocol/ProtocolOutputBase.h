#pragma once

#include "Vor/Exception.h"
#include "Vor/Logging.h"
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

/// What the maps with numbers and with texts as ids share. `Outputs` is the document of a map, `Item` one entry, with
/// its type of id and the id that means "none"; the others are the requests of AddAll and UpdateId, Add, and Remove.
template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
class ProtocolOutputBase : public IProtocolOutput, public IOutputMapCheck {
public:
    using Id = typename Item::Id;

    /// Throws the status of a lock that can't be made.
    explicit ProtocolOutputBase(unsigned short maxCount);
    ProtocolOutputBase(const ProtocolOutputBase&) = delete;
    ProtocolOutputBase& operator=(const ProtocolOutputBase&) = delete;

    void BeginLock() override;
    void EndLock() override;
    Outputs& OutputMap() const override;
    std::shared_ptr<Vor::Params::Group> CreateOutputMapItemArgs() override { return std::make_shared<ItemArgs>(); }
    std::shared_ptr<Vor::Params::Group> CreateOutputMapItemRemoveArgs() override {
        return std::make_shared<RemoveArgs>();
    }
    std::shared_ptr<Vor::Params::Group> CreateOutputsArgs() override { return std::make_shared<OutputsArgs>(); }
    void Add(const Vor::Params::Group& args) override;
    void Remove(const Vor::Params::Group& args) override;
    unsigned long Count() const override;
    const Item& At(unsigned long index) const override;
    void Clear() override;
    std::vector<std::string> DataSourceList() const override;
    void CompactId() override {}
    void UpdateId(Vor::Params::Group& args) override { UpdateId_Helper(args, true); }
    VorCommon::ICommandTarget& CommandTarget() override { return commandTarget; }

    /// Puts an entry at a place whose id it shares. Throws yERROR_UNIMPLEMENTED where entries can't be shifted.
    virtual void OverlapInsert(unsigned long index, const Item& item);
    /// Whether an entry has the id of `item`.
    virtual bool GetOverlappingState(const Vor::Params::Group& item);
    virtual bool IsDataShiftSupported() { return false; }

    void CheckLoaded() override;

protected:
    using Sources = std::unordered_set<std::string>;

    // All of these take the lock.

    /// The place of that id, or where it would go.
    template <class Key>
    unsigned long BSearchForInsert(const Key& id) const;
    /// Makes room: the entries from `index` on stand one place further, and the one at `index` is to be overwritten.
    /// Throws yERROR_FULL.
    void ShiftOutputMap(unsigned long index);
    /// `args` is an Item. `sources`, if given, are those of the map, and are kept so: then no entry is asked.
    void Add_Helper(const Vor::Params::Group& args, bool autoShift, Sources* sources = nullptr);
    /// When the entry can't be added with its new id, it is gone.
    void UpdateId_Helper(Vor::Params::Group& args, bool rejectExisting);
    Sources AllSources() const;

    static void Assign(Item& entry, const Item& item);

    const unsigned short maxCount;
    std::atomic<std::uint32_t> locked = 0;
    mutable Outputs outputs;
    /// Reentrant; guards `outputs`. Nothing else is locked under it.
    std::unique_ptr<std::remove_pointer_t<yLock>, yStatus (*)(yLock)> lock{nullptr, yLock_Destroy};
    ProtocolOutputCommandTarget commandTarget{*this};
    /// Where numbering begins.
    unsigned short firstOutputId = 0;

private:
    static const char* Text(const char* text) { return Translate("beApp.ctrl", text); }
    template <class Args>
    static bool AutoShift(const Args& args);
    [[noreturn]] static void ThrowUnableToUpdate(const std::string& source);

    /// All of these expect the caller to hold the lock.
    bool HasId(unsigned long index, const Id& id) const;
    bool HasSource(const std::string& source, const Sources* sources) const;
    void RemoveOne(const Id& id);
    void RemoveList(const std::vector<Id>& ids);
    std::vector<Id> AllIds() const;
    /// Whether each id is above the one before it.
    static bool IsInOrder(const std::vector<Id>& ids);
    void KeepOnly(const std::vector<unsigned long>& places);
};

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::ProtocolOutputBase(unsigned short maxCount)
    : maxCount(maxCount) {
    yLock made = nullptr;
    Vor::ThrowIfFailed(yLock_Construct(&made));
    lock.reset(made);
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::BeginLock() {
    Vor::ThrowIfFailed(yLock_Enter(lock.get()));
    locked.store(1, std::memory_order_relaxed);
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::EndLock() {
    locked.store(0, std::memory_order_relaxed);
    Vor::ThrowIfFailed(yLock_Exit(lock.get()));
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
Outputs& ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::OutputMap() const {
    if (locked.load(std::memory_order_relaxed) != 1) {
        Vor::Throw(yERROR_STATE);
    }
    return outputs;
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::Add(const Vor::Params::Group& args) {
    Add_Helper(args, AutoShift(dynamic_cast<const ItemArgs&>(args)));
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::Remove(const Vor::Params::Group& args) {
    const auto& request = dynamic_cast<const RemoveArgs&>(args);
    const Id& id = request.outputId.Get();
    const std::vector<Id>& ids = request.outputIdList.Get();
    if ((id == Item::NullId) == ids.empty()) {
        Vor::Throw(yERROR_PARAMETER);
    }
    const Vor::Locker locker(lock.get());
    if (ids.empty()) {
        RemoveOne(id);
    } else {
        RemoveList(ids);
    }
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::RemoveOne(const Id& id) {
    const unsigned long index = BSearchForInsert(id);
    if (!HasId(index, id)) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    outputs.map.Remove(index);
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::RemoveList(const std::vector<Id>& ids) {
    const std::vector<Id> present = AllIds();
    // A handler sees the map as it is after the removals before, and a search depends on them in a map without order.
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

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
unsigned long ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::Count() const {
    const Vor::Locker locker(lock.get());
    return outputs.map.Count();
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
const Item& ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::At(unsigned long index) const {
    const Vor::Locker locker(lock.get());
    if (index > Count()) {
        Vor::Throw(yERROR_PARAMETER);
    }
    return std::as_const(outputs).map.At(index);
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::Clear() {
    const Vor::Locker locker(lock.get());
    outputs.map.Clear();
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
std::vector<std::string> ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::DataSourceList() const {
    const Vor::Locker locker(lock.get());
    std::vector<std::string> sources;
    for (unsigned long i = 0; i < Count(); ++i) {
        sources.push_back(At(i).source.Get());
    }
    return sources;
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::OverlapInsert(unsigned long /*index*/,
                                                                                         const Item& /*item*/) {
    Vor::Throw(yERROR_UNIMPLEMENTED, Text("Overlap of output id not supported"));
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
bool ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::GetOverlappingState(
    const Vor::Params::Group& item) {
    const Id& id = dynamic_cast<const Item&>(item).outputId.Get();
    const Vor::Locker locker(lock.get());
    return HasId(BSearchForInsert(id), id);
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::CheckLoaded() {
    const Vor::Locker locker(lock.get());
    std::vector<unsigned long> places;
    std::set<Id> ids;
    Sources sources;
    unsigned int repeated = 0;
    unsigned int surplus = 0;
    for (unsigned long i = 0; i < Count(); ++i) {
        const auto& item = At(i);
        if (ids.contains(item.outputId.Get()) || sources.contains(item.source.Get())) {
            ++repeated;
        } else if (places.size() == maxCount) {
            ++surplus;
        } else {
            ids.insert(item.outputId.Get());
            sources.insert(item.source.Get());
            places.push_back(i);
        }
    }
    if (places.size() != Count() || !IsInOrder(AllIds())) {
        KeepOnly(places);
    }
    if (repeated != 0) {
        Vor::Throw(yERROR_ALREADY_EXISTS, "Entries of the output map that repeat an id or a source are dropped: %u",
                   repeated);
    }
    if (surplus != 0) {
        Vor::Throw(yERROR_FULL, "Entries of the output map beyond its greatest number are dropped: %u", surplus);
    }
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::KeepOnly(
    const std::vector<unsigned long>& places) {
    std::vector<std::unique_ptr<Item>> kept;
    kept.reserve(places.size());
    for (const unsigned long place : places) {
        kept.push_back(std::make_unique<Item>());
        kept.back()->CopyValues(At(place));
    }
    std::sort(kept.begin(), kept.end(),
              [](const auto& left, const auto& right) { return left->outputId.Get() < right->outputId.Get(); });
    for (unsigned long i = 0; i < kept.size(); ++i) {
        outputs.map.At(i).CopyValues(*kept[i]);
    }
    outputs.map.Resize(kept.size());
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
template <class Key>
unsigned long
ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::BSearchForInsert(const Key& id) const {
    const Vor::Locker locker(lock.get());
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

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::ShiftOutputMap(unsigned long index) {
    const Vor::Locker locker(lock.get());
    if (Count() == maxCount) {
        Vor::Throw(yERROR_FULL);
    }
    outputs.map.Emplace();
    for (unsigned long i = Count() - 1; i > index; --i) {
        Assign(outputs.map.At(i), outputs.map.At(i - 1));
    }
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::Add_Helper(const Vor::Params::Group& args,
                                                                                      bool autoShift,
                                                                                      Sources* sources) {
    const auto& item = dynamic_cast<const Item&>(args);
    const Id& id = item.outputId.Get();
    const std::string& source = item.source.Get();
    if (id == Item::NullId || source.empty()) {
        Vor::LogUser(Vor::UserError, "VorControl", Text("Data source %1$s is invalid"), source);
        Vor::LogError("Data source %s is invalid", source);
        Vor::Throw(yERROR_PARAMETER);
    }
    const Vor::Locker locker(lock.get());
    const unsigned long index = BSearchForInsert(id);
    if (HasId(index, id) && At(index).source.Get() == source) {
        Vor::LogUser(Vor::UserWarning, "VorControl", Text("Output id already exists"));
        Vor::LogWarning("Output id already exists");
        Vor::Throw(yERROR_ALREADY_EXISTS);
    }
    if (HasSource(source, sources)) {
        Vor::LogUser(Vor::UserWarning, "VorControl", Text("Data source %1$s already exists"), source);
        Vor::LogWarning("Data source %s already exists", source);
        Vor::Throw(yERROR_ALREADY_EXISTS);
    }
    if (GetOverlappingState(item)) {
        if (IsDataShiftSupported() && !autoShift) {
            Vor::LogUser(Vor::UserError, "VorControl",
                         Text("Unable to add data source %1$s. The specified address would cause the selected source "
                              "to overlap addresses used by an existing data source."),
                         source);
            Vor::LogError("Unable to add data source %s. The specified address would cause the selected source to "
                          "overlap addresses used by an existing data source.",
                          source);
            Vor::Throw(yERROR_PARAMETER);
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

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::UpdateId_Helper(Vor::Params::Group& args,
                                                                                           bool rejectExisting) {
    auto& request = dynamic_cast<OutputsArgs&>(args);
    if (request.map.Count() != 2) {
        Vor::Throw(yERROR_PARAMETER,
                   Text("There should be exactly 2 output id entries but there are %1$d. The first output id should "
                        "contain the original id to change from and the second output id should contain the new id to "
                        "change to."),
                   request.map.Count());
    }
    const Id oldId = request.map.At(0).outputId.Get();
    auto& moved = request.map.At(1);
    const Id newId = moved.outputId.Get();
    if (oldId == Item::NullId || newId == Item::NullId) {
        const char* const text = Text("Output id is invalid.");
        Vor::LogUser(Vor::UserError, "VorControl", text);
        Vor::Throw(yERROR_PARAMETER, text);
    }
    if (oldId == newId) {
        return;
    }
    const Vor::Locker locker(lock.get());
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

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::ThrowUnableToUpdate(
    const std::string& source) {
    Vor::LogUser(Vor::UserError, "VorControl",
                 Text("Unable to update output id for data source %1$s. The specified address would cause the selected "
                      "source to overlap addresses used by an existing data source."),
                 source);
    Vor::LogError("Unable to update output id for data source [%s]. The specified address would cause the selected "
                  "source to overlap addresses used by an existing data source.",
                  source);
    Vor::Throw(yERROR_PARAMETER,
               Text("Unable to update output id for data source [%1$s]. The specified address would cause the selected "
                    "source to overlap addresses used by an existing data source."),
               source);
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
typename ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::Sources
ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::AllSources() const {
    const Vor::Locker locker(lock.get());
    Sources sources;
    sources.reserve(Count());
    for (unsigned long i = 0; i < Count(); ++i) {
        sources.insert(At(i).source.Get());
    }
    return sources;
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
void ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::Assign(Item& entry, const Item& item) {
    entry.source = item.source.Get();
    entry.outputId = item.outputId.Get();
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
template <class Args>
bool ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::AutoShift(const Args& args) {
    if constexpr (requires { args.autoShift; }) {
        return args.autoShift.Get();
    } else {
        return false;
    }
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
bool ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::HasId(unsigned long index,
                                                                                 const Id& id) const {
    return index < outputs.map.Count() && outputs.map.At(index).outputId.Get() == id;
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
bool ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::HasSource(const std::string& source,
                                                                                     const Sources* sources) const {
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

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
std::vector<typename Item::Id> ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::AllIds() const {
    std::vector<Id> ids;
    ids.reserve(outputs.map.Count());
    for (unsigned long i = 0; i < outputs.map.Count(); ++i) {
        ids.push_back(outputs.map.At(i).outputId.Get());
    }
    return ids;
}

template <class Outputs, class Item, class OutputsArgs, class ItemArgs, class RemoveArgs>
bool ProtocolOutputBase<Outputs, Item, OutputsArgs, ItemArgs, RemoveArgs>::IsInOrder(const std::vector<Id>& ids) {
    return std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()) == ids.end();
}

} // namespace VorControl::ControlProtocol
