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
/// with an output id, and the sum of the registers. The list is searchable if each block has a register, an end that
/// fits in 16 bits, and a start behind the end of the block before it. A list that isn't searchable is walked.
///
/// Has no lock: the lock of the assembly guards it.
class RegisterBlockIndex {
public:
    using Blocks = std::list<std::shared_ptr<ProtocolRegisterBlock>>;

    explicit RegisterBlockIndex(Blocks& blocks);

    /// The first block that overlaps the range or is behind it, or the end of the list, in logarithmic time. The
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
        const bool follows = Forget(position);
        change();
        if (follows) {
            Follow();
        }
    }
    /// Call it after the list was cleared.
    void Cleared();

private:
    bool IsUpToDate() const;
    bool IsSearchable();
    void Invalidate();
    void Rebuild();
    void Settle();
    bool Forget(Blocks::iterator position);
    void Follow();
    void Erase(Blocks::iterator position);
    bool Fits(Blocks::iterator position) const;

    Blocks& blocks;
    /// Set by the watched blocks. Blocks that are no longer in the list have an older flag. Atomic, since those aren't
    /// guarded by the lock any more.
    std::shared_ptr<std::atomic<bool>> changed;
    bool stale = false; ///< the members below are out of date
    bool fits = true;   ///< the list is searchable
    std::map<unsigned short, Blocks::iterator> byOutputId;
    /// In the list, but not yet in `byOutputId` and `sums`.
    std::vector<Blocks::iterator> unsettled;
    bool sumRequested = false; ///< RegistersFrom was called for this list
    std::optional<RegisterSums> sums;
};

} // namespace VorControl::ControlProtocol
