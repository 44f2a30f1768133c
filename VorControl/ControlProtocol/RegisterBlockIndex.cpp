#include "VorControl/ControlProtocol/RegisterBlockIndex.h"

#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace VorControl::ControlProtocol {

RegisterBlockIndex::RegisterBlockIndex(Blocks& blocks)
    : blocks(blocks)
    , marks(std::make_shared<Marks>())
    , actualSwitches(Vor::Params::ParamsBase::ActualSwitches()) {}

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
    const auto mark = [marks = marks, watched = &block](Vor::Properties::Node&) {
        if (marks->moved.load(std::memory_order_relaxed) != watched) {
            marks->changed.store(true, std::memory_order_relaxed);
        }
    };
    block.outputId.AddChangeHandler(mark);
    block.registerCount.AddChangeHandler(mark);
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
    marks = std::make_shared<Marks>();
    state = State::Searchable;
    actualSwitches = Vor::Params::ParamsBase::ActualSwitches();
}

bool RegisterBlockIndex::IsUpToDate() const {
    return state == State::Searchable && !marks->changed.load(std::memory_order_relaxed) &&
           actualSwitches == Vor::Params::ParamsBase::ActualSwitches();
}

bool RegisterBlockIndex::IsSearchable() {
    if (marks->changed.exchange(false, std::memory_order_relaxed)) {
        // One walk costs less than sorting all blocks again, so the next search does that.
        Invalidate();
        return false;
    }
    if (state == State::Stale || actualSwitches != Vor::Params::ParamsBase::ActualSwitches()) {
        Rebuild();
    } else if (!unsettled.empty()) {
        Settle();
    }
    return state == State::Searchable;
}

void RegisterBlockIndex::Invalidate() {
    state = State::Stale;
    marks->moved.store(nullptr, std::memory_order_relaxed);
    byOutputId.clear();
    unsettled.clear();
    sumRequested = false;
    sums.reset();
}

void RegisterBlockIndex::Rebuild() {
    Invalidate();
    actualSwitches = Vor::Params::ParamsBase::ActualSwitches();
    // A handler searches while the change that it handles isn't stored yet.
    if (std::any_of(blocks.begin(), blocks.end(), [](const auto& block) {
            return block->outputId.IsChanging() || block->registerCount.IsChanging();
        })) {
        return;
    }
    state = State::Searchable;
    for (auto position = blocks.begin(); position != blocks.end(); ++position) {
        if (!Fits(position)) {
            byOutputId.clear();
            state = State::Walked;
            return;
        }
        byOutputId.emplace_hint(byOutputId.end(), (*position)->OutputId(), position);
    }
}

void RegisterBlockIndex::Settle() {
    const auto fitsWithNext = [this](Blocks::iterator position) {
        const auto next = std::next(position);
        return Fits(position) && (next == blocks.end() || Fits(next));
    };
    if (!std::all_of(unsettled.begin(), unsettled.end(), fitsWithNext)) {
        Invalidate();
        state = State::Walked;
        return;
    }
    for (const auto& position : unsettled) {
        byOutputId.emplace((*position)->OutputId(), position);
        if (sums.has_value()) {
            sums->Add((*position)->OutputId(), (*position)->RegisterCount());
        }
    }
    unsettled.clear();
}

void RegisterBlockIndex::Forget(Blocks::iterator position) {
    constexpr std::size_t Fewest = 8;
    marks->moved.store(nullptr, std::memory_order_relaxed); // of a change that failed
    if (!IsUpToDate()) {
        return;
    }
    if (unsettled.size() > Fewest + byOutputId.size() / 8) {
        // When many blocks move, sorting all of them again costs less.
        Invalidate();
        return;
    }
    Erase(position);
    if (state == State::Searchable) {
        unsettled.push_back(position);
        state = State::Stale;
        marks->moved.store(position->get(), std::memory_order_relaxed);
    }
}

void RegisterBlockIndex::Follow(Blocks::iterator position) {
    // A search in a handler of the change has cleared the mark.
    if (marks->moved.load(std::memory_order_relaxed) == position->get()) {
        marks->moved.store(nullptr, std::memory_order_relaxed);
        state = State::Searchable;
    }
}

void RegisterBlockIndex::Erase(Blocks::iterator position) {
    const auto found = byOutputId.find((*position)->OutputId());
    if (found == byOutputId.end() || found->second != position) {
        // It has another id than the one under which it was found.
        Invalidate();
        return;
    }
    byOutputId.erase(found);
    if (sums.has_value()) {
        sums->Subtract((*position)->OutputId(), (*position)->RegisterCount());
    }
}

bool RegisterBlockIndex::Fits(Blocks::iterator position) const {
    const auto& block = **position;
    const unsigned short start = block.OutputId();
    const unsigned short end = block.EndAddress();
    // In a global address space, a block without registers ends before its start, which for the start 0 is 65535.
    const bool endsBehindStart = end == start || (end > start && block.RegisterCount() != 0);
    return !block.outputId.IsActualEnabled() && !block.registerCount.IsActualEnabled() && endsBehindStart &&
           (position == blocks.begin() || (*std::prev(position))->EndAddress() < start);
}

} // namespace VorControl::ControlProtocol
