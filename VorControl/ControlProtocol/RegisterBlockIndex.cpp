#include "VorControl/ControlProtocol/RegisterBlockIndex.h"

#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

#include <algorithm>
#include <iterator>

namespace VorControl::ControlProtocol {

RegisterBlockIndex::RegisterBlockIndex(Blocks& blocks)
    : blocks(blocks)
    , changed(std::make_shared<std::atomic<bool>>(false)) {}

RegisterBlockIndex::Blocks::iterator RegisterBlockIndex::WalkStart(unsigned short start, unsigned short end) {
    if (end < start || !IsSearchable()) {
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
    if (IsSearchable()) {
        const auto found = byOutputId.find(outputId);
        return found == byOutputId.end() ? blocks.end() : found->second;
    }
    return std::find_if(blocks.begin(), blocks.end(), [&](const auto& block) { return block->OutputId() == outputId; });
}

void RegisterBlockIndex::Watch(ProtocolRegisterBlock& block) {
    block.AddPlacementHandler(
        [flag = changed](Vor::Properties::Node&) { flag->store(true, std::memory_order_relaxed); });
}

void RegisterBlockIndex::Added(Blocks::iterator position) {
    if (stale || !fits || changed->load(std::memory_order_relaxed)) {
        return;
    }
    stale = true;
    const auto next = std::next(position);
    fits = Fits(position) && (next == blocks.end() || Fits(next));
    if (fits) {
        byOutputId.emplace((*position)->OutputId(), position);
    } else {
        byOutputId.clear();
    }
    stale = false;
}

void RegisterBlockIndex::Removing(Blocks::iterator position) {
    const auto found = byOutputId.find((*position)->OutputId());
    if (found != byOutputId.end() && found->second == position) {
        byOutputId.erase(found);
    } else {
        stale = true;
        byOutputId.clear();
    }
}

void RegisterBlockIndex::Cleared() {
    byOutputId.clear();
    changed = std::make_shared<std::atomic<bool>>(false);
    stale = false;
    fits = true;
}

bool RegisterBlockIndex::IsSearchable() {
    if (changed->exchange(false, std::memory_order_relaxed)) {
        // One walk costs less than sorting the blocks anew, so that waits for the next one.
        stale = true;
        byOutputId.clear();
        return false;
    }
    if (stale) {
        Rebuild();
    }
    return fits;
}

void RegisterBlockIndex::Rebuild() {
    byOutputId.clear();
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

bool RegisterBlockIndex::Fits(Blocks::iterator position) const {
    const auto& block = **position;
    const unsigned short start = block.OutputId();
    return block.IsPlacementStored() && block.RegisterCount() != 0 && block.EndAddress() >= start &&
           (position == blocks.begin() || (*std::prev(position))->EndAddress() < start);
}

} // namespace VorControl::ControlProtocol
