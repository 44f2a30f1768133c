#pragma once

#include "VorControl/ControlProtocol/RegisterSums.h"

#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace VorControl::ControlProtocol {

class ProtocolRegisterBlock;

/// Finds blocks in the list of an assembly without a walk over it: the position for a range of addresses, the block
/// with an output id, and the sum of the registers. The list is searchable if each block has an end that isn't below
/// its start, and a start after the end of the block before it. A list that isn't searchable is walked.
///
/// Each answer is that of a walk at the time of the call. Blocks may be changed from outside between two calls, and in
/// a handler of another block's change; an "actual" of the output id or the register count may be enabled, set or
/// disabled. Only a value that is changed with `Modify` isn't noticed.
///
/// Has no lock: the lock of the assembly guards it.
class RegisterBlockIndex {
public:
    using Blocks = std::list<std::shared_ptr<ProtocolRegisterBlock>>;

    explicit RegisterBlockIndex(Blocks& blocks);

    /// The first block that overlaps the range or is after it, or the end of the list, in logarithmic time. The
    /// beginning of a list that isn't searchable. No block before the returned one overlaps the range.
    Blocks::iterator WalkStart(unsigned short start, unsigned short end);
    /// The first block with this output id, or the end of the list. In logarithmic time if the list is searchable.
    Blocks::iterator Find(unsigned short outputId);
    /// Registers of all blocks from `from` on, in 16 bits. The first call for a list walks it; later ones run in
    /// logarithmic time if the list is searchable.
    unsigned short RegistersFrom(Blocks::const_iterator from);

    /// Call it before a block is inserted in the list: follows all later changes of its output id and register count.
    void Watch(ProtocolRegisterBlock& block);
    /// Call it after a watched block was inserted in the list.
    void Added(Blocks::iterator position);
    /// Call it before a block is erased from the list.
    void Removing(Blocks::iterator position);
    /// Calls `change`, which changes the output id or the register count of a block. Between two searches, each block
    /// of the list may be changed once.
    template <class Call>
    void Change(Blocks::iterator position, const Call& change) {
        Forget(position);
        change();
        Follow(position);
    }
    /// Call it after the list was cleared.
    void Cleared();

    /// Whether the next search doesn't walk the list.
    bool IsSearchable();

private:
    enum class State {
        Stale, ///< the members below `state` are out of date
        Searchable,
        Walked, ///< not searchable until a block is changed or removed
    };

    /// What the handlers of the watched blocks share with the index. Atomic, since blocks that are no longer in the
    /// list aren't guarded by the lock any more.
    struct Marks {
        std::atomic<bool> changed{false};
        /// The block that Change changes, and whose changes set no mark.
        std::atomic<const ProtocolRegisterBlock*> moved{nullptr};
    };

    bool IsUpToDate() const;
    void Invalidate();
    void Rebuild();
    void Settle();
    void Forget(Blocks::iterator position);
    void Follow(Blocks::iterator position);
    void Erase(Blocks::iterator position);
    bool Fits(Blocks::iterator position) const;

    Blocks& blocks;
    std::shared_ptr<Marks> marks; ///< blocks of a list that was cleared have older ones
    State state = State::Searchable;
    unsigned long long actualSwitches; ///< of the time when the index was built
    std::map<unsigned short, Blocks::iterator> byOutputId;
    /// In the list, but not yet in `byOutputId` and `sums`.
    std::vector<Blocks::iterator> unsettled;
    bool sumRequested = false; ///< RegistersFrom was called for this list
    std::optional<RegisterSums> sums;
};

} // namespace VorControl::ControlProtocol
