#include "VorControl/ControlProtocol/RegisterBlockIndex.h"

#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

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

void RegisterBlockIndex::Watch(ProtocolRegisterBlock& block) {
    block.AddPlacementHandler(
        [flag = changed](Vor::Properties::Node&) { flag->store(true, std::memory_order_relaxed); });
}

void RegisterBlockIndex::Added(Blocks::iterator position) {
    if (!fits || changed->load(std::memory_order_relaxed)) {
        return;
    }
    changed->store(true, std::memory_order_relaxed);
    const auto next = std::next(position);
    fits = Fits(position) && (next == blocks.end() || Fits(next));
    if (fits) {
        byOutputId.emplace((*position)->OutputId(), position);
    } else {
        byOutputId.clear();
    }
    changed->store(false, std::memory_order_relaxed);
}

void RegisterBlockIndex::Cleared() {
    changed = std::make_shared<std::atomic<bool>>(false);
    fits = true;
    byOutputId.clear();
}

bool RegisterBlockIndex::IsSearchable() {
    if (!changed->load(std::memory_order_relaxed)) {
        return fits;
    }
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
    changed->store(false, std::memory_order_relaxed);
    return fits;
}

bool RegisterBlockIndex::Fits(Blocks::iterator position) const {
    const auto& block = **position;
    const unsigned short start = block.OutputId();
    return block.IsPlacementStored() && block.RegisterCount() != 0 && block.EndAddress() >= start &&
           (position == blocks.begin() || (*std::prev(position))->EndAddress() < start);
}

} // namespace VorControl::ControlProtocol
