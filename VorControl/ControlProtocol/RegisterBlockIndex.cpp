#include "VorControl/ControlProtocol/RegisterBlockIndex.h"

#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace VorControl::ControlProtocol {

RegisterBlockIndex::RegisterBlockIndex(Blocks& blocks)
    : blocks(blocks)
    , changed(std::make_shared<std::atomic<bool>>(false)) {}

RegisterBlockIndex::Blocks::iterator RegisterBlockIndex::WalkStart(unsigned short start, unsigned short end) {
    if (!IsSearchable() || end < start) {
        return blocks.begin();
    }
    const auto next = byOutputId.upper_bound(start);
    if (next != byOutputId.begin()) {
        const auto previous = std::prev(next)->second;
        if ((*previous)->EndAddress() >= start) {
            return previous;
        }
    }
    return next == byOutputId.end() ? blocks.end() : next->second;
}

RegisterBlockIndex::Blocks::iterator RegisterBlockIndex::Find(unsigned short outputId) {
    if (!IsSearchable()) {
        return std::find_if(blocks.begin(), blocks.end(),
                            [&](const auto& block) { return block->OutputId() == outputId; });
    }
    const auto found = byOutputId.find(outputId);
    return found == byOutputId.end() ? blocks.end() : found->second;
}

unsigned short RegisterBlockIndex::RegistersFrom(Blocks::const_iterator from) {
    // For the first call, one walk costs less than the sums of all blocks.
    if (from != blocks.end() && std::exchange(sumRequested, true) && IsSearchable()) {
        if (!sums.has_value()) {
            sums.emplace();
            for (const auto& block : blocks) {
                sums->Add(block->OutputId(), block->RegisterCount());
            }
        }
        return sums->From((*from)->OutputId());
    }
    unsigned short used = 0;
    for (; from != blocks.end(); ++from) {
        used = static_cast<unsigned short>(used + (*from)->RegisterCount());
    }
    return used;
}

void RegisterBlockIndex::Watch(ProtocolRegisterBlock& block) {
    block.AddPlacementHandler(
        [flag = changed](Vor::Properties::Node&) { flag->store(true, std::memory_order_relaxed); });
}

void RegisterBlockIndex::Added(Blocks::iterator position) {
    if (IsUpToDate()) {
        unsettled.push_back(position);
    }
}

void RegisterBlockIndex::Removing(Blocks::iterator position) {
    if (IsUpToDate()) {
        Settle();
    }
    if (IsUpToDate()) {
        Erase(position);
    } else {
        Invalidate();
    }
}

void RegisterBlockIndex::Cleared() {
    Invalidate();
    changed = std::make_shared<std::atomic<bool>>(false);
    stale = false;
    fits = true;
}

bool RegisterBlockIndex::IsUpToDate() const {
    return fits && !stale && !changed->load(std::memory_order_relaxed);
}

bool RegisterBlockIndex::IsSearchable() {
    if (changed->exchange(false, std::memory_order_relaxed)) {
        // One walk costs less than sorting all blocks again, so the next search does that.
        Invalidate();
        return false;
    }
    if (stale) {
        Rebuild();
    } else if (!unsettled.empty()) {
        Settle();
    }
    return fits;
}

void RegisterBlockIndex::Invalidate() {
    stale = true;
    byOutputId.clear();
    unsettled.clear();
    sumRequested = false;
    sums.reset();
}

void RegisterBlockIndex::Rebuild() {
    Invalidate();
    fits = true;
    for (auto position = blocks.begin(); fits && position != blocks.end(); ++position) {
        fits = Fits(position);
    }
    if (fits) {
        for (auto position = blocks.begin(); position != blocks.end(); ++position) {
            byOutputId.emplace_hint(byOutputId.end(), (*position)->OutputId(), position);
        }
    }
    stale = false;
}

void RegisterBlockIndex::Settle() {
    stale = true;
    const auto fitsWithNext = [this](Blocks::iterator position) {
        const auto next = std::next(position);
        return Fits(position) && (next == blocks.end() || Fits(next));
    };
    fits = std::all_of(unsettled.begin(), unsettled.end(), fitsWithNext);
    if (!fits) {
        Invalidate();
    }
    for (const auto& position : unsettled) {
        byOutputId.emplace((*position)->OutputId(), position);
        if (sums.has_value()) {
            sums->Add((*position)->OutputId(), (*position)->RegisterCount());
        }
    }
    unsettled.clear();
    stale = false;
}

bool RegisterBlockIndex::Forget(Blocks::iterator position) {
    constexpr std::size_t Fewest = 8;
    if (!IsUpToDate()) {
        return false;
    }
    if (unsettled.size() > Fewest + byOutputId.size() / 8) {
        // When many blocks move, sorting all of them again costs less.
        Invalidate();
        return false;
    }
    stale = true;
    Erase(position);
    unsettled.push_back(position);
    return true;
}

void RegisterBlockIndex::Follow() {
    changed->store(false, std::memory_order_relaxed);
    stale = false;
}

void RegisterBlockIndex::Erase(Blocks::iterator position) {
    byOutputId.erase((*position)->OutputId());
    if (sums.has_value()) {
        sums->Subtract((*position)->OutputId(), (*position)->RegisterCount());
    }
}

bool RegisterBlockIndex::Fits(Blocks::iterator position) const {
    const auto& block = **position;
    const unsigned short start = block.OutputId();
    return block.IsPlacementStored() && block.RegisterCount() != 0 && block.EndAddress() >= start &&
           (position == blocks.begin() || (*std::prev(position))->EndAddress() < start);
}

} // namespace VorControl::ControlProtocol
